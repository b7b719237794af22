// An image as a PNG stream, in a block of global memory or elsewhere: which colours, which transparency. The
// stream itself is libpng's.
#include <algorithm>
#include <cstring>
#include <new>

#include "base/CallRecord.h"
#include "base/Errors.h"
#include "base/GlobalMemory.h"
#include "bitmap/RowProvider.h"
#include "convert/Conversion.h"
#include "convert/RowConverter.h"
#include "png/Png.h"

namespace vxkrn {
namespace {

PngPicture PictureOf(const _BITMAPHANDLE& bitmap) {
  PngPicture picture = {};
  picture.width = bitmap.Width;
  picture.height = bitmap.Height;
  picture.xDpi = bitmap.XResolution;
  picture.yDpi = bitmap.YResolution;
  picture.transparentEntry = -1;
  return picture;
}

// PNG rows count from the top, so the rows below are found by the bitmap's orientation.

struct IndexRows {
  const _BITMAPHANDLE& bitmap;
  RowConverter& converter;

  static const unsigned char* Row(const void* owner, int row, unsigned char* scratch) {
    const auto& rows = *static_cast<const IndexRows*>(owner);
    rows.converter.Convert(FlipRow(row, rows.bitmap.Height, rows.bitmap.Orientation), scratch);
    return scratch;
  }
};

int EncodeIndices(LazyCensus& census, const RowTarget& target, const ColorSpace* colors,
                  const PngOutput& output) {
  const _BITMAPHANDLE& bitmap = census.Bitmap();
  RowConverter converter(census, target);
  RGBQUAD palette[256];
  std::transform(converter.Palette().begin(), converter.Palette().end(), palette, QuadOf);
  const IndexRows rows = {bitmap, converter};
  const memory::Bytes scratch =
      memory::MakeBytes(static_cast<std::size_t>(PixelBytes(bitmap.Width, target.bitsPerPixel)),
                        {"kernel/SaveToMemory", __LINE__});
  if (scratch == nullptr) throw std::bad_alloc();
  PngPicture picture = PictureOf(bitmap);
  picture.colors = colors;
  picture.paletteDepth = target.bitsPerPixel;
  picture.palette = palette;
  picture.colorCount = static_cast<int>(converter.Palette().size());
  picture.transparentEntry = converter.TransparentEntry();
  picture.owner = &rows;
  picture.row = IndexRows::Row;
  picture.scratch = scratch.get();
  return EncodePng(picture, output);
}

struct ColorRowsFromTop {
  ColorRows& rows;
  const Color* key;  ///< what transparent pixels become; null: they stay

  static const unsigned char* Row(const void* owner, int row, unsigned char* /*scratch*/) {
    const auto& self = *static_cast<const ColorRowsFromTop*>(owner);
    const _BITMAPHANDLE& bitmap = self.rows.Bitmap();
    const std::span<Rgba> pixels = self.rows.Read(FlipRow(row, bitmap.Height, bitmap.Orientation));
    if (self.key != nullptr) {
      const RGBQUAD key = QuadOf(*self.key);
      std::replace_if(
          pixels.begin(), pixels.end(), [](Rgba pixel) { return !IsOpaque(pixel); },
          Rgba{key.Red, key.Green, key.Blue, 0});
    }
    return reinterpret_cast<const unsigned char*>(pixels.data());
  }
};

/// A colour that no opaque pixel has. Pictures that have all sixteen million give up black.
Color UnusedColor(ColorRows& rows) {
  std::vector<bool> isUsed(std::size_t{1} << 24);
  for (int row = 0; row < rows.Bitmap().Height; ++row) {
    for (const Rgba pixel : rows.Read(row)) {
      if (IsOpaque(pixel)) isUsed[ColorOf(pixel)] = true;
    }
  }
  const auto unused = std::find(isUsed.begin(), isUsed.end(), false);
  return unused == isUsed.end() ? 0 : static_cast<Color>(unused - isUsed.begin());
}

int EncodeColors(LazyCensus& census, bool withAlpha, const ColorSpace* colors, const PngOutput& output) {
  ColorRows rows(census.Bitmap());
  PngPicture picture = PictureOf(census.Bitmap());
  picture.colors = colors;
  picture.hasAlpha = withAlpha;
  ColorRowsFromTop source = {rows, nullptr};
  Color key = 0;
  RGBQUAD keyEntry = {};
  if (!withAlpha && census.HasTransparent()) {
    key = UnusedColor(rows);
    keyEntry = QuadOf(key);
    source.key = &key;
    picture.transparentColor = &keyEntry;
  }
  picture.owner = &source;
  picture.row = ColorRowsFromTop::Row;
  return EncodePng(picture, output);
}

}  // namespace

int EncodeAsPng(LazyCensus& census, int bitsPerPixel, int convertArg1, int convertArg2,
                const ColorSpace* colors, const PngOutput& output) {
  if (!IsDepth(bitsPerPixel) || bitsPerPixel == 16) {
    return Fail({STATUS_BAD_BPP, VX_REASON_DEPTH_NOT_IN_FORMAT, bitsPerPixel, FMT_PNG},
                "a PNG stream has 1, 4, 8, 24 or 32 bits per pixel, not ", bitsPerPixel);
  }
  try {
    if (bitsPerPixel > 8) return EncodeColors(census, bitsPerPixel == 32, colors, output);
    return EncodeIndices(census,
                         {.bitsPerPixel = bitsPerPixel,
                          .usesFixedPalette = convertArg1 == CONVERT_PALETTE_FIXED,
                          .diffuses = convertArg2 != CONVERT_NEAREST,
                          .reservesTransparent = true},
                         colors, output);
  } catch (const std::bad_alloc&) {
    return FailForMemory("encoding the picture as PNG", memory::LastRefusal());
  }
}

int SaveToMemory(void** memory, _BITMAPHANDLE* bitmap, int format, int bitsPerPixel, int /*reserved0*/,
                 unsigned int* size, int /*reserved1*/) {
  if (memory == nullptr || bitmap == nullptr || !HasRows(*bitmap) || size == nullptr) {
    return STATUS_BAD_PARAMETER;
  }
  if (format != FMT_PNG) return STATUS_NOT_SUPPORTED;
  const FilterCall defaults;
  const FilterCall& context = ThisCall().filterCall == nullptr ? defaults : *ThisCall().filterCall;
  LazyCensus own(*bitmap);
  PngBytes png;
  try {
    const int status = EncodeAsPng(CensusOfCall(own), bitsPerPixel, context.convertArg1, context.convertArg2,
                                   nullptr, png.AsOutput());
    if (status != STATUS_OK) return PngBytes::Settle(status);
  } catch (const Failed& failed) {
    return failed.status;
  }
  if (png.Size() > UINT32_MAX) return STATUS_NO_MEMORY;
  *size = static_cast<unsigned int>(png.Size());
  *memory = MakeGlobal(png.Take());
  return *memory == nullptr ? STATUS_NO_MEMORY : STATUS_OK;
}

}  // namespace vxkrn
