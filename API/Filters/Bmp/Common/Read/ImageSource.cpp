// Finds the image inside a file; see the header. It judges headers and touches neither pixels nor the
// target bitmap.
#include "Read/ImageSource.h"

#include "Kernel.h"
#include "Read/HeaderReader.h"
#include "Read/PageBody.h"

namespace bmp {
namespace {

int ReadFileHeader(HANDLE file, ImageSource& image) {
  Block<kFileHeaderSize> bytes{};
  if (!ReadBlock(file, bytes)) return STATUS_BAD_FORMAT;
  const FileHeader header = DecodeFileHeader(bytes);
  if (header.signature != kBitmapSignature) return STATUS_BAD_FORMAT;
  image.pixelOffset = header.dataOffset;
  return STATUS_OK;
}

bool ReadArrayHeader(HANDLE file) {
  Block<kArrayHeaderSize> bytes{};
  return ReadBlock(file, bytes) && LoadU16(View<kArrayHeaderSize>(bytes), 0) == kArraySignature;
}

/// Reads a header of 40 bytes, or the start of one of any other length but 12.
bool ReadLongHeader(HANDLE file, uint32_t declaredSize, ImageHeader& header) {
  const bool isInfo = declaredSize == kInfoHeaderSize;
  Block<kLongHeaderSize> bytes{};
  const uint32_t capacity = isInfo ? kInfoHeaderSize : kLongHeaderSize;
  if (!ReadHeader(file, bytes.data(), capacity, declaredSize)) return false;
  header = DecodeInfoHeader(Slice<kInfoHeaderSize>(bytes, 0));
  return declaredSize >= kLeastLongHeader;
}

int ReadImageHeader(HANDLE file, ImageSource& image) {
  Block<kCoreHeaderSize> start{};
  if (!ReadBlock(file, start)) return STATUS_BAD_FORMAT;
  const uint32_t declaredSize = DeclaredHeaderSize(start);
  if (KindOfHeader(declaredSize) == HeaderKind::kCore) {
    image.header = DecodeCoreHeader(start);
    return STATUS_OK;
  }
  if (!SeekTo(file, ImageHeaderOffset(image.signature))) return STATUS_SEEK_ERROR;
  return ReadLongHeader(file, declaredSize, image.header) ? STATUS_OK : STATUS_BAD_FORMAT;
}

}  // namespace

bool ReadSignature(HANDLE file, uint16_t& signature) {
  Block<2> bytes{};
  if (!ReadBlock(file, bytes)) return false;
  signature = LoadU16(View<2>(bytes), 0);
  if (!IsKnownSignature(signature)) return false;
  GoTo(file, 0);
  return true;
}

int FindBitmap(HANDLE file, uint16_t signature, ImageSource& image) {
  image.signature = signature;
  if (signature == kArraySignature && !ReadArrayHeader(file)) return STATUS_BAD_FORMAT;
  const int status = ReadFileHeader(file, image);
  return status == STATUS_OK ? ReadImageHeader(file, image) : status;
}

int FindPage(HANDLE file, int page, ICONDIRENTRY& entry, bool& isPng) {
  Block<kDirectorySize> directoryBytes{};
  if (!ReadBlock(file, directoryBytes)) return STATUS_BAD_FORMAT;
  const ICONDIR directory = DecodeDirectory(directoryBytes);
  if (!IsValidDirectory(directory)) return STATUS_BAD_FORMAT;

  Block<kEntrySize> entryBytes{};
  GoTo(file, EntryOffset(ClampPage(page, directory.Count)));
  if (!ReadBlock(file, entryBytes)) return STATUS_BAD_FORMAT;
  entry = DecodeEntry(entryBytes);
  return ProbeBody(file, entry, isPng);
}

int FindIconImage(HANDLE file, const ICONDIRENTRY& entry, ImageSource& image) {
  ImageHeader& header = image.header;
  if (!ReadBodyHeader(file, entry, header) || header.Kind() != HeaderKind::kInfo) return STATUS_BAD_FORMAT;
  image.signature = kIconSignature;
  image.pixelOffset = IconPixelOffset(entry, header);
  header.height = IconHeight(header);
  return STATUS_OK;
}

}  // namespace bmp
