// Reading and collecting colours. One pass over the rows, left as soon as the answer is known.
#include "Colors.h"

#include <algorithm>
#include <new>

namespace vxkrn {
namespace {

/// A set of colours that does not move in memory: open addressing, at most half full.
class ColorSet {
 public:
  explicit ColorSet(std::size_t limit) : limit_(limit) {
    std::size_t slots = 16;
    while (slots < 2 * (limit + 1)) slots *= 2;
    slots_.assign(slots, kFree);
  }

  /// @return false once there are more than the limit.
  bool Add(Color color) {
    std::size_t slot = (color * 0x9E3779B1U) >> 8 & (slots_.size() - 1);
    while (slots_[slot] != color) {
      if (slots_[slot] == kFree) {
        slots_[slot] = color;
        return ++count_ <= limit_;
      }
      slot = (slot + 1) & (slots_.size() - 1);
    }
    return true;
  }

  [[nodiscard]] std::vector<Color> Ascending() const {
    std::vector<Color> colors;
    std::copy_if(slots_.begin(), slots_.end(), std::back_inserter(colors),
                 [](Color color) { return color != kFree; });
    std::sort(colors.begin(), colors.end());
    return colors;
  }

 private:
  static constexpr Color kFree = 0xFFFFFFFF;

  std::vector<Color> slots_;
  std::size_t limit_;
  std::size_t count_ = 0;
};

bool AddRow(std::span<const Rgba> row, Pixels which, ColorSet* colors) {
  Color last = ~Color{0};  // neighbours are often alike
  for (const Rgba pixel : row) {
    const Color color = ColorOf(pixel);
    if (color == last || (which == Pixels::kOpaque && !IsOpaque(pixel))) continue;
    if (!colors->Add(color)) return false;
    last = color;
  }
  return true;
}

}  // namespace

ColorRows::ColorRows(const _BITMAPHANDLE& bitmap)
    : bitmap_(bitmap),
      table_(ColorsOf(bitmap)),
      row_(memory::MakeBytes(static_cast<std::size_t>(bitmap.Width) * sizeof(Rgba),
                             {"kernel/Colors", __LINE__})) {
  if (row_ == nullptr) throw std::bad_alloc();
}

std::span<Rgba> ColorRows::Read(int storedRow) noexcept {
  ReadRgba(bitmap_, table_, storedRow, row_.get());
  return {reinterpret_cast<Rgba*>(row_.get()), static_cast<std::size_t>(bitmap_.Width)};
}

std::vector<Color> DistinctColors(ColorRows& rows, Pixels which, std::size_t limit) {
  ColorSet colors(limit);
  for (int row = 0; row < rows.Bitmap().Height; ++row) {
    if (!AddRow(rows.Read(row), which, &colors)) break;
  }
  return colors.Ascending();
}

bool HasTransparentPixel(ColorRows& rows) {
  if (!HasAlpha(rows.Bitmap()) && rows.Bitmap().Region == nullptr) return false;
  for (int row = 0; row < rows.Bitmap().Height; ++row) {
    const std::span<const Rgba> pixels = rows.Read(row);
    if (!std::all_of(pixels.begin(), pixels.end(), IsOpaque)) return true;
  }
  return false;
}

}  // namespace vxkrn
