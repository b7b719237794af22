// Choosing a palette and dithering to it.
#include "samples/Indexed.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace samples {
namespace {

using Box = std::vector<Color>;  // distinct colours
using Channel = uint8_t Color::*;
constexpr Channel kChannels[] = {&Color::red, &Color::green, &Color::blue};

int Spread(const Box& box, Channel channel) {
  const auto [low, high] = std::minmax_element(
      box.begin(), box.end(), [&](const Color& a, const Color& b) { return a.*channel < b.*channel; });
  return (*high).*channel - (*low).*channel;
}

Channel WidestChannel(const Box& box) {
  return *std::max_element(std::begin(kChannels), std::end(kChannels),
                           [&](Channel a, Channel b) { return Spread(box, a) < Spread(box, b); });
}

Color Middle(const Box& box) {
  Color middle;
  for (const Channel channel : kChannels) {
    const int sum = std::accumulate(box.begin(), box.end(), 0,
                                    [&](int total, const Color& each) { return total + each.*channel; });
    middle.*channel = static_cast<uint8_t>(sum / static_cast<int>(box.size()));
  }
  return middle;
}

uint32_t Key(const Color& color) {
  return static_cast<uint32_t>(color.red) << 16 | static_cast<uint32_t>(color.green) << 8 | color.blue;
}

Box DistinctColors(const Picture& picture) {
  Box colors;
  std::copy_if(picture.Pixels().begin(), picture.Pixels().end(), std::back_inserter(colors),
               [](const Color& each) { return each.alpha != 0; });
  for (Color& color : colors) color.alpha = 255;
  std::sort(colors.begin(), colors.end(), [](const Color& a, const Color& b) { return Key(a) < Key(b); });
  colors.erase(std::unique(colors.begin(), colors.end()), colors.end());
  return colors;
}

std::vector<Color> ChoosePalette(const Picture& picture, size_t count) {
  std::vector<Box> boxes{DistinctColors(picture)};
  while (boxes.size() < count) {
    const auto widest = std::max_element(boxes.begin(), boxes.end(), [](const Box& a, const Box& b) {
      return Spread(a, WidestChannel(a)) < Spread(b, WidestChannel(b));
    });
    if (widest->size() < 2) break;
    const Channel channel = WidestChannel(*widest);
    std::sort(widest->begin(), widest->end(),
              [&](const Color& a, const Color& b) { return a.*channel < b.*channel; });
    const auto half = widest->begin() + static_cast<std::ptrdiff_t>(widest->size() / 2);
    Box upper(half, widest->end());
    widest->erase(half, widest->end());
    boxes.push_back(std::move(upper));
  }
  std::vector<Color> palette;
  std::transform(boxes.begin(), boxes.end(), std::back_inserter(palette), Middle);
  return palette;
}

Color Lightest(const Picture& picture) {
  const Box colors = DistinctColors(picture);
  return *std::max_element(colors.begin(), colors.end(), [](const Color& a, const Color& b) {
    return a.red + a.green + a.blue < b.red + b.green + b.blue;
  });
}

uint8_t Nearest(const std::vector<Color>& palette, const Color& color, int push) {
  const auto squaredError = [&](const Color& entry) {
    int sum = 0;
    for (const Channel channel : kChannels) {
      const int error = entry.*channel - std::clamp(color.*channel + push, 0, 255);
      sum += error * error;
    }
    return sum;
  };
  const auto best = std::min_element(palette.begin(), palette.end(), [&](const Color& a, const Color& b) {
    return squaredError(a) < squaredError(b);
  });
  return static_cast<uint8_t>(best - palette.begin());
}

/// @return -8 to 7 in the classic 4 x 4 order.
int DitherStep(int x, int y) {
  constexpr std::array<int, 16> kOrder{0, 8, 2, 10, 12, 4, 14, 6, 3, 11, 1, 9, 15, 7, 13, 5};
  return kOrder[static_cast<size_t>((y % 4) * 4 + x % 4)] - 8;
}

}  // namespace

Indexed Reduce(const Picture& picture, int count, int dither, bool blackFirst) {
  const bool hasHoles = std::any_of(picture.Pixels().begin(), picture.Pixels().end(),
                                    [](const Color& each) { return each.alpha == 0; });
  const size_t reserved = hasHoles || blackFirst ? 1 : 0;
  Indexed indexed{picture.Width(), picture.Height(), {}, {}};
  if (reserved != 0) indexed.palette.emplace_back();
  const size_t free = static_cast<size_t>(count) - reserved;
  const std::vector<Color> chosen =
      free == 1 ? std::vector<Color>{Lightest(picture)} : ChoosePalette(picture, free);
  indexed.palette.insert(indexed.palette.end(), chosen.begin(), chosen.end());
  for (int y = 0; y < picture.Height(); ++y) {
    for (int x = 0; x < picture.Width(); ++x) {
      const Color& pixel = picture.At(x, y);
      const int push = DitherStep(x, y) * dither / 8;
      indexed.indices.push_back(pixel.alpha == 0 ? uint8_t{0} : Nearest(indexed.palette, pixel, push));
    }
  }
  return indexed;
}

Picture ToPicture(const Indexed& indexed) {
  Picture picture(indexed.width, indexed.height);
  std::transform(indexed.indices.begin(), indexed.indices.end(), picture.Pixels().begin(),
                 [&](uint8_t index) { return indexed.palette[index]; });
  return picture;
}

}  // namespace samples
