// Headerless data: everything about the image comes from the caller, only the rows from the file.
#include "../Bmp.h"
#include "../Format/Geometry.h"
#include "../Format/Rules.h"
#include "../Resources.h"
#include "Palette.h"

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
}  // namespace bmp

int LoadRawData(_LOADDISPATCH* dispatch, int width, int height, int bitsPerPixel) {
  if (bmp::HasPalette(bitsPerPixel)) bmp::SetRawPalette(*dispatch, bitsPerPixel);

  const bmp::File file(dispatch->FileName, bmp::kForReading);
  if (!file.IsOpen()) return STATUS_OPEN_ERROR;
  VX_RedirectedSeek(file.Handle(), dispatch->RawHasOffset != 0 ? dispatch->RawOffset : 0, VX_SEEK_START);

  int convert = 0;
  if ((dispatch->RawFlags & RAW_HAS_MASKS) != 0 && bitsPerPixel == 16) {
    unsigned int masks[] = {dispatch->RedMask, dispatch->GreenMask, dispatch->BlueMask};
    int is565 = 0;
    const int status = VerifyColorMasks(masks, &convert, &is565, bitsPerPixel);
    if (status != STATUS_OK) return status;
  }
  return ReadRawData(dispatch, file.Handle(), width, height, bitsPerPixel,
                     bmp::CompressionOfRaw(dispatch->FileInfo->Format), convert, bmp::kBitmapSignature);
}
