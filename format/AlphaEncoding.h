// The header of a bitmap that says what its alpha is: 124 bytes, four masks, sRGB.
#pragma once

#include "format/BitmapLayout.h"
#include "format/HeaderEncoding.h"

namespace bmp {

/// A V5 header rather than a V4 one, though four masks would fit there too: few programs write V4, so few
/// readers were ever tried with it.
constexpr Block<kV5HeaderSize> EncodeV5Header(const NewHeader& header, const FieldMasks& masks) {
  Block<kV5HeaderSize> bytes = EncodeHeader<kV5HeaderSize>(header);
  StoreU32(bytes, info_at::kMasks + masks_at::kRed, masks.color.red);
  StoreU32(bytes, info_at::kMasks + masks_at::kGreen, masks.color.green);
  StoreU32(bytes, info_at::kMasks + masks_at::kBlue, masks.color.blue);
  StoreU32(bytes, long_at::kAlphaMask, masks.alpha);
  StoreU32(bytes, long_at::kColourSpace, ColourSpace::kSrgb);
  StoreU32(bytes, long_at::kIntent, ColourSpace::kIntentPictures);
  return bytes;
}

namespace proof {

constexpr BitmapLayout LayOutAgain(const FieldMasks& masks) {
  LayoutBytes bytes{};
  NewHeader header = kHeader;
  header.bitCount = 32;
  const Block<kV5HeaderSize> encoded = EncodeV5Header(header, masks);
  std::copy(encoded.begin(), encoded.end(), bytes.begin());
  return LayOut(bytes, kFileHeaderSize, true, kFileHeaderSize + kV5HeaderSize);
}
inline constexpr FieldMasks kAnyMasks = {{.red = 1, .green = 0x20, .blue = 0x300}, 0x4000};
inline constexpr BitmapLayout kAgain = LayOutAgain(kAnyMasks);
static_assert(kAgain.masks == kAnyMasks && kAgain.colour.type == ColourSpace::kSrgb &&
              kAgain.headerSize == kV5HeaderSize && kAgain.width == 0x10203);

}  // namespace proof
}  // namespace bmp
