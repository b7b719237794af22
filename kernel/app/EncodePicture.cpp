// A loaded bitmap as a PNG stream. Knows nothing of files.
#include "base/Errors.h"
#include "base/Memory.h"
#include "bitmap/Picture.h"
#include "bitmap/Region.h"
#include "png/Png.h"

namespace {

const unsigned char* RowOfIndices(const void* owner, int row, unsigned char* /*scratch*/) {
  const auto& bitmap = *static_cast<const vx_bitmap*>(owner);
  return vxkrn::ReadRow(bitmap.record, bitmap.Stored(row));
}

const unsigned char* RowOfColors(const void* owner, int row, unsigned char* scratch) {
  const auto& bitmap = *static_cast<const vx_bitmap*>(owner);
  vxkrn::ReadRgba(bitmap.record, bitmap.colors, bitmap.Stored(row), scratch);
  return scratch;
}

/// How bitmap goes into a PNG stream: rows as they are for opaque palettes, colours for all else.
vxkrn::PngPicture PngOf(const vx_bitmap& bitmap) {
  const _BITMAPHANDLE& record = bitmap.record;
  const bool isTransparent = vxkrn::HasAlpha(record) || vxkrn::HasOutside(record);
  const bool asIndices = record.BitsPerPixel <= 8 && !isTransparent;
  return {.width = record.Width,
          .height = record.Height,
          .xDpi = record.XResolution,
          .yDpi = record.YResolution,
          .paletteDepth = asIndices ? record.BitsPerPixel : 0,
          .hasAlpha = isTransparent,
          .palette = record.Palette,
          .colorCount = record.ColorCount,
          .colors = &bitmap.colorSpace,
          .owner = &bitmap,
          .row = asIndices ? RowOfIndices : RowOfColors,
          .scratch = nullptr};
}

}  // namespace

int vx_bitmap_encode_png(const vx_bitmap* bitmap, uint8_t** png, size_t* size) {
  return vxkrn::Guarded([&]() -> int {
    if (png != nullptr) *png = nullptr;
    if (size != nullptr) *size = 0;
    if (bitmap == nullptr || png == nullptr || size == nullptr) {
      return vxkrn::FailForArgument("the bitmap and the places for stream and size must be given");
    }
    vxkrn::PngPicture picture = PngOf(*bitmap);
    const std::size_t rowBytes = static_cast<std::size_t>(picture.width) * sizeof(vxkrn::Rgba);
    const vxkrn::memory::Bytes scratch = vxkrn::memory::MakeBytes(picture.paletteDepth == 0 ? rowBytes : 0,
                                                                  {"kernel/EncodePicture", __LINE__});
    if (scratch == nullptr) return vxkrn::FailForMemory("a row of colours", rowBytes);
    picture.scratch = scratch.get();
    vxkrn::PngBytes encoded;
    const int status = vxkrn::PngBytes::Settle(vxkrn::EncodePng(picture, encoded.AsOutput()));
    if (status != STATUS_OK) return status;
    *size = encoded.Size();
    *png = encoded.Take().release();
    return VX_OK;
  });
}
