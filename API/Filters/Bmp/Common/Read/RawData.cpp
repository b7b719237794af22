// Headerless data: everything about the image comes from the caller, only the rows from the file.
#include "Read/RawData.h"

#include "Kernel.h"
#include "Read/Palette.h"
#include "Read/RowDecoder.h"
#include "format/Geometry.h"
#include "format/Rules.h"

namespace bmp {
namespace {

void SetRawPalette(const _LOADDISPATCH& dispatch, int bitsPerPixel) {
  Palette palette{};
  if ((dispatch.RawFlags & RAW_HAS_PALETTE) != 0) {
    VX_MemoryCopy(palette.data(), dispatch.RawPalette, sizeof(dispatch.RawPalette));
  } else {
    VX_GetFixedPalette(palette.data(), bitsPerPixel);
  }
  VX_SetBitmapNewPalette(dispatch.Bitmap, palette.data(), dispatch.Bitmap->ColorCount);
}

}  // namespace

int LoadRaw(_LOADDISPATCH& dispatch, int width, int height, int bitsPerPixel) {
  if (HasPalette(bitsPerPixel)) SetRawPalette(dispatch, bitsPerPixel);

  const File file(dispatch.FileName, kForReading);
  if (!file.IsOpen()) return STATUS_OPEN_ERROR;
  VX_RedirectedSeek(file.Handle(), dispatch.RawHasOffset != 0 ? dispatch.RawOffset : 0, VX_SEEK_START);

  bool needsConversion = false;
  if ((dispatch.RawFlags & RAW_HAS_MASKS) != 0 && bitsPerPixel == 16) {
    const ColorMasks masks = {
        .red = dispatch.RedMask, .green = dispatch.GreenMask, .blue = dispatch.BlueMask};
    needsConversion = JudgeMasks(masks, bitsPerPixel).needsConversion;
  }
  return DecodeRows(dispatch, file.Handle(),
                    {.width = width,
                     .height = height,
                     .bitsPerPixel = bitsPerPixel,
                     .compression = CompressionOfRaw(dispatch.FileInfo->Format),
                     .needsConversion = needsConversion,
                     .hasIconMask = false});
}

}  // namespace bmp
