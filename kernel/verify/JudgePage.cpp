// Pages of icon and cursor files, against their entries and what readers of such files are used to.
#include "beyond/IconPage.h"
#include "format/Os2Icon.h"
#include "inspect/Fields.h"
#include "verify/ImageView.h"

namespace vxkrn {
namespace {

void JudgeEntry(const ImageView& view, Findings* findings) {
  const IconPart& part = *view.image.icon;
  const EntryFaults faults = FaultsOfEntry(view.source, view.image);
  const bool isCursor = part.kind == IconPart::Kind::kCursor;
  const FieldSet entry(view.source, {isCursor ? VX_PART_CURSOR_ENTRY : VX_PART_ICON_ENTRY, -1, 0, 0,
                                     bmp::EntryOffset(view.image.page), bmp::kEntrySize, 0, 0, 0, ""});
  const auto at = [&](const char* field) { return entry.Find(field)->offset; };  // the entry was read before
  const auto side = [](uint8_t stated) { return stated == 0 ? uint64_t{bmp::kLargeIcon} : uint64_t{stated}; };
  if (faults.isSizeWrong) {
    view.Add(findings, VX_FINDING_ENTRY_SIZE, at("width"), side(part.entry.Width), side(part.entry.Height));
  }
  if (faults.isDepthWrong) {
    view.Add(findings, VX_FINDING_ENTRY_DEPTH, at("bits_per_pixel"), part.entry.BitCount,
             static_cast<uint64_t>(view.image.layout.depth));
  }
  if (faults.isLengthWrong) {
    view.Add(findings, VX_FINDING_ENTRY_LENGTH, at("size"), part.entry.BytesInRes, faults.length);
  }
}

void JudgeHotSpot(const ImageView& view, Findings* findings) {
  const IconPart& part = *view.image.icon;
  const bool isOutside =
      part.hotSpot.x >= view.image.layout.width || part.hotSpot.y >= view.image.layout.height;
  if (part.kind == IconPart::Kind::kIcon || !isOutside) return;
  const uint64_t at = part.HasDirectory() ? bmp::EntryOffset(view.image.page) + bmp::entry_at::kPlanes
                                          : part.bodyOffset + bmp::os2_icon_at::kHotX;
  view.Add(findings, VX_FINDING_HOT_SPOT_OUTSIDE, at, part.hotSpot.x, part.hotSpot.y);
}

void JudgePngPage(const ImageView& view, Findings* findings) {
  const IconPart& part = *view.image.icon;
  const auto width = static_cast<uint64_t>(view.image.layout.width);
  const auto height = static_cast<uint64_t>(view.image.layout.height);
  if (part.kind == IconPart::Kind::kCursor) {
    view.Add(findings, VX_FINDING_PNG_IN_CURSOR, part.bodyOffset);
  } else if (std::max(width, height) < bmp::kLargeIcon) {
    view.Add(findings, VX_FINDING_PNG_SMALL, part.bodyOffset, width, height);
  }
}

void JudgeMask(const ImageView& view, Findings* findings) {
  const IconPart& part = *view.image.icon;
  const int height = view.image.layout.height;
  const bool areColorsThere = !view.IsPlain() || RowsThere(view.source, view.image.layout) == height;
  if (part.maskOffset != 0 && part.maskRowsThere < height && areColorsThere) {
    view.Add(findings, VX_FINDING_MASK_CUT, part.maskOffset, static_cast<uint64_t>(part.maskRowsThere),
             static_cast<uint64_t>(height));
  }
}

}  // namespace

void JudgePage(const ImageView& view, bool isReadable, Findings* findings) {
  if (!view.image.icon) return;
  const IconPart& part = *view.image.icon;
  JudgeHotSpot(view, findings);
  if (!part.HasDirectory()) return;
  JudgeEntry(view, findings);
  if (part.isPng) return JudgePngPage(view, findings);
  const bmp::BitmapLayout& layout = view.image.layout;
  if (layout.headerSize != bmp::kInfoHeaderSize) {
    view.Add(findings, VX_FINDING_HEADER_IN_ICON, layout.headerOffset, layout.headerSize);
  }
  if (part.isHeightNotDoubled) {
    view.Add(findings, VX_FINDING_HEIGHT_NOT_DOUBLED, layout.headerOffset + bmp::info_at::kHeight,
             static_cast<uint64_t>(layout.height));
  } else if (isReadable) {
    JudgeMask(view, findings);
  }
}

}  // namespace vxkrn
