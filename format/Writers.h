// Who writes what: the filter, the PNG encoder, or the library itself. Beside the filter's own table of what
// it admits (SaveRules.h) this is the library's; applications and documents are told both as one.
#pragma once

#include "format/SaveRules.h"

#include <array>
#include <cstdint>

#include "format/BitmapLayout.h"

namespace bmp {

enum class Writer : uint8_t {
  kFilter,
  kPng,          // a PNG stream that is a file of its own
  kAlphaBitmap,  // a bitmap with four masks behind a header that has a place for them
  kAlphaPage,    // a page of 32 bits with alpha, and a mask for readers that know of none
};

struct WriterRule {
  int format;
  DepthSet depths;
  Writer writer;
};

/// What the filter does not write. A bitmap without alpha is the filter's at every depth.
inline constexpr std::array<WriterRule, 4> kWriterRules = {{
    {FMT_PNG, DepthsOf(1, 4, 8, 24, 32), Writer::kPng},
    {FMT_BMP, DepthsOf(16, 32), Writer::kAlphaBitmap},
    {FMT_ICO, DepthsOf(32), Writer::kAlphaPage},
    {FMT_CUR, DepthsOf(32), Writer::kAlphaPage},
}};

constexpr Writer WriterOf(int format, int bitsPerPixel, bool hasAlpha) {
  for (const WriterRule& rule : kWriterRules) {
    if (rule.format != format || !rule.depths.Has(bitsPerPixel)) continue;
    return rule.writer == Writer::kAlphaBitmap && !hasAlpha ? Writer::kFilter : rule.writer;
  }
  return Writer::kFilter;
}

/// Every depth that pictures are saved with in a format; none of formats that are not saved.
constexpr DepthSet WrittenDepths(int format) {
  const SaveRule& rule = SaveRuleOf(format);
  DepthSet depths = {rule.format == kOtherFormats.format ? 0 : rule.depths.bits};
  for (const WriterRule& own : kWriterRules) {
    if (own.format == format) depths.bits |= own.depths.bits;
  }
  return depths;
}

inline constexpr FieldMasks kMasks8888 = {kMasks888, 0xFF000000};
inline constexpr FieldMasks kMasks1555 = {kMasks555, 0x8000};
inline constexpr FieldMasks kMasks4444 = {{.red = 0x0F00, .green = 0x00F0, .blue = 0x000F}, 0xF000};

static_assert(WrittenDepths(FMT_ICO).Has(32) && WrittenDepths(FMT_PNG).Has(1) &&
              WrittenDepths(FMT_RAW).bits == 0);
static_assert(WriterOf(FMT_BMP, 32, false) == Writer::kFilter &&
              WriterOf(FMT_BMP, 24, true) == Writer::kFilter &&
              WriterOf(FMT_CUR, 32, false) == Writer::kAlphaPage);

}  // namespace bmp
