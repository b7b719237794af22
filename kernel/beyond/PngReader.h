// The rows of a PNG stream inside a bitmap, which is decoded whole before the first of them comes.
#pragma once

#include "beyond/ByteReader.h"
#include "beyond/RowReader.h"
#include "bitmap/Bitmap.h"
#include "png/Png.h"

namespace vxkrn {

/// The bytes that are left, as a PNG stream. They must outlive it.
[[nodiscard]] PngInput InputFrom(ByteReader& bytes) noexcept;
/// Where memory was what such a stream lacked, says so. @return the status to go on with
[[nodiscard]] int SettlePng(int status) noexcept;

class PngReader final : public RowReader {
 public:
  PngReader(const vx_source& source, const bmp::BitmapLayout& layout) noexcept
      : bytes_(source, layout.pixelOffset), width_(layout.width), height_(layout.height) {}

  /// Decodes. @return STATUS_OK, or a failure with its detail set
  [[nodiscard]] int Open();
  [[nodiscard]] RowShape Shape() const noexcept override;
  [[nodiscard]] bool IsTopDown() const noexcept override { return true; }
  [[nodiscard]] const RGBQUAD* Palette() const noexcept override { return palette_; }
  [[nodiscard]] int Next(uint8_t* row) override;
  [[nodiscard]] int Skip(int rows) override;

 private:
  ByteReader bytes_;
  int width_;
  int height_;
  OwnedBitmap decoded_;
  RGBQUAD palette_[256] = {};
  int rowsThere_ = 0;
  int row_ = 0;
};

}  // namespace vxkrn
