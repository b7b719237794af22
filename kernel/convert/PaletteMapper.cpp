// The nearest colour is found exactly: the colour cube is cut into cells, and the few entries that can be
// nearest inside a cell are listed when the first pixel falls into it. Losses are spread after Floyd and
// Steinberg, rows alternately from the left and from the right, so that no direction shows.
#include "convert/PaletteMapper.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vxkrn {
namespace {

constexpr int kCellBits = 3;
constexpr int kCellSize = 1 << kCellBits;
constexpr std::size_t kCellsASide = 256 / kCellSize;

constexpr int Square(int value) {
  return value * value;
}

/// Squares of the distances from a level to the nearest and to the farthest level of a cell that starts at
/// `first`.
struct Reach {
  int near, far;
};
constexpr Reach ReachTo(int level, int first) {
  const int last = first + kCellSize - 1;
  const int outside = std::max({first - level, level - last, 0});
  return {Square(outside), Square(std::max(std::abs(level - first), std::abs(level - last)))};
}

constexpr int ToLevel(int level) {
  return std::clamp(level, 0, 255);
}

}  // namespace

NearestColor::NearestColor(std::span<const Color> palette) : cells_(kCellsASide * kCellsASide * kCellsASide) {
  for (const Color color : palette) {
    palette_.push_back({static_cast<int>(color >> 16 & 255), static_cast<int>(color >> 8 & 255),
                        static_cast<int>(color & 255)});
  }
}

void NearestColor::FindCandidates(Levels corner, Candidates* candidates) {
  const auto reachTo = [&corner](const Levels& entry) -> Reach {
    const Reach red = ReachTo(entry.red, corner.red);
    const Reach green = ReachTo(entry.green, corner.green);
    const Reach blue = ReachTo(entry.blue, corner.blue);
    return {red.near + green.near + blue.near, red.far + green.far + blue.far};
  };
  int bound = std::numeric_limits<int>::max();
  for (const Levels& entry : palette_) bound = std::min(bound, reachTo(entry).far);
  candidates->first = static_cast<uint32_t>(entries_.size());
  for (std::size_t i = 0; i < palette_.size(); ++i) {
    if (reachTo(palette_[i]).near <= bound) entries_.push_back(static_cast<uint8_t>(i));
  }
  candidates->count = static_cast<uint32_t>(entries_.size()) - candidates->first;
}

std::size_t NearestColor::Find(Levels wanted) {
  const auto cellOf = [](int level) { return static_cast<std::size_t>(level >> kCellBits); };
  Candidates& cell =
      cells_[(cellOf(wanted.red) * kCellsASide + cellOf(wanted.green)) * kCellsASide + cellOf(wanted.blue)];
  if (cell.count == 0) {
    constexpr int kCorner = ~(kCellSize - 1);
    FindCandidates({wanted.red & kCorner, wanted.green & kCorner, wanted.blue & kCorner}, &cell);
  }
  std::size_t nearest = 0;
  int least = std::numeric_limits<int>::max();
  for (uint32_t i = 0; i < cell.count; ++i) {
    const std::size_t entry = entries_[cell.first + i];
    const Levels& color = palette_[entry];
    const int distance = Square(wanted.red - color.red) + Square(wanted.green - color.green) +
                         Square(wanted.blue - color.blue);
    if (distance < least) {
      least = distance;
      nearest = entry;
    }
  }
  return nearest;
}

PaletteMapper::PaletteMapper(std::span<const Color> palette, int width, bool diffuses, int transparent)
    : nearest_(palette), transparent_(transparent), diffuses_(diffuses) {
  if (!diffuses) return;
  owed_.resize(static_cast<std::size_t>(width) + 2);
  owedNext_.resize(owed_.size());
}

void PaletteMapper::Map(int row, std::span<const Rgba> pixels, uint8_t* indices) {
  if (!diffuses_) return MapNearest(pixels, indices);
  if (row != lastRow_ + 1 && row != lastRow_ - 1) std::fill(owed_.begin(), owed_.end(), Levels{});
  lastRow_ = row;
  MapDiffusing(pixels, indices);
}

void PaletteMapper::MapNearest(std::span<const Rgba> pixels, uint8_t* indices) {
  Color last = ~Color{0};  // neighbours are often alike
  uint8_t index = 0;
  for (const Rgba pixel : pixels) {
    const Color color = ColorOf(pixel);
    if (color != last) {
      index = static_cast<uint8_t>(nearest_.Find({pixel.red, pixel.green, pixel.blue}));
      last = color;
    }
    *indices++ = IsHidden(pixel) ? static_cast<uint8_t>(transparent_) : index;
  }
}

void PaletteMapper::MapDiffusing(std::span<const Rgba> pixels, uint8_t* indices) {
  std::fill(owedNext_.begin(), owedNext_.end(), Levels{});
  const std::ptrdiff_t step = leftward_ ? -1 : 1;
  std::ptrdiff_t x = leftward_ ? std::ssize(pixels) - 1 : 0;
  for (std::size_t n = 0; n < pixels.size(); ++n, x += step) {
    const Rgba pixel = pixels[static_cast<std::size_t>(x)];
    if (IsHidden(pixel)) {
      indices[x] = static_cast<uint8_t>(transparent_);
      continue;
    }
    Levels* const here = &owed_[static_cast<std::size_t>(x) + 1];
    Levels* const below = &owedNext_[static_cast<std::size_t>(x) + 1];
    const auto withOwed = [](int level, int owed) { return ToLevel(level + ((owed + 8) >> 4)); };
    const Levels wanted = {withOwed(pixel.red, here->red), withOwed(pixel.green, here->green),
                           withOwed(pixel.blue, here->blue)};
    const std::size_t entry = nearest_.Find(wanted);
    indices[x] = static_cast<uint8_t>(entry);
    const Levels& shown = nearest_.At(entry);
    const auto spread = [&](int Levels::*channel) {
      const int lost = wanted.*channel - shown.*channel;
      here[step].*channel += 7 * lost;
      below[-step].*channel += 3 * lost;
      below[0].*channel += 5 * lost;
      below[step].*channel += lost;
    };
    spread(&Levels::red);
    spread(&Levels::green);
    spread(&Levels::blue);
  }
  std::swap(owed_, owedNext_);
  leftward_ = !leftward_;
}

}  // namespace vxkrn
