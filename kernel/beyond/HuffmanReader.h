// The one-dimensional code of fax machines (T.4), as OS/2 2.x has it in bitmaps: runs of the first and of the
// second colour by turns, each row to its very end.
#pragma once

#include "beyond/CodedReader.h"

namespace vxkrn {

/// Rows of the code, from the bits of a file.
class FaxDecoder {
 public:
  FaxDecoder(const vx_source& source, const bmp::BitmapLayout& layout, bool isLowBitFirst) noexcept
      : bytes_(source, layout.pixelOffset), width_(layout.width), isLowBitFirst_(isLowBitFirst) {}

  /// Sets the bits of the second colour in `row`, which may be null. @return whether the row is whole; after
  /// one that is not, none is
  bool Next(uint8_t* row) noexcept;
  /// The byte that the next code begins in.
  [[nodiscard]] uint64_t Position() const noexcept {
    return bytes_.Position() - static_cast<uint64_t>(bitCount_ / 8);
  }

 private:
  [[nodiscard]] bool FindRow() noexcept;
  [[nodiscard]] bool DecodeRuns(uint8_t* row) noexcept;
  uint32_t Peek(int count) noexcept;

  ByteReader bytes_;
  int width_;
  bool isLowBitFirst_;
  bool isOver_ = false;
  uint64_t bits_ = 0;  // the lowest bitCount_ are yet to be read
  int bitCount_ = 0;
};

class HuffmanReader final : public CodedReader {
 public:
  HuffmanReader(const vx_source& source, const bmp::BitmapLayout& layout) noexcept;
  [[nodiscard]] RowShape Shape() const noexcept override { return {1, false}; }
  [[nodiscard]] uint64_t DataEnd() const noexcept override { return decoder_.Position(); }

 private:
  int DecodeRow(uint8_t* row) override { return decoder_.Next(row) ? STATUS_OK : STATUS_READ_ERROR; }

  FaxDecoder decoder_;
};

}  // namespace vxkrn
