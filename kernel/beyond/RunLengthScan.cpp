// Counts rows by the codes that end them.
#include "beyond/RunLengthScan.h"

#include <algorithm>

#include "beyond/RunLengthCodes.h"

namespace vxkrn {
namespace {

/// Whether the data is as long as the header says and ends with an end-of-bitmap code, as that of most files
/// does.
bool EndsAsDeclared(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  if (layout.imageSize < 2) return false;
  const auto end = source.BlockAt<2>(layout.pixelOffset + layout.imageSize - 2);
  return end[0] == 0 && end[1] == bmp::kEndOfBitmap;
}

/// Where the codes lead.
struct Reached {
  int row = 0;  ///< that the next code would be for
  bool isRowFull = false;
  bool isComplete = false;
};

/// The pixel behind the last one that a code gives: of a literal that the file ends in some are there.
int64_t ReachOf(const vx_source& source, const RunLengthCode& code, int depth) noexcept {
  constexpr uint64_t kCodeBytes = 2;
  const int64_t size = source.Size();
  if (code.kind != CodeKind::kLiteral || size < 0) return code.x + code.count;
  const uint64_t end = std::min(static_cast<uint64_t>(size), code.offset + code.length);
  const uint64_t there = end - std::min(end, code.offset + kCodeBytes);
  return code.x + std::min<int64_t>(code.count, static_cast<int64_t>(there) * 8 / depth);
}

Reached Follow(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  RunLengthCodes codes(source, layout);
  RunLengthCode code;
  RunLengthCode last;
  while (codes.Row() < layout.height && codes.Next(&code)) {
    if (code.kind == CodeKind::kEndOfBitmap) return {codes.Row(), false, true};
    last = code;
  }
  const bool isInRow = last.kind != CodeKind::kEndOfLine && last.row == codes.Row();
  const bool isRowFull = isInRow && ReachOf(source, last, layout.depth) >= layout.width;
  return {codes.Row(), isRowFull, codes.Row() >= layout.height};
}

}  // namespace

int RowsCoded(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  if (EndsAsDeclared(source, layout)) return layout.height;
  const Reached reached = Follow(source, layout);
  return reached.isComplete ? layout.height : reached.row + (reached.isRowFull ? 1 : 0);
}

int RowsTouched(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  const int64_t size = source.Size();
  // A row takes two bytes at least, unless it is jumped over.
  if (size < 0 || layout.height <= size) return layout.height;
  return std::min(Follow(source, layout).row + 1, layout.height);
}

}  // namespace vxkrn
