// Rows of any layout as red, green, blue, alpha: the hot loops of taking pictures out live here.
#pragma once

#include "bitmap/Rows.h"

namespace vxkrn {

[[nodiscard]] ColorTable ColorsOf(const _BITMAPHANDLE& bitmap) noexcept;
/// The colour that a pixel of 16 bits shows.
[[nodiscard]] Rgba ColorOfPixel16(unsigned int pixel, bool is565) noexcept;

/// Writes a stored row as red, green, blue, alpha: 4 x width bytes. `colors` is the bitmap's; alpha comes
/// from the bitmap's alpha channel, else from its region. Throws what its provider does, if it has one.
void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, uint8_t* rgba);

/// The same for `count` pixels of the row from pixel `first` on, a multiple of 8.
void ReadRgba(const _BITMAPHANDLE& bitmap, const ColorTable& colors, int storedRow, int first, int count,
              uint8_t* rgba);

/// 24-bit pixels as opaque ones, in vectors where the processor can shuffle their bytes.
void Expand24(const uint8_t* row, int width, uint8_t* rgba) noexcept;
/// The same in words, which every processor has.
void Expand24InWords(const uint8_t* row, int width, uint8_t* rgba) noexcept;

}  // namespace vxkrn
