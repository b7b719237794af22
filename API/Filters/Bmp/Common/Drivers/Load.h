// Loading: a file's image, row by row, into the kernel's callback.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Loads the image that the record names. The file is closed on return.
/// @return STATUS_OK; STATUS_OPEN_ERROR, STATUS_BAD_BPP for a target of no known depth, STATUS_BAD_FORMAT,
/// STATUS_SEEK_ERROR, STATUS_READ_ERROR, STATUS_NO_MEMORY, or what a callback or a bitmap service answered
[[nodiscard]] int Load(_LOADDISPATCH& dispatch);

}  // namespace bmp
