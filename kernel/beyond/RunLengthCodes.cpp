// The second byte after a 0: the end of a row, of the picture, a jump, or how many pixels follow one by one.
#include "beyond/RunLengthCodes.h"

#include <algorithm>

namespace vxkrn {

bool RunLengthCodes::Next(RunLengthCode* code) noexcept {
  if (isFinished_) return false;
  *code = {.row = row_, .x = x_, .offset = bytes_.Position()};
  const int count = bytes_.Byte();
  const bool isWhole = count > 0 ? ReadRun(count, code) : count == 0 && ReadEscape(code);
  code->length = bytes_.Position() - code->offset;
  isFinished_ = !isWhole || code->kind == CodeKind::kEndOfBitmap;
  return isWhole;
}

bool RunLengthCodes::ReadRun(int count, RunLengthCode* code) noexcept {
  code->count = count;
  const int bytes = depth_ == 24 ? 3 : 1;  // blue first
  for (int i = 0; i < bytes; ++i) {
    const int next = bytes_.Byte();
    if (next < 0) return false;
    code->value |= next << (8 * i);
  }
  x_ += count;
  return true;
}

bool RunLengthCodes::ReadEscape(RunLengthCode* code) noexcept {
  const int what = bytes_.Byte();
  if (what < 0) return false;
  switch (what) {
    case bmp::kEndOfLine:
      code->kind = CodeKind::kEndOfLine;
      EndRows(1);
      x_ = 0;
      return true;
    case bmp::kEndOfBitmap: code->kind = CodeKind::kEndOfBitmap; return true;
    case bmp::kDelta:
      code->kind = CodeKind::kDelta;
      code->count = bytes_.Byte();
      code->value = bytes_.Byte();
      if (code->value < 0) return false;
      x_ += code->count;
      EndRows(code->value);
      return true;
    default:
      code->kind = CodeKind::kLiteral;
      code->count = what;
      x_ += what;
      bytes_.Skip(LiteralBytes(what));
      return true;
  }
}

void RunLengthCodes::EndRows(int rows) noexcept {
  row_ = std::min(row_, height_) + rows;
}

/// Codes begin at even places.
uint64_t RunLengthCodes::LiteralBytes(int count) const noexcept {
  const uint64_t bits = static_cast<uint64_t>(count) * static_cast<uint64_t>(depth_);
  const uint64_t bytes = (bits + 7) / 8;
  return bytes + bytes % 2;
}

}  // namespace vxkrn
