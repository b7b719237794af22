// A bitmap alone in its file says in two fields where things are, so that what lies between can go. In other
// files only what lies behind everything can.
#include <algorithm>

#include "beyond/BitmapFile.h"
#include "inspect/FileParts.h"
#include "verify/Judge.h"
#include "verify/Mend.h"

namespace vxkrn {
namespace {

struct Gap {
  uint64_t begin;
  uint64_t end;
};
using Gaps = memory::Vector<Gap>;  // in the order of the file

/// The one image of the source, if that is a bitmap file that some reader takes.
std::optional<BitmapImage> SingleBitmap(const vx_source& source) noexcept {
  std::optional<BitmapImage> image;
  const bool isFound = FindBitmap(source, 1, &image) == STATUS_OK && image;
  const bool isSingle = isFound && !image->icon && image->layout.hasFileHeader &&
                        image->layout.headerOffset == bmp::kFileHeaderSize &&
                        CheckBitmap(*image) == STATUS_OK;
  return isSingle ? image : std::nullopt;
}

Gaps FindGaps(vx_source& source, bool alsoWithin) {
  const auto size = static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
  memory::Vector<vx_part> parts;
  Gaps gaps;
  if (FindParts(source, &parts) != STATUS_OK) return gaps;
  SettleParts(size, &parts);
  const bool isKnown = std::none_of(parts.begin(), parts.end(),
                                    [](const vx_part& part) { return part.kind == VX_PART_UNKNOWN; });
  for (const vx_part& part : parts) {
    const uint64_t end = part.offset + part.length;
    const bool isTail = part.parent < 0 && end >= size;
    const bool isGap = part.kind == VX_PART_UNREFERENCED && !IsPadding(source, part);
    if (isGap && isKnown && (isTail || alsoWithin)) gaps.push_back({part.offset, end});
  }
  std::sort(gaps.begin(), gaps.end(),
            [](const Gap& one, const Gap& other) { return one.begin < other.begin; });
  return gaps;
}

/// Where a byte comes to stand.
uint64_t Moved(const Gaps& gaps, uint64_t offset) noexcept {
  uint64_t to = offset;
  for (const Gap& gap : gaps) {
    if (gap.begin < offset) to -= std::min(gap.end, offset) - gap.begin;
  }
  return to;
}

void Store(uint64_t at, uint64_t value, Content* content) {
  for (uint32_t i = 0; i < 4 && at + i < content->size(); ++i)
    (*content)[static_cast<std::size_t>(at + i)] = static_cast<uint8_t>(value >> 8 * i);
}

void TellOfMoves(const bmp::BitmapLayout& layout, const Gaps& gaps, Content* content) {
  Store(bmp::file_at::kDataOffset, Moved(gaps, layout.pixelOffset), content);
  if (layout.colour.profileSize == 0) return;
  const uint64_t profile = Moved(gaps, layout.colour.profileOffset) - layout.headerOffset;
  Store(layout.headerOffset + bmp::long_at::kProfileOffset, profile, content);
}

}  // namespace

bool MendGaps(vx_source& source, Content* content) {
  const std::optional<BitmapImage> image = SingleBitmap(source);
  const Gaps gaps = FindGaps(source, image.has_value());
  if (gaps.empty()) return false;
  if (image) TellOfMoves(image->layout, gaps, content);
  const std::span<uint8_t> all(*content);
  std::size_t kept = 0;
  const auto keep = [&](uint64_t begin, uint64_t end) {
    const auto bytes = all.subspan(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
    std::copy(bytes.begin(), bytes.end(), all.begin() + static_cast<std::ptrdiff_t>(kept));
    kept += bytes.size();
  };
  uint64_t from = 0;
  for (const auto& gap : gaps) {
    keep(from, std::min<uint64_t>(gap.begin, all.size()));
    from = std::min<uint64_t>(gap.end, all.size());
  }
  keep(from, all.size());
  content->resize(kept);
  return true;
}

}  // namespace vxkrn
