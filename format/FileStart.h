// How files begin that hold pictures: what tells them from other bytes at a glance, where they may begin
// anywhere. Says which bytes are worth a second look, not what they are.
#pragma once

#include <cstdint>

#include "format/Animation.h"
#include "format/BitmapLayout.h"
#include "format/IconDirectory.h"
#include "format/Os2Icon.h"

namespace bmp {

/// Bytes that a glance takes. No file is shorter.
inline constexpr uint32_t kFileStartSize = 26;

/// Whether a file may begin with this byte: for a loop over all there are.
constexpr bool MayBeginWith(uint8_t first) {
  constexpr auto kIsFirst = [] {
    Block<256> isFirst{};
    for (const char each : {'\0', 'B', 'C', 'I', 'P', 'R'}) isFirst[static_cast<uint8_t>(each)] = 1;
    return isFirst;
  }();
  return kIsFirst[first] != 0;
}

constexpr bool BeginsLikeBitmap(View<kFileStartSize> bytes) {
  const uint16_t signature = LoadU16(bytes, file_at::kSignature);
  bool isKnown = signature == kBitmapSignature;
  for (const uint16_t os2 : kOs2IconSignatures) isKnown = isKnown || signature == os2;
  const uint32_t headerSize = LoadU32(bytes, kFileHeaderSize);
  return isKnown && headerSize >= kCoreHeaderSize && headerSize <= kV5HeaderSize;
}

/// One whose first image has a place of its own behind the array's header.
constexpr bool BeginsLikeArray(View<kFileStartSize> bytes) {
  return LoadU16(bytes, array_at::kSignature) == kArraySignature &&
         LoadU32(bytes, array_at::kSize) >= kArrayHeaderSize &&
         LoadU32(bytes, array_at::kSize) <= kArrayHeaderSize + kFileHeaderSize + kV5HeaderSize;
}

/// A directory whose first entry speaks of bytes behind it.
constexpr bool BeginsLikeIcon(View<kFileStartSize> bytes) {
  const auto directory = DecodeDirectory(View<kDirectorySize>(bytes.first<kDirectorySize>()));
  const auto entry = DecodeEntry(bytes.subspan<kDirectorySize, kEntrySize>());
  return IsValidDirectory(directory) && entry.BytesInRes >= kCoreHeaderSize &&
         entry.ImageOffset >= DirectoryBytes(directory.Count);
}

constexpr bool BeginsLikeAnimation(View<kFileStartSize> bytes) {
  return LoadU32(bytes, chunk_at::kName) == chunk::kRiff &&
         LoadU32(bytes, chunk_at::kListOf) == chunk::kAnimation;
}

constexpr bool BeginsLikeFile(View<kFileStartSize> bytes) {
  if (bytes[0] == 0 && (bytes[1] != 0 || bytes[2] == 0)) return false;  // most bytes that are looked at are 0
  return BeginsLikeIcon(bytes) || BeginsLikeBitmap(bytes) || BeginsLikeArray(bytes) ||
         BeginsLikeAnimation(bytes);
}

}  // namespace bmp
