// The colour table of a bitmap file, in the three forms that the headers bring with them.
#pragma once

#include <vxkrn.h>

#include <array>

#include "format/BitmapHeader.h"

namespace bmp {

using Palette = std::array<RGBQUAD, 256>;

/// Reads the colour table at which the file stands into `palette`, all zeros before; entries that the
/// file does not have stay so.
/// @return STATUS_OK, STATUS_READ_ERROR when the file ends inside it, STATUS_NO_MEMORY
[[nodiscard]] int ReadPalette(HANDLE file, const ImageHeader& header, Palette& palette);

}  // namespace bmp
