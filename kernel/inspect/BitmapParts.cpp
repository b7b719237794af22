// What a layout says of places is told as it is, be it beyond the end of the file; only lengths that nothing
// states are taken from what is there.
#include "inspect/BitmapParts.h"

#include <algorithm>

#include "base/Errors.h"
#include "beyond/Os2Icon.h"
#include "beyond/RunLengthCodes.h"
#include "bitmap/Bitmap.h"
#include "format/Os2Icon.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;
using bmp::Decoder;

uint64_t FileSize(const vx_source& source) noexcept {
  return static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
}

uint64_t ToTheEnd(const vx_source& source, uint64_t offset) noexcept {
  return FileSize(source) - std::min(FileSize(source), offset);
}

vx_part_kind HeaderKind(const BitmapLayout& layout) noexcept {
  switch (layout.family) {
    case bmp::HeaderFamily::kCore: return VX_PART_CORE_HEADER;
    case bmp::HeaderFamily::kOs2: return VX_PART_OS2_HEADER;
    case bmp::HeaderFamily::kWindows: break;
  }
  return VX_PART_INFO_HEADER;
}

bool HasSides(const BitmapLayout& layout) noexcept {
  const auto isSide = [](int side) { return side >= 1 && side <= kLongestSide; };
  return isSide(layout.width) && isSide(layout.height);
}

/// Bytes of run-length codes up to the one that ends the picture.
uint64_t CodeBytes(const vx_source& source, const BitmapLayout& layout, PartList* list) noexcept {
  RunLengthCodes codes(source, layout);
  RunLengthCode code;
  uint64_t end = layout.pixelOffset;
  while (codes.Row() < layout.height && list->MayWalkOn(code.length, FileSize(source)) && codes.Next(&code)) {
    end = code.offset + code.length;
  }
  const bool isEnded =
      codes.Row() >= layout.height && codes.Next(&code) && code.kind == CodeKind::kEndOfBitmap;
  if (isEnded) end = code.offset + code.length;
  return end - layout.pixelOffset;
}

/// A table behind the header of pixels that need none, which displays of few colours may use.
void AddOptionalTable(const vx_source& source, const BitmapLayout& layout, PartList* list) {
  const auto field = source.BlockAt<4>(layout.headerOffset + bmp::info_at::kColoursUsed);
  const uint32_t count = bmp::LoadU32(bmp::View<4>(field), 0);
  const bool isThere = layout.depth > 8 && layout.headerSize >= bmp::kInfoHeaderSize && count > 0 &&
                       count <= 256 && layout.paletteOffset + uint64_t{count} * 4 <= layout.pixelOffset;
  if (isThere) list->Add(VX_PART_COLOR_TABLE, layout.paletteOffset, count, 4);
}

void AddRows(vx_part_kind kind, uint64_t offset, int rows, uint64_t stride, PartList* list) {
  if (stride > UINT32_MAX) {
    list->Add(kind, offset, stride * static_cast<uint64_t>(rows));
  } else {
    list->Add(kind, offset, static_cast<uint32_t>(rows), static_cast<uint32_t>(stride));
  }
}

void AddPixels(const vx_source& source, const BitmapImage& image, PartList* list) {
  const BitmapLayout& layout = image.layout;
  const uint64_t room = ToTheEnd(source, layout.pixelOffset);
  const uint64_t stated = layout.imageSize != 0 ? layout.imageSize : room;
  if (image.decoder == Decoder::kPng) {
    (void)AddPngParts(source, layout.pixelOffset, layout.pixelOffset + std::min(stated, room), list);
  } else if (image.decoder == Decoder::kNone || !HasSides(layout)) {
    if (room > 0) list->Add(VX_PART_UNKNOWN, layout.pixelOffset, std::min(stated, room));
  } else if (IsPlain(layout, image.decoder)) {
    AddRows(VX_PART_PIXELS, layout.pixelOffset, layout.height, layout.StoredStride(), list);
  } else {
    const bool isRunLength = image.decoder == Decoder::kFilter || image.decoder == Decoder::kRle24;
    const bool isWalked = isRunLength && layout.imageSize == 0;
    list->Add(VX_PART_PIXELS, layout.pixelOffset, isWalked ? CodeBytes(source, layout, list) : stated);
  }
}

void AddMasks(const BitmapImage& image, PartList* list) {
  if (!image.icon || image.icon->isPng || !HasSides(image.layout)) return;
  const auto stride = static_cast<uint64_t>(Stride(image.layout.width, 1));
  const uint64_t colors = image.layout.pixelOffset;
  const IconPart& part = *image.icon;
  if (part.xorOffset != 0 && part.xorOffset != colors) {
    AddRows(VX_PART_XOR_MASK, part.xorOffset, image.layout.height, stride, list);
  }
  if (part.maskOffset != 0) AddRows(VX_PART_AND_MASK, part.maskOffset, image.layout.height, stride, list);
}

/// The headers of the mask that stand before an OS/2 icon's, and behind them those of its colours.
void AddOs2IconHeaders(const vx_source& source, const BitmapImage& image, PartList* list) {
  constexpr uint64_t kBehind = bmp::kFileHeaderSize;
  const uint64_t first = image.icon->bodyOffset;
  list->Add(VX_PART_OS2_ICON_HEADER, first, bmp::kFileHeaderSize);
  if (image.layout.headerOffset == first + kBehind) return;
  bmp::LayoutBytes bytes{};
  (void)source.Peek(bytes.data(), bytes.size(), first + kBehind);
  const BitmapLayout mask = bmp::LayOut(bytes, first + kBehind, false, 0);
  list->Add(HeaderKind(mask), mask.headerOffset, mask.headerSize);
  if (mask.paletteCount > 0) {
    list->Add(VX_PART_COLOR_TABLE, mask.paletteOffset, mask.paletteCount, mask.paletteEntrySize);
  }
  list->Add(VX_PART_OS2_ICON_HEADER, image.layout.headerOffset - kBehind, bmp::kFileHeaderSize);
}

/// A file header, and an image header of whatever length it says, of what no reader takes.
void AddUnknownBitmap(const vx_source& source, PartList* list) {
  const auto start = source.BlockAt<bmp::kFileHeaderSize + 4>(0);
  const bmp::View<bmp::kFileHeaderSize + 4> view(start);
  const auto signature = bmp::LoadU16(view, bmp::file_at::kSignature);
  if (signature != bmp::kBitmapSignature) {
    list->Add(VX_PART_UNKNOWN, 0, FileSize(source));
    return;
  }
  list->Add(VX_PART_FILE_HEADER, 0, bmp::kFileHeaderSize);
  const uint32_t size = bmp::LoadU32(view, bmp::kFileHeaderSize);
  const auto family = bmp::FamilyOf(size);
  if (FileSize(source) <= bmp::kFileHeaderSize + sizeof size || size == 0) return;
  BitmapLayout layout;
  layout.family = family;
  list->Add(HeaderKind(layout), bmp::kFileHeaderSize, size);
}

}  // namespace

vx_part HeaderPartOf(const BitmapLayout& layout) noexcept {
  return {HeaderKind(layout), -1, 0, 0, layout.headerOffset, layout.headerSize, 0, 0, 0, ""};
}

void AddImageParts(const vx_source& source, const BitmapImage& image, PartList* list) {
  const BitmapLayout& layout = image.layout;
  if (image.icon && image.icon->isPng) {
    const uint64_t begin = image.icon->bodyOffset;
    (void)AddPngParts(source, begin, FileSize(source), list);
    return;
  }
  list->Add(HeaderKind(layout), layout.headerOffset, layout.headerSize);
  if (const uint32_t bytes = bmp::layout::MaskBytesBehind(layout); bytes > 0) {
    list->Add(VX_PART_MASKS, layout.headerOffset + layout.headerSize, bytes);
  }
  if (layout.paletteCount > 0) {
    list->Add(VX_PART_COLOR_TABLE, layout.paletteOffset, layout.paletteCount, layout.paletteEntrySize);
  } else {
    AddOptionalTable(source, layout, list);
  }
  const uint64_t behindTable =
      std::max<uint64_t>(layout.PaletteEnd(), layout.headerOffset + layout.headerSize);
  const bool repeatsMasks = !layout.hasFileHeader && !image.icon && layout.HasFields() &&
                            layout.pixelOffset == behindTable + bmp::kMasksSize;
  if (repeatsMasks) list->Add(VX_PART_MASKS, behindTable, bmp::kMasksSize);
  AddPixels(source, image, list);
  AddMasks(image, list);
  if (layout.colour.profileSize > 0) {
    list->Add(VX_PART_PROFILE, layout.colour.profileOffset, layout.colour.profileSize);
  }
}

namespace {

/// An image with its file headers.
void AddImage(const vx_source& source, const BitmapImage& image, PartList* list) {
  const bool isOs2Icon = image.icon && !image.icon->HasDirectory();
  const uint64_t header = image.layout.headerOffset;
  const uint64_t begin =
      isOs2Icon ? image.icon->bodyOffset : header - std::min<uint64_t>(header, bmp::kFileHeaderSize);
  const auto signature = bmp::LoadU16(bmp::View<2>(source.BlockAt<2>(0)), 0);
  if (signature == bmp::kArraySignature) {
    list->SetPage(image.page);
    list->SetParent(list->Add(VX_PART_IMAGE, begin - bmp::kArrayHeaderSize, 0));
    list->Add(VX_PART_ARRAY_HEADER, begin - bmp::kArrayHeaderSize, bmp::kArrayHeaderSize);
  }
  if (isOs2Icon) {
    AddOs2IconHeaders(source, image, list);
  } else if (image.layout.hasFileHeader) {
    list->Add(VX_PART_FILE_HEADER, begin, bmp::kFileHeaderSize);
  }
  AddImageParts(source, image, list);
  list->SetParent(-1);
}

void AddIfFound(vx_source& source, const ImagePlace& place, const std::optional<BitmapImage>& found,
                ImageTaker* taker, PartList* list) {
  if (found) {
    if (taker != nullptr) taker->Take(source, place, *found);
    AddImage(source, *found, list);
  } else {
    if (taker != nullptr) taker->TakeUnknown(source, place);
    BeginCall();  // what is wrong shows in what is found
  }
}

void AddArray(vx_source& source, ImagePlace place, ImageTaker* taker, PartList* list) {
  const memory::Vector<uint64_t> headers = FileHeadersOfArray(source);
  const auto count = static_cast<int>(headers.size());
  std::optional<BitmapImage> found;
  for (int page = 1; page <= count && list->Parts().size() < kMostParts; ++page) {
    place.offset = headers[static_cast<std::size_t>(page) - 1];
    place.page = page;
    if (FindBitmapAt(source, place.offset, page, count, &found) != STATUS_OK) found.reset();
    AddIfFound(source, place, found, taker, list);
  }
}

}  // namespace

void AddBitmapParts(vx_source& source, ImageTaker* taker, PartList* list) {
  std::optional<BitmapImage> found;
  ImagePlace place = {.base = list->Base(), .page = list->Page()};
  const std::size_t before = list->Parts().size();
  const auto signature = bmp::LoadU16(bmp::View<2>(source.BlockAt<2>(0)), 0);
  if (signature != bmp::kArraySignature) {
    if (FindBitmap(source, 1, &found) != STATUS_OK) found.reset();
    AddIfFound(source, place, found, taker, list);
  } else {
    AddArray(source, place, taker, list);
  }
  if (list->Parts().size() == before) AddUnknownBitmap(source, list);
}

}  // namespace vxkrn
