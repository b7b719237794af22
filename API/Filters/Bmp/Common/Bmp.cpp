// The entry points: each refuses a missing record and hands over to its driver.
#include "Bmp.h"

int fltInfo(_INFODISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : fltInfoBMP(dispatch);
}

int fltLoad(_LOADDISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : fltLoadBMP(dispatch);
}

int fltSave(_SAVEDISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : fltSaveBMP(dispatch);
}

int fltDeletePage(_DELETEPAGEDISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : fltDeletePageBMP(dispatch);
}
