// Rows as run-length codes, written as they arise. Codes never cross rows.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

/// Writes a row of 8-bit pixels. @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int WriteRle8Row(HANDLE file, const uint8_t* row, int width);

/// Writes a row of 4-bit pixels, two to a byte; an odd row ends with whatever its last byte holds.
/// @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int WriteRle4Row(HANDLE file, const uint8_t* row, int width);

/// Writes the code that ends the image. @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int WriteEndOfBitmap(HANDLE file);

}  // namespace bmp
