// What PNG does to rows before they are compressed: every byte as its difference from its neighbours.
#pragma once

#include <cstddef>
#include <cstdint>

#include "base/Memory.h"

namespace vxkrn {

/// Filters rows from the top. Bytes of indices stay what they are, for neighbours say nothing about them; a
/// row of colours takes whichever filter leaves the least, as signed numbers.
class PngFilter {
 public:
  /// @param pixelBytes of a pixel's colour; 0: rows are indices
  PngFilter(std::size_t rowBytes, std::size_t pixelBytes) noexcept;

  [[nodiscard]] bool HasMemory() const noexcept { return rows_ != nullptr; }
  /// Where the next row is to be put: rowBytes, all of which have to be.
  [[nodiscard]] uint8_t* Row() noexcept { return rows_.get() + at_; }
  /// Writes the row with its filter before it, 1 + rowBytes; then it is the one above.
  void Filter(uint8_t* filtered) noexcept;
  /// How far all bytes of filtered colours are from 0: much where a picture has noise.
  [[nodiscard]] uint64_t Distance() const noexcept { return distance_; }

 private:
  std::size_t rowBytes_;
  std::size_t pixelBytes_;
  std::size_t at_;     ///< of this row in rows_, a pixel of zeros before it
  std::size_t above_;  ///< of the one above
  uint64_t distance_ = 0;
  memory::Bytes rows_;  ///< both, and one for a filter that is tried
};

}  // namespace vxkrn
