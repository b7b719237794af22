// The transparency mask that follows the colour rows of an icon or cursor image.
#pragma once

#include <vxkrn.h>

#include "Read/ReadBuffer.h"

namespace bmp {

/// Reads the mask from where the colour rows ended and gives `target` the region it describes.
/// @return STATUS_OK, STATUS_NO_MEMORY, or what the kernel answered
[[nodiscard]] int ReadIconMask(_BITMAPHANDLE& target, ReadBuffer& input);

}  // namespace bmp
