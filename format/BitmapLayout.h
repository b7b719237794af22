// What a bitmap's header says of everything around it, as files in the wild mean it: where colour table,
// masks and pixels lie, whatever the header's length and whether a file header stands before it. Broader than
// the filter's view, which keeps to its contract. Pure; every offset counts from the start of the file.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "format/BitmapHeader.h"
#include "format/Bytes.h"

namespace bmp {

inline constexpr uint32_t kMasks3HeaderSize = 52;  // an info header with three masks in it
inline constexpr uint32_t kMasks4HeaderSize = 56;  // and with four
inline constexpr uint32_t kOs2HeaderSize = 64;     // the whole OS/2 2.x header
inline constexpr uint32_t kV4HeaderSize = 108;
inline constexpr uint32_t kV5HeaderSize = 124;
inline constexpr uint32_t kAlphaMasksSize = 16;

/// Codings beyond those of Compression. Numbers 3 and 4 mean something else behind OS/2 headers.
inline constexpr uint32_t kCompressionHuffman = 3;
inline constexpr uint32_t kCompressionRle24 = 4;
inline constexpr uint32_t kCompressionJpeg = 4;
inline constexpr uint32_t kCompressionPng = 5;
inline constexpr uint32_t kCompressionAlphaFields = 6;

/// Where the fields lie that only longer headers have.
namespace long_at {
inline constexpr uint32_t kAlphaMask = 52;
inline constexpr uint32_t kColourSpace = 56;
inline constexpr uint32_t kEndpoints = 60;  // red, green, blue; x, y, z each, as 2.30 fixed-point numbers
inline constexpr uint32_t kGamma = 96;      // red, green, blue, as 16.16 fixed-point numbers
inline constexpr uint32_t kIntent = 108;
inline constexpr uint32_t kProfileOffset = 112;  // from the start of the image header
inline constexpr uint32_t kProfileSize = 116;
inline constexpr uint32_t kReserved = 120;
}  // namespace long_at

/// Where the fields lie that only OS/2 2.x headers have.
namespace os2_at {
inline constexpr uint32_t kResolutionUnit = 40;
inline constexpr uint32_t kReserved = 42;
inline constexpr uint32_t kRecording = 44;  // the order of the rows
inline constexpr uint32_t kRendering = 46;  // how halftones were made
inline constexpr uint32_t kHalftone1 = 48;
inline constexpr uint32_t kHalftone2 = 52;
inline constexpr uint32_t kColourEncoding = 56;
inline constexpr uint32_t kIdentifier = 60;  // for the application
}  // namespace os2_at

/// Whether writers make headers of that length.
constexpr bool IsHeaderSize(uint32_t size) {
  constexpr uint32_t kSizes[] = {kCoreHeaderSize, kInfoHeaderSize, kMasks3HeaderSize, kMasks4HeaderSize,
                                 kOs2HeaderSize,  kV4HeaderSize,   kV5HeaderSize};
  return std::find(std::begin(kSizes), std::end(kSizes), size) != std::end(kSizes);
}

enum class HeaderFamily : uint8_t { kCore, kOs2, kWindows };

/// Who wrote a header of that length. One of 40 bytes is Windows's unless its coding says otherwise.
constexpr HeaderFamily FamilyOf(uint32_t headerSize) {
  if (headerSize == kCoreHeaderSize) return HeaderFamily::kCore;
  const bool isWindows = headerSize == kInfoHeaderSize || headerSize == kMasks3HeaderSize ||
                         headerSize == kMasks4HeaderSize || headerSize > kOs2HeaderSize;
  return isWindows ? HeaderFamily::kWindows : HeaderFamily::kOs2;
}

/// Masks of three channels and of alpha; 0 where there is no such channel.
struct FieldMasks {
  ColorMasks color;
  uint32_t alpha = 0;

  constexpr bool operator==(const FieldMasks&) const = default;
};

/// What the longer Windows headers say of colours.
struct ColourSpace {
  static constexpr uint32_t kCalibrated = 0;
  static constexpr uint32_t kSrgb = 0x73524742;      // 'sRGB'
  static constexpr uint32_t kWindows = 0x57696E20;   // 'Win '
  static constexpr uint32_t kLinked = 0x4C494E4B;    // 'LINK'
  static constexpr uint32_t kEmbedded = 0x4D424544;  // 'MBED'
  static constexpr uint32_t kIntentPictures = 4;     // what colours are for: to look right, side by side

  uint32_t type = kSrgb;
  uint32_t endpoints[9] = {};  // as stored
  uint32_t gamma[3] = {};      // as stored
  uint32_t intent = 0;         // how colours out of reach are replaced; headers before V5 have none
  uint64_t profileOffset = 0;
  uint32_t profileSize = 0;  // bytes, of a profile or of the name of a linked one; 0: none
};

/// As much of a file's head as says where everything lies.
using LayoutBytes = Block<kV5HeaderSize + kMasksSize>;

struct BitmapLayout {
  uint64_t headerOffset = 0;
  uint32_t headerSize = 0;  // as declared
  HeaderFamily family = HeaderFamily::kWindows;
  int width = 0;
  int height = 0;  // what is shown: never below 0 unless it has no positive counterpart
  bool isTopDown = false;
  int depth = 0;  // bits per pixel
  uint32_t compression = kUncompressed;
  uint32_t imageSize = 0;  // of the pixel data, as declared; 0 where the header is too short
  int32_t xPixelsPerMetre = 0;
  int32_t yPixelsPerMetre = 0;
  FieldMasks masks;  // of codings that have some
  uint64_t paletteOffset = 0;
  uint32_t paletteEntrySize = 4;
  uint32_t paletteDeclared = 0;  // entries that the header means
  uint32_t paletteCount = 0;     // entries that the file has
  uint32_t dataOffset = 0;       // of the pixels, as the file header says; 0 where there is none
  uint64_t pixelOffset = 0;
  bool isOffsetMended = false;  // the file header pointed elsewhere, where no pixels can be
  bool hasFileHeader = false;
  ColourSpace colour;

  [[nodiscard]] constexpr bool HasFields() const {
    return (depth == 16 || depth == 32) &&
           (compression == kCompressionBitFields || compression == kCompressionAlphaFields);
  }
  [[nodiscard]] constexpr uint64_t PaletteEnd() const {
    return paletteOffset + uint64_t{paletteEntrySize} * paletteCount;
  }
  /// Bytes from one row to the next, of pixels that are stored plainly.
  [[nodiscard]] constexpr uint64_t StoredStride() const {
    return static_cast<uint64_t>(Stride(width, depth));
  }
};

namespace layout {

constexpr uint32_t FieldAt(const LayoutBytes& bytes, uint32_t headerSize, uint32_t at) {
  return headerSize >= at + 4 ? LoadU32(View<sizeof(LayoutBytes)>(bytes), at) : 0;
}

constexpr ColourSpace ColourOf(const LayoutBytes& bytes, uint32_t size, uint64_t headerOffset) {
  ColourSpace colour;
  if (size < kV4HeaderSize) return colour;
  colour.type = FieldAt(bytes, size, long_at::kColourSpace);
  for (uint32_t i = 0; i < 9; ++i) colour.endpoints[i] = FieldAt(bytes, size, long_at::kEndpoints + 4 * i);
  for (uint32_t i = 0; i < 3; ++i) colour.gamma[i] = FieldAt(bytes, size, long_at::kGamma + 4 * i);
  colour.intent = FieldAt(bytes, size, long_at::kIntent);
  const bool hasProfile = colour.type == ColourSpace::kEmbedded || colour.type == ColourSpace::kLinked;
  if (!hasProfile || size < kV5HeaderSize) return colour;
  colour.profileOffset = headerOffset + FieldAt(bytes, size, long_at::kProfileOffset);
  colour.profileSize = FieldAt(bytes, size, long_at::kProfileSize);
  return colour;
}

/// Masks stand in headers that are long enough, and behind an info header.
constexpr FieldMasks MasksOf(const LayoutBytes& bytes, uint32_t size, uint32_t compression) {
  const View<sizeof(LayoutBytes)> all(bytes);
  const bool isInfo = size == kInfoHeaderSize;
  if (!isInfo && size < kMasks3HeaderSize) return {};
  const bool hasAlpha = isInfo ? compression == kCompressionAlphaFields : size >= kMasks4HeaderSize;
  return {{LoadU32(all, info_at::kMasks), LoadU32(all, info_at::kMasks + masks_at::kGreen),
           LoadU32(all, info_at::kMasks + masks_at::kBlue)},
          hasAlpha ? LoadU32(all, long_at::kAlphaMask) : 0};
}

/// Bytes of masks that follow the header.
constexpr uint32_t MaskBytesBehind(const BitmapLayout& image) {
  if (image.headerSize != kInfoHeaderSize || !image.HasFields()) return 0;
  return image.compression == kCompressionAlphaFields ? kAlphaMasksSize : kMasksSize;
}

/// Entries that the header means, of the table for this depth.
constexpr uint32_t DeclaredEntries(int depth, uint32_t coloursUsed) {
  if (depth < 1 || depth > 8) return 0;
  return coloursUsed == 0 ? PaletteSize(depth) : std::min(coloursUsed, PaletteSize(depth));
}

}  // namespace layout

/// Lays out the bitmap whose header stands at `headerOffset` and begins with `bytes`; what lies behind its
/// end counts only where masks follow. `dataOffset` is the file header's word for where the pixels begin, 0
/// where there is none. Nothing is refused here.
///
/// The format leaves open what holds when the colour table and the pixels overlap. Writers that shorten the
/// table leave "colours used" 0 or use a long header, and set the offset right: so there the table is as long
/// as there is room. Where no entry fits, or the info header says a number, the offset is what is wrong, as
/// in files of writers that forget the table or leave 0.
constexpr BitmapLayout LayOut(const LayoutBytes& bytes, uint64_t headerOffset, bool hasFileHeader,
                              uint32_t dataOffset) {
  BitmapLayout image;
  image.headerOffset = headerOffset;
  image.hasFileHeader = hasFileHeader;
  image.dataOffset = dataOffset;
  const Block<kInfoHeaderSize> start = Slice<kInfoHeaderSize>(bytes, 0);
  const uint32_t size = DeclaredHeaderSize(Slice<kCoreHeaderSize>(bytes, 0));
  const bool isCore = size == kCoreHeaderSize;
  const ImageHeader header =
      isCore ? DecodeCoreHeader(Slice<kCoreHeaderSize>(bytes, 0)) : DecodeInfoHeader(start);
  image.headerSize = size;
  image.family = FamilyOf(size);
  image.width = header.width;
  image.isTopDown = header.height < 0;
  image.height = image.isTopDown ? WrapSubtract(0, header.height) : header.height;
  image.depth = header.bitCount;
  image.compression = header.compression;
  image.imageSize = isCore ? 0 : layout::FieldAt(bytes, size, info_at::kImageSize);
  image.xPixelsPerMetre = header.xPixelsPerMetre;
  image.yPixelsPerMetre = header.yPixelsPerMetre;
  if (!isCore) image.colour = layout::ColourOf(bytes, size, headerOffset);
  if (image.HasFields()) image.masks = layout::MasksOf(bytes, size, image.compression);

  const uint32_t coloursUsed = isCore ? 0 : layout::FieldAt(bytes, size, info_at::kColoursUsed);
  image.paletteEntrySize = isCore ? 3 : 4;
  image.paletteOffset = headerOffset + size + layout::MaskBytesBehind(image);
  image.paletteDeclared = layout::DeclaredEntries(image.depth, coloursUsed);
  image.paletteCount = image.paletteDeclared;
  image.pixelOffset = dataOffset;
  // A table that only helps displays of few colours.
  const bool isForDisplays = image.depth > 8 && coloursUsed <= 256;
  const uint64_t behindTable = image.PaletteEnd() + (isForDisplays ? uint64_t{4} * coloursUsed : 0);
  if (!hasFileHeader) {
    image.pixelOffset = behindTable;
  } else if (dataOffset < image.PaletteEnd()) {
    const uint64_t room = dataOffset > image.paletteOffset ? dataOffset - image.paletteOffset : 0;
    const auto fitting = static_cast<uint32_t>(room / image.paletteEntrySize);
    const bool isCounted = size == kInfoHeaderSize && coloursUsed == image.paletteDeclared;
    if (fitting > 0 && !isCounted) {
      image.paletteCount = fitting;
    } else {
      image.pixelOffset = behindTable;
      image.isOffsetMended = true;
    }
  }
  return image;
}

static_assert(FamilyOf(12) == HeaderFamily::kCore && FamilyOf(16) == HeaderFamily::kOs2 &&
              FamilyOf(64) == HeaderFamily::kOs2 && FamilyOf(40) == HeaderFamily::kWindows &&
              FamilyOf(108) == HeaderFamily::kWindows);

}  // namespace bmp
