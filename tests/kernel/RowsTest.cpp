// The loops that take rows apart and put them together, which compilers turn into vector code, against one
// pixel at a time: at every width, from and to every alignment, and without touching a byte beside the row.
#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

#include "bitmap/Rows.h"

namespace {

using vxkrn::Rgba;
using Bytes = std::vector<uint8_t>;

constexpr std::size_t kWidest = 200;
constexpr std::size_t kAlignments = 16;

uint8_t Nearest(uint8_t level, int most) {
  return static_cast<uint8_t>((level * most * 2 + 255) / 510);
}

/// One loop, and what it makes of a pixel. `from` has 4 bytes a pixel of noise, more than any loop reads.
struct Loop {
  const char* name;
  std::size_t bitsPerPixel;  // that come out
  std::function<void(const uint8_t* from, std::size_t width, uint8_t* to)> run;
  std::function<uint32_t(const uint8_t* from, std::size_t x)> pixel;
};

std::span<const Rgba> Pixels(const uint8_t* from, std::size_t width) {
  return {reinterpret_cast<const Rgba*>(from), width};
}

uint32_t Fields(const uint8_t* p, int greenBits) {
  return static_cast<uint32_t>(Nearest(p[0], 31) << (5 + greenBits) |
                               Nearest(p[1], (1 << greenBits) - 1) << 5 | Nearest(p[2], 31));
}

/// Indices of so many bits out of bytes of noise.
Bytes Indices(const uint8_t* from, std::size_t width, int bits) {
  Bytes indices(from, from + width);
  for (uint8_t& index : indices) index &= static_cast<uint8_t>((1 << bits) - 1);
  return indices;
}

Loop PackOf(const char* name, int bits) {
  return {name, static_cast<std::size_t>(bits),
          [bits](const uint8_t* from, std::size_t width, uint8_t* to) {
            vxkrn::PackIndices(Indices(from, width, bits), bits, to);
          },
          [bits](const uint8_t* from, std::size_t x) { return from[x] & ((1U << bits) - 1); }};
}

Loop UnpackOf(const char* name, std::size_t bits) {
  return {name, 8,
          [bits](const uint8_t* from, std::size_t width, uint8_t* to) {
            vxkrn::UnpackIndices(from, static_cast<int>(bits), {to, width});
          },
          [bits](const uint8_t* from, std::size_t x) {
            return uint32_t{from[x * bits / 8]} >> (8 - bits - x * bits % 8) & ((1U << bits) - 1);
          }};
}

Loop ConvertOf(const char* name, int order) {
  return {name, 16,
          [order](const uint8_t* from, std::size_t width, uint8_t* to) {
            std::copy_n(from, 2 * width, to);
            vxkrn::ConvertRow16(to, static_cast<int>(width), order);
          },
          [order](const uint8_t* from, std::size_t x) {
            const uint32_t pixel = from[2 * x] + 256U * from[2 * x + 1];
            const uint32_t red = order == ORDER_565 ? pixel >> 10 & 31 : pixel >> 11;
            const uint32_t green = order == ORDER_565 ? pixel >> 5 & 31 : pixel >> 6 & 31;
            return order == ORDER_565 ? red << 11 | green << 6 | (green >> 4) << 5 | (pixel & 31)
                                      : red << 10 | green << 5 | (pixel & 31);
          }};
}

const Loop kLoops[] = {
    PackOf("pack 1", 1),
    PackOf("pack 4", 4),
    PackOf("pack 8", 8),
    UnpackOf("unpack 1", 1),
    UnpackOf("unpack 4", 4),
    UnpackOf("unpack 8", 8),
    ConvertOf("555 to 565", ORDER_565),
    ConvertOf("565 to 555", ORDER_BGR),
    {"5-5-5", 16, [](auto* from, auto width, auto* to) { vxkrn::Pack16(Pixels(from, width), false, to); },
     [](auto* from, auto x) { return Fields(from + 4 * x, 5); }},
    {"5-6-5", 16, [](auto* from, auto width, auto* to) { vxkrn::Pack16(Pixels(from, width), true, to); },
     [](auto* from, auto x) { return Fields(from + 4 * x, 6); }},
    {"24", 24, [](auto* from, auto width, auto* to) { vxkrn::Pack24(Pixels(from, width), to); },
     [](auto* from, auto x) { return from[4 * x + 2] + 256U * from[4 * x + 1] + 65536U * from[4 * x]; }},
    {"32 without alpha", 32,
     [](auto* from, auto width, auto* to) { vxkrn::Pack32(Pixels(from, width), false, to); },
     [](auto* from, auto x) { return from[4 * x + 2] + 256U * from[4 * x + 1] + 65536U * from[4 * x]; }},
    {"32 with alpha", 32,
     [](auto* from, auto width, auto* to) { vxkrn::Pack32(Pixels(from, width), true, to); },
     [](auto* from, auto x) {
       return from[4 * x + 2] + 256U * from[4 * x + 1] + 65536U * from[4 * x] +
              (uint32_t{from[4 * x + 3]} << 24);
     }},
};

/// The row as the pixels say, one bit after the other: of several bytes the lowest first, of one the highest
/// bit.
Bytes Expected(const Loop& loop, const uint8_t* from, std::size_t width) {
  Bytes row((width * loop.bitsPerPixel + 7) / 8);
  for (std::size_t x = 0; x < width; ++x) {
    const uint32_t pixel = loop.pixel(from, x);
    const std::size_t bit = x * loop.bitsPerPixel;
    if (loop.bitsPerPixel < 8) {
      row[bit / 8] |= static_cast<uint8_t>(pixel << (8 - loop.bitsPerPixel - bit % 8));
    } else {
      for (std::size_t i = 0; i < loop.bitsPerPixel / 8; ++i) {
        row[bit / 8 + i] = static_cast<uint8_t>(pixel >> 8 * i);
      }
    }
  }
  return row;
}

TEST(RowsTest, EveryWidthAndAlignmentIsWhatItsPixelsAre) {
  std::minstd_rand random(5);
  Bytes noise(4 * kWidest + kAlignments);
  for (uint8_t& byte : noise) byte = static_cast<uint8_t>(random() >> 8);
  for (const Loop& loop : kLoops) {
    for (std::size_t width = 0; width <= kWidest; ++width) {
      for (std::size_t shift = 0; shift < kAlignments; ++shift) {
        const uint8_t* const from = noise.data() + shift;
        constexpr uint8_t kUntouched = 0xA5;
        Bytes to(4 * kWidest + 2 * kAlignments, kUntouched);
        Bytes expected = to;
        loop.run(from, width, to.data() + kAlignments - shift);
        const Bytes row = Expected(loop, from, width);
        std::copy(row.begin(), row.end(),
                  expected.begin() + static_cast<std::ptrdiff_t>(kAlignments - shift));
        ASSERT_EQ(to, expected) << loop.name << ", width " << width << ", shift " << shift;
      }
    }
  }
}

}  // namespace
