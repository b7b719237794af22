// One small function or table a meaning.
#include "inspect/Meanings.h"

#include <bit>
#include <string_view>

namespace vxkrn {
namespace {

struct Word {
  int64_t value;
  std::string_view text;
};

template <std::size_t Count>
void Look(const Word (&words)[Count], int64_t value, Text& text) noexcept {
  for (const Word& word : words) {
    if (word.value == value) text << word.text;
  }
}

constexpr Word kCodings[] = {{bmp::kUncompressed, "none"},
                             {bmp::kCompressionRle8, "run-length, 8 bits"},
                             {bmp::kCompressionRle4, "run-length, 4 bits"}};
constexpr Word kWindowsCodings[] = {{bmp::kCompressionBitFields, "none, pixels by masks"},
                                    {bmp::kCompressionJpeg, "JPEG stream"},
                                    {bmp::kCompressionPng, "PNG stream"},
                                    {bmp::kCompressionAlphaFields, "none, pixels by masks with alpha"}};
constexpr Word kOs2Codings[] = {{bmp::kCompressionHuffman, "Huffman 1D"},
                                {bmp::kCompressionRle24, "run-length, 24 bits"}};
constexpr Word kIntents[] = {{1, "business: saturated"},
                             {2, "graphics: colours measured"},
                             {bmp::ColourSpace::kIntentPictures, "pictures: colours side by side"},
                             {8, "colours measured, white as it is"}};
constexpr Word kIconTypes[] = {{bmp::kIconType, "icon"}, {bmp::kCursorType, "cursor"}};
constexpr Word kPngColours[] = {
    {0, "grey"}, {2, "RGB"}, {3, "palette"}, {4, "grey with alpha"}, {6, "RGB with alpha"}};
constexpr Word kInterlaces[] = {{0, "none"}, {1, "Adam7"}};
constexpr Word kUnits[] = {{0, "only the ratio counts"}, {1, "metre"}};
constexpr Word kColourSpaces[] = {{bmp::ColourSpace::kCalibrated, "calibrated, by the numbers below"},
                                  {bmp::ColourSpace::kSrgb, "sRGB"},
                                  {bmp::ColourSpace::kWindows, "Win, that of the system"},
                                  {bmp::ColourSpace::kLinked, "LINK, a profile in another file"},
                                  {bmp::ColourSpace::kEmbedded, "MBED, a profile in this file"}};

int DepthOf(const PartView& view) noexcept {
  return bmp::LoadU16(view.bytes.subspan(bmp::info_at::kBitCount).first<2>(), 0);
}

void SayCoding(int64_t value, const PartView& view, Text& text) noexcept {
  Look(kCodings, value, text);
  const bool isHuffman = value == bmp::kCompressionHuffman && DepthOf(view) == 1;
  if (view.part.kind == VX_PART_OS2_HEADER || isHuffman) {
    Look(kOs2Codings, value, text);
  } else {
    Look(kWindowsCodings, value, text);
  }
  if (text.Empty()) text << "not known";
}

/// The bits that are set, as a run where they are one.
void SayBits(uint32_t mask, Text& text) noexcept {
  if (mask == 0) {
    text << "no such channel";
    return;
  }
  const int first = std::countr_zero(mask);
  const int count = std::popcount(mask);
  if (mask >> first != (count == 32 ? UINT32_MAX : (uint32_t{1} << count) - 1)) {
    text << count << " bits, with gaps";
  } else if (count == 1) {
    text << "bit " << first;
  } else {
    text << "bits " << first << " to " << first + count - 1;
  }
}

/// A fixed-point number with four decimals, rounded.
void SayFraction(uint64_t value, uint64_t one, Text& text) noexcept {
  constexpr uint64_t kDecimals = 10000;
  const uint64_t scaled = (value * kDecimals + one / 2) / one;
  text << scaled / kDecimals << ".";
  for (uint64_t place = kDecimals / 10; place > 0; place /= 10) text << scaled / place % 10;
}

void SayFlags(int64_t value, Text& text) noexcept {
  text << ((value & bmp::kFramesAreIcons) != 0 ? "frames are icons" : "frames are bare pixels");
  if ((value & bmp::kHasSequence) != 0) text << ", in a sequence";
}

}  // namespace

void Explain(const FieldRule& rule, int64_t value, const PartView& view, Text& text) noexcept {
  constexpr int kTableDepth = 8;
  switch (rule.meaning) {
    case Meaning::kNothing: return;
    case Meaning::kDepth:
      if (value >= 1 && value <= kTableDepth) text << (1 << value) << " colours";
      return;
    case Meaning::kRowOrder: text << (value < 0 ? "top row first" : "bottom row first"); return;
    case Meaning::kCompression: SayCoding(value, view, text); return;
    case Meaning::kResolution:
      if (value > 0) text << (value * 254 + 5000) / 10000 << " dpi";
      return;
    case Meaning::kColourCount:
      if (value == 0 && DepthOf(view) <= kTableDepth) text << "as many as the depth can have";
      return;
    case Meaning::kMask: SayBits(static_cast<uint32_t>(value), text); return;
    case Meaning::kColourSpace: Look(kColourSpaces, value, text); return;
    case Meaning::kCoordinate: SayFraction(static_cast<uint64_t>(value), uint64_t{1} << 30, text); return;
    case Meaning::kGamma: SayFraction(static_cast<uint64_t>(value), uint64_t{1} << 16, text); return;
    case Meaning::kPngGamma: SayFraction(static_cast<uint64_t>(value), 100000, text); return;
    case Meaning::kIntent: Look(kIntents, value, text); return;
    case Meaning::kIconType: Look(kIconTypes, value, text); return;
    case Meaning::kIconSide:
      if (value == 0) text << "256 or more";
      return;
    case Meaning::kPngColourType: Look(kPngColours, value, text); return;
    case Meaning::kPngInterlace: Look(kInterlaces, value, text); return;
    case Meaning::kPngUnit: Look(kUnits, value, text); return;
    case Meaning::kJiffies: text << value * 1000 / bmp::kJiffiesPerSecond << " ms"; return;
    case Meaning::kAnimationFlags: SayFlags(value, text); return;
  }
}

}  // namespace vxkrn
