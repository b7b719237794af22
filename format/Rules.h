// Which decoder a depth and a compression choose, which colour order a file implies, and what the raw
// formats stand for.
#pragma once

#include <vxkrn.h>

#include "format/BitmapHeader.h"

namespace bmp {

enum class RowCoding {
  kPlain,    // rows as they are, bit fields included
  kRle8,     // run-length coded bytes
  kRle4,     // run-length coded nibbles
  kUnknown,  // nothing this family defines
};

/// The depth decides first: 8- and 4-bit images have one run-length coding each, whatever number the
/// header gives it.
constexpr RowCoding CodingOf(int bitsPerPixel, int compression) {
  if (compression == kUncompressed) return RowCoding::kPlain;
  if (bitsPerPixel == 8) return RowCoding::kRle8;
  if (bitsPerPixel == 4) return RowCoding::kRle4;
  switch (compression) {
    case kCompressionRle8: return RowCoding::kRle8;
    case kCompressionRle4: return RowCoding::kRle4;
    case kCompressionBitFields: return RowCoding::kPlain;
    default: return RowCoding::kUnknown;
  }
}

/// The colour order that a file implies.
constexpr int ImpliedColorOrder(int bitCount, bool is565) {
  if (is565) return ORDER_565;
  return HasPalette(bitCount) ? ORDER_RGB : ORDER_BGR;
}

constexpr bool IsRawFormat(int format) {
  return format >= FMT_RAW && format <= FMT_RAW_BITFIELDS;
}

/// The compression value that a raw format's data would have in a bitmap header.
constexpr int CompressionOfRaw(int format) {
  constexpr Compression kByFormat[] = {kCompressionRle4, kCompressionRle8, kCompressionBitFields};
  return format > FMT_RAW && format <= FMT_RAW_BITFIELDS ? static_cast<int>(kByFormat[format - FMT_RAW_RLE4])
                                                         : static_cast<int>(kUncompressed);
}

static_assert(CodingOf(8, 3) == RowCoding::kRle8 && CodingOf(24, 1) == RowCoding::kRle8);
static_assert(CodingOf(16, 3) == RowCoding::kPlain && CodingOf(16, 4) == RowCoding::kUnknown);
static_assert(CompressionOfRaw(FMT_RAW) == 0 && CompressionOfRaw(FMT_RAW_RLE4) == 2);

}  // namespace bmp
