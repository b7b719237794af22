// Decodes run-length codes of 24 bits.
#include "beyond/Rle24Reader.h"

#include <algorithm>
#include <cstring>

namespace vxkrn {
namespace {

using bmp::kDelta;
using bmp::kEndOfBitmap;

constexpr int kPixelBytes = 3;

}  // namespace

int Rle24Reader::DecodeRow(uint8_t* row) {
  if (isFinished_) return STATUS_OK;
  if (rowsToSkip_ > 0) {
    --rowsToSkip_;
    return STATUS_OK;
  }
  Step step = Step::kOn;
  while (step == Step::kOn) {
    const int count = bytes_.Byte();
    if (count < 0) {
      step = Step::kDataEnds;
    } else {
      step = count > 0 ? Run(count, row) : Escape(row);
    }
  }
  if (step == Step::kRowEnds) return STATUS_OK;
  const bool isWhole = x_ == Width();
  x_ = 0;
  return isWhole ? STATUS_OK : STATUS_READ_ERROR;
}

Rle24Reader::Step Rle24Reader::Run(int count, uint8_t* row) noexcept {
  uint8_t color[kPixelBytes];
  if (bytes_.Read(color, sizeof color) < sizeof color) return Step::kDataEnds;
  const int end = x_ + Clip(count);
  for (int x = x_; row != nullptr && x < end; ++x) std::memcpy(row + kPixelBytes * x, color, kPixelBytes);
  x_ = end;
  return Step::kOn;
}

Rle24Reader::Step Rle24Reader::Literal(int count, uint8_t* row) noexcept {
  uint8_t colors[256 * kPixelBytes];
  const auto size = std::size_t{kPixelBytes} * static_cast<std::size_t>(count);
  const std::size_t got = bytes_.Read(colors, size);
  bytes_.Skip(size % 2);  // codes begin at even places
  const int there = Clip(static_cast<int>(got / kPixelBytes));
  if (row != nullptr) {
    std::memcpy(row + kPixelBytes * x_, colors, std::size_t{kPixelBytes} * static_cast<std::size_t>(there));
  }
  x_ += there;
  return got < size ? Step::kDataEnds : Step::kOn;
}

Rle24Reader::Step Rle24Reader::Delta() noexcept {
  const int right = bytes_.Byte();
  const int rows = bytes_.Byte();
  if (rows < 0) return Step::kDataEnds;
  x_ += Clip(right);
  if (rows == 0) return Step::kOn;
  rowsToSkip_ = rows - 1;
  return Step::kRowEnds;
}

Rle24Reader::Step Rle24Reader::Escape(uint8_t* row) noexcept {
  const int code = bytes_.Byte();
  if (code < 0) return Step::kDataEnds;
  if (code == kDelta) return Delta();
  if (code > kDelta) return Literal(code, row);
  isFinished_ = code == kEndOfBitmap;
  x_ = 0;
  return Step::kRowEnds;
}

}  // namespace vxkrn
