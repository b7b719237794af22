// The display dispatch, which the display library fills.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Fills the display dispatch, loading the display library where the kernel asks for it.
/// @param library  the display library where it was loaded here, which the caller gives back through
///                 FreeLibrary; null otherwise, and after every failure
/// @return STATUS_OK; STATUS_FAILURE where VXDIS.so cannot be loaded, or what VX_GetDisDispatch answered
[[nodiscard]] int GetDisplay(_DISDISPATCH* dispatch, HANDLE& library);

}  // namespace bmp
