// The nearest entry of a palette, against a look at every entry: on palettes that fill the colour cube, that
// crowd in a corner of it, and that are full of equals.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <random>
#include <vector>

#include "base/Memory.h"
#include "convert/PaletteMapper.h"

namespace {

using vxkrn::Color;
using vxkrn::Rgba;

int Square(int value) {
  return value * value;
}

std::size_t NearestByLook(const std::vector<Color>& palette, Rgba wanted) {
  std::size_t nearest = 0;
  int least = INT_MAX;
  for (std::size_t i = 0; i < palette.size(); ++i) {
    const RGBQUAD entry = vxkrn::QuadOf(palette[i]);
    const int distance = Square(wanted.red - entry.Red) + Square(wanted.green - entry.Green) +
                         Square(wanted.blue - entry.Blue);
    if (distance < least) nearest = i;
    least = std::min(least, distance);
  }
  return nearest;
}

/// Levels of the palette and of what is looked for lie in `first` to `first + span - 1`, `step` apart: large
/// steps make many distances equal.
struct Spread {
  int first, span, step;
};

/// A limit that leaves `bytes`, for as long as it lives.
class Shortage {
 public:
  explicit Shortage(uint64_t bytes) { vxkrn::memory::SetLimit(vxkrn::memory::InUse() + bytes); }
  ~Shortage() { vxkrn::memory::SetLimit(vxkrn::memory::kDefaultLimit); }
  Shortage(const Shortage&) = delete;
  Shortage& operator=(const Shortage&) = delete;
};

/// With all the memory there is, with none for the cells, and with enough for some.
class NearestColorTest : public testing::TestWithParam<uint64_t> {};
INSTANTIATE_TEST_SUITE_P(Memory, NearestColorTest,
                         testing::Values(vxkrn::memory::kDefaultLimit, 80U << 10, 1U << 20));

TEST_P(NearestColorTest, IsTheFirstOfTheNearest) {
  const Shortage shortage(GetParam());
  constexpr std::size_t kSizes[] = {1, 2, 7, 16, 255, 256};
  constexpr Spread kSpreads[] = {{0, 256, 1}, {0, 256, 16}, {0, 256, 51}, {100, 9, 1}, {190, 66, 3}};
  std::minstd_rand random(11);
  for (const Spread& spread : kSpreads) {
    const auto level = [&] {
      const int any = static_cast<int>((random() >> 8) % static_cast<unsigned int>(spread.span));
      return static_cast<uint8_t>(spread.first + any / spread.step * spread.step);
    };
    const auto anyLevel = [&] { return static_cast<uint8_t>(random() >> 8); };
    for (const std::size_t size : kSizes) {
      std::vector<Color> palette(size);
      for (Color& color : palette) color = vxkrn::ColorOf(Rgba{level(), level(), level(), 255});
      std::vector<Rgba> wanted;
      for (int i = 0; i < 10000; ++i) {
        wanted.push_back({level(), level(), level(), 255});
        wanted.push_back({anyLevel(), anyLevel(), anyLevel(), 255});
      }
      std::vector<uint8_t> indices(wanted.size());
      vxkrn::PaletteMapper(palette, static_cast<int>(wanted.size()), false, -1)
          .Map(0, wanted, indices.data());
      for (std::size_t i = 0; i < wanted.size(); ++i) {
        ASSERT_EQ(indices[i], NearestByLook(palette, wanted[i]))
            << size << " entries from " << spread.first << " in steps of " << spread.step << ", pixel " << i;
      }
    }
  }
}

}  // namespace
