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

Reached Follow(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  RunLengthCodes codes(source, layout);
  RunLengthCode code;
  while (codes.Row() < layout.height && codes.Next(&code)) {
    if (code.kind == CodeKind::kEndOfBitmap) return {codes.Row(), false, true};
  }
  return {codes.Row(), codes.X() >= layout.width, codes.Row() >= layout.height};
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
