// Gets the display dispatch, at the second try with the display library loaded.
#include "Drivers/Display.h"

namespace bmp {

int GetDisplay(_DISDISPATCH* dispatch, HANDLE& library) {
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

}  // namespace bmp
