// Icon and cursor files: the directory, its entries, and the two forms an image body takes. Byte
// layouts only; which page is wanted is the readers' business.
#pragma once

#include <vxkrn.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "format/BitmapHeader.h"
#include "format/Bytes.h"

namespace bmp {

inline constexpr uint32_t kDirectorySize = 6;
inline constexpr uint32_t kEntrySize = 16;
inline constexpr uint32_t kPngSignatureSize = 8;
inline constexpr uint32_t kPngChunkFrame = 12;  // of a chunk: all but its content
inline constexpr int kLargeIcon = 256;          // pixels; the directory has no room for more

inline constexpr uint16_t kIconType = 1;
inline constexpr uint16_t kCursorType = 2;

/// The signatures a PNG body may start with: the standard's, and a variant some writers leave.
inline constexpr Block<kPngSignatureSize> kPngSignatures[] = {
    {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A},
    {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x0D, 0x05},
};

constexpr bool IsOneOfPngSignatures(const Block<kPngSignatureSize>& start) {
  return std::find(std::begin(kPngSignatures), std::end(kPngSignatures), start) != std::end(kPngSignatures);
}

/// Where the fields of the directory lie.
namespace directory_at {
inline constexpr uint32_t kReserved = 0;
inline constexpr uint32_t kType = 2;
inline constexpr uint32_t kCount = 4;
}  // namespace directory_at

/// Where the fields of an entry lie, from its start.
namespace entry_at {
inline constexpr uint32_t kWidth = 0;
inline constexpr uint32_t kHeight = 1;
inline constexpr uint32_t kColorCount = 2;
inline constexpr uint32_t kReserved = 3;
inline constexpr uint32_t kPlanes = 4;    // of a cursor: the hot spot's x
inline constexpr uint32_t kBitCount = 6;  // of a cursor: the hot spot's y
inline constexpr uint32_t kBytesInRes = 8;
inline constexpr uint32_t kImageOffset = 12;
}  // namespace entry_at

/// Whether a stream begins with what both signatures have in common: enough to tell it from a bitmap's
/// header.
constexpr bool BeginsLikePng(View<4> bytes) {
  return std::equal(bytes.begin(), bytes.end(), kPngSignatures[0].begin());
}

constexpr ICONDIR DecodeDirectory(View<kDirectorySize> bytes) {
  return {.Reserved = LoadU16(bytes, directory_at::kReserved),
          .Type = LoadU16(bytes, directory_at::kType),
          .Count = LoadU16(bytes, directory_at::kCount)};
}

/// Whether a directory opens an icon or cursor file with at least one page.
constexpr bool IsValidDirectory(const ICONDIR& directory) {
  return directory.Reserved == 0 && (directory.Type == kIconType || directory.Type == kCursorType) &&
         directory.Count != 0;
}

constexpr ICONDIRENTRY DecodeEntry(View<kEntrySize> bytes) {
  return {.Width = bytes[entry_at::kWidth],
          .Height = bytes[entry_at::kHeight],
          .ColorCount = bytes[entry_at::kColorCount],
          .Reserved = bytes[entry_at::kReserved],
          .Planes = LoadU16(bytes, entry_at::kPlanes),
          .BitCount = LoadU16(bytes, entry_at::kBitCount),
          .BytesInRes = LoadU32(bytes, entry_at::kBytesInRes),
          .ImageOffset = LoadU32(bytes, entry_at::kImageOffset)};
}

/// Bytes of a directory with that many entries.
constexpr uint32_t DirectoryBytes(uint32_t pages) {
  return kDirectorySize + kEntrySize * pages;
}

/// File offset of the entry of a page, counted from 1.
constexpr uint32_t EntryOffset(int page) {
  return DirectoryBytes(static_cast<uint32_t>(page) - 1);
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
