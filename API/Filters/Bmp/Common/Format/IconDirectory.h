// Icon and cursor files: the directory, its entries, and the two forms an image body takes. Byte
// layouts only; which page is wanted is the readers' business.
#pragma once

#include <vxkrn.h>

#include <cstdint>

#include "BitmapHeader.h"
#include "Bytes.h"

namespace bmp {

inline constexpr uint32_t kDirectorySize = 6;
inline constexpr uint32_t kEntrySize = 16;
inline constexpr uint32_t kPngSignatureSize = 8;
inline constexpr int kLargeIcon = 256;  // pixels; the directory has no room for more

inline constexpr uint16_t kIconType = 1;
inline constexpr uint16_t kCursorType = 2;

/// The signatures a PNG body may start with: the standard's, and a variant some writers leave.
inline constexpr Block<kPngSignatureSize> kPngSignatures[] = {
    {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A},
    {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x0D, 0x05},
};

constexpr ICONDIR DecodeDirectory(View<kDirectorySize> bytes) {
  return {.Reserved = LoadU16(bytes, 0), .Type = LoadU16(bytes, 2), .Count = LoadU16(bytes, 4)};
}

/// Whether a directory opens an icon or cursor file with at least one page.
constexpr bool IsValidDirectory(const ICONDIR& directory) {
  return directory.Reserved == 0 && (directory.Type == kIconType || directory.Type == kCursorType) &&
         directory.Count != 0;
}

constexpr ICONDIRENTRY DecodeEntry(View<kEntrySize> bytes) {
  return {.Width = bytes[0],
          .Height = bytes[1],
          .ColorCount = bytes[2],
          .Reserved = bytes[3],
          .Planes = LoadU16(bytes, 4),
          .BitCount = LoadU16(bytes, 6),
          .BytesInRes = LoadU32(bytes, 8),
          .ImageOffset = LoadU32(bytes, 12)};
}

/// File offset of the entry of a page, counted from 1.
constexpr uint32_t EntryOffset(int page) {
  return kDirectorySize + kEntrySize * (static_cast<uint32_t>(page) - 1);
}

/// The page of `count` that a request for `page` means.
constexpr int ClampPage(int page, int count) {
  if (page < 1) return 1;
  return page > count ? count : page;
}

/// The header's height covers the colour rows and as many mask rows.
constexpr int IconHeight(const ImageHeader& header) {
  return header.height / 2;
}

/// File offset of the first pixel byte of an icon image. Wraps like every offset of the file.
constexpr uint32_t IconPixelOffset(const ICONDIRENTRY& entry, const ImageHeader& header) {
  return entry.ImageOffset + kInfoHeaderSize +
         static_cast<uint32_t>(sizeof(RGBQUAD)) * StoredPaletteEntries(header);
}

static_assert(EntryOffset(1) == 6 && EntryOffset(3) == 38);
static_assert(ClampPage(0, 3) == 1 && ClampPage(3, 3) == 3 && ClampPage(7, 3) == 3);

}  // namespace bmp
