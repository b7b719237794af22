// Identification: says what an open file holds, from its first bytes and, for icon and cursor files,
// from its directory and the header of the page asked for. It reads no pixels and keeps the file open.
#include "Drivers/Identify.h"

#include "Kernel.h"
#include "Read/PageBody.h"
#include "format/BitmapHeader.h"
#include "format/Geometry.h"
#include "format/IconDirectory.h"
#include "format/Rules.h"

namespace bmp {
namespace {

constexpr int kDefaultResolution = 96;  // dots per inch, where the file states none
constexpr char kRunLength[] = "Run Length";
static_assert(sizeof(kRunLength) <= sizeof(IMAGEINFO::Compression));

// The start of a file: a file header, an info header and three masks.
constexpr size_t kProbeSize = kFileHeaderSize + kInfoHeaderSize + kMasksSize;
using Probe = Block<kProbeSize>;

void SetStatedResolutions(IMAGEINFO& info, const ImageHeader& header) {
  if (header.xPixelsPerMetre != 0) info.XResolution = DotsPerInch(header.xPixelsPerMetre);
  if (header.yPixelsPerMetre != 0) info.YResolution = DotsPerInch(header.yPixelsPerMetre);
}

/// Fills what bitmaps and icon images have in common, once width and height stand.
int Complete(IMAGEINFO& info, const ImageHeader& header, bool is565) {
  if (!IsDepth(header.bitCount)) return STATUS_BAD_FORMAT;
  info.BitsPerPixel = header.bitCount;
  info.Orientation = info.Height < 0 ? ORIENT_TOP_DOWN : ORIENT_BOTTOM_UP;
  info.Height = WrapAbsolute(info.Height);
  info.ColorOrder = ImpliedColorOrder(header.bitCount, is565);
  info.DataSize = PackedDataSize(info.BitsPerPixel, info.Width, info.Height);
  if (IsRunLengthCompression(header.compression)) {
    VX_MemoryCopy(info.Compression, kRunLength, sizeof(kRunLength));
  }
  if (info.XResolution == 0) info.XResolution = kDefaultResolution;
  if (info.YResolution == 0) info.YResolution = kDefaultResolution;
  return STATUS_OK;
}

/// Whether 16-bit pixels are 5-6-5, as far as the masks lie within the probe.
bool HasMasks565(const Probe& probe, uint32_t headerOffset, const ImageHeader& header) {
  if (header.bitCount != 16 || header.compression != kCompressionBitFields) return false;
  if (header.size > kProbeSize - kMasksSize - headerOffset) return false;
  return DecodeMasks(Slice<kMasksSize>(probe, headerOffset + header.size)) == kMasks565;
}

int FormatOfInfoHeader(const ImageHeader& header) {
  return IsRunLengthCompression(header.compression) ? FMT_BMP_RLE : FMT_BMP;
}

void SetSize(IMAGEINFO& info, int format, const ImageHeader& header) {
  info.Format = format;
  info.Width = header.width;
  info.Height = header.height;
}

/// Takes what a header of another length than 12 and 40 has; width and height stand even when it is too
/// short to say more.
int TakeLongHeader(IMAGEINFO& info, const ImageHeader& header) {
  SetSize(info, FMT_OS2_2, header);
  if (header.size < kLeastLongHeader) return STATUS_FAILURE;
  if (header.hasResolution) {
    info.XResolution = DotsPerInch(header.xPixelsPerMetre);
    info.YResolution = DotsPerInch(header.yPixelsPerMetre);
  }
  return STATUS_OK;
}

int IdentifyBitmap(IMAGEINFO& info, const Probe& probe, uint32_t headerOffset) {
  const auto bytes = Slice<kInfoHeaderSize>(probe, headerOffset);
  ImageHeader header = DecodeInfoHeader(bytes);
  if (header.size < kCoreHeaderSize) return STATUS_BAD_FORMAT;

  switch (header.Kind()) {
    case HeaderKind::kCore:
      header = DecodeCoreHeader(Slice<kCoreHeaderSize>(bytes, 0));
      SetSize(info, FMT_OS2, header);
      break;
    case HeaderKind::kInfo:
      SetSize(info, FormatOfInfoHeader(header), header);
      SetStatedResolutions(info, header);
      break;
    case HeaderKind::kLong:
      if (const int status = TakeLongHeader(info, header); status != STATUS_OK) return status;
      break;
  }
  return Complete(info, header, HasMasks565(probe, headerOffset, header));
}

/// Reads a directory entry; bytes that the file no longer has are 0.
bool ReadEntry(HANDLE file, int page, ICONDIRENTRY& entry) {
  Block<kEntrySize> bytes{};
  GoTo(file, EntryOffset(page));
  if (VX_RedirectedRead(file, bytes.data(), kEntrySize) <= 0) return false;
  entry = DecodeEntry(bytes);
  return true;
}

bool IsLarge(const ImageHeader& header) {
  return header.width == kLargeIcon || header.height == kLargeIcon;
}

/// Whether one entry alone makes its file an icon file of the newer kind: PNG, or 256 pixels.
int ProbeEntry(HANDLE file, int page, bool& isNewer) {
  ICONDIRENTRY entry{};
  if (!ReadEntry(file, page, entry)) return STATUS_READ_ERROR;
  if (const int status = ProbeBody(file, entry, isNewer); status != STATUS_OK || isNewer) return status;
  if (entry.Width != 0 && entry.Height != 0) return STATUS_OK;

  ImageHeader header;
  if (!ReadBodyHeader(file, entry, header)) return STATUS_READ_ERROR;
  isNewer = IsLarge(header);
  return STATUS_OK;
}

int ProbeDirectory(HANDLE file, int pageCount, bool& isNewer) {
  isNewer = false;
  for (int page = 1; page <= pageCount && !isNewer; ++page) {
    if (const int status = ProbeEntry(file, page, isNewer); status != STATUS_OK) return status;
  }
  return STATUS_OK;
}

int IdentifyBitmapPage(_INFODISPATCH& dispatch, const ICONDIR& directory, const ICONDIRENTRY& entry) {
  IMAGEINFO& info = *dispatch.FileInfo;
  ImageHeader header;
  if (!ReadBodyHeader(dispatch.File, entry, header)) return STATUS_READ_ERROR;
  if (header.Kind() != HeaderKind::kInfo) return STATUS_FAILURE;

  info.Width = header.width;
  info.Height = IconHeight(header);
  SetStatedResolutions(info, header);
  if (directory.Type == kCursorType) {
    info.Format = FMT_CUR;
    return Complete(info, header, false);
  }
  info.Format = IsLarge(header) ? FMT_VISTA_ICO : FMT_ICO;
  bool isNewer = false;
  if (const int status = ProbeDirectory(dispatch.File, directory.Count, isNewer); status != STATUS_OK) {
    return status;
  }
  if (isNewer) info.Format = FMT_VISTA_ICO;
  return Complete(info, header, false);
}

void CopyPngInfo(const IMAGEINFO& png, const ICONDIRENTRY& entry, IMAGEINFO& info) {
  info.Format = FMT_VISTA_ICO;
  info.BitsPerPixel = entry.BitCount != 0 ? entry.BitCount : png.BitsPerPixel;
  info.Width = png.Width;
  info.Height = png.Height;
  info.Orientation = png.Orientation;
  info.ColorOrder = png.ColorOrder;
  info.XResolution = png.XResolution;
  info.YResolution = png.YResolution;
  VX_MemoryCopy(info.Compression, png.Compression, sizeof(info.Compression));
  info.Compression[sizeof(info.Compression) - 1] = '\0';
  info.DataSize = PackedDataSize(info.BitsPerPixel, info.Width, info.Height);
}

int IdentifyPngPage(_INFODISPATCH& dispatch, const ICONDIR& directory, const ICONDIRENTRY& entry) {
  if (directory.Type != kIconType) return STATUS_BAD_FORMAT;

  const Buffer stream(entry.BytesInRes);
  if (!stream) return STATUS_NO_MEMORY;
  GoTo(dispatch.File, entry.ImageOffset);
  if (!ReadExactly(dispatch.File, stream.Get(), entry.BytesInRes)) return STATUS_READ_ERROR;

  IMAGEINFO png{};
  png.StructSize = sizeof(png);
  const int status = dispatch.GetPngInfoFromMemory(stream.Get(), &png, sizeof(png), entry.BytesInRes, 0, 0);
  if (status == STATUS_OK) CopyPngInfo(png, entry, *dispatch.FileInfo);
  return status;
}

int IdentifyIcon(_INFODISPATCH& dispatch, const Probe& probe) {
  const ICONDIR directory = DecodeDirectory(Slice<kDirectorySize>(probe, 0));
  if (!IsValidDirectory(directory)) return STATUS_BAD_FORMAT;

  int& page = dispatch.LoadOptions->PageNumber;
  page = ClampPage(page, directory.Count);
  dispatch.FileInfo->TotalPages = directory.Count;
  dispatch.FileInfo->PageNumber = page;

  ICONDIRENTRY entry{};
  bool isPng = false;
  if (!ReadEntry(dispatch.File, page, entry)) return STATUS_READ_ERROR;
  if (const int status = ProbeBody(dispatch.File, entry, isPng); status != STATUS_OK) return status;
  return isPng ? IdentifyPngPage(dispatch, directory, entry) : IdentifyBitmapPage(dispatch, directory, entry);
}

}  // namespace

int Identify(_INFODISPATCH& dispatch) {
  Probe probe{};
  GoTo(dispatch.File, 0);
  if (VX_RedirectedRead(dispatch.File, probe.data(), kProbeSize) <= 0) return STATUS_READ_ERROR;

  const uint16_t signature = LoadU16(View<kProbeSize>(probe), 0);
  switch (signature) {
    case kIconSignature: return IdentifyIcon(dispatch, probe);
    case kArraySignature:
      if (LoadU16(View<kProbeSize>(probe), kArrayHeaderSize) != kBitmapSignature) return STATUS_BAD_FORMAT;
      [[fallthrough]];
    case kBitmapSignature: return IdentifyBitmap(*dispatch.FileInfo, probe, ImageHeaderOffset(signature));
    default: return STATUS_BAD_FORMAT;
  }
}

}  // namespace bmp
