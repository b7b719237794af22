// Counts rows by the codes that end them. Codes are two bytes; a first byte of 0 means that the second says
// what follows.
#include "beyond/RunLengthScan.h"

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
      : layout_(layout), bytes_(source, layout.pixelOffset) {}

  int Rows() noexcept {
    while (row_ < layout_.height && !isComplete_) {
      const int count = bytes_.Byte();
      const int value = bytes_.Byte();
      if (value < 0) return row_ + (x_ >= layout_.width ? 1 : 0);
      if (count > 0) {
        x_ += count;
      } else {
        Follow(value);
      }
    }
    return layout_.height;
  }

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
        bytes_.Skip(size + size % 2);
        x_ += code;
        break;
      }
    }
  }
  void EndRows(int rows) noexcept {
    row_ += rows;
    x_ = 0;
  }

  const bmp::BitmapLayout& layout_;
  ByteReader bytes_;
  int row_ = 0;
  int64_t x_ = 0;  // pixels of the row that the codes reached
  bool isComplete_ = false;
};

}  // namespace

int RowsCoded(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  return EndsAsDeclared(source, layout) ? layout.height : Scan(source, layout).Rows();
}

}  // namespace vxkrn
