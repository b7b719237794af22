// Gathers the channels of pixels with masks.
#include "beyond/FieldsReader.h"

#include <bit>
#include <cstring>

namespace vxkrn {

FieldsReader::FieldsReader(const vx_source& source, const bmp::BitmapLayout& layout)
    : PlainReader(source, layout), hasAlpha_(layout.masks.alpha != 0) {
  const uint32_t whole = layout.depth == 16 ? 0xFFFF : UINT32_MAX;
  const bmp::FieldMasks& masks = layout.masks;
  for (const uint32_t mask : {masks.color.blue, masks.color.green, masks.color.red, masks.alpha}) {
    channels_.push_back(ChannelOf(mask & whole));
  }
}

RowShape FieldsReader::Shape() const noexcept {
  return {hasAlpha_ || Layout().depth == 32 ? 32 : 24, hasAlpha_};
}

FieldsReader::Channel FieldsReader::ChannelOf(uint32_t mask) noexcept {
  Channel channel;
  channel.last = (uint64_t{1} << std::popcount(mask)) - 1;
  uint32_t place = 1;  // of the mask's next bit in the value
  for (unsigned int bit = 0; bit < 32; ++bit) {
    if ((mask >> bit & 1) == 0) continue;
    auto& parts = channel.parts[bit / 8];
    for (unsigned int byte = 0; byte < 256; ++byte) {
      if ((byte >> bit % 8 & 1) != 0) parts[byte] += place;
    }
    place <<= 1;
  }
  const int shift = std::countr_zero(mask);
  if (mask != 0 && mask >> shift == 0xFF) channel.byteShift = shift;
  return channel;
}

uint8_t FieldsReader::Extract(const Channel& channel, uint32_t pixel) noexcept {
  if (channel.byteShift >= 0) return static_cast<uint8_t>(pixel >> channel.byteShift);
  if (channel.last == 0) return 0;
  uint64_t value = 0;
  for (unsigned int byte = 0; byte < 4; ++byte) value += channel.parts[byte][pixel >> 8 * byte & 0xFF];
  return static_cast<uint8_t>((value * 255 + channel.last / 2) / channel.last);
}

template <class Load>
void FieldsReader::DecodePixels(Load load, int count, uint8_t* row) const noexcept {
  const std::size_t size = Shape().bitsPerPixel == 32 ? 4 : 3;
  for (int x = 0; x < count; ++x, row += size) {
    const uint32_t pixel = load(x);
    for (std::size_t i = 0; i < 3; ++i) row[i] = Extract(channels_[i], pixel);
    if (hasAlpha_) row[3] = Extract(channels_[3], pixel);
  }
}

void FieldsReader::Decode(const uint8_t* stored, int count, uint8_t* row) noexcept {
  if (Layout().depth == 16) {
    DecodePixels([stored](int x) { return uint32_t{stored[2 * x]} | uint32_t{stored[2 * x + 1]} << 8; },
                 count, row);
    return;
  }
  DecodePixels(
      [stored](int x) {
        uint32_t pixel;
        std::memcpy(&pixel, stored + std::ptrdiff_t{4} * x, sizeof pixel);
        return pixel;
      },
      count, row);
}

}  // namespace vxkrn
