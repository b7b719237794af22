// Numbers that headers say twice, or that the file says better.
#include "bitmap/Bitmap.h"
#include "inspect/BitmapParts.h"
#include "inspect/Fields.h"
#include "verify/ImageView.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;

/// A bitmap alone in its file. Files of OS/2 say how long their headers are.
void JudgeFileHeader(const ImageView& view, bool isReadable, Findings* findings) {
  const BitmapLayout& layout = view.image.layout;
  if (!layout.hasFileHeader || layout.headerOffset < bmp::kFileHeaderSize) return;
  const uint64_t begin = layout.headerOffset - bmp::kFileHeaderSize;
  const FieldSet header(view.source,
                        {VX_PART_FILE_HEADER, -1, 0, 0, begin, bmp::kFileHeaderSize, 0, 0, 0, ""});
  if (const vx_field* said = header.Find("data_offset");
      isReadable && layout.isOffsetMended && said != nullptr) {
    view.Add(findings, VX_FINDING_DATA_OFFSET, said->offset, layout.dataOffset, layout.pixelOffset);
  }
  const vx_field* said = header.Find("file_size");
  if (begin != 0 || view.image.icon || said == nullptr) return;
  const auto size = static_cast<uint64_t>(said->value);
  const bool isOs2s =
      layout.family != bmp::HeaderFamily::kWindows && size == bmp::kFileHeaderSize + layout.headerSize;
  if (size != view.FileSize() && !isOs2s) {
    view.Add(findings, VX_FINDING_FILE_SIZE, said->offset, size, view.FileSize());
  }
}

/// Icons may count the mask.
void JudgeImageSize(const ImageView& view, const vx_field& said, Findings* findings) {
  const BitmapLayout& layout = view.image.layout;
  const auto size = static_cast<uint64_t>(said.value);
  const auto height = static_cast<uint64_t>(layout.height);
  if (size == 0 || view.HasCodes()) return;  // codes say themselves how long they are
  const uint64_t own = view.IsPlain() ? layout.StoredStride() * height : view.RoomBehind(layout.pixelOffset);
  const bool isWrong = view.IsPlain() ? size != own : size > own;
  const uint64_t mask = static_cast<uint64_t>(Stride(layout.width, 1)) * height;
  const bool countsMask = view.IsPage() && size == own + mask;
  if (isWrong && !countsMask) view.Add(findings, VX_FINDING_IMAGE_SIZE, said.offset, size, own);
}

void JudgeImageHeader(const ImageView& view, bool isReadable, Findings* findings) {
  const BitmapLayout& layout = view.image.layout;
  const FieldSet header(view.source, HeaderPartOf(layout));
  const vx_field* said = header.Find("planes");
  if (said != nullptr && said->value != 1) {
    view.Add(findings, VX_FINDING_PLANES, said->offset, static_cast<uint64_t>(said->value));
  }
  if (said = header.Find("colors_used"); said != nullptr && layout.depth >= 1 && layout.depth <= 8) {
    const uint64_t most = bmp::PaletteSize(layout.depth);
    const auto count = static_cast<uint64_t>(said->value);
    if (count > most) view.Add(findings, VX_FINDING_PALETTE_COUNT, said->offset, count, most);
  }
  if (!isReadable) return;
  if (said = header.Find("image_size"); said != nullptr) JudgeImageSize(view, *said, findings);
  const bool isCoded = view.HasCodes() || view.image.decoder == bmp::Decoder::kHuffman;
  if (said = header.Find("height"); layout.isTopDown && isCoded && said != nullptr) {
    view.Add(findings, VX_FINDING_TOP_DOWN_COMPRESSED, said->offset);
  }
}

}  // namespace

bool JudgeHeaders(const ImageView& view, Findings* findings) {
  const BitmapLayout& layout = view.image.layout;
  if (layout.headerSize == 0) return true;
  const bool isReadable = CheckBitmap(view.image) == STATUS_OK;
  if (!isReadable) {
    findings->AddFailure(VX_FINDING_UNREADABLE, view.place.page, view.place.base + layout.headerOffset);
  }
  JudgeFileHeader(view, isReadable, findings);
  JudgeImageHeader(view, isReadable, findings);
  if (layout.paletteCount < layout.paletteDeclared) {
    view.Add(findings, VX_FINDING_PALETTE_SHORT, layout.paletteOffset, layout.paletteCount,
             layout.paletteDeclared);
  }
  if (!isReadable || !view.IsPlain()) return isReadable;
  const int there = RowsThere(view.source, layout);
  if (there < layout.height) {
    view.Add(findings, VX_FINDING_ROWS_MISSING, view.FileSize(), static_cast<uint64_t>(there),
             static_cast<uint64_t>(layout.height));
  }
  return isReadable;
}

}  // namespace vxkrn
