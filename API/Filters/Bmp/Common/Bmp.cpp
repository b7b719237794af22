// The entry points: four refuse a missing record and hand over to their drivers; the fifth gets the display.
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

int GetDisplayDispatch(_DISDISPATCH* dispatch, HANDLE& library) {
  library = nullptr;
  const int status = VX_GetDisDispatch(dispatch);
  if (status != STATUS_NO_DISPLAY_LIBRARY) return status;
  library = LoadLibrary("VXDIS.so");
  if (library == nullptr) return STATUS_FAILURE;
  const int retried = VX_GetDisDispatch(dispatch);
  if (retried == STATUS_OK) return STATUS_OK;
  FreeLibrary(library);
  library = nullptr;
  return retried;
}
