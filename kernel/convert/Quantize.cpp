// Median cut by variance. The colours are gathered into cells of 8 x 8 x 8 levels; the box of cells that
// differs most from its mean is cut in two where that lowers the difference most, until there are as many
// boxes as colours; every box gives its mean. Against the plain median cut, which halves the pixels, small
// but distinct details keep a colour of their own; against an octree, no colour depends on the order of
// pixels.
#include "convert/Quantize.h"

#include <algorithm>
#include <array>

namespace vxkrn {
namespace {

/// Pixels that are treated as one: how many, and the sums of their levels.
struct Cell {
  uint64_t count = 0;
  std::array<uint64_t, 3> sum = {};

  void Add(const Cell& other) noexcept {
    count += other.count;
    for (std::size_t i = 0; i < 3; ++i) sum[i] += other.sum[i];
  }
  [[nodiscard]] double Mean(std::size_t channel) const noexcept {
    return static_cast<double>(sum[channel]) / static_cast<double>(count);
  }
  /// What the means explain of the squares of all levels: the more, the less is lost.
  [[nodiscard]] double Explained() const noexcept {
    double explained = 0;
    for (const uint64_t each : sum) explained += static_cast<double>(each) * static_cast<double>(each);
    return explained / static_cast<double>(count);
  }
  [[nodiscard]] Color MeanColor() const noexcept {
    Color color = 0;
    for (const uint64_t each : sum) color = color << 8 | static_cast<Color>((each + count / 2) / count);
    return color;
  }
};

using Cells = std::vector<Cell>;

Cell Total(std::span<const Cell> cells) {
  Cell total;
  for (const Cell& cell : cells) total.Add(cell);
  return total;
}

/// The cells that the picture has pixels in.
Cells Gather(ColorRows& rows, Pixels which) {
  constexpr unsigned int kBits = 5;
  constexpr auto kLevel = [](uint8_t level) { return std::size_t{level} >> (8 - kBits); };
  Cells cells(std::size_t{1} << 3 * kBits);
  for (int row = 0; row < rows.Bitmap().Height; ++row) {
    for (const Rgba pixel : rows.Read(row)) {
      if (which == Pixels::kOpaque && !IsOpaque(pixel)) continue;
      const std::size_t at = (kLevel(pixel.red) << kBits | kLevel(pixel.green)) << kBits | kLevel(pixel.blue);
      cells[at].Add({1, {pixel.red, pixel.green, pixel.blue}});
    }
  }
  std::erase_if(cells, [](const Cell& cell) { return cell.count == 0; });
  return cells;
}

/// A box of cells and the best way to cut it: its first `cells` along `channel`.
struct Box {
  std::span<Cell> cells;
  double gain = 0;  ///< how much less is lost after the cut; 0: it cannot be cut
  std::size_t channel = 0;
  std::size_t firstPart = 0;
};

/// Sorts keys, because a mean takes a division and cells are long.
void SortAlong(std::size_t channel, std::span<Cell> cells) {
  struct Key {
    double mean;
    std::size_t cell;
  };
  std::vector<Key> keys(cells.size());
  for (std::size_t i = 0; i < cells.size(); ++i) keys[i] = {cells[i].Mean(channel), i};
  std::sort(keys.begin(), keys.end(), [](const Key& a, const Key& b) { return a.mean < b.mean; });
  const Cells before(cells.begin(), cells.end());
  std::transform(keys.begin(), keys.end(), cells.begin(), [&](const Key& key) { return before[key.cell]; });
}

Box BoxOf(std::span<Cell> cells) {
  Box box = {cells};
  const Cell total = Total(cells);
  for (std::size_t channel = 0; channel < 3; ++channel) {
    SortAlong(channel, cells);
    Cell before;
    for (std::size_t i = 1; i < cells.size(); ++i) {
      before.Add(cells[i - 1]);
      Cell after = {total.count - before.count, {}};
      for (std::size_t c = 0; c < 3; ++c) after.sum[c] = total.sum[c] - before.sum[c];
      const double gain = before.Explained() + after.Explained() - total.Explained();
      if (gain > box.gain) box = {cells, gain, channel, i};
    }
  }
  return box;
}

}  // namespace

std::vector<Color> ChoosePalette(ColorRows& rows, Pixels which, std::size_t limit) {
  Cells cells = Gather(rows, which);
  if (cells.empty()) return {};
  const auto byGain = [](const Box& a, const Box& b) { return a.gain < b.gain; };
  std::vector<Box> boxes = {BoxOf(cells)};
  while (boxes.size() < limit && boxes.front().gain > 0) {
    std::pop_heap(boxes.begin(), boxes.end(), byGain);
    const Box worst = boxes.back();
    SortAlong(worst.channel, worst.cells);
    boxes.back() = BoxOf(worst.cells.first(worst.firstPart));
    std::push_heap(boxes.begin(), boxes.end(), byGain);
    boxes.push_back(BoxOf(worst.cells.subspan(worst.firstPart)));
    std::push_heap(boxes.begin(), boxes.end(), byGain);
  }
  std::vector<Color> palette(boxes.size());
  std::transform(boxes.begin(), boxes.end(), palette.begin(),
                 [](const Box& box) { return Total(box.cells).MeanColor(); });
  std::sort(palette.begin(), palette.end());
  palette.erase(std::unique(palette.begin(), palette.end()), palette.end());
  return palette;
}

}  // namespace vxkrn
