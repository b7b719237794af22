// The nearest colour is found exactly: the colour cube is cut into cells, and the few entries that can be
// nearest inside a cell are listed when the first pixel falls into it, out of the list of the coarser cell
// around it. Losses are spread after Floyd and Steinberg, rows alternately from the left and from the right,
// so that no direction shows.
#include "convert/PaletteMapper.h"

#include <algorithm>
#include <new>

namespace vxkrn {
namespace {

/// Cells of 64, 16 and 4 levels a side.
constexpr int CellBits(std::size_t fineness) {
  return 6 - 2 * static_cast<int>(fineness);
}

/// Cells that are coarser, of all such sizes.
constexpr std::size_t CellsBefore(std::size_t fineness) {
  std::size_t cells = 0;
  for (std::size_t i = 0; i < fineness; ++i) cells += std::size_t{1} << 3 * (8 - CellBits(i));
  return cells;
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

/// Most cells are never looked at, so the table is memory that costs no pages until then.
NearestColor::NearestColor(std::span<const Color> palette)
    : table_(static_cast<uint8_t*>(memory::AllocateZeroed(CellsBefore(kFinenesses) * sizeof(Candidates),
                                                          {"kernel/Palette", __LINE__}))) {
  if (table_ == nullptr) throw std::bad_alloc();
  for (const Color color : palette) {
    const RGBQUAD quad = QuadOf(color);
    entries_.push_back({quad.Red, quad.Green, quad.Blue, static_cast<uint8_t>(palette_.size())});
    palette_.push_back({quad.Red, quad.Green, quad.Blue});
  }
}

inline NearestColor::Candidates& NearestColor::CellOf(Levels color, std::size_t fineness) noexcept {
  const int bits = CellBits(fineness);
  const int rest = 8 - bits;
  const int at = ((color.red >> bits) << rest | color.green >> bits) << rest | color.blue >> bits;
  auto* const cells = reinterpret_cast<Candidates*>(table_.get()) + CellsBefore(fineness);
  return cells[static_cast<std::size_t>(at)];
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
  Candidates& cell = CellOf(wanted, fineness);
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
  const Candidates known = CellOf(wanted, kFinest);
  return NearestOf(known.count != 0 ? known : CandidatesFor(wanted, kFinest), wanted);
}

PaletteMapper::PaletteMapper(std::span<const Color> palette, int width, bool diffuses, int transparent)
    : nearest_(palette), transparent_(transparent), diffuses_(diffuses) {
  if (diffuses) owed_.resize(static_cast<std::size_t>(width) + 2);
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

/// A pixel hands on 7 sixteenths of what it lost to the next one, 3, 5 and 1 to those below: behind it, under
/// it and ahead of it. So what a pixel of the next row is owed is known when the one after it is through, and
/// takes the place of what this row was owed there.
void PaletteMapper::MapDiffusing(std::span<const Rgba> pixels, uint8_t* indices) {
  const std::ptrdiff_t step = leftward_ ? -1 : 1;
  Levels* owed = owed_.data() + (leftward_ ? std::ssize(pixels) : 1);
  Levels before = {};  // what was lost a pixel and two pixels ago
  Levels earlier = {};
  const auto owe = [&](Levels* below, const Levels& lost) {
    *below = {3 * lost.red + 5 * before.red + earlier.red, 3 * lost.green + 5 * before.green + earlier.green,
              3 * lost.blue + 5 * before.blue + earlier.blue};
    earlier = before;
    before = lost;
  };
  std::ptrdiff_t x = leftward_ ? std::ssize(pixels) - 1 : 0;
  for (std::size_t n = 0; n < pixels.size(); ++n, x += step, owed += step) {
    const Rgba pixel = pixels[static_cast<std::size_t>(x)];
    if (IsHidden(pixel)) {
      indices[x] = static_cast<uint8_t>(transparent_);
      owe(owed - step, {});
      continue;
    }
    const auto withOwed = [](int level, int sixteenths) { return ToLevel(level + ((sixteenths + 8) >> 4)); };
    const Levels wanted = {withOwed(pixel.red, owed->red + 7 * before.red),
                           withOwed(pixel.green, owed->green + 7 * before.green),
                           withOwed(pixel.blue, owed->blue + 7 * before.blue)};
    const std::size_t entry = nearest_.Find(wanted);
    indices[x] = static_cast<uint8_t>(entry);
    const Levels& shown = nearest_.At(entry);
    owe(owed - step, {wanted.red - shown.red, wanted.green - shown.green, wanted.blue - shown.blue});
  }
  owe(owed - step, {});
  leftward_ = !leftward_;
}

}  // namespace vxkrn
