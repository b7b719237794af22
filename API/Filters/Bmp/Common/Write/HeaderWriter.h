// What stands before the rows of a new file.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Writes headers, masks and colour table at the position of `file`, which stays open.
/// @param image        the converted image
/// @param bitsPerPixel its depth
/// @param kind         a SaveType, which the save driver chose
/// @param saveFile     whose palette becomes the colour table
/// @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int WriteHeaders(HANDLE file, const _BITMAPHANDLE& image, int bitsPerPixel, int kind,
                               const _SAVEFILESTRUCT& saveFile);

}  // namespace bmp
