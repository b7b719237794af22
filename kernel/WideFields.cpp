// Finds and sorts the channels of unusual 32-bit pixels. The few header fields it looks at lie where they
// lie in every bitmap file whose header can have masks; everything else about the file is the filter's.
#include "WideFields.h"

#include <bit>
#include <cstring>

namespace vxkrn {
namespace {

constexpr std::uint64_t kPixelOffsetAt = 10;
constexpr std::uint64_t kHeaderSizeAt = 14;
constexpr std::uint64_t kCompressionAt = 30;
constexpr std::uint64_t kMasksAt = 54;  // behind a header of 40 bytes, inside a longer one

constexpr std::uint32_t kInfoHeader = 40;
constexpr std::uint32_t kShortestWithMasks = 52;
constexpr std::uint32_t kBitFields = 3;

std::optional<std::uint32_t> WordAt(const vx_source& source, std::uint64_t offset) noexcept {
  unsigned char bytes[4];
  if (source.Peek(bytes, sizeof bytes, offset) != sizeof bytes) return std::nullopt;
  return bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
         std::uint32_t{bytes[3]} << 24;
}

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
  if (info.BitsPerPixel != 32 || (info.Format != FMT_BMP && info.Format != FMT_OS2_2)) return false;
  char signature[2] = {};
  if (source.Peek(signature, sizeof signature, 0) != 2 || std::memcmp(signature, "BM", 2) != 0) return false;
  const auto headerSize = WordAt(source, kHeaderSizeAt).value_or(0);
  return headerSize == kInfoHeader || headerSize >= kShortestWithMasks;
}

}  // namespace

std::optional<WideFields> FindWideFields(const vx_source& source, const IMAGEINFO& info) noexcept {
  if (!MayHaveMasks(source, info) || WordAt(source, kCompressionAt) != kBitFields) return std::nullopt;
  const std::uint32_t red = WordAt(source, kMasksAt).value_or(0);
  const std::uint32_t green = WordAt(source, kMasksAt + 4).value_or(0);
  const std::uint32_t blue = WordAt(source, kMasksAt + 8).value_or(0);
  const bool isUsual = red == 0xFF0000 && green == 0xFF00 && blue == 0xFF;
  const bool isClear = IsOneRun(red) && IsOneRun(green) && IsOneRun(blue) && (red & green) == 0 &&
                       (red & blue) == 0 && (green & blue) == 0;
  if (isUsual || !isClear) return std::nullopt;
  return WideFields{WordAt(source, kPixelOffsetAt).value_or(0), ChannelOf(blue), ChannelOf(green),
                    ChannelOf(red)};
}

void SortChannels(const WideFields& fields, _BITMAPHANDLE* bitmap) noexcept {
  for (int row = 0; row < bitmap->Height; ++row) {
    unsigned char* bytes = StoredRow(*bitmap, row);
    for (int x = 0; x < bitmap->Width; ++x, bytes += 4) {
      const std::uint32_t pixel = bytes[0] | std::uint32_t{bytes[1]} << 8 | std::uint32_t{bytes[2]} << 16 |
                                  std::uint32_t{bytes[3]} << 24;
      bytes[0] = Extract(pixel, fields.blue);
      bytes[1] = Extract(pixel, fields.green);
      bytes[2] = Extract(pixel, fields.red);
      bytes[3] = 0;
    }
  }
}

}  // namespace vxkrn
