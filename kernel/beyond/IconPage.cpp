// Lays out one page and decides whether the filter reads it as it is meant. Knows of the others only where
// they begin.
#include "beyond/IconPage.h"

#include <algorithm>

#include "base/Errors.h"
#include "base/Remarks.h"
#include "beyond/PngBody.h"
#include "bitmap/Bitmap.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;
using Kind = IconPart::Kind;

constexpr int kMostNeighbours = 256;  // beyond so many pages nobody looks where the others are

bool HasSides(const BitmapLayout& layout) noexcept {
  const auto isSide = [](int side) { return side >= 1 && side <= kLongestSide; };
  return isSide(layout.width) && isSide(layout.height);
}

uint64_t FileSize(const vx_source& source) noexcept {
  const int64_t size = source.Size();
  return size < 0 ? UINT64_MAX : static_cast<uint64_t>(size);
}

/// A side in the directory, which has no room for 256.
int SideOf(uint8_t stated) noexcept {
  return stated == 0 ? bmp::kLargeIcon : stated;
}

/// The entries of the pages, all but `page`; none where they are too many.
template <class Use>
void ForNeighbours(const vx_source& source, int page, const Use& use) noexcept {
  const int count = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0)).Count;
  for (int other = 1; other <= count && count <= kMostNeighbours; ++other) {
    if (other == page) continue;
    use(other, bmp::DecodeEntry(source.BlockAt<bmp::kEntrySize>(bmp::EntryOffset(other))));
  }
}

/// Whether the header counts the colour rows alone. It should count those of the mask, too; writers that
/// forget it leave the same height in the directory, and so do some that get the directory wrong. So both
/// must agree, and the page must have more bytes than a picture of half the height could use.
bool IsHeightNotDoubled(const BitmapLayout& layout, const ICONDIRENTRY& entry, uint64_t fileSize) noexcept {
  if (layout.height != SideOf(entry.Height) || layout.width != SideOf(entry.Width)) return false;
  const uint64_t end = std::min<uint64_t>(uint64_t{entry.ImageOffset} + entry.BytesInRes, fileSize);
  const uint64_t there = end - std::min(end, layout.pixelOffset);
  const uint64_t rowBytes = layout.StoredStride();
  const auto maskBytes = static_cast<uint64_t>(Stride(layout.width, 1));
  const auto height = static_cast<uint64_t>(layout.height);
  // At 1 bit colours and mask of half the rows are as long as the colours of all.
  const uint64_t needed = height * (rowBytes == maskBytes ? 2 * rowBytes : rowBytes);
  return there >= needed && there > height / 2 * (rowBytes + maskBytes);
}

/// Where the mask must end: with the file, before a colour profile, or with the entry's own length if that
/// leaves it out and another page begins there.
uint64_t EndOfMask(const vx_source& source, const BitmapImage& image, uint64_t wholeEnd) noexcept {
  const BitmapLayout& layout = image.layout;
  const IconPart& part = *image.icon;
  uint64_t end = wholeEnd;
  if (layout.colour.profileSize > 0 && layout.colour.profileOffset >= part.maskOffset) {
    end = std::min(end, layout.colour.profileOffset);
  }
  const uint64_t saidEnd = part.bodyOffset + part.entry.BytesInRes;
  if (saidEnd < part.maskOffset || saidEnd >= end) return end;
  bool isOthers = false;
  ForNeighbours(source, image.page, [&](int /*page*/, const ICONDIRENTRY& entry) {
    isOthers = isOthers || (entry.ImageOffset >= saidEnd && entry.ImageOffset < wholeEnd);
  });
  return isOthers ? saidEnd : end;
}

/// Finds the mask behind the colours. @return whether the filter, which uses whole masks alone, finds it, too
bool PlaceMask(const vx_source& source, BitmapImage* image) noexcept {
  const BitmapLayout& layout = image->layout;
  IconPart& part = *image->icon;
  const auto height = static_cast<uint64_t>(layout.height);
  if (IsPlain(layout, image->decoder)) {
    part.maskOffset = layout.pixelOffset + layout.StoredStride() * height;
  } else if (layout.imageSize != 0) {
    part.maskOffset = layout.pixelOffset + layout.imageSize;
  } else {
    return true;
  }
  const auto rowBytes = static_cast<uint64_t>(Stride(layout.width, 1));
  const uint64_t wholeEnd = part.maskOffset + rowBytes * height;
  const uint64_t end = std::min(EndOfMask(source, *image, wholeEnd), FileSize(source));
  part.maskRowsThere = static_cast<int>((end - std::min(end, part.maskOffset)) / rowBytes);
  if (!IsPlain(layout, image->decoder)) return true;
  part.ownSize = end - part.bodyOffset;
  return part.maskRowsThere == layout.height;
}

int FailForHeader(const BitmapLayout& layout, uint64_t size) noexcept {
  return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_HEADER_CUT, layout.headerOffset, layout.headerSize).At(size),
              "the image header at byte ", layout.headerOffset, " says it is ", layout.headerSize,
              " bytes long, but the file ends at byte ", size);
}

int FindBitmapPage(const vx_source& source, BitmapImage image, std::optional<BitmapImage>* found) noexcept {
  IconPart& part = *image.icon;
  BitmapLayout& layout = image.layout;
  bmp::LayoutBytes bytes{};
  const uint32_t got = source.Peek(bytes.data(), bytes.size(), part.bodyOffset);
  const uint32_t size = bmp::DeclaredHeaderSize(bmp::Slice<bmp::kCoreHeaderSize>(bytes, 0));
  const bool isInfo = size == bmp::kInfoHeaderSize;
  if (got < sizeof(uint32_t) || !bmp::IsHeaderSize(size) || (isInfo && got < size)) return STATUS_OK;
  layout = bmp::LayOut(bytes, part.bodyOffset, false, 0);
  if (got < size) return FailForHeader(layout, FileSize(source));
  if (layout.depth > 8) layout.pixelOffset = layout.PaletteEnd();  // no reader of icons passes over more
  image.decoder = bmp::DecoderOf(layout);
  const bool isPlain = IsPlain(layout, image.decoder);
  part.isHeightNotDoubled =
      isPlain && HasSides(layout) && IsHeightNotDoubled(layout, part.entry, FileSize(source));
  if (!part.isHeightNotDoubled) layout.height /= 2;
  const bool isMaskFilters = !HasSides(layout) || PlaceMask(source, &image);
  image.isFilters = isInfo && image.decoder == bmp::Decoder::kFilter && !layout.HasFields() &&
                    !part.isHeightNotDoubled && isMaskFilters;
  *found = image;
  return STATUS_OK;
}

/// The filter takes as much of the stream as the entry says, and none in cursors.
int FindPngPage(const vx_source& source, BitmapImage image, std::optional<BitmapImage>* found) noexcept {
  IconPart& part = *image.icon;
  const uint64_t saidSize = part.entry.BytesInRes;
  const uint64_t size = FileSize(source);
  const PngBody body = LookAtPng(source, part.bodyOffset, saidSize);
  part.isPng = true;
  part.isWholePng = body.isSound && body.size != 0;
  part.ownSize = body.size;
  image.layout.width = body.width;
  image.layout.height = body.height;
  image.layout.depth = body.depth;
  image.decoder = bmp::Decoder::kPng;
  const bool isSaidRight = body.size <= saidSize && saidSize <= size - part.bodyOffset;
  image.isFilters = part.kind == Kind::kIcon && (isSaidRight || body.size == 0);
  *found = image;
  return STATUS_OK;
}

void RemarkOnEntry(const BitmapImage& image, const EntryFaults& faults, int page) noexcept {
  const ICONDIRENTRY& entry = image.icon->entry;
  if (faults.isSizeWrong) AddRemark(VX_REMARK_ENTRY_SIZE, SideOf(entry.Width), SideOf(entry.Height), page);
  if (faults.isDepthWrong) AddRemark(VX_REMARK_ENTRY_DEPTH, entry.BitCount, image.layout.depth, page);
  if (faults.isLengthWrong) {
    AddRemark(VX_REMARK_ENTRY_LENGTH, entry.BytesInRes, static_cast<int64_t>(faults.length), page);
  }
}

}  // namespace

EntryFaults FaultsOfEntry(const vx_source& source, const BitmapImage& image) noexcept {
  const BitmapLayout& layout = image.layout;
  const IconPart& part = *image.icon;
  const ICONDIRENTRY& entry = part.entry;
  const auto saysSide = [](uint8_t stated, int side) {
    return stated == 0 ? side >= bmp::kLargeIcon : stated == side;
  };
  // 0 leaves the depth open. Of a PNG page it is the depth to decode to, which may well be another.
  const bool isDepthWrong = part.isPng ? !bmp::IsDepth(entry.BitCount) : entry.BitCount != layout.depth;
  const uint64_t room = FileSize(source) - part.bodyOffset;
  return {.isSizeWrong = !saysSide(entry.Width, layout.width) || !saysSide(entry.Height, layout.height),
          .isDepthWrong = part.kind == Kind::kIcon && entry.BitCount != 0 && isDepthWrong,
          .isLengthWrong = entry.BytesInRes < part.ownSize || entry.BytesInRes > room,
          .length = part.ownSize != 0 ? part.ownSize : room};
}

int FindIconPage(const vx_source& source, int page, std::optional<BitmapImage>* found) noexcept {
  found->reset();
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
  if (!bmp::IsValidDirectory(directory) || page < 1 || page > directory.Count) return STATUS_OK;
  bmp::Block<bmp::kEntrySize> bytes{};
  if (source.Peek(bytes.data(), bytes.size(), bmp::EntryOffset(page)) < bytes.size()) return STATUS_OK;
  BitmapImage image;
  image.page = page;
  image.pageCount = directory.Count;
  IconPart part;
  part.kind = directory.Type == bmp::kCursorType ? Kind::kCursor : Kind::kIcon;
  part.entry = bmp::DecodeEntry(bytes);
  part.bodyOffset = part.entry.ImageOffset;
  if (part.kind == Kind::kCursor) part.hotSpot = {part.entry.Planes, part.entry.BitCount};
  if (part.bodyOffset >= FileSize(source)) return STATUS_OK;
  image.icon = part;
  const auto start = source.BlockAt<bmp::kPngSignatureSize>(part.bodyOffset);
  return bmp::IsOneOfPngSignatures(start) ? FindPngPage(source, image, found)
                                          : FindBitmapPage(source, image, found);
}

void RemarkOnPage(const vx_source& source, const BitmapImage& image) noexcept {
  const IconPart& part = *image.icon;
  if (!part.HasDirectory()) return;
  const int page = image.pageCount > 1 ? image.page : 0;
  if (part.isPng && part.kind == Kind::kCursor) AddRemark(VX_REMARK_PNG_IN_CURSOR, 0, 0, page);
  if (!part.isPng && image.layout.headerSize != bmp::kInfoHeaderSize) {
    AddRemark(VX_REMARK_HEADER_IN_ICON, image.layout.headerSize, 0, page);
  }
  if (part.isHeightNotDoubled) AddRemark(VX_REMARK_HEIGHT_NOT_DOUBLED, image.layout.height, 0, page);
  RemarkOnEntry(image, FaultsOfEntry(source, image), page);
  const uint64_t end = part.bodyOffset + std::max<uint64_t>(part.ownSize, part.entry.BytesInRes);
  ForNeighbours(source, image.page, [&](int other, const ICONDIRENTRY& entry) {
    const uint64_t begin = entry.ImageOffset;
    const bool overlaps = begin < end && begin + entry.BytesInRes > part.bodyOffset && entry.BytesInRes > 0;
    if (overlaps) AddRemark(VX_REMARK_BODIES_OVERLAP, other, 0, page);
  });
}

}  // namespace vxkrn
