// Converts 16-bit pixels to 5-5-5. The loop has no branches and no tables: compilers make vector code
// of it.
#include "Read/BitFields.h"

#include <bit>
#include <cstring>

namespace bmp {
namespace {

constexpr int kChannelBits = 5;
constexpr uint32_t kWordMask = 0xFFFF;  // no mask reaches beyond the pixel

}  // namespace

/// Aligns the channel's top bit with the top of its five: wide ones lose their low bits, narrow ones
/// get zeros below.
BitFieldConverter::Channel BitFieldConverter::MakeChannel(uint32_t mask, int place) {
  if ((mask & kWordMask) == 0) return {};
  const int top = 32 - std::countl_zero(mask);  // bits up to and including the highest set one
  const int width = std::popcount(mask);
  const int shift = top - width;  // clear bits below the highest set one
  const int surplus = width > kChannelBits ? width - kChannelBits : 0;
  const int missing = width < kChannelBits ? kChannelBits - width : 0;
  const int down = shift + surplus;
  if (down >= 16) return {};  // the pixel has nothing up there
  return {.mask = static_cast<uint16_t>(mask & kWordMask),
          .down = static_cast<uint8_t>(down),
          .up = static_cast<uint8_t>(place + missing)};
}

BitFieldConverter::BitFieldConverter(const ColorMasks& masks)
    : red_(MakeChannel(masks.red, 2 * kChannelBits)),
      green_(MakeChannel(masks.green, kChannelBits)),
      blue_(MakeChannel(masks.blue, 0)) {}

void BitFieldConverter::ConvertRow(uint8_t* row, int stride) const {
  const Channel red = red_;
  const Channel green = green_;
  const Channel blue = blue_;
  const auto move = [](uint16_t pixel, Channel channel) {
    return static_cast<uint16_t>((pixel & channel.mask) >> channel.down << channel.up);
  };
  for (int i = 0; i + 1 < stride; i += 2) {
    uint16_t pixel;
    std::memcpy(&pixel, row + i, sizeof(pixel));
    pixel = static_cast<uint16_t>(move(pixel, red) | move(pixel, green) | move(pixel, blue));
    std::memcpy(row + i, &pixel, sizeof(pixel));
  }
}

}  // namespace bmp
