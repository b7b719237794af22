// Rows that are coded, so that one is found only by way of those before it.
#pragma once

#include "beyond/ByteReader.h"
#include "beyond/RowReader.h"

namespace vxkrn {

class CodedReader : public RowReader {
 public:
  explicit CodedReader(const bmp::BitmapLayout& layout) noexcept
      : width_(layout.width), height_(layout.height), isTopDown_(layout.isTopDown) {}

  [[nodiscard]] bool IsTopDown() const noexcept override { return isTopDown_; }
  /// A picture of which not one row is whole is refused, with TOO_LITTLE_DATA.
  [[nodiscard]] int Next(uint8_t* row) override { return Settle(DecodeRow(row)); }
  [[nodiscard]] int Skip(int rows) override;

 protected:
  [[nodiscard]] int Width() const noexcept { return width_; }
  [[nodiscard]] int RowsDone() const noexcept { return rowsDone_; }

 private:
  /// As Next; null passes over the row.
  virtual int DecodeRow(uint8_t* row) = 0;
  int Settle(int status) noexcept;

  int width_;
  int height_;
  int rowsDone_ = 0;
  bool isTopDown_;
};

}  // namespace vxkrn
