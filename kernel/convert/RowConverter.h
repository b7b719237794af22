// A picture in another depth, row by row: which palette it gets, and what becomes of its pixels.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "convert/Census.h"
#include "convert/PaletteMapper.h"

namespace vxkrn {

/// What rows are converted to.
struct RowTarget {
  int bitsPerPixel;                  ///< 1, 4, 8, 16, 24 or 32
  bool is565 = false;                ///< of 16 bits: 5-6-5, not 5-5-5
  bool usesFixedPalette = false;     ///< up to 8 bits: the fixed palette whatever the picture
  bool diffuses = true;              ///< up to 8 bits: losses are spread over the neighbours
  bool reservesTransparent = false;  ///< up to 8 bits: pixels that are not opaque get an entry of their own
};

/// Converts the rows of one bitmap, which must outlive it and not change. The census is needed at first only.
///   - Up to 8 bits: the picture's own palette and indices where they fit; else all its colours, ascending,
///     where they fit; else a chosen palette. Rows asked for one after the other share their losses.
///   - 16 bits: the nearest level of each channel.
///   - 32 bits: the fourth byte is the alpha channel, 0 where there is none.
/// Throws std::bad_alloc.
class RowConverter {
 public:
  RowConverter(LazyCensus& census, const RowTarget& target);

  /// Writes one stored row of the bitmap. Bits behind its last pixel, up to a whole byte, are 0.
  void Convert(int storedRow, uint8_t* converted);

  /// The entries in use, up to 8 bits.
  [[nodiscard]] std::span<const Color> Palette() const noexcept { return palette_; }
  /// The entry of pixels that are not opaque; -1 without one.
  [[nodiscard]] int TransparentEntry() const noexcept { return transparentEntry_; }

 private:
  void ChooseIndices(LazyCensus& census);
  [[nodiscard]] bool TakeOwnPalette(LazyCensus& census);
  void Copy(int storedRow, uint8_t* converted) const;
  void PackColors(std::span<const Rgba> pixels, uint8_t* converted) const;
  void ConvertToIndices(int storedRow, uint8_t* converted);

  ColorRows rows_;
  RowTarget target_;
  bool copies_ = false;  ///< the rows are as they are wanted
  std::vector<Color> palette_;
  int transparentEntry_ = -1;
  std::optional<PaletteMapper> mapper_;  ///< none: indices stay what they are
  memory::Vector<uint8_t> indices_;
};

/// Whether every pixel keeps its colour when the picture is converted so, but those that get the entry of
/// transparent ones. Throws std::bad_alloc.
[[nodiscard]] bool KeepsColors(LazyCensus& census, const RowTarget& target);

}  // namespace vxkrn
