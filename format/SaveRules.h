// What each format can hold when an image is saved: the table by which the filter refuses and the kernel
// tells applications beforehand. Knows no layout.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

#include <vxkrn.h>

namespace bmp {

/// Header kinds of a new file.
enum SaveType : int {
  SAVETYPE_BMP = 1,      ///< Windows bitmap with a 40-byte header
  SAVETYPE_OS2 = 2,      ///< OS/2 1.x bitmap with a 12-byte header
  SAVETYPE_OS2_2 = 3,    ///< OS/2 2.x bitmap with a 64-byte header
  SAVETYPE_BMP_RLE = 4,  ///< as SAVETYPE_BMP, with run-length coded rows
  SAVETYPE_CUR = 5,      ///< cursor
  SAVETYPE_ICO = 6,      ///< icon
};

/// A set of depths: bit n - 1 stands for n bits per pixel.
struct DepthSet {
  uint32_t bits;

  [[nodiscard]] constexpr bool Has(int bitsPerPixel) const {
    return bitsPerPixel >= 1 && bitsPerPixel <= 32 && (bits >> (bitsPerPixel - 1) & 1) != 0;
  }
};

template <class... Depths>
constexpr DepthSet DepthsOf(Depths... depths) {
  return {((1U << (depths - 1)) | ...)};
}

struct SaveRule {
  int format;
  SaveType type;
  DepthSet depths;
  int largestSide;  ///< of width and height, in pixels; 0: no limit
};

inline constexpr SaveRule kSaveRules[] = {
    {FMT_BMP, SAVETYPE_BMP, DepthsOf(1, 4, 8, 16, 24, 32), 0},
    {FMT_OS2, SAVETYPE_OS2, DepthsOf(1, 4, 8, 16, 24), 0},
    {FMT_OS2_2, SAVETYPE_OS2_2, DepthsOf(1, 4, 8, 16, 24), 0},
    {FMT_BMP_RLE, SAVETYPE_BMP_RLE, DepthsOf(1, 4, 8, 24), 0},
    {FMT_ICO, SAVETYPE_ICO, DepthsOf(1, 4, 8, 24), 255},
    {FMT_CUR, SAVETYPE_CUR, DepthsOf(1, 4, 8, 24), 255},
    {FMT_VISTA_ICO, SAVETYPE_OS2_2, DepthsOf(1, 4, 8, 24, 32), 256},
};

/// Formats without a row above are written like OS/2 2.x bitmaps.
inline constexpr SaveRule kOtherFormats = {0, SAVETYPE_OS2_2, DepthsOf(1, 4, 8, 24), 0};

constexpr const SaveRule& SaveRuleOf(int format) {
  const auto* rule = std::find_if(std::begin(kSaveRules), std::end(kSaveRules),
                                  [format](const SaveRule& each) { return each.format == format; });
  return rule == std::end(kSaveRules) ? kOtherFormats : *rule;
}

/// The format that a request for `format` at an admitted depth is written in: run-length coding exists for 4
/// and 8 bits only.
constexpr int FormatToSave(int format, int bitsPerPixel) {
  return format == FMT_BMP_RLE && bitsPerPixel != 4 && bitsPerPixel != 8 ? FMT_BMP : format;
}

constexpr bool IsIconFormat(int format) {
  return format == FMT_ICO || format == FMT_CUR || format == FMT_VISTA_ICO;
}

static_assert(SaveRuleOf(FMT_ICO).depths.Has(24) && !SaveRuleOf(FMT_ICO).depths.Has(32));
static_assert(!SaveRuleOf(FMT_BMP).depths.Has(2) && !SaveRuleOf(FMT_BMP).depths.Has(0));
static_assert(FormatToSave(FMT_BMP_RLE, 24) == FMT_BMP && FormatToSave(FMT_BMP_RLE, 4) == FMT_BMP_RLE);

}  // namespace bmp
