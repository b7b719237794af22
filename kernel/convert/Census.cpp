// The pass ends as soon as every question is answered: of a photograph only the first rows are looked at.
#include "convert/Census.h"

#include <algorithm>
#include <array>
#include <bit>

#include "bitmap/RowProvider.h"

namespace vxkrn {
namespace {

/// A set of up to kMost colours, and one more, that does not move in memory: open addressing, about a quarter
/// full at most.
class ColorSet {
 public:
  ColorSet() { slots_.fill(kFree); }

  /// Whether there are more than kMost colours; no further one is taken then.
  [[nodiscard]] bool IsFull() const noexcept { return count_ > Census::kMost; }
  void Add(Color color) noexcept {
    std::size_t slot = (color * 0x9E3779B1U) >> 8 & (slots_.size() - 1);
    while (slots_[slot] != color) {
      if (slots_[slot] == kFree) {
        if (IsFull()) return;
        slots_[slot] = color;
        ++count_;
        return;
      }
      slot = (slot + 1) & (slots_.size() - 1);
    }
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

  std::array<Color, 1024> slots_;
  std::size_t count_ = 0;
};

/// Whether a pixel of 16 bits shows this colour.
bool Is16(Rgba color, bool is565) noexcept {
  return ColorOf(ColorOfPixel16(Pixel16(color, is565), is565)) == ColorOf(color);
}
bool Is16(Color color, bool is565) noexcept {
  const RGBQUAD entry = QuadOf(color);
  return Is16({entry.Red, entry.Green, entry.Blue, 0}, is565);
}

std::vector<Color> Union(const std::vector<Color>& a, const std::vector<Color>& b) {
  std::vector<Color> both;
  std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(both));
  both.resize(std::min(both.size(), Census::kMost + 1));
  return both;
}

/// Goes through the pixels of a picture.
class Count {
 public:
  explicit Count(const _BITMAPHANDLE& bitmap)
      : rows_(bitmap),
        asksAlpha_(!IsWhole(bitmap)),
        asks555_(bitmap.BitsPerPixel != 16 || bitmap.ColorOrder == ORDER_565),
        asks565_(bitmap.BitsPerPixel != 16 || bitmap.ColorOrder != ORDER_565) {}

  Census Take() {
    const _BITMAPHANDLE& bitmap = rows_.Bitmap();
    if (bitmap.BitsPerPixel <= 8) {
      AddIndices(bitmap);
    } else {
      for (int row = 0; row < bitmap.Height && AsksMore(); ++row) AddRow(rows_.Read(row));
    }
    result_.opaque = opaque_.Ascending();
    const std::vector<Color> others = others_.Ascending();
    result_.all = Union(result_.opaque, others);
    Ask16<Color>(result_.opaque);
    Ask16<Color>(others);
    return std::move(result_);
  }

 private:
  [[nodiscard]] bool AsksMore() const noexcept {
    return asksAlpha_ || asks555_ || asks565_ || !opaque_.IsFull();
  }

  /// As long as no set is full every colour is in one, so it is enough to ask the sets about 16 bits at the
  /// end.
  void AddRow(std::span<const Rgba> row) noexcept {
    if (!opaque_.IsFull()) AddColors(row);
    if (opaque_.IsFull() || others_.IsFull()) Ask16(row);
    if (asksAlpha_) AskAlpha(row);
  }

  void AddColors(std::span<const Rgba> row) noexcept {
    uint32_t last = ~std::bit_cast<uint32_t>(row.front());  // neighbours are often alike
    for (const Rgba pixel : row) {
      const auto whole = std::bit_cast<uint32_t>(pixel);
      if (whole != last) (IsOpaque(pixel) ? opaque_ : others_).Add(ColorOf(pixel));
      last = whole;
    }
  }

  void AskAlpha(std::span<const Rgba> row) noexcept {
    for (const Rgba pixel : row) {
      if (pixel.alpha == 255) continue;
      if (pixel.alpha != 0) result_.opacity = Opacity::kSoft;
      if (result_.opacity == Opacity::kWhole) result_.opacity = Opacity::kAllOrNothing;
      if (!IsOpaque(pixel)) result_.hasTransparent = true;
    }
    asksAlpha_ = result_.opacity != Opacity::kSoft || !result_.hasTransparent;
  }

  template <class AnyColor>
  void Ask16(std::span<const AnyColor> colors) noexcept {
    for (std::size_t i = 0; i < colors.size() && (asks555_ || asks565_); ++i) {
      if (asks555_ && !Is16(colors[i], false)) result_.fits555 = asks555_ = false;
      if (asks565_ && !Is16(colors[i], true)) result_.fits565 = asks565_ = false;
    }
  }

  /// Finds first which palette entries the opaque pixels have and which the others: there are only a few.
  void AddIndices(const _BITMAPHANDLE& bitmap) {
    std::array<std::array<bool, 256>, 2> isSeen = {};
    memory::Vector<uint8_t> indices(static_cast<std::size_t>(bitmap.Width));
    for (int row = 0; row < bitmap.Height; ++row) {
      UnpackIndices(ReadRow(bitmap, row), bitmap.BitsPerPixel, indices);
      const unsigned char* inside = StoredRegionRow(bitmap, row);
      if (inside == nullptr) {
        for (const uint8_t index : indices) isSeen[1][index] = true;
        continue;
      }
      for (std::size_t x = 0; x < indices.size(); ++x) {
        isSeen[inside[x / 8] >> (7 - x % 8) & 1][indices[x]] = true;
      }
    }
    const ColorTable table = ColorsOf(bitmap);
    for (std::size_t i = 0; i < table.size(); ++i) {
      for (const bool isOpaque : {false, true}) {
        if (!isSeen[isOpaque][i]) continue;
        (isOpaque ? opaque_ : others_).Add(ColorOf(table[i]));
        result_.highestIndex = static_cast<int>(i);
        result_.hasTransparent = result_.hasTransparent || !isOpaque;
      }
    }
    if (result_.hasTransparent) result_.opacity = Opacity::kAllOrNothing;
  }

  ColorRows rows_;
  bool asksAlpha_;
  bool asks555_;  ///< pixels of 16 bits fit their own layout
  bool asks565_;
  ColorSet opaque_;
  ColorSet others_;
  Census result_;
};

}  // namespace

Census TakeCensus(const _BITMAPHANDLE& bitmap) {
  PrepareForAnotherPass(bitmap);
  return Count(bitmap).Take();
}

const Census& LazyCensus::Get() {
  if (!taken_) taken_ = TakeCensus(bitmap_);
  return *taken_;
}

void LazyCensus::Harden() {
  Census hard = Get();
  constexpr Color kBlack = 0;
  hard.all = Union(hard.opaque, hard.hasTransparent ? std::vector{kBlack} : std::vector<Color>());
  if (hard.opacity == Opacity::kSoft) {
    hard.opacity = hard.hasTransparent ? Opacity::kAllOrNothing : Opacity::kWhole;
  }
  taken_ = std::move(hard);
}

}  // namespace vxkrn
