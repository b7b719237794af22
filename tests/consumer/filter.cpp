// What the author of another filter includes, declares and asks the library for.
#include "SaveRules.h"
#include "vxkrn.h"

int fltInfo(_INFODISPATCH* dispatch) {
  VX_MemorySet(dispatch, 0, sizeof *dispatch);
  return contract::SaveRuleOf(FMT_ICO).largestSide;
}
