// Files end with their last stored row, which is the top one as a rule.
#include "jobs/MissingRows.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace cli {

void FillMissingRows(const vx::Source& source, const vx_load_options& options, const Rgba& color,
                     vx::Bitmap* picture) {
  const vx_bitmap_info info = picture->Describe();
  if (info.rows_present >= info.height) return;
  const int orientation =
      options.raw != nullptr ? options.raw->orientation : source.Describe(options.page).orientation;
  const size_t rowBytes = static_cast<size_t>(info.width) * color.size();
  const size_t missing = static_cast<size_t>(info.height - info.rows_present) * rowBytes;
  std::vector<uint8_t> pixels = picture->Rgba();
  const size_t first = orientation == VX_TOP_DOWN ? pixels.size() - missing : 0;
  for (size_t i = 0; i < missing; ++i) pixels[first + i] = color[i % color.size()];
  *picture = vx::Bitmap::FromRgba(info.width, info.height, pixels.data());
}

}  // namespace cli
