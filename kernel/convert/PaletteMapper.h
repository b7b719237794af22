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
  /// The entries that are the nearest to some colour of one cell of the colour cube.
  struct Candidates {
    uint32_t first = 0;
    uint32_t count = 0;  ///< 0: not looked for yet
  };
  void FindCandidates(Levels corner, Candidates* candidates);

  std::vector<Levels> palette_;
  std::vector<Candidates> cells_;
  std::vector<uint8_t> entries_;  ///< of all cells, one after the other
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
  /// Sixteenths of levels owed to the pixels of this row and the next, with a pixel before and behind them.
  memory::Vector<Levels> owed_, owedNext_;
};

}  // namespace vxkrn
