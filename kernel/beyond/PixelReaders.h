// Readers of plainly stored pixels that no bitmap of the contract's has.
#pragma once

#include "beyond/PlainReader.h"

namespace vxkrn {

/// Pixels that bitmaps hold as they are stored.
class CopyReader final : public PlainReader {
 public:
  using PlainReader::PlainReader;
  [[nodiscard]] RowShape Shape() const noexcept override { return {Layout().depth, false}; }

 private:
  void Decode(const uint8_t* stored, int count, uint8_t* row) noexcept override;
};

/// Indices of 2 bits, the leftmost in the highest bits, as 4-bit ones.
class TwoBitReader final : public PlainReader {
 public:
  using PlainReader::PlainReader;
  [[nodiscard]] RowShape Shape() const noexcept override { return {4, false}; }

 private:
  void Decode(const uint8_t* stored, int count, uint8_t* row) noexcept override;
};

/// Pixels of 64 bits: blue, green, red and alpha as signed numbers with 13 bits behind the point, in linear
/// light. What is below 0 or above 1 is beyond what screens show, and is cut off.
class WideReader final : public PlainReader {
 public:
  WideReader(const vx_source& source, const bmp::BitmapLayout& layout);
  [[nodiscard]] RowShape Shape() const noexcept override { return {32, true}; }

 private:
  void Decode(const uint8_t* stored, int count, uint8_t* row) noexcept override;

  memory::Vector<uint8_t> levels_;  // sRGB of every linear level from 0 to 1
};

}  // namespace vxkrn
