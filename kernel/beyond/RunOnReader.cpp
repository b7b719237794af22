// Decodes codes pixel by pixel: files like these are few, and small.
#include "beyond/RunOnReader.h"

#include <algorithm>
#include <utility>

namespace vxkrn {
namespace {

using bmp::kDelta;
using bmp::kEndOfBitmap;
using bmp::kEndOfLine;

int LiteralBytes(int count, int depth) noexcept {
  return depth == 4 ? (count + 1) / 2 : count;
}

}  // namespace

bool RunsOn(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  ByteReader bytes(source, layout.pixelOffset);
  int64_t x = 0;
  for (;;) {
    const int count = bytes.Byte();
    const int code = bytes.Byte();
    if (code < 0) return false;
    const bool isPixels = count > 0 || code > kDelta;
    if (!isPixels || x >= layout.width) return isPixels && x == layout.width;
    x += count > 0 ? count : code;
    if (count > 0) continue;
    const int size = LiteralBytes(code, layout.depth);
    bytes.Skip(static_cast<uint64_t>(size) + static_cast<uint64_t>(size % 2));
  }
}

int RunOnReader::DecodeRow(uint8_t* row) {
  if (isFinished_) return STATUS_OK;
  if (rowsToSkip_ > 0) {
    --rowsToSkip_;
    return STATUS_OK;
  }
  Step step = Step::kOn;
  while (step == Step::kOn && x_ < Width()) {
    if (pixels_.count == 0) {
      step = ReadCode();
    } else if (!Put(row)) {
      step = Step::kDataEnds;
    }
  }
  if (step == Step::kDataEnds) return STATUS_READ_ERROR;
  isAtStart_ = step == Step::kOn;
  if (isAtStart_) x_ = 0;
  return STATUS_OK;
}

/// Puts the next pixel of the code into the row. @return false where the data ends
bool RunOnReader::Put(uint8_t* row) noexcept {
  if (pixels_.isLiteral && !pixels_.isSecond) pixels_.value = bytes_.Byte();
  if (pixels_.value < 0) return false;
  if (depth_ == 8) {
    if (row != nullptr) row[x_] = static_cast<uint8_t>(pixels_.value);
  } else {
    const int index = pixels_.isSecond ? pixels_.value & 15 : pixels_.value >> 4;
    if (row != nullptr) row[x_ / 2] = static_cast<uint8_t>(row[x_ / 2] | (x_ % 2 == 0 ? index << 4 : index));
    pixels_.isSecond = !pixels_.isSecond;
  }
  ++x_;
  if (--pixels_.count == 0) bytes_.Skip(static_cast<uint64_t>(pixels_.padding));
  return true;
}

RunOnReader::Step RunOnReader::ReadCode() noexcept {
  const int count = bytes_.Byte();
  const int code = bytes_.Byte();
  if (code < 0) return Step::kDataEnds;
  const bool wasAtStart = std::exchange(isAtStart_, false);
  if (count == 0 && code == kEndOfLine && wasAtStart) return Step::kOn;  // of the row that is full
  if (count == 0) return Follow(code);
  pixels_ = {.count = count, .value = code};
  return Step::kOn;
}

RunOnReader::Step RunOnReader::Follow(int code) noexcept {
  if (code > kDelta) {
    pixels_ = {.count = code, .isLiteral = true, .padding = LiteralBytes(code, depth_) % 2};
    return Step::kOn;
  }
  isFinished_ = code == kEndOfBitmap;
  if (code != kDelta) {
    x_ = 0;
    return Step::kRowEnds;
  }
  const int right = bytes_.Byte();
  const int rows = bytes_.Byte();
  if (rows < 0) return Step::kDataEnds;
  x_ = std::min(x_ + right, Width());
  rowsToSkip_ = std::max(rows - 1, 0);
  return rows == 0 ? Step::kOn : Step::kRowEnds;
}

}  // namespace vxkrn
