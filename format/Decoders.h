// Who decodes what: for header, depth, coding and masks the filter, or a reader of the library's own. One
// table; the documents print it.
#pragma once

#include <array>
#include <cstdint>

#include "format/BitmapLayout.h"

namespace bmp {

enum class Decoder : uint8_t {
  kFilter,   // the filter, rows as it delivers them
  kFields,   // pixels of 16 and 32 bits whose channels lie anywhere
  kTwoBits,  // indices of 2 bits
  kWide,     // 16 bits a channel, linear light
  kRunOn,    // run-length codes whose rows no code ends
  kRle24,    // run-length codes of whole colours
  kHuffman,  // the one-dimensional code of fax machines
  kJpeg,     // a JPEG stream
  kPng,      // a PNG stream
  kNone,     // nobody
};

/// Which headers a rule holds for.
enum class Headers : uint8_t { kAny, kNotCore, kOs2OrInfo, kOs2, kWindows };
/// Which masks a rule holds for.
enum class MaskRule : uint8_t { kNoneOrAny, kOfTheFilter };

struct DecoderRule {
  Headers headers;
  int depth;  // bits per pixel; kAnyDepth: whatever the header says
  uint32_t compression;
  MaskRule masks;
  Decoder decoder;
};

inline constexpr int kAnyDepth = -1;

/// The first rule that fits counts; what none fits is refused.
inline constexpr std::array<DecoderRule, 20> kDecoderRules = {{
    {Headers::kAny, 1, kUncompressed, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kAny, 2, kUncompressed, MaskRule::kNoneOrAny, Decoder::kTwoBits},
    {Headers::kAny, 4, kUncompressed, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kAny, 8, kUncompressed, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kAny, 16, kUncompressed, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kAny, 24, kUncompressed, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kAny, 32, kUncompressed, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kAny, 64, kUncompressed, MaskRule::kNoneOrAny, Decoder::kWide},
    {Headers::kNotCore, 8, kCompressionRle8, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kNotCore, 4, kCompressionRle4, MaskRule::kNoneOrAny, Decoder::kFilter},
    {Headers::kOs2OrInfo, 1, kCompressionHuffman, MaskRule::kNoneOrAny, Decoder::kHuffman},
    {Headers::kNotCore, 16, kCompressionBitFields, MaskRule::kOfTheFilter, Decoder::kFilter},
    {Headers::kNotCore, 16, kCompressionBitFields, MaskRule::kNoneOrAny, Decoder::kFields},
    {Headers::kNotCore, 32, kCompressionBitFields, MaskRule::kOfTheFilter, Decoder::kFilter},
    {Headers::kNotCore, 32, kCompressionBitFields, MaskRule::kNoneOrAny, Decoder::kFields},
    {Headers::kNotCore, 16, kCompressionAlphaFields, MaskRule::kNoneOrAny, Decoder::kFields},
    {Headers::kNotCore, 32, kCompressionAlphaFields, MaskRule::kNoneOrAny, Decoder::kFields},
    {Headers::kOs2, 24, kCompressionRle24, MaskRule::kNoneOrAny, Decoder::kRle24},
    {Headers::kWindows, kAnyDepth, kCompressionJpeg, MaskRule::kNoneOrAny, Decoder::kJpeg},
    {Headers::kWindows, kAnyDepth, kCompressionPng, MaskRule::kNoneOrAny, Decoder::kPng},
}};

constexpr bool Admits(Headers headers, const BitmapLayout& image) {
  switch (headers) {
    case Headers::kAny: return true;
    case Headers::kNotCore: return image.family != HeaderFamily::kCore;
    case Headers::kOs2: return image.family == HeaderFamily::kOs2;
    case Headers::kOs2OrInfo:
      return image.family == HeaderFamily::kOs2 || image.headerSize == kInfoHeaderSize;
    case Headers::kWindows: return image.family == HeaderFamily::kWindows;
  }
  return false;
}

/// Whether the filter takes the masks and shows them as they are meant.
constexpr bool AreMasksOfTheFilter(const FieldMasks& masks, int depth) {
  if (masks.alpha != 0) return false;
  return depth == 32 ? masks.color == kMasks888 : masks.color == kMasks555 || masks.color == kMasks565;
}

constexpr Decoder DecoderOf(const BitmapLayout& image) {
  for (const DecoderRule& rule : kDecoderRules) {
    const bool fits = Admits(rule.headers, image) && (rule.depth == kAnyDepth || rule.depth == image.depth) &&
                      rule.compression == image.compression &&
                      (rule.masks == MaskRule::kNoneOrAny || AreMasksOfTheFilter(image.masks, image.depth));
    if (fits) return rule.decoder;
  }
  return Decoder::kNone;
}

}  // namespace bmp
