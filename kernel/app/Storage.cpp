// How a page is stored, to applications: what its headers say, and what of it the file has. Decodes no
// pixels.
#include <algorithm>
#include <cstdio>
#include <string_view>

#include "app/Describe.h"
#include "app/Frames.h"
#include "app/PngFile.h"
#include "base/Errors.h"
#include "beyond/BitmapFile.h"
#include "beyond/RunLengthScan.h"
#include "inspect/BitmapParts.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;
using bmp::Decoder;

constexpr int kNotKnown = -1;

/// What a length of Windows's image headers is called behind the kind; "" for the usual one.
const char* HeaderWord(uint32_t size) noexcept {
  switch (size) {
    case bmp::kInfoHeaderSize: return "";
    case bmp::kMasks3HeaderSize: return ", V2 header";
    case bmp::kMasks4HeaderSize: return ", V3 header";
    case bmp::kV4HeaderSize: return ", V4 header";
    case bmp::kV5HeaderSize: return ", V5 header";
    default: return ", odd header";
  }
}

/// An image header of 40 bytes is OS/2's where its coding is one that OS/2 alone has.
bool IsOs2(const BitmapImage& image) noexcept {
  return image.layout.family == bmp::HeaderFamily::kOs2 || image.decoder == Decoder::kHuffman ||
         image.decoder == Decoder::kRle24;
}

void NameBitmap(const BitmapImage& image, vx_storage_info* info) noexcept {
  const BitmapLayout& layout = image.layout;
  const bool isCore = layout.family == bmp::HeaderFamily::kCore;
  const bool isWindows = !isCore && !IsOs2(image);
  (void)std::snprintf(info->kind, sizeof info->kind, "%s bitmap%s%s",
                      isCore      ? "OS/2 1.x"
                      : isWindows ? "Windows"
                                  : "OS/2 2.x",
                      isWindows ? HeaderWord(layout.headerSize) : "",
                      layout.hasFileHeader ? "" : ", no file header");
}

/// Pages are named by the file that they are in; bitmaps by their headers.
void NameKind(int format, const std::optional<BitmapImage>& image, vx_storage_info* info) noexcept {
  if (image && !image->icon) return NameBitmap(*image, info);
  const int plain = format == VX_FORMAT_VISTA_ICO ? int{VX_FORMAT_ICO} : format;
  (void)std::snprintf(info->kind, sizeof info->kind, "%s", vx_format_name(plain));
}

vx_color_space ColorSpaceOf(const BitmapLayout& layout) noexcept {
  if (layout.headerSize < bmp::kV4HeaderSize) return VX_COLOR_SPACE_NONE;
  switch (layout.colour.type) {
    case bmp::ColourSpace::kCalibrated: return VX_COLOR_SPACE_CALIBRATED;
    case bmp::ColourSpace::kLinked: return VX_COLOR_SPACE_LINKED;
    case bmp::ColourSpace::kEmbedded: return VX_COLOR_SPACE_PROFILE;
    default: return VX_COLOR_SPACE_SRGB;
  }
}

/// Coded rows are only looked for where the data that the header speaks of is not all there.
void CountRows(const vx_source& source, const BitmapImage& image, vx_storage_info* info) noexcept {
  const BitmapLayout& layout = image.layout;
  const auto size = static_cast<uint64_t>(std::max<int64_t>(info->file_size, 0));
  const bool isCut = layout.pixelOffset > size || layout.imageSize > size - layout.pixelOffset;
  info->rows_present = kNotKnown;
  if (IsPlain(layout, image.decoder)) {
    info->rows_present = RowsThere(source, layout);
  } else if (isCut && image.decoder == Decoder::kFilter) {
    info->rows_present = RowsCoded(source, layout);
  } else {
    info->ends_early = isCut ? 1 : 0;
  }
  if (info->rows_present != kNotKnown && info->rows_present < layout.height) info->ends_early = 1;
  // Where a mask begins that follows coded rows nobody knows without decoding them.
  const bool isMaskKnown = image.icon && image.icon->maskOffset != 0;
  if (isMaskKnown && image.icon->maskRowsThere < layout.height) info->ends_early = 1;
}

void TellOfBitmap(const vx_source& source, const BitmapImage& image, vx_storage_info* info) noexcept {
  const BitmapLayout& layout = image.layout;
  info->header_size = static_cast<int>(layout.headerSize);
  info->palette_count = static_cast<int>(layout.paletteCount);
  info->masks[0] = layout.masks.color.red;
  info->masks[1] = layout.masks.color.green;
  info->masks[2] = layout.masks.color.blue;
  info->masks[3] = layout.masks.alpha;
  info->color_space = image.icon ? VX_COLOR_SPACE_NONE : ColorSpaceOf(layout);
  info->has_alpha = layout.masks.alpha != 0 || (image.icon && layout.depth == 32) ? 1 : 0;
  info->data_offset = static_cast<int64_t>(layout.pixelOffset);
  CountRows(source, image, info);
}

void TellOfChunk(const vx_source& source, const vx_part& chunk, vx_storage_info* info) noexcept {
  constexpr uint64_t kColorType = 17;  // in the first chunk
  constexpr uint8_t kWithAlpha = 4;
  const std::string_view name = chunk.name;
  if (name == "IHDR") {
    if ((source.BlockAt<1>(chunk.offset + kColorType)[0] & kWithAlpha) != 0) info->has_alpha = 1;
  } else if (name == "tRNS") {
    info->has_alpha = 1;
  } else if (name == "PLTE") {
    info->palette_count = static_cast<int>((chunk.length - bmp::kPngChunkFrame) / 3);
  } else if (name == "iCCP") {
    info->color_space = VX_COLOR_SPACE_PROFILE;
  } else if (name == "sRGB") {
    info->color_space = VX_COLOR_SPACE_SRGB;
  } else if (name == "gAMA" && info->color_space == VX_COLOR_SPACE_NONE) {
    info->color_space = VX_COLOR_SPACE_CALIBRATED;
  }
}

/// A stream that ends without its last chunk is cut off, unless something else follows where a chunk should.
void TellOfPng(const vx_source& source, uint64_t offset, vx_storage_info* info) {
  const auto size = static_cast<uint64_t>(std::max<int64_t>(info->file_size, 0));
  memory::Vector<vx_part> chunks;
  PartList list(chunks);
  const uint64_t end = AddPngParts(source, offset, size, &list);
  for (const vx_part& chunk : chunks) TellOfChunk(source, chunk, info);
  const vx_part& last = chunks.back();
  info->ends_early = last.offset + last.length > size ||
                     (std::string_view(last.name) != "IEND" && size - end < bmp::kPngChunkFrame);
  info->data_offset = static_cast<int64_t>(offset);
  info->rows_present = kNotKnown;
}

/// Describes how a page of a source that is no animated cursor is stored.
int DescribeStorage(vx_source& source, int page, vx_storage_info* info) {
  IMAGEINFO found = {};
  int status = Identify(source, page, false, &found);
  if (status != STATUS_OK) return status;
  info->file_size = source.Size();
  std::optional<BitmapImage> image;
  if (found.Format == FMT_PNG) {
    TellOfPng(source, 0, info);
  } else {
    status = FindBitmap(source, page, &image);
    if (status != STATUS_OK) return NameFailure(status, source.Name());
    info->rows_present = kNotKnown;
  }
  if (image && image->icon) {
    info->hot_x = image->icon->hotSpot.x;
    info->hot_y = image->icon->hotSpot.y;
  }
  if (image && image->icon && image->icon->isPng) {
    TellOfPng(source, image->icon->bodyOffset, info);
  } else if (image) {
    TellOfBitmap(source, *image, info);
  }
  NameKind(found.Format, image, info);
  return STATUS_OK;
}

int DescribeFrameStorage(vx_source& source, int page, vx_storage_info* info) {
  return WithFrame(source, page, [&](vx_source& frame, const Animation& animation) {
    const int status = DescribeStorage(frame, 1, info);
    if (status != STATUS_OK) return status;
    info->data_offset += static_cast<int64_t>(animation.frames[static_cast<std::size_t>(page) - 1].begin);
    info->file_size = source.Size();
    NameKind(VX_FORMAT_ANI, std::nullopt, info);
    return int{STATUS_OK};
  });
}

}  // namespace
}  // namespace vxkrn

int vx_storage_describe(vx_source* source, int page, vx_storage_info* info) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || info == nullptr) {
      return vxkrn::FailForArgument("the source and the record to fill must be given");
    }
    *info = vx_storage_info{};
    return vxkrn::IsAnimation(*source) ? vxkrn::DescribeFrameStorage(*source, page, info)
                                       : vxkrn::DescribeStorage(*source, page, info);
  });
}
