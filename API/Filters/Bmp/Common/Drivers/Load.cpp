// The load driver: opens the file, finds the image, tells the target bitmap what is coming, and leaves
// the rows to the row decoder. The target changes only once palette or masks are read and
// the pixels found.
#include "Drivers/Load.h"

#include "Kernel.h"
#include "Read/ImageSource.h"
#include "Read/Palette.h"
#include "Read/PngEntry.h"
#include "Read/RawData.h"
#include "Read/RowDecoder.h"
#include "format/Geometry.h"
#include "format/Rules.h"

namespace bmp {
namespace {

constexpr uint32_t kLongestMaskTail = 24;  // header bytes behind the masks that are still read

/// Reads what a long header still has behind its masks, so that a file that ends inside it is refused.
bool SkipMaskTail(HANDLE file, uint32_t headerSize) {
  const auto position = static_cast<uint32_t>(VX_RedirectedSeek(file, 0, VX_SEEK_CURRENT));
  const uint32_t rest = headerSize + kFileHeaderSize - position;  // wraps to a large number when past it
  Block<kLongestMaskTail> tail;
  return ReadExactly(file, tail.data(), rest < kLongestMaskTail ? rest : kLongestMaskTail);
}

int ReadMasks(_LOADDISPATCH& dispatch, HANDLE file, const ImageHeader& header, MaskVerdict& verdict) {
  if (header.compression != kCompressionBitFields) return STATUS_OK;

  const bool insideHeader = dispatch.FileInfo->Format == FMT_OS2_2;
  Block<kMasksSize> bytes{};
  if (insideHeader) GoTo(file, kMasksOffset);
  if (!ReadBlock(file, bytes)) return STATUS_READ_ERROR;
  if (insideHeader && !SkipMaskTail(file, header.size)) return STATUS_READ_ERROR;

  const ColorMasks masks = DecodeMasks(bytes);
  verdict = JudgeMasks(masks, header.bitCount);
  if (!verdict.isUsable) return STATUS_BAD_FORMAT;
  dispatch.RedMask = masks.red;
  dispatch.GreenMask = masks.green;
  dispatch.BlueMask = masks.blue;
  return STATUS_OK;
}

int SeekToPixels(HANDLE file, uint32_t pixelOffset) {
  const int position = VX_RedirectedSeek(file, 0, VX_SEEK_CURRENT);
  if (position != -1 && static_cast<uint32_t>(position) == pixelOffset) return STATUS_OK;
  return SeekTo(file, pixelOffset) ? STATUS_OK : STATUS_SEEK_ERROR;
}

void SetPalette(_BITMAPHANDLE& bitmap, const ImageHeader& header, Palette& palette) {
  bitmap.ColorCount = HasPalette(header.bitCount) ? static_cast<int>(PaletteSize(header.bitCount)) : 0;
  if (bitmap.ColorCount != 0) VX_SetBitmapNewPalette(&bitmap, palette.data(), bitmap.ColorCount);
}

/// An info header without a horizontal resolution states none at all; longer ones always state both.
void SetResolution(_BITMAPHANDLE& bitmap, const ImageHeader& header) {
  const bool isStated =
      header.Kind() == HeaderKind::kInfo ? header.xPixelsPerMetre != 0 : header.hasResolution;
  if (!isStated) return;
  bitmap.XResolution = DotsPerInch(header.xPixelsPerMetre);
  bitmap.YResolution = DotsPerInch(header.yPixelsPerMetre);
}

/// Keeps the target's colour order if it is a known one, and takes the file's otherwise.
int FinalColorOrder(int prior, int bitCount, bool is565) {
  if (prior == ORDER_RGB || prior == ORDER_BGR || prior == ORDER_565) return prior;
  return ImpliedColorOrder(bitCount, is565);
}

/// Rows are never narrower than the target's, whose layout the callback expects.
int RowWidth(const _BITMAPHANDLE& bitmap, int width) {
  constexpr int kMargin = 4;  // pixels
  return width >= bitmap.Width ? width : WrapAdd(bitmap.Width, kMargin);
}

/// Loads an image whose headers are read; the file stands where its masks or its palette begin.
int LoadImage(_LOADDISPATCH& dispatch, HANDLE file, const ImageSource& image) {
  const ImageHeader& header = image.header;
  if (!IsDepth(header.bitCount)) return STATUS_BAD_FORMAT;

  Palette palette{};
  MaskVerdict masks;
  const int status = HasPalette(header.bitCount) ? ReadPalette(file, header, palette)
                                                 : ReadMasks(dispatch, file, header, masks);
  if (status != STATUS_OK) return status;
  if (const int seek = SeekToPixels(file, image.pixelOffset); seek != STATUS_OK) return seek;

  _BITMAPHANDLE& bitmap = *dispatch.Bitmap;
  const int priorOrder = bitmap.ColorOrder;
  SetPalette(bitmap, header, palette);
  SetResolution(bitmap, header);
  bitmap.Orientation = header.height < 0 ? ORIENT_TOP_DOWN : ORIENT_BOTTOM_UP;
  bitmap.ColorOrder = FinalColorOrder(priorOrder, header.bitCount, masks.is565);
  return DecodeRows(dispatch, file,
                    {.width = RowWidth(bitmap, header.width),
                     .height = WrapAbsolute(header.height),
                     .bitsPerPixel = header.bitCount,
                     .compression = static_cast<int>(header.compression),
                     .needsConversion = masks.needsConversion,
                     .hasIconMask = image.signature == kIconSignature});
}

int LoadBitmap(_LOADDISPATCH& dispatch, HANDLE file, uint16_t signature) {
  ImageSource image;
  const int status = FindBitmap(file, signature, image);
  return status == STATUS_OK ? LoadImage(dispatch, file, image) : status;
}

int LoadIcon(_LOADDISPATCH& dispatch, HANDLE file) {
  ICONDIRENTRY entry{};
  bool isPng = false;
  if (const int status = FindPage(file, dispatch.LoadOptions->PageNumber, entry, isPng);
      status != STATUS_OK) {
    return status;
  }
  if (isPng) return LoadPngEntry(dispatch, file, entry);

  ImageSource image;
  const int status = FindIconImage(file, entry, image);
  return status == STATUS_OK ? LoadImage(dispatch, file, image) : status;
}

int LoadFile(_LOADDISPATCH& dispatch) {
  const File file(dispatch.FileName, kForReading);
  if (!file.IsOpen()) return STATUS_OPEN_ERROR;

  uint16_t signature = 0;
  if (!ReadSignature(file.Handle(), signature)) return STATUS_BAD_FORMAT;
  return signature == kIconSignature ? LoadIcon(dispatch, file.Handle())
                                     : LoadBitmap(dispatch, file.Handle(), signature);
}

}  // namespace

int Load(_LOADDISPATCH& dispatch) {
  const _BITMAPHANDLE& bitmap = *dispatch.Bitmap;
  if (IsRawFormat(dispatch.FileInfo->Format)) {
    return LoadRaw(dispatch, bitmap.Width, bitmap.Height, bitmap.BitsPerPixel);
  }
  return IsDepth(bitmap.BitsPerPixel) ? LoadFile(dispatch) : STATUS_BAD_BPP;
}

}  // namespace bmp
