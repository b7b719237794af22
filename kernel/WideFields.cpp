// Finds and sorts the channels of unusual 32-bit pixels. The few header fields it looks at lie where they
// lie in every bitmap file whose header can have masks; everything else about the file is the filter's.
#include "WideFields.h"

#include <bit>
#include <cstring>

#include "OpenFile.h"

namespace vxkrn {
namespace {

constexpr std::uint64_t kPixelOffsetAt = 10;
constexpr std::uint64_t kHeaderSizeAt = 14;
constexpr std::uint64_t kCompressionAt = 30;
constexpr std::uint64_t kMasksAt = 54;  // behind a header of 40 bytes, inside a longer one

constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kShortestWithMasks = 52;
constexpr std::uint32_t kBitFields = 3;

bool IsOneRun(std::uint32_t mask) noexcept {
  return mask != 0 && std::has_single_bit((std::uint64_t{mask} >> std::countr_zero(mask)) + 1);
}

WideFields::Channel ChannelOf(std::uint32_t mask) noexcept {
  return {static_cast<unsigned int>(std::countr_zero(mask)), static_cast<unsigned int>(std::popcount(mask))};
}

/// A channel of any width as 8 bits, rounded.
unsigned char Extract(std::uint32_t pixel, WideFields::Channel channel) noexcept {
  const std::uint64_t last = (std::uint64_t{1} << channel.bits) - 1;
  const std::uint64_t value = pixel >> channel.shift & last;
  return static_cast<unsigned char>((value * 255 + last / 2) / last);
}

bool MayHaveMasks(const vx_source& source, const IMAGEINFO& info) noexcept {
  constexpr std::uint32_t kBitmap = 0x4D42;
  if (info.BitsPerPixel != 32 || (info.Format != FMT_BMP && info.Format != FMT_OS2_2)) return false;
  const std::uint32_t headerSize = source.Number(kHeaderSizeAt, 4);
  return source.Number(0, 2) == kBitmap && source.Number(kCompressionAt, 4) == kBitFields &&
         (headerSize == kInfoHeader || headerSize >= kShortestWithMasks);
}

/// Sorts the pixels of a row, each channel taken out of the pixel by `extract`.
template <class Extractor>
void SortRow(const WideFields& fields, unsigned char* bytes, int width, Extractor extract) noexcept {
  for (int x = 0; x < width; ++x, bytes += 4) {
    std::uint32_t pixel;
    std::memcpy(&pixel, bytes, sizeof pixel);
    bytes[0] = extract(pixel, fields.blue);
    bytes[1] = extract(pixel, fields.green);
    bytes[2] = extract(pixel, fields.red);
    bytes[3] = 0;
  }
}

}  // namespace

std::optional<WideFields> FindWideFields(const vx_source& source, const IMAGEINFO& info) noexcept {
  if (!MayHaveMasks(source, info)) return std::nullopt;
  const std::uint32_t red = source.Number(kMasksAt, 4);
  const std::uint32_t green = source.Number(kMasksAt + 4, 4);
  const std::uint32_t blue = source.Number(kMasksAt + 8, 4);
  const std::uint32_t pixelOffset = source.Number(kPixelOffsetAt, 4);
  const bool isUsual = red == 0xFF0000 && green == 0xFF00 && blue == 0xFF;
  const bool isClear = IsOneRun(red) && IsOneRun(green) && IsOneRun(blue) && (red & green) == 0 &&
                       (red & blue) == 0 && (green & blue) == 0;
  if (isUsual || !isClear || pixelOffset > kLastPosition) return std::nullopt;
  return WideFields{pixelOffset, ChannelOf(blue), ChannelOf(green), ChannelOf(red)};
}

void SortChannels(const WideFields& fields, _BITMAPHANDLE* bitmap) noexcept {
  const bool areBytes = fields.blue.bits == 8 && fields.green.bits == 8 && fields.red.bits == 8;
  const auto extractByte = [](std::uint32_t pixel, WideFields::Channel channel) {
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
