// A finding about a number knows where that stands and what it should be.
#include <algorithm>

#include "beyond/Animation.h"
#include "beyond/IconPage.h"
#include "format/HeaderEncoding.h"
#include "verify/Mend.h"

namespace vxkrn {
namespace {

struct FieldMend {
  int code;
  uint32_t size;  ///< bytes of the field
  bool isOne;     ///< 1 is right; else the finding's second number is
};
constexpr FieldMend kFieldMends[] = {{VX_FINDING_FILE_SIZE, 4, false},     {VX_FINDING_DATA_OFFSET, 4, false},
                                     {VX_FINDING_IMAGE_SIZE, 4, false},    {VX_FINDING_PLANES, 2, true},
                                     {VX_FINDING_PALETTE_COUNT, 4, false}, {VX_FINDING_ENTRY_DEPTH, 2, false},
                                     {VX_FINDING_ENTRY_LENGTH, 4, false}};

void Put(int64_t offset, uint64_t value, uint32_t size, Content* content) {
  const auto at = static_cast<uint64_t>(offset);
  const bool fits = value >> (8 * size - 1) >> 1 == 0;
  if (!fits || at + size > content->size()) return;
  for (uint32_t i = 0; i < size; ++i)
    (*content)[static_cast<std::size_t>(at + i)] = static_cast<uint8_t>(value >> 8 * i);
}

/// The entry's two sides, of a page of the file itself.
void PutSides(const vx_source& source, const Found& found, Content* content) {
  std::optional<BitmapImage> image;
  if (IsAnimation(source) || FindIconPage(source, found.page, &image) != STATUS_OK || !image) return;
  if (image->icon->isPng && !image->icon->isWholePng) return;
  Put(found.offset, bmp::EntrySide(image->layout.width), 1, content);
  Put(found.offset + 1, bmp::EntrySide(image->layout.height), 1, content);
}

}  // namespace

void MendFields(const vx_source& source, std::span<const Found> findings, Content* content) {
  for (const Found& found : findings) {
    if (found.code == VX_FINDING_ENTRY_SIZE) PutSides(source, found, content);
    const auto* const mend = std::find_if(std::begin(kFieldMends), std::end(kFieldMends),
                                          [&](const FieldMend& each) { return each.code == found.code; });
    if (mend == std::end(kFieldMends)) continue;
    Put(found.offset, mend->isOne ? 1 : static_cast<uint64_t>(found.second), mend->size, content);
  }
}

}  // namespace vxkrn
