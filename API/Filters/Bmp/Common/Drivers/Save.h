// Saving: a new file with one image, or a page of an icon or cursor file that exists.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Saves the image of the record. An existing file is written over, not made shorter; on a failure it stays
/// as far as it was written. The record's Format and Flags change as documented there.
/// @return STATUS_OK; STATUS_NOT_SUPPORTED, STATUS_BAD_BPP or STATUS_BAD_DIMENSIONS before anything is
/// touched; STATUS_OPEN_WRITE_ERROR, STATUS_WRITE_ERROR, STATUS_NO_MEMORY, AddPage's, or what a callback
/// answered
[[nodiscard]] int Save(_SAVEDISPATCH& dispatch);

}  // namespace bmp
