// Headerless data.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Loads data that the record and its bitmap describe. The file is closed on return.
/// @return STATUS_OK; STATUS_OPEN_ERROR, or DecodeRows'
[[nodiscard]] int LoadRaw(_LOADDISPATCH& dispatch, int width, int height, int bitsPerPixel);

}  // namespace bmp
