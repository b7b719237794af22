// Rows that are stored plainly, one as long as the other, so that any of them is found without the others.
#pragma once

#include "beyond/ByteReader.h"
#include "beyond/RowReader.h"

namespace vxkrn {

class PlainReader : public RowReader {
 public:
  /// Throws std::bad_alloc.
  PlainReader(const vx_source& source, const bmp::BitmapLayout& layout)
      : layout_(layout),
        bytes_(source, layout.pixelOffset),
        stored_(static_cast<std::size_t>(bmp::PixelBytes(layout.width, layout.depth))) {}

  [[nodiscard]] bool IsTopDown() const noexcept override { return layout_.isTopDown; }
  [[nodiscard]] int Next(uint8_t* row) override {
    const std::size_t got = bytes_.Read(stored_.data(), stored_.size());
    bytes_.Skip(layout_.StoredStride() - stored_.size());
    std::fill(stored_.begin() + static_cast<std::ptrdiff_t>(got), stored_.end(), uint8_t{0});
    const auto whole = static_cast<int>(got * 8 / static_cast<unsigned int>(layout_.depth));
    Decode(stored_.data(), std::min(whole, layout_.width), row);
    return got == stored_.size() ? int{STATUS_OK} : int{STATUS_READ_ERROR};
  }
  [[nodiscard]] int Skip(int rows) override {
    bytes_.Skip(layout_.StoredStride() * static_cast<uint64_t>(rows));
    return STATUS_OK;
  }

 protected:
  [[nodiscard]] const bmp::BitmapLayout& Layout() const noexcept { return layout_; }

 private:
  /// Turns the first `count` stored pixels into those of a bitmap's row.
  virtual void Decode(const uint8_t* stored, int count, uint8_t* row) noexcept = 0;

  bmp::BitmapLayout layout_;
  ByteReader bytes_;
  memory::Vector<uint8_t> stored_;  // of one row, without padding
};

}  // namespace vxkrn
