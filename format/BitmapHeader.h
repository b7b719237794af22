// The headers of a bitmap file, as plain records decoded from blocks of known size.
//
// Three generations of the image header are in use, told apart by the length it declares: 12 bytes
// (OS/2 1.x, "core"), 40 bytes (Windows, "info", and every image inside an icon file), and any other
// length (OS/2 2.x with 16 to 64 bytes, later Windows headers with 52 to 124). From 16 bytes on they
// all begin with the layout of the info header; a shorter one just stops earlier.
#pragma once

#include <cstdint>

#include "format/Bytes.h"
#include "format/Geometry.h"

namespace bmp {

inline constexpr uint16_t kBitmapSignature = 0x4D42;  // 'BM'
inline constexpr uint16_t kArraySignature = 0x4142;   // 'BA', an OS/2 bitmap array
inline constexpr uint16_t kIconSignature = 0;         // the reserved word of an icon directory

constexpr bool IsKnownSignature(uint16_t signature) {
  return signature == kBitmapSignature || signature == kArraySignature || signature == kIconSignature;
}

inline constexpr uint32_t kArrayHeaderSize = 14;
inline constexpr uint32_t kFileHeaderSize = 14;
inline constexpr uint32_t kCoreHeaderSize = 12;
inline constexpr uint32_t kInfoHeaderSize = 40;
inline constexpr uint32_t kLongHeaderSize = 64;  // as much of a longer header as readers look at
inline constexpr uint32_t kLeastLongHeader = 16;
inline constexpr uint32_t kMasksSize = 12;

/// Where the image header starts in a file of either signature.
constexpr uint32_t ImageHeaderOffset(uint16_t signature) {
  return signature == kArraySignature ? kArrayHeaderSize + kFileHeaderSize : kFileHeaderSize;
}

enum Compression : uint32_t {
  kUncompressed = 0,
  kCompressionRle8 = 1,
  kCompressionRle4 = 2,
  kCompressionBitFields = 3,
};

/// What follows a count of 0 in run-length codes; any higher number is that of single pixels.
enum RunLengthEscape : uint8_t { kEndOfLine = 0, kEndOfBitmap = 1, kDelta = 2 };

constexpr bool IsRunLengthCompression(uint32_t compression) {
  return compression != kUncompressed && compression != kCompressionBitFields;
}

/// Where the fields of the 14 bytes that open a bitmap file lie.
namespace file_at {
inline constexpr uint32_t kSignature = 0;
inline constexpr uint32_t kFileSize = 2;
inline constexpr uint32_t kReserved1 = 6;
inline constexpr uint32_t kReserved2 = 8;
inline constexpr uint32_t kDataOffset = 10;
}  // namespace file_at

/// Where the fields lie that open an element of an OS/2 array.
namespace array_at {
inline constexpr uint32_t kSignature = 0;
inline constexpr uint32_t kSize = 2;
inline constexpr uint32_t kScreenWidth = 10;  // of the display that the element is meant for
inline constexpr uint32_t kScreenHeight = 12;
inline constexpr uint32_t kNext =
    6;  // of the next element, from the start of the file; 0 behind the last one
}  // namespace array_at

/// Where the fields of a core header lie.
namespace core_at {
inline constexpr uint32_t kSize = 0;
inline constexpr uint32_t kWidth = 4;
inline constexpr uint32_t kHeight = 6;
inline constexpr uint32_t kPlanes = 8;
inline constexpr uint32_t kBitCount = 10;
}  // namespace core_at

/// Where the fields of every other header lie, as far as it is long.
namespace info_at {
inline constexpr uint32_t kSize = 0;
inline constexpr uint32_t kWidth = 4;
inline constexpr uint32_t kHeight = 8;
inline constexpr uint32_t kPlanes = 12;
inline constexpr uint32_t kBitCount = 14;
inline constexpr uint32_t kCompression = 16;
inline constexpr uint32_t kImageSize = 20;
inline constexpr uint32_t kXPixelsPerMetre = 24;
inline constexpr uint32_t kYPixelsPerMetre = 28;
inline constexpr uint32_t kColoursUsed = 32;
inline constexpr uint32_t kColoursImportant = 36;
inline constexpr uint32_t kMasks = 40;  // inside a longer header, and behind an info header
}  // namespace info_at

/// Where the three words of the masks lie.
namespace masks_at {
inline constexpr uint32_t kRed = 0;
inline constexpr uint32_t kGreen = 4;
inline constexpr uint32_t kBlue = 8;
}  // namespace masks_at

/// Where the masks lie in a file that is no array.
inline constexpr uint32_t kMasksOffset = kFileHeaderSize + info_at::kMasks;
static_assert(kMasksOffset == 54 && info_at::kMasks == kInfoHeaderSize);

/// The 14 bytes that open a bitmap file.
struct FileHeader {
  uint16_t signature = 0;
  uint32_t dataOffset = 0;  // of the first pixel byte, from the start of the file
};

constexpr FileHeader DecodeFileHeader(View<kFileHeaderSize> bytes) {
  return {.signature = LoadU16(bytes, file_at::kSignature),
          .dataOffset = LoadU32(bytes, file_at::kDataOffset)};
}

enum class HeaderKind { kCore, kInfo, kLong };

constexpr HeaderKind KindOfHeader(uint32_t declaredSize) {
  if (declaredSize == kCoreHeaderSize) return HeaderKind::kCore;
  return declaredSize == kInfoHeaderSize ? HeaderKind::kInfo : HeaderKind::kLong;
}

/// What readers take from an image header. Fields that a short header lacks are 0.
struct ImageHeader {
  uint32_t size = 0;  // as declared
  int32_t width = 0;
  int32_t height = 0;  // negative: rows from the top down
  uint16_t bitCount = 0;
  uint32_t compression = kUncompressed;
  bool hasResolution = false;  // the header is long enough for the next two
  int32_t xPixelsPerMetre = 0;
  int32_t yPixelsPerMetre = 0;
  uint32_t coloursUsed = 0;  // of an info header; no reader consults the field of a longer one

  [[nodiscard]] constexpr HeaderKind Kind() const { return KindOfHeader(size); }
};

constexpr uint32_t DeclaredHeaderSize(View<kCoreHeaderSize> bytes) {
  return LoadU32(bytes, core_at::kSize);
}

constexpr ImageHeader DecodeCoreHeader(View<kCoreHeaderSize> bytes) {
  return {.size = kCoreHeaderSize,
          .width = LoadU16(bytes, core_at::kWidth),
          .height = LoadU16(bytes, core_at::kHeight),
          .bitCount = LoadU16(bytes, core_at::kBitCount)};
}

/// Decodes the first 40 bytes of any header but the core one; what lies behind its end is not looked at.
constexpr ImageHeader DecodeInfoHeader(View<kInfoHeaderSize> bytes) {
  const uint32_t size = LoadU32(bytes, info_at::kSize);
  const bool hasCompression = size >= info_at::kCompression + 4;
  const bool hasResolution = size >= info_at::kYPixelsPerMetre + 4;
  return {.size = size,
          .width = LoadI32(bytes, info_at::kWidth),
          .height = LoadI32(bytes, info_at::kHeight),
          .bitCount = LoadU16(bytes, info_at::kBitCount),
          .compression = hasCompression ? LoadU32(bytes, info_at::kCompression) : kUncompressed,
          .hasResolution = hasResolution,
          .xPixelsPerMetre = hasResolution ? LoadI32(bytes, info_at::kXPixelsPerMetre) : 0,
          .yPixelsPerMetre = hasResolution ? LoadI32(bytes, info_at::kYPixelsPerMetre) : 0,
          .coloursUsed = size == kInfoHeaderSize ? LoadU32(bytes, info_at::kColoursUsed) : 0};
}

/// Palette entries that follow the header: what the depth can have, or fewer where the header says so.
constexpr uint32_t StoredPaletteEntries(const ImageHeader& header) {
  const uint32_t full = HasPalette(header.bitCount) ? PaletteSize(header.bitCount) : 0;
  return header.coloursUsed != 0 && header.coloursUsed < full ? header.coloursUsed : full;
}

/// The three words that say which bits of a 16- or 32-bit pixel hold which channel.
struct ColorMasks {
  uint32_t red = 0;
  uint32_t green = 0;
  uint32_t blue = 0;

  constexpr bool operator==(const ColorMasks&) const = default;
};

inline constexpr ColorMasks kMasks555{.red = 0x7C00, .green = 0x03E0, .blue = 0x001F};
inline constexpr ColorMasks kMasks565{.red = 0xF800, .green = 0x07E0, .blue = 0x001F};
inline constexpr ColorMasks kMasks888{.red = 0xFF0000, .green = 0x00FF00, .blue = 0x0000FF};

/// What the masks of an image mean for its rows.
struct MaskVerdict {
  bool isUsable = false;
  bool needsConversion = false;  // 16-bit pixels that become 5-5-5 while they are read
  bool is565 = false;
};

/// 16-bit pixels may be laid out in any way; 32-bit ones only as eight bits a channel, red highest.
constexpr MaskVerdict JudgeMasks(const ColorMasks& masks, int bitsPerPixel) {
  if (bitsPerPixel == 32) return {.isUsable = masks == kMasks888};
  if (bitsPerPixel != 16) return {};
  const bool is565 = masks == kMasks565;
  return {.isUsable = true, .needsConversion = !is565 && masks != kMasks555, .is565 = is565};
}

constexpr ColorMasks DecodeMasks(View<kMasksSize> bytes) {
  return {.red = LoadU32(bytes, masks_at::kRed),
          .green = LoadU32(bytes, masks_at::kGreen),
          .blue = LoadU32(bytes, masks_at::kBlue)};
}

}  // namespace bmp
