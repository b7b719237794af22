// What the author of another filter includes, declares and asks the library for.
#include "vxkrn.h"

int fltInfo(_INFODISPATCH* dispatch) {
  VX_MemorySet(dispatch, 0, sizeof *dispatch);
  return FMT_ICO;
}
