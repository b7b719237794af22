// Converts 16-bit pixels to 5-5-5: many at once in vectors of the compiler's own, the last ones of a row one
// by one. The loops have no branches and no tables.
#include "Read/BitFields.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <type_traits>

namespace bmp {
namespace {

constexpr int kChannelBits = 5;
constexpr uint32_t kWordMask = 0xFFFF;  // no mask reaches beyond the pixel

/// Lanes of 16 bits. Left to itself the compiler widens every pixel to an int before it shifts. Where the
/// processor has no such vectors the compiler makes words of them.
using Pixels = uint16_t __attribute__((vector_size(16)));
constexpr int kAtOnce = sizeof(Pixels) / sizeof(uint16_t);

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
  const int left = place + missing - down;
  return {.mask = static_cast<uint16_t>(mask & kWordMask & ~((1U << down) - 1)),
          .left = static_cast<uint16_t>(std::max(left, 0)),
          .right = static_cast<uint16_t>(std::max(-left, 0))};
}

BitFieldConverter::BitFieldConverter(const ColorMasks& masks)
    : channels_{MakeChannel(masks.red, 2 * kChannelBits), MakeChannel(masks.green, kChannelBits),
                MakeChannel(masks.blue, 0)} {
  std::sort(channels_.begin(), channels_.end(),
            [](const Channel& a, const Channel& b) { return a.right > b.right; });
  convert_ = ChooseLoop(channels_);
}

/// The first `Rights` channels move right, the others left: one shift a channel.
template <int Rights>
void BitFieldConverter::ConvertPixels(const Channels& channels, uint8_t* row, int pixels) {
  const Channel a = channels[0];
  const Channel b = channels[1];
  const Channel c = channels[2];
  const auto convert = [=](auto& word) {
    using Word = std::remove_reference_t<decltype(word)>;
    const auto first = Rights > 0 ? (word & a.mask) >> a.right : (word & a.mask) << a.left;
    const auto second = Rights > 1 ? (word & b.mask) >> b.right : (word & b.mask) << b.left;
    const auto third = Rights > 2 ? (word & c.mask) >> c.right : (word & c.mask) << c.left;
    word = static_cast<Word>(first | second | third);
  };
  int i = 0;
  for (; i + kAtOnce <= pixels; i += kAtOnce) {
    Pixels vector;
    std::memcpy(&vector, row + 2 * i, sizeof vector);
    convert(vector);
    std::memcpy(row + 2 * i, &vector, sizeof vector);
  }
  for (; i < pixels; ++i) {
    uint16_t pixel;
    std::memcpy(&pixel, row + 2 * i, sizeof pixel);
    convert(pixel);
    std::memcpy(row + 2 * i, &pixel, sizeof pixel);
  }
}

BitFieldConverter::Convert BitFieldConverter::ChooseLoop(const Channels& channels) {
  static constexpr Convert kLoops[] = {ConvertPixels<0>, ConvertPixels<1>, ConvertPixels<2>,
                                       ConvertPixels<3>};
  return kLoops[std::count_if(channels.begin(), channels.end(),
                              [](const Channel& channel) { return channel.right > 0; })];
}

}  // namespace bmp
