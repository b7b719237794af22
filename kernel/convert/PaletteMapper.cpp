// The nearest colour is found exactly: the colour cube is cut into cells, and the few entries that can be
// nearest inside a cell are listed when the first pixel falls into it, out of the list of the coarser cell
// around it. Losses are spread after Floyd and Steinberg, rows alternately from the left and from the right,
// so that no direction shows.
#include "convert/PaletteMapper.h"

#include <algorithm>
#include <new>

namespace vxkrn {
namespace {

constexpr int kHugeBits = 6;  // a cell has 64 levels a side
constexpr int kCoarseBits = 4;
constexpr int kFineBits = 2;
constexpr std::size_t kBlock = std::size_t{1} << 3 * (kCoarseBits - kFineBits);  // fine cells in a coarse one
constexpr uint32_t kTogether = 4;  // entries that are looked at in one go: fewer ends of loops to guess

constexpr std::size_t CellsOf(int bits) {
  return std::size_t{1} << 3 * (8 - bits);
}

/// The cell of `bits` a side among those of a cube of `bits + rest`.
std::size_t CellAt(const NearestColor::Levels& color, int bits, int rest = 8) {
  const int mask = (1 << (rest - bits)) - 1;
  const auto at = [=](int level) { return level >> bits & mask; };
  return static_cast<std::size_t>((at(color.red) << (rest - bits) | at(color.green)) << (rest - bits) |
                                  at(color.blue));
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

/// Makes room for `more` elements unless memory is short. What grows here only saves time, so it leaves seven
/// times as much to those who cannot do without.
template <class T>
bool MayGrow(memory::Vector<T>& table, std::size_t more) noexcept {
  constexpr std::size_t kShare = 8;
  if (more <= table.capacity() - table.size()) return true;
  const std::size_t room = std::max(table.size() + more, 2 * table.capacity());
  if (!memory::Fits(uint64_t{room} * sizeof(T) * kShare)) return false;
  try {
    table.reserve(room);
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

}  // namespace

NearestColor::NearestColor(std::span<const Color> palette)
    : huge_(CellsOf(kHugeBits)), coarse_(CellsOf(kCoarseBits)), blocks_(CellsOf(kCoarseBits)), fine_(kBlock) {
  entries_.reserve(palette.size() + kTogether);
  for (const Color color : palette) {
    const RGBQUAD quad = QuadOf(color);
    entries_.push_back({quad.Red, quad.Green, quad.Blue, static_cast<uint8_t>(palette_.size())});
    palette_.push_back({quad.Red, quad.Green, quad.Blue});
  }
  while (entries_.size() % kTogether != 0) entries_.push_back(Entry(entries_.back()));
}

inline std::size_t NearestColor::NearestOf(Candidates candidates, Levels wanted) const noexcept {
  const Entry* entry = entries_.data() + candidates.first;
  const auto look = [&wanted](const Entry& at) {
    const int distance =
        Square(wanted.red - at.red) + Square(wanted.green - at.green) + Square(wanted.blue - at.blue);
    return static_cast<uint32_t>(distance) << 8 | at.index;
  };
  uint32_t least = UINT32_MAX;
  for (const Entry* const end = entry + candidates.count; entry < end; entry += kTogether) {
    const uint32_t first = std::min(look(entry[0]), look(entry[1]));
    const uint32_t second = std::min(look(entry[2]), look(entry[3]));
    least = std::min(least, std::min(first, second));
  }
  return least & 255;
}

/// An entry that is farther than another one all over the cell cannot be the nearest there. That other one is
/// the nearest to the cell's middle: against it nearly all fall. Where memory is short all stay.
NearestColor::Candidates NearestColor::Narrowed(Candidates candidates, Levels wanted, int bits) noexcept {
  if (candidates.count == 1 || !MayGrow(entries_, candidates.count + kTogether)) return candidates;
  const int side = 1 << bits;
  const int half = side / 2;
  const Levels corner = {wanted.red & -side, wanted.green & -side, wanted.blue & -side};
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
  if (count < candidates.count) {
    while (entries_.size() % kTogether != 0) entries_.push_back(Entry(entries_.back()));
    return {first, count};
  }
  entries_.resize(first);
  return candidates;
}

/// @return the fine cell of a color, or null where memory is short: then the coarse one has to do
NearestColor::Candidates* NearestColor::FineCell(Levels color) noexcept {
  uint16_t& block = blocks_[CellAt(color, kCoarseBits)];
  if (block == 0) {
    if (!MayGrow(fine_, kBlock)) return nullptr;
    block = static_cast<uint16_t>(fine_.size() / kBlock);
    fine_.resize(fine_.size() + kBlock);
  }
  return &fine_[block * kBlock + CellAt(color, kFineBits, kCoarseBits)];
}

NearestColor::Candidates NearestColor::CandidatesFor(Levels wanted) {
  Candidates& coarse = coarse_[CellAt(wanted, kCoarseBits)];
  if (coarse.count == 0) {
    Candidates& huge = huge_[CellAt(wanted, kHugeBits)];
    if (huge.count == 0) huge = Narrowed({0, static_cast<uint32_t>(palette_.size())}, wanted, kHugeBits);
    coarse = Narrowed(huge, wanted, kCoarseBits);
  }
  Candidates* const fine = FineCell(wanted);
  if (fine == nullptr) return coarse;
  *fine = Narrowed(coarse, wanted, kFineBits);
  return *fine;
}

inline std::size_t NearestColor::Find(Levels wanted) {
  const std::size_t block = blocks_[CellAt(wanted, kCoarseBits)];
  const Candidates known =
      fine_[block * kBlock + CellAt(wanted, kFineBits, kCoarseBits)];  // block 0 is empty
  return NearestOf(known.count != 0 ? known : CandidatesFor(wanted), wanted);
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
