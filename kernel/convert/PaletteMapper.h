// From colours to the entries of a palette: the nearest one, with or without spreading what is lost.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/Memory.h"
#include "convert/Colors.h"

namespace vxkrn {

/// Finds the nearest of up to 256 colours, the first of equally near ones. Throws std::bad_alloc.
class NearestColor {
 public:
  explicit NearestColor(std::span<const Color> palette);

  struct Levels {
    int red, green, blue;  ///< 0 to 255
  };
  [[nodiscard]] std::size_t Find(Levels wanted);
  [[nodiscard]] const Levels& At(std::size_t entry) const noexcept { return palette_[entry]; }

 private:
  struct Entry {
    uint8_t red, green, blue, index;
  };
  /// The entries that may be the nearest to some colour of one cell of the colour cube, ascending and then
  /// the last of them again, for they are looked at in fours.
  struct Candidates {
    uint32_t first = 0;  ///< in entries_
    uint32_t count = 0;  ///< 0: not looked for yet
  };
  [[nodiscard]] std::size_t NearestOf(Candidates candidates, Levels wanted) const noexcept;
  [[nodiscard]] Candidates CandidatesFor(Levels wanted);
  [[nodiscard]] Candidates Narrowed(Candidates candidates, Levels wanted, int bits) noexcept;
  [[nodiscard]] Candidates* FineCell(Levels color) noexcept;

  std::vector<Levels> palette_;
  memory::Vector<Candidates> huge_, coarse_;  ///< cells of 64 and of 16 levels a side
  memory::Vector<uint16_t> blocks_;           ///< of fine_, a coarse cell each; 0: none
  memory::Vector<Candidates> fine_;           ///< cells of 4 levels a side, a coarse cell's in a block
  memory::Vector<Entry> entries_;             ///< those of the palette, then those of all cells
};

/// Turns rows of colours into rows of palette indices.
class PaletteMapper {
 public:
  /// @param transparent the index of pixels that are not opaque; -1: opacity does not matter
  PaletteMapper(std::span<const Color> palette, int width, bool diffuses, int transparent);

  /// Maps one row, `row` being its number; indices takes a byte a pixel. What is lost is spread to the row
  /// asked for next when that is a neighbour of this one.
  void Map(int row, std::span<const Rgba> pixels, uint8_t* indices);

 private:
  using Levels = NearestColor::Levels;

  void MapNearest(std::span<const Rgba> pixels, uint8_t* indices);
  void MapDiffusing(std::span<const Rgba> pixels, uint8_t* indices);
  [[nodiscard]] bool IsHidden(Rgba pixel) const noexcept { return transparent_ >= 0 && !IsOpaque(pixel); }

  NearestColor nearest_;
  int transparent_;
  bool diffuses_;
  int lastRow_ = -2;
  bool leftward_ = false;
  /// Sixteenths of levels owed to the pixels of the next row, with a pixel before and behind them.
  memory::Vector<Levels> owed_;
};

}  // namespace vxkrn
