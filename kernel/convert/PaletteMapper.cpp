// The nearest colour is found exactly: the colour cube is cut into cells, and the few entries that can be
// nearest inside a cell are listed when the first pixel falls into it, out of the list of the coarser cell
// around it. Losses are spread after Floyd and Steinberg, rows alternately from the left and from the right,
// so that no direction shows.
#include "convert/PaletteMapper.h"

#include <algorithm>
#include <utility>

namespace vxkrn {
namespace {

/// Cells of 64, 16 and 4 levels a side.
constexpr int CellBits(std::size_t fineness) {
  return 6 - 2 * static_cast<int>(fineness);
}

std::size_t CellAt(const NearestColor::Levels& color, std::size_t fineness) {
  const int bits = CellBits(fineness);
  const int rest = 8 - bits;
  return static_cast<std::size_t>(((color.red >> bits) << rest | color.green >> bits) << rest |
                                  color.blue >> bits);
}

constexpr int Square(int value) {
  return value * value;
}

/// How much farther `nearer` is than `other`, in squares, at that level of first to last where it is most.
constexpr int MostFarther(int nearer, int other, int first, int last) {
  const int level = other > nearer ? last : first;
  return Square(level - nearer) - Square(level - other);
}

constexpr int ToLevel(int level) {
  return std::clamp(level, 0, 255);
}

}  // namespace

NearestColor::NearestColor(std::span<const Color> palette) {
  for (const Color color : palette) {
    const RGBQUAD quad = QuadOf(color);
    entries_.push_back({quad.Red, quad.Green, quad.Blue, static_cast<uint8_t>(palette_.size())});
    palette_.push_back({quad.Red, quad.Green, quad.Blue});
  }
  for (std::size_t i = 0; i < kFinenesses; ++i) cells_[i].resize(std::size_t{1} << 3 * (8 - CellBits(i)));
}

inline std::size_t NearestColor::NearestOf(Candidates candidates, Levels wanted) const noexcept {
  uint32_t least = UINT32_MAX;
  for (uint32_t i = 0; i < candidates.count; ++i) {
    const Entry& entry = entries_[candidates.first + i];
    const int distance = Square(wanted.red - entry.red) + Square(wanted.green - entry.green) +
                         Square(wanted.blue - entry.blue);
    least = std::min(least, static_cast<uint32_t>(distance) << 8 | entry.index);
  }
  return least & 255;
}

/// An entry that is farther than another one all over the cell cannot be the nearest there. That other one is
/// the nearest to the cell's middle: against it nearly all fall.
NearestColor::Candidates NearestColor::Narrowed(Candidates candidates, Levels corner, int side) {
  const int half = side / 2;
  const Levels middle =
      palette_[NearestOf(candidates, {corner.red + half, corner.green + half, corner.blue + half})];
  const int last = side - 1;
  const auto first = static_cast<uint32_t>(entries_.size());
  for (uint32_t i = 0; i < candidates.count; ++i) {
    const Entry entry = entries_[candidates.first + i];
    const int most = MostFarther(middle.red, entry.red, corner.red, corner.red + last) +
                     MostFarther(middle.green, entry.green, corner.green, corner.green + last) +
                     MostFarther(middle.blue, entry.blue, corner.blue, corner.blue + last);
    if (most >= 0) entries_.push_back(entry);
  }
  const auto count = static_cast<uint32_t>(entries_.size()) - first;
  if (count < candidates.count) return {first, count};
  entries_.resize(first);
  return candidates;
}

NearestColor::Candidates NearestColor::CandidatesFor(Levels wanted, std::size_t fineness) {
  Candidates& cell = cells_[fineness][CellAt(wanted, fineness)];
  if (cell.count == 0) {
    const int side = 1 << CellBits(fineness);
    const Levels corner = {wanted.red & -side, wanted.green & -side, wanted.blue & -side};
    const Candidates all = {0, static_cast<uint32_t>(palette_.size())};
    cell = Narrowed(fineness == 0 ? all : CandidatesFor(wanted, fineness - 1), corner, side);
  }
  return cell;
}

inline std::size_t NearestColor::Find(Levels wanted) {
  constexpr std::size_t kFinest = kFinenesses - 1;
  const Candidates known = cells_[kFinest][CellAt(wanted, kFinest)];
  return NearestOf(known.count != 0 ? known : CandidatesFor(wanted, kFinest), wanted);
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
