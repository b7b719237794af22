// Icon pages stored as PNG streams.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Loads the page of `entry` through the kernel's decoder. `file` stays open.
/// @return STATUS_OK; STATUS_READ_ERROR, STATUS_NO_MEMORY, or what a callback answered
[[nodiscard]] int LoadPngEntry(_LOADDISPATCH& dispatch, HANDLE file, const ICONDIRENTRY& entry);

}  // namespace bmp
