// Encoding of headers: one list of fields, cut to the length that the header is to have.
#include "samples/Headers.h"

namespace samples {
namespace {

constexpr uint32_t kFileHeaderSize = 14;
constexpr uint32_t kCoreHeaderSize = 12;
constexpr uint32_t kV4HeaderSize = 108;

uint32_t PixelsPerMetre(int dpi) {
  return static_cast<uint32_t>((dpi * 10000 + 127) / 254);
}

Bytes EncodeCore(const ImageHeader& header) {
  Bytes bytes;
  Append32(bytes, kCoreHeaderSize);
  Append16(bytes, static_cast<uint32_t>(header.width));
  Append16(bytes, static_cast<uint32_t>(header.height));
  Append16(bytes, 1);
  Append16(bytes, static_cast<uint32_t>(header.bits));
  return bytes;
}

}  // namespace

Bytes Encode(const Masks& masks) {
  Bytes bytes;
  Append32(bytes, masks.red);
  Append32(bytes, masks.green);
  Append32(bytes, masks.blue);
  if (masks.alpha != 0) Append32(bytes, masks.alpha);
  return bytes;
}

Bytes Encode(const ImageHeader& header) {
  if (header.size == kCoreHeaderSize) return EncodeCore(header);
  Bytes bytes;
  Append32(bytes, header.size);
  Append32(bytes, static_cast<uint32_t>(header.width));
  Append32(bytes, static_cast<uint32_t>(header.height));
  Append16(bytes, 1);
  Append16(bytes, static_cast<uint32_t>(header.bits));
  Append32(bytes, static_cast<uint32_t>(header.compression));
  Append32(bytes, header.imageSize);
  Append32(bytes, PixelsPerMetre(header.dpi));
  Append32(bytes, PixelsPerMetre(header.dpi));
  Append32(bytes, header.colorsUsed);
  Append32(bytes, 0);
  for (const uint32_t mask : {header.masks.red, header.masks.green, header.masks.blue, header.masks.alpha}) {
    Append32(bytes, mask);
  }
  if (header.size >= kV4HeaderSize) Append32(bytes, 0x73524742);  // colour space: sRGB
  bytes.resize(header.size);
  return bytes;
}

Bytes EncodePalette(const std::vector<Color>& palette, size_t count, size_t entrySize) {
  Bytes bytes;
  for (size_t i = 0; i < count; ++i) {
    const Color color = i < palette.size() ? palette[i] : Color{};
    Append(bytes, {color.blue, color.green, color.red});
    if (entrySize == 4) Append8(bytes, 0);
  }
  return bytes;
}

Bytes BitmapFile(const Bytes& imageHeader, const Bytes& paletteOrMasks, const Bytes& pixels, uint32_t shift) {
  const uint32_t pixelsAt = kFileHeaderSize + Size32(imageHeader) + Size32(paletteOrMasks) + shift;
  Bytes file{'B', 'M'};
  Append32(file, pixelsAt + Size32(pixels));
  Append32(file, 0);
  Append32(file, pixelsAt);
  Append(file, imageHeader);
  Append(file, paletteOrMasks);
  Append(file, pixels);
  return file;
}

}  // namespace samples
