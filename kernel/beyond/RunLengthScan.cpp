// Counts rows by the codes that end them. Codes are two bytes; a first byte of 0 means that the second says
// what follows.
#include "beyond/RunLengthScan.h"

#include <algorithm>

#include "beyond/ByteReader.h"

namespace vxkrn {
namespace {

constexpr int kEndOfLine = 0;
constexpr int kEndOfBitmap = 1;
constexpr int kDelta = 2;

/// Whether the data is as long as the header says and ends with an end-of-bitmap code, as that of most files
/// does.
bool EndsAsDeclared(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  if (layout.imageSize < 2) return false;
  const auto end = source.BlockAt<2>(layout.pixelOffset + layout.imageSize - 2);
  return end[0] == 0 && end[1] == kEndOfBitmap;
}

class Scan {
 public:
  Scan(const vx_source& source, const bmp::BitmapLayout& layout) noexcept
      : layout_(layout),
        bytes_(source, layout.pixelOffset),
        fileSize_(source.Size() < 0 ? UINT64_MAX : static_cast<uint64_t>(source.Size())) {}

  void Run() noexcept {
    while (row_ < layout_.height && !isComplete_) {
      const int count = bytes_.Byte();
      const int value = bytes_.Byte();
      if (value < 0) return;
      if (count > 0) {
        x_ += count;
      } else {
        Follow(value);
      }
    }
  }
  /// The row that the next code would be for.
  [[nodiscard]] int Row() const noexcept { return row_; }
  [[nodiscard]] bool IsRowFull() const noexcept { return x_ >= layout_.width; }
  [[nodiscard]] bool IsComplete() const noexcept { return isComplete_ || row_ >= layout_.height; }

 private:
  void Follow(int code) noexcept {
    switch (code) {
      case kEndOfLine: EndRows(1); break;
      case kEndOfBitmap: isComplete_ = true; break;
      case kDelta: {
        x_ += bytes_.Byte();
        if (const int rows = bytes_.Byte(); rows > 0) EndRows(rows);
        break;
      }
      default: {
        const auto size = static_cast<uint64_t>(layout_.depth == 4 ? (code + 1) / 2 : code);
        const auto there = static_cast<int64_t>(std::min(size, BytesLeft()));
        bytes_.Skip(size + size % 2);
        x_ += std::min<int64_t>(code, layout_.depth == 4 ? 2 * there : there);
        break;
      }
    }
  }
  [[nodiscard]] uint64_t BytesLeft() const noexcept {
    return fileSize_ - std::min(fileSize_, bytes_.Position());
  }
  void EndRows(int rows) noexcept {
    row_ = std::min(row_, layout_.height) + rows;
    x_ = 0;
  }

  const bmp::BitmapLayout& layout_;
  ByteReader bytes_;
  uint64_t fileSize_;
  int row_ = 0;
  int64_t x_ = 0;  // pixels of the row that the codes reached
  bool isComplete_ = false;
};

}  // namespace

int RowsCoded(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  if (EndsAsDeclared(source, layout)) return layout.height;
  Scan scan(source, layout);
  scan.Run();
  return scan.IsComplete() ? layout.height : scan.Row() + (scan.IsRowFull() ? 1 : 0);
}

int RowsTouched(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  const int64_t size = source.Size();
  // A row takes two bytes at least, unless it is jumped over.
  if (size < 0 || layout.height <= size) return layout.height;
  Scan scan(source, layout);
  scan.Run();
  return std::min(scan.Row() + 1, layout.height);
}

}  // namespace vxkrn
