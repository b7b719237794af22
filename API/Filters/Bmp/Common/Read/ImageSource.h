// Finds the image inside a file: from the signature through the directory or the file header to the
// decoded image header. Afterwards the file stands where the masks or the palette begin.
#pragma once

#include <vxkrn.h>

#include "format/BitmapHeader.h"
#include "format/IconDirectory.h"

namespace bmp {

/// An image whose headers are read.
struct ImageSource {
  uint16_t signature = kIconSignature;  // the file's first two bytes
  uint32_t pixelOffset = 0;             // of the first pixel byte, from the start of the file
  ImageHeader header;
};

/// Reads the signature and goes back to the start. @return false for a file of no known kind
[[nodiscard]] bool ReadSignature(HANDLE file, uint16_t& signature);

/// Finds the only image of a bitmap file, or the first of an array.
/// @return STATUS_OK, STATUS_BAD_FORMAT or STATUS_SEEK_ERROR
[[nodiscard]] int FindBitmap(HANDLE file, uint16_t signature, ImageSource& image);

/// Finds the directory entry that a request for `page` means, and whether its body is a PNG stream.
/// @return STATUS_OK, STATUS_BAD_FORMAT, or STATUS_READ_ERROR when the body is not there
[[nodiscard]] int FindPage(HANDLE file, int page, ICONDIRENTRY& entry, bool& isPng);

/// Reads the header of an entry's bitmap body. @return STATUS_OK or STATUS_BAD_FORMAT
[[nodiscard]] int FindIconImage(HANDLE file, const ICONDIRENTRY& entry, ImageSource& image);

}  // namespace bmp
