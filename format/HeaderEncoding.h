// What a new file starts with: headers, masks and directory entries encoded into blocks of known size. The
// assertions at the end prove that decoding undoes encoding.
#pragma once

#include <cstdint>

#include "format/BitmapHeader.h"
#include "format/Bytes.h"
#include "format/IconDirectory.h"

namespace bmp {

// Fields that are known only once run-length coded rows have been written, from the start of the file.
inline constexpr uint32_t kFileSizeOffset = file_at::kFileSize;
inline constexpr uint32_t kImageSizeOffset = kFileHeaderSize + info_at::kImageSize;
static_assert(kFileSizeOffset == 2 && kImageSizeOffset == 34);

constexpr Block<kFileHeaderSize> EncodeFileHeader(uint32_t fileSize, uint32_t dataOffset) {
  Block<kFileHeaderSize> bytes{};
  StoreU16(bytes, file_at::kSignature, kBitmapSignature);
  StoreU32(bytes, file_at::kFileSize, fileSize);
  StoreU32(bytes, file_at::kDataOffset, dataOffset);
  return bytes;
}

/// What writers put into an image header. Every other field of theirs is 0.
struct NewHeader {
  uint32_t width = 0;
  uint32_t height = 0;
  uint16_t bitCount = 0;
  uint32_t compression = kUncompressed;
  uint32_t imageSize = 0;
  uint32_t xPixelsPerMetre = 0;
  uint32_t yPixelsPerMetre = 0;
};

constexpr Block<kCoreHeaderSize> EncodeCoreHeader(const NewHeader& header) {
  Block<kCoreHeaderSize> bytes{};
  StoreU32(bytes, core_at::kSize, kCoreHeaderSize);
  StoreU16(bytes, core_at::kWidth, static_cast<uint16_t>(header.width & 0xFFFF));
  StoreU16(bytes, core_at::kHeight, static_cast<uint16_t>(header.height & 0xFFFF));
  StoreU16(bytes, core_at::kPlanes, 1);
  StoreU16(bytes, core_at::kBitCount, header.bitCount);
  return bytes;
}

/// An info header, or the longer OS/2 2.x one that begins like it.
template <uint32_t Size>
constexpr Block<Size> EncodeHeader(const NewHeader& header) {
  static_assert(Size >= kInfoHeaderSize);
  Block<Size> bytes{};
  StoreU32(bytes, info_at::kSize, Size);
  StoreU32(bytes, info_at::kWidth, header.width);
  StoreU32(bytes, info_at::kHeight, header.height);
  StoreU16(bytes, info_at::kPlanes, 1);
  StoreU16(bytes, info_at::kBitCount, header.bitCount);
  StoreU32(bytes, info_at::kCompression, header.compression);
  StoreU32(bytes, info_at::kImageSize, header.imageSize);
  StoreU32(bytes, info_at::kXPixelsPerMetre, header.xPixelsPerMetre);
  StoreU32(bytes, info_at::kYPixelsPerMetre, header.yPixelsPerMetre);
  return bytes;
}

constexpr Block<kMasksSize> EncodeMasks(const ColorMasks& masks) {
  Block<kMasksSize> bytes{};
  StoreU32(bytes, masks_at::kRed, masks.red);
  StoreU32(bytes, masks_at::kGreen, masks.green);
  StoreU32(bytes, masks_at::kBlue, masks.blue);
  return bytes;
}

constexpr Block<kDirectorySize> EncodeDirectory(const ICONDIR& directory) {
  Block<kDirectorySize> bytes{};
  StoreU16(bytes, directory_at::kReserved, directory.Reserved);
  StoreU16(bytes, directory_at::kType, directory.Type);
  StoreU16(bytes, directory_at::kCount, directory.Count);
  return bytes;
}

constexpr Block<kEntrySize> EncodeEntry(const ICONDIRENTRY& entry) {
  Block<kEntrySize> bytes{entry.Width, entry.Height, entry.ColorCount, entry.Reserved};
  StoreU16(bytes, entry_at::kPlanes, entry.Planes);
  StoreU16(bytes, entry_at::kBitCount, entry.BitCount);
  StoreU32(bytes, entry_at::kBytesInRes, entry.BytesInRes);
  StoreU32(bytes, entry_at::kImageOffset, entry.ImageOffset);
  return bytes;
}

/// Colours as directory entries count them, in a byte: 256 and more are 0.
constexpr uint8_t EntryColorCount(int bitsPerPixel) {
  return bitsPerPixel >= 0 && bitsPerPixel < 8 ? static_cast<uint8_t>(PaletteSize(bitsPerPixel)) : uint8_t{0};
}

/// A side as directory entries have it: the low byte, so that 256 is 0.
constexpr uint8_t EntrySide(int pixels) {
  return static_cast<uint8_t>(static_cast<uint32_t>(pixels) & 0xFF);
}

namespace proof {

inline constexpr auto kFileHeader = EncodeFileHeader(6078, 1078);
static_assert(DecodeFileHeader(kFileHeader).signature == kBitmapSignature &&
              DecodeFileHeader(kFileHeader).dataOffset == 1078 &&
              LoadU32(View<kFileHeaderSize>(kFileHeader), kFileSizeOffset) == 6078);

inline constexpr NewHeader kHeader = {.width = 0x10203,
                                      .height = 0x4050607,
                                      .bitCount = 24,
                                      .compression = kCompressionBitFields,
                                      .imageSize = 0x8090A0B,
                                      .xPixelsPerMetre = 2835,
                                      .yPixelsPerMetre = 3780};

constexpr bool Undoes(const ImageHeader& header, uint32_t size) {
  return header.size == size && header.width == 0x10203 && header.height == 0x4050607 &&
         header.bitCount == kHeader.bitCount && header.compression == kHeader.compression &&
         header.xPixelsPerMetre == 2835 && header.yPixelsPerMetre == 3780;
}
static_assert(Undoes(DecodeInfoHeader(EncodeHeader<kInfoHeaderSize>(kHeader)), kInfoHeaderSize));
static_assert(Undoes(DecodeInfoHeader(Slice<kInfoHeaderSize>(EncodeHeader<kLongHeaderSize>(kHeader), 0)),
                     kLongHeaderSize));
static_assert(DecodeCoreHeader(EncodeCoreHeader(kHeader)).width == 0x203 &&
              DecodeCoreHeader(EncodeCoreHeader(kHeader)).height == 0x607 &&
              DecodeCoreHeader(EncodeCoreHeader(kHeader)).bitCount == 24);
static_assert(DecodeMasks(EncodeMasks(kMasks565)) == kMasks565);
static_assert(DecodeDirectory(EncodeDirectory({.Reserved = 0, .Type = 2, .Count = 515})).Count == 515);

inline constexpr auto kEntry = EncodeEntry({.Width = 1,
                                            .Height = 2,
                                            .ColorCount = 3,
                                            .Reserved = 4,
                                            .Planes = 0x506,
                                            .BitCount = 0x708,
                                            .BytesInRes = 0x90A0B0C,
                                            .ImageOffset = 0xD0E0F10});
static_assert(EncodeEntry(DecodeEntry(kEntry)) == kEntry && kEntry[8] == 0x0C && kEntry[15] == 0x0D);
static_assert(EntryColorCount(1) == 2 && EntryColorCount(4) == 16 && EntryColorCount(8) == 0 &&
              EntryColorCount(32) == 0 && EntrySide(256) == 0 && EntrySide(255) == 255);

}  // namespace proof
}  // namespace bmp
