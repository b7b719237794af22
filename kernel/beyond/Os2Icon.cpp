// A file header with the hot spot, then an image header of 1 bit and of twice the picture's height: its rows,
// from the bottom, are those of the XOR mask and then those of the AND mask. Colours have a file header and
// an image header of their own, behind the first one's colour table. Where the AND mask is clear the pixel
// has its colour, which is the XOR mask's bit where there are no others; where it is set the screen shows
// through, inverted where the XOR mask is set, too.
#include "beyond/Os2Icon.h"

#include <algorithm>

#include "bitmap/Bitmap.h"
#include "format/Os2Icon.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;

/// Lays out the image header behind a file header. @return whether one of a known length is there, whole
bool LayOutAt(const vx_source& source, uint64_t fileHeader, BitmapLayout* layout) noexcept {
  const auto header = bmp::DecodeFileHeader(source.BlockAt<bmp::kFileHeaderSize>(fileHeader));
  bmp::LayoutBytes bytes{};
  const uint64_t at = fileHeader + bmp::kFileHeaderSize;
  const uint32_t got = source.Peek(bytes.data(), bytes.size(), at);
  const uint32_t size = bmp::DeclaredHeaderSize(bmp::Slice<bmp::kCoreHeaderSize>(bytes, 0));
  const bool isKnown =
      size == bmp::kCoreHeaderSize || (size >= bmp::kLeastLongHeader && size <= bmp::kOs2HeaderSize);
  if (!isKnown || got < size) return false;
  *layout = bmp::LayOut(bytes, at, true, header.dataOffset);
  return true;
}

bool IsMask(const BitmapLayout& mask) noexcept {
  const auto isSide = [](int side) { return side >= 1 && side <= kLongestSide; };
  return mask.depth == 1 && mask.compression == bmp::kUncompressed && !mask.isTopDown && isSide(mask.width) &&
         isSide(mask.height) && mask.height >= 2;
}

/// OS/2 counts the hot spot's row from the bottom.
HotSpot HotSpotAt(const vx_source& source, uint64_t fileHeader, int height) noexcept {
  const auto header = source.BlockAt<bmp::kFileHeaderSize>(fileHeader);
  const bmp::View<bmp::kFileHeaderSize> view(header);
  const int y = height - 1 - bmp::LoadU16(view, bmp::os2_icon_at::kHotY);
  return {bmp::LoadU16(view, bmp::os2_icon_at::kHotX), static_cast<uint16_t>(std::clamp(y, 0, 0xFFFF))};
}

int RowsThereFrom(const vx_source& source, uint64_t offset, uint64_t rowBytes, int height) noexcept {
  const int64_t size = source.Size();
  if (size < 0) return height;
  const uint64_t end = std::max(static_cast<uint64_t>(size), offset);
  return static_cast<int>(std::min((end - offset) / rowBytes, static_cast<uint64_t>(height)));
}

}  // namespace

bool IsOs2IconSignature(uint16_t signature) noexcept {
  return std::find(std::begin(bmp::kOs2IconSignatures), std::end(bmp::kOs2IconSignatures), signature) !=
         std::end(bmp::kOs2IconSignatures);
}

bool FindOs2Icon(const vx_source& source, uint64_t fileHeader, BitmapImage* image) noexcept {
  const auto signature = bmp::LoadU16(bmp::View<2>(source.BlockAt<2>(fileHeader)), 0);
  BitmapLayout mask;
  if (!LayOutAt(source, fileHeader, &mask) || !IsMask(mask)) return false;
  const int height = mask.height / 2;
  const uint64_t rowBytes = mask.StoredStride();
  IconPart part;
  part.kind = bmp::IsOs2Pointer(signature) ? IconPart::Kind::kOs2Pointer : IconPart::Kind::kOs2Icon;
  part.hotSpot = HotSpotAt(source, fileHeader, height);
  part.bodyOffset = fileHeader;
  part.xorOffset = mask.pixelOffset;
  part.maskOffset = mask.pixelOffset + rowBytes * static_cast<uint64_t>(height);
  part.maskRowsThere = RowsThereFrom(source, part.maskOffset, rowBytes, height);
  if (bmp::IsOs2Coloured(signature)) {
    const uint64_t second = mask.PaletteEnd();
    const auto again = bmp::LoadU16(bmp::View<2>(source.BlockAt<2>(second)), 0);
    if (again != signature || !LayOutAt(source, second, &image->layout)) return false;
    const bool isMaskUsable = image->layout.width == mask.width && image->layout.height == height;
    if (!isMaskUsable) part.maskRowsThere = 0;
  } else {
    image->layout = mask;
    image->layout.height = height;
  }
  image->decoder = bmp::DecoderOf(image->layout);
  image->icon = part;
  return true;
}

}  // namespace vxkrn
