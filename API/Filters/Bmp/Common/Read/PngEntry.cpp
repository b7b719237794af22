// Icon pages stored as PNG streams: hands the stream to the kernel's decoder and the decoded rows to the
// row callback. It decodes nothing itself.
#include "Read/PngEntry.h"

#include "Kernel.h"

namespace bmp {
namespace {

constexpr unsigned int kDecodingPng = 0x1000;  // IMAGEINFO.Flags

/// The kernel's decoded picture; released where the kernel gave it pixels.
class DecodedBitmap {
 public:
  explicit DecodedBitmap(_BITMAPHANDLE& record) : record_(record) {}
  ~DecodedBitmap() { Release(); }
  DecodedBitmap(const DecodedBitmap&) = delete;
  DecodedBitmap& operator=(const DecodedBitmap&) = delete;

  void Release() {
    if ((record_.Flags & BITMAP_ALLOCATED) != 0) VX_FreeBitmap(&record_);
    record_.Flags &= ~BITMAP_ALLOCATED;
  }

 private:
  _BITMAPHANDLE& record_;
};

/// Decodes the entry's stream. While the kernel decodes it, the file information says PNG.
int DecodeStream(_LOADDISPATCH& dispatch, HANDLE file, const ICONDIRENTRY& entry, _BITMAPHANDLE& decoded) {
  const Buffer stream(entry.BytesInRes);
  if (!stream) return STATUS_NO_MEMORY;
  GoTo(file, entry.ImageOffset);
  if (!ReadExactly(file, stream.Get(), entry.BytesInRes)) return STATUS_READ_ERROR;

  IMAGEINFO& info = *dispatch.FileInfo;
  info.Flags = kDecodingPng;
  info.Format = FMT_PNG;
  const int status = dispatch.LoadPngFromMemory(stream.Get(), &decoded, sizeof(decoded), entry.BitCount, 1,
                                                entry.BytesInRes, 0, &info);
  info.Format = FMT_VISTA_ICO;
  return status;
}

void DescribeTarget(_BITMAPHANDLE& target, const ICONDIRENTRY& entry, const _BITMAPHANDLE& decoded) {
  target.ColorCount = entry.ColorCount;
  target.XResolution = decoded.XResolution;
  target.YResolution = decoded.YResolution;
  target.Orientation = decoded.Orientation;
  target.ColorOrder = decoded.ColorOrder;
  if (decoded.BitsPerPixel <= 8 && decoded.ColorCount > 0) {
    VX_SetBitmapNewPalette(&target, decoded.Palette, decoded.ColorCount);
  }
}

int DeliverRows(_LOADDISPATCH& dispatch, _BITMAPHANDLE& decoded, uint8_t* row) {
  for (int r = 0; r < decoded.Height; ++r) {
    VX_GetBitmapRow(&decoded, row, r, static_cast<uint32_t>(decoded.BytesPerLine));
    const bool isLast = r + 1 == decoded.Height || r + 1 == dispatch.Bitmap->Height;
    const unsigned int flags =
        ROW_FLAGS_BASE | (r == 0 ? ROW_FLAG_FIRST : 0U) | (isLast ? ROW_FLAG_LAST : 0U);
    const int status =
        dispatch.RowCallback(dispatch.FileInfo, dispatch.Bitmap, row, flags, r, 1, dispatch.UserData);
    if (status != STATUS_OK) return status;
  }
  return STATUS_OK;
}

}  // namespace

int LoadPngEntry(_LOADDISPATCH& dispatch, HANDLE file, const ICONDIRENTRY& entry) {
  _BITMAPHANDLE record{};
  const int status = DecodeStream(dispatch, file, entry, record);
  if (status != STATUS_OK) return status;  // the kernel has freed what it had begun
  DecodedBitmap decoded(record);
  DescribeTarget(*dispatch.Bitmap, entry, record);

  const Buffer row(static_cast<uint32_t>(record.BytesPerLine));
  if (!row) return STATUS_NO_MEMORY;
  const int delivered = DeliverRows(dispatch, record, row.Get());
  if (delivered == STATUS_OK) decoded.Release();  // before its row buffer, once all rows are out
  return delivered;
}

}  // namespace bmp
