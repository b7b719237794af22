// Looks at every pixel, as stored: what no colour is there for, alpha and mask that do not agree, streams
// that cannot be decoded to their end.
#include "base/Errors.h"
#include "beyond/ByteReader.h"
#include "beyond/PngReader.h"
#include "beyond/RowReader.h"
#include "bitmap/Bitmap.h"
#include "verify/ImageView.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;
using bmp::Decoder;

/// Whether a row, and another one beside it, may be held.
bool FitsRow(uint64_t bytes) noexcept {
  return memory::Fits(2 * bytes);
}

struct UnknownColors {
  uint64_t count = 0;
  uint64_t firstAt = 0;
};

void CountUnknown(const BitmapLayout& layout, const uint8_t* row, uint64_t at, UnknownColors* unknown) {
  const int depth = layout.depth;
  const int perByte = 8 / depth;
  const auto last = static_cast<int>(bmp::PaletteSize(depth)) - 1;
  for (int x = 0; x < layout.width; ++x) {
    const int shift = 8 - depth * (x % perByte + 1);
    const int index = row[x / perByte] >> shift & last;
    if (static_cast<uint32_t>(index) < layout.paletteCount) continue;
    if (unknown->count++ == 0) unknown->firstAt = at + static_cast<uint64_t>(x / perByte);
  }
}

void JudgeIndices(const ImageView& view, int rows, Findings* findings) {
  const BitmapLayout& layout = view.image.layout;
  if (layout.depth > 8 || layout.paletteCount >= bmp::PaletteSize(layout.depth)) return;
  memory::Vector<uint8_t> row(static_cast<std::size_t>(layout.StoredStride()));
  ByteReader bytes(view.source, layout.pixelOffset);
  UnknownColors unknown;
  for (int i = 0; i < rows; ++i) {
    const uint64_t at = bytes.Position();
    (void)bytes.Read(row.data(), row.size());  // of the last row the padding may be missing
    CountUnknown(layout, row.data(), at, &unknown);
  }
  if (unknown.count > 0) {
    view.Add(findings, VX_FINDING_PALETTE_INDEX, unknown.firstAt, unknown.count, layout.paletteCount);
  }
}

/// The bits of a pixel that are alpha; icons need not say so.
uint32_t AlphaMaskOf(const ImageView& view) noexcept {
  constexpr uint32_t kHighest = 0xFF000000;
  const BitmapLayout& layout = view.image.layout;
  if (layout.HasFields()) return layout.masks.alpha;
  return view.IsPage() && layout.depth == 32 ? kHighest : 0;
}

struct AlphaFaults {
  bool isInUse = false;
  uint64_t disagreeing = 0;
  uint64_t softHidden = 0;
};

/// @param mask null where no row of it is there
void JudgeAlphaRow(const BitmapLayout& layout, uint32_t alphaMask, const uint8_t* row, const uint8_t* mask,
                   AlphaFaults* faults) noexcept {
  constexpr int kHalf = 128;
  constexpr int kOpaque = 255;
  const int bytes = layout.depth / 8;
  for (int x = 0; x < layout.width; ++x, row += bytes) {
    uint32_t pixel = 0;
    for (int i = 0; i < bytes; ++i) pixel |= uint32_t{row[i]} << 8 * i;
    faults->isInUse = faults->isInUse || (pixel & alphaMask) != 0;
    if (mask == nullptr) continue;
    const int alpha = row[3];
    const bool isHidden = (mask[x / 8] >> (7 - x % 8) & 1) != 0;
    const bool isSoft = alpha >= kHalf && alpha < kOpaque;
    if (isSoft && isHidden) ++faults->softHidden;
    if (isHidden ? alpha == kOpaque : alpha == 0) ++faults->disagreeing;
  }
}

AlphaFaults FindAlphaFaults(const ImageView& view, uint32_t alphaMask, int rows) {
  constexpr uint32_t kBytes = 0xFF000000;
  const BitmapLayout& layout = view.image.layout;
  const bool hasMask =
      view.IsPage() && layout.depth == 32 && alphaMask == kBytes && view.image.icon->maskOffset != 0;
  const int maskRows = hasMask ? std::min(view.image.icon->maskRowsThere, rows) : 0;
  memory::Vector<uint8_t> row(static_cast<std::size_t>(layout.StoredStride()));
  memory::Vector<uint8_t> maskRow(static_cast<std::size_t>(Stride(layout.width, 1)));
  ByteReader bytes(view.source, layout.pixelOffset);
  ByteReader maskBytes(view.source, hasMask ? view.image.icon->maskOffset : 0);
  AlphaFaults faults;
  for (int i = 0; i < rows; ++i) {
    (void)bytes.Read(row.data(), row.size());
    if (i < maskRows) (void)maskBytes.Read(maskRow.data(), maskRow.size());
    JudgeAlphaRow(layout, alphaMask, row.data(), i < maskRows ? maskRow.data() : nullptr, &faults);
  }
  return faults;
}

void JudgeAlpha(const ImageView& view, int rows, Findings* findings) {
  const uint32_t alphaMask = AlphaMaskOf(view);
  if (alphaMask == 0) return;
  const uint64_t pixels = view.image.layout.pixelOffset;
  const AlphaFaults faults = FindAlphaFaults(view, alphaMask, rows);
  if (!faults.isInUse) return view.Add(findings, VX_FINDING_ALPHA_EMPTY, pixels);
  const auto add = [&](vx_finding_code code, uint64_t count) {
    if (count > 0) view.Add(findings, code, view.image.icon->maskOffset, count);
  };
  add(VX_FINDING_MASK_DISAGREES, faults.disagreeing);
  add(VX_FINDING_SOFT_EDGES_LOST, faults.softHidden);
}

/// @return STATUS_OK, or a failure; one without a detail where rows are missing, of which `there` are not
int DecodeRows(const ImageView& view, int* there) {
  memory::Owned<RowReader> reader;
  int status = MakeRowReader(view.source, view.image, &reader);
  if (status != STATUS_OK) return status;
  memory::Vector<uint8_t> row(static_cast<std::size_t>(Stride(view.image.layout.width, 32)));
  *there = 0;
  for (; *there < view.image.layout.height; ++*there) {
    std::fill(row.begin(), row.end(), uint8_t{0});
    status = reader->Next(row.data());
    if (status != STATUS_OK) return status;
  }
  return status;
}

int DecodePngAt(const ImageView& view, uint64_t offset) {
  ByteReader bytes(view.source, offset);
  OwnedBitmap bitmap;
  PngDescription description = {};
  return SettlePng(DecodePng(InputFrom(bytes), 0, &bitmap, &description));
}

void JudgeStream(const ImageView& view, Findings* findings) {
  const uint64_t offset =
      view.IsPng() && view.image.icon ? view.image.icon->bodyOffset : view.image.layout.pixelOffset;
  int there = 0;
  const int status = view.IsPng() ? DecodePngAt(view, offset) : DecodeRows(view, &there);
  if (status == STATUS_OK || status == VX_NOT_SUPPORTED) return;
  if (status == STATUS_NO_MEMORY) {
    BeginCall();
    return view.Add(findings, VX_FINDING_NOT_LOOKED_AT, offset);
  }
  if (!Detail().Empty()) {
    return findings->AddFailure(VX_FINDING_STREAM_DAMAGED, view.place.page, view.place.base + offset);
  }
  view.Add(findings, VX_FINDING_ROWS_MISSING, view.FileSize(), static_cast<uint64_t>(there),
           static_cast<uint64_t>(view.image.layout.height));
}

/// Bytes of a stream, or of what it becomes, whichever is more.
bool MayDecode(const ImageView& view, PixelBudget* budget) noexcept {
  const BitmapLayout& layout = view.image.layout;
  const uint64_t offset = view.IsPng() && view.image.icon ? view.image.icon->bodyOffset : layout.pixelOffset;
  const uint64_t said = view.image.icon ? view.image.icon->ownSize : layout.imageSize;
  const uint64_t room = view.RoomBehind(offset);
  const bool isHoldable = view.IsPng() || memory::Fits(PictureBytes(layout.width, layout.height, 32));
  return isHoldable && budget->Take(said == 0 ? room : std::min(said, room));
}

}  // namespace

void JudgePixels(const ImageView& view, PixelBudget* budget, Findings* findings) {
  const BitmapLayout& layout = view.image.layout;
  if (view.HasCodes()) return JudgeCodes(view, budget, findings);
  const bool isPlain = view.IsPlain();
  if (!isPlain) {
    if (MayDecode(view, budget)) return JudgeStream(view, findings);
    return view.Add(findings, VX_FINDING_NOT_LOOKED_AT, layout.pixelOffset);
  }
  const int rows = RowsThere(view.source, layout);
  const uint64_t stride = layout.StoredStride();
  if (rows == 0 || layout.depth > 32) return;
  if (!FitsRow(stride) || !budget->Take(stride * static_cast<uint64_t>(rows))) {
    return view.Add(findings, VX_FINDING_NOT_LOOKED_AT, layout.pixelOffset);
  }
  JudgeIndices(view, rows, findings);
  JudgeAlpha(view, rows, findings);
}

}  // namespace vxkrn
