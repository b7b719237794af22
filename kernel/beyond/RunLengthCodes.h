// The codes of run-length data one by one, with the place in the picture that each is for. Knows nothing of
// what the pixels are for, and believes no size: data that is cut off ends before the code that is.
//
// A first byte of 0 means that the second says what follows; any other is a count.
#pragma once

#include "beyond/ByteReader.h"
#include "format/BitmapLayout.h"

namespace vxkrn {

enum class CodeKind : uint8_t { kRun, kLiteral, kEndOfLine, kEndOfBitmap, kDelta };

struct RunLengthCode {
  CodeKind kind = CodeKind::kRun;
  int row = 0;    ///< as stored, from 0, where the code begins
  int64_t x = 0;  ///< pixel in that row
  int count = 0;  ///< pixels of runs and literals, and those that a delta goes to the right
  int value = 0;  ///< of a run as stored, 24-bit ones as 0xRRGGBB; rows that a delta goes on
  uint64_t offset = 0;
  uint64_t length = 0;  ///< bytes, padding among them
};

class RunLengthCodes {
 public:
  /// Of 4, 8 or 24 bits. Source and layout must outlive it.
  RunLengthCodes(const vx_source& source, const bmp::BitmapLayout& layout) noexcept
      : depth_(layout.depth), height_(layout.height), bytes_(source, layout.pixelOffset) {}

  /// Reads the next code. @return false where none is left, or the data ends in the middle of it
  bool Next(RunLengthCode* code) noexcept;

  /// The place that the next code is for. A row behind the last one stays at most so many rows behind it as a
  /// delta can go.
  [[nodiscard]] int Row() const noexcept { return row_; }
  [[nodiscard]] int64_t X() const noexcept { return x_; }

 private:
  bool ReadRun(int count, RunLengthCode* code) noexcept;
  bool ReadEscape(RunLengthCode* code) noexcept;
  void EndRows(int rows) noexcept;
  [[nodiscard]] uint64_t LiteralBytes(int count) const noexcept;

  int depth_;
  int height_;
  ByteReader bytes_;
  int row_ = 0;
  int64_t x_ = 0;
  bool isFinished_ = false;
};

}  // namespace vxkrn
