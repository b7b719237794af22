// Run-length codes of OS/2 2.x for whole colours: those of 8 bits, but that every pixel takes three bytes.
#pragma once

#include "beyond/CodedReader.h"

namespace vxkrn {

/// Clips what reaches past a row, as readers of the narrower codings do.
class Rle24Reader final : public CodedReader {
 public:
  Rle24Reader(const vx_source& source, const bmp::BitmapLayout& layout) noexcept
      : CodedReader(layout), bytes_(source, layout.pixelOffset) {}
  [[nodiscard]] RowShape Shape() const noexcept override { return {24, false}; }
  [[nodiscard]] uint64_t DataEnd() const noexcept override { return bytes_.Position(); }

 private:
  enum class Step : uint8_t { kOn, kRowEnds, kDataEnds };

  int DecodeRow(uint8_t* row) override;
  Step Run(int count, uint8_t* row) noexcept;
  Step Literal(int count, uint8_t* row) noexcept;
  Step Delta() noexcept;
  Step Escape(uint8_t* row) noexcept;
  [[nodiscard]] int Clip(int count) const noexcept { return count < Width() - x_ ? count : Width() - x_; }

  ByteReader bytes_;
  int x_ = 0;           // in the row that is decoded, or is to be
  int rowsToSkip_ = 0;  // that a delta jumped over
  bool isFinished_ = false;
};

}  // namespace vxkrn
