// Finds and sorts the channels of unusual 32-bit pixels. Where the masks are those that the
// filter takes, the pixels are the filter's.
#include "beyond/WideFields.h"

#include <bit>
#include <cstring>

#include "files/OpenFile.h"
#include "format/BitmapHeader.h"

namespace vxkrn {
namespace {

constexpr uint32_t kHeadSize = bmp::kMasksOffset + bmp::kMasksSize;
using Head = bmp::Block<kHeadSize>;

bool IsOneRun(uint32_t mask) noexcept {
  return mask != 0 && std::has_single_bit((uint64_t{mask} >> std::countr_zero(mask)) + 1);
}

/// One run of bits each, none of which two have.
bool AreClear(const bmp::ColorMasks& masks) noexcept {
  const auto [red, green, blue] = masks;
  return IsOneRun(red) && IsOneRun(green) && IsOneRun(blue) && (red & green) == 0 && (red & blue) == 0 &&
         (green & blue) == 0;
}

WideFields::Channel ChannelOf(uint32_t mask) noexcept {
  return {static_cast<unsigned int>(std::countr_zero(mask)), static_cast<unsigned int>(std::popcount(mask))};
}

/// A channel of any width as 8 bits, rounded.
unsigned char Extract(uint32_t pixel, WideFields::Channel channel) noexcept {
  const uint64_t last = (uint64_t{1} << channel.bits) - 1;
  const uint64_t value = pixel >> channel.shift & last;
  return static_cast<unsigned char>((value * 255 + last / 2) / last);
}

/// Masks follow an info header, and lie in every header that is long enough for them.
bool HasMasks(const Head& head) noexcept {
  const auto file = bmp::DecodeFileHeader(bmp::Slice<bmp::kFileHeaderSize>(head, 0));
  const auto header = bmp::DecodeInfoHeader(bmp::Slice<bmp::kInfoHeaderSize>(head, bmp::kFileHeaderSize));
  return file.signature == bmp::kBitmapSignature && header.compression == bmp::kCompressionBitFields &&
         (header.size == bmp::kInfoHeaderSize || header.size >= bmp::info_at::kMasks + bmp::kMasksSize);
}

/// Sorts the pixels of a row, each channel taken out of the pixel by `extract`.
template <class Extractor>
void SortRow(const WideFields& fields, unsigned char* bytes, int width, Extractor extract) noexcept {
  for (int x = 0; x < width; ++x, bytes += 4) {
    uint32_t pixel;
    std::memcpy(&pixel, bytes, sizeof pixel);
    bytes[0] = extract(pixel, fields.blue);
    bytes[1] = extract(pixel, fields.green);
    bytes[2] = extract(pixel, fields.red);
    bytes[3] = 0;
  }
}

}  // namespace

std::optional<WideFields> FindWideFields(const vx_source& source, const IMAGEINFO& info) noexcept {
  if (info.BitsPerPixel != 32 || (info.Format != FMT_BMP && info.Format != FMT_OS2_2)) return std::nullopt;
  const Head head = source.BlockAt<kHeadSize>(0);
  if (!HasMasks(head)) return std::nullopt;
  const auto masks = bmp::DecodeMasks(bmp::Slice<bmp::kMasksSize>(head, bmp::kMasksOffset));
  const uint32_t pixelOffset = bmp::DecodeFileHeader(bmp::Slice<bmp::kFileHeaderSize>(head, 0)).dataOffset;
  const bool isTaken = bmp::JudgeMasks(masks, info.BitsPerPixel).isUsable;
  if (isTaken || !AreClear(masks) || pixelOffset > kLastPosition) return std::nullopt;
  return WideFields{pixelOffset, ChannelOf(masks.blue), ChannelOf(masks.green), ChannelOf(masks.red)};
}

void SortChannels(const WideFields& fields, _BITMAPHANDLE* bitmap) noexcept {
  const bool areBytes = fields.blue.bits == 8 && fields.green.bits == 8 && fields.red.bits == 8;
  const auto extractByte = [](uint32_t pixel, WideFields::Channel channel) {
    return static_cast<unsigned char>(pixel >> channel.shift);
  };
  for (int row = 0; row < bitmap->Height; ++row) {
    unsigned char* bytes = StoredRow(*bitmap, row);
    if (areBytes) {
      SortRow(fields, bytes, bitmap->Width, extractByte);
    } else {
      SortRow(fields, bytes, bitmap->Width, Extract);
    }
  }
}

}  // namespace vxkrn
