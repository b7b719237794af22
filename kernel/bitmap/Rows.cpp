// One loop a depth, without branches a pixel. Must not look at anything but one row.
#include "bitmap/Rows.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace vxkrn {
namespace {

/// The nearest of the levels that `Bits` bits have. Without a division, as Scale.
template <unsigned int Bits>
constexpr uint32_t Narrow(uint32_t level) noexcept {
  const uint32_t rounded = (level << Bits) - level + 127;
  return (rounded + 1 + (rounded >> 8)) >> 8;
}

template <unsigned int Bits>
constexpr bool NarrowRounds() {
  for (uint32_t level = 0; level < 256; ++level) {
    if (Narrow<Bits>(level) != (level * ((1U << Bits) - 1) + 127) / 255) return false;
  }
  return true;
}
static_assert(NarrowRounds<5>() && NarrowRounds<6>());

template <unsigned int GreenBits>
constexpr uint32_t Narrow16(uint32_t rgba) noexcept {
  return Narrow<5>(rgba & 255) << (5 + GreenBits) | Narrow<GreenBits>(rgba >> 8 & 255) << 5 |
         Narrow<5>(rgba >> 16 & 255);
}

template <unsigned int GreenBits>
void Pack16As(std::span<const Rgba> pixels, uint8_t* row) noexcept {
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    const auto pixel = static_cast<uint16_t>(Narrow16<GreenBits>(std::bit_cast<uint32_t>(pixels[x])));
    std::memcpy(row + 2 * x, &pixel, sizeof pixel);
  }
}

constexpr uint32_t SwapRedAndBlue(uint32_t pixel) noexcept {
  return (pixel & 0xFF00FF00) | (pixel >> 16 & 0xFF) | (pixel & 0xFF) << 16;
}

template <unsigned int Depth>
void Unpack(const uint8_t* row, std::span<uint8_t> indices) noexcept {
  constexpr std::size_t kPerByte = 8 / Depth;
  constexpr unsigned int kLast = (1U << Depth) - 1;
  const std::size_t whole = indices.size() / kPerByte;
  for (std::size_t byte = 0; byte < whole; ++byte) {
    for (std::size_t i = 0; i < kPerByte; ++i) {
      indices[byte * kPerByte + i] = static_cast<uint8_t>(row[byte] >> (8 - Depth * (i + 1)) & kLast);
    }
  }
  for (std::size_t x = whole * kPerByte; x < indices.size(); ++x) {
    indices[x] = static_cast<uint8_t>(row[whole] >> (8 - Depth * (x % kPerByte + 1)) & kLast);
  }
}

template <unsigned int Depth>
void Pack(std::span<const uint8_t> indices, uint8_t* row) noexcept {
  constexpr std::size_t kPerByte = 8 / Depth;
  const std::size_t whole = indices.size() / kPerByte;
  for (std::size_t byte = 0; byte < whole; ++byte) {
    unsigned int packed = 0;
    for (std::size_t i = 0; i < kPerByte; ++i) packed = packed << Depth | indices[byte * kPerByte + i];
    row[byte] = static_cast<uint8_t>(packed);
  }
  unsigned int packed = 0;
  const std::size_t rest = indices.size() % kPerByte;
  for (std::size_t i = 0; i < rest; ++i) {
    packed |= static_cast<unsigned int>(indices[whole * kPerByte + i]) << (8 - Depth * (i + 1));
  }
  if (rest != 0) row[whole] = static_cast<uint8_t>(packed);
}

}  // namespace

void UnpackIndices(const uint8_t* row, int bitsPerPixel, std::span<uint8_t> indices) noexcept {
  switch (bitsPerPixel) {
    case 1: return Unpack<1>(row, indices);
    case 4: return Unpack<4>(row, indices);
    default: std::copy_n(row, indices.size(), indices.begin());
  }
}

void PackIndices(std::span<const uint8_t> indices, int bitsPerPixel, uint8_t* row) noexcept {
  switch (bitsPerPixel) {
    case 1: return Pack<1>(indices, row);
    case 4: return Pack<4>(indices, row);
    default: std::copy(indices.begin(), indices.end(), row);
  }
}

unsigned int Pixel16(Rgba color, bool is565) noexcept {
  const auto rgba = std::bit_cast<uint32_t>(color);
  return is565 ? Narrow16<6>(rgba) : Narrow16<5>(rgba);
}

// Whole words are loaded and stored below, so that the compiler turns the loops into vector code.

void Pack16(std::span<const Rgba> pixels, bool is565, uint8_t* row) noexcept {
  return is565 ? Pack16As<6>(pixels, row) : Pack16As<5>(pixels, row);
}

/// A word is stored a pixel; the fourth byte of each is written over by the next.
void Pack24(std::span<const Rgba> pixels, uint8_t* row) noexcept {
  if (pixels.empty()) return;
  for (const Rgba color : pixels.first(pixels.size() - 1)) {
    const uint32_t pixel = SwapRedAndBlue(std::bit_cast<uint32_t>(color));
    std::memcpy(row, &pixel, sizeof pixel);
    row += 3;
  }
  const Rgba last = pixels.back();
  row[0] = last.blue;
  row[1] = last.green;
  row[2] = last.red;
}

void Pack32(std::span<const Rgba> pixels, bool hasAlpha, uint8_t* row) noexcept {
  const uint32_t kept = hasAlpha ? 0xFFFFFFFF : 0x00FFFFFF;
  for (std::size_t x = 0; x < pixels.size(); ++x) {
    const uint32_t pixel = SwapRedAndBlue(std::bit_cast<uint32_t>(pixels[x])) & kept;
    std::memcpy(row + 4 * x, &pixel, sizeof pixel);
  }
}

void ConvertRow16(unsigned char* row, int width, int order) noexcept {
  const auto convert = [row, width](const auto& converted) {
    for (int x = 0; x < width; ++x) {
      uint16_t pixel = 0;
      std::memcpy(&pixel, row + std::ptrdiff_t{2} * x, sizeof pixel);
      pixel = static_cast<uint16_t>(converted(pixel));
      std::memcpy(row + std::ptrdiff_t{2} * x, &pixel, sizeof pixel);
    }
  };
  if (order == ORDER_565) {
    // The green channel's sixth bit repeats its highest, so that white stays white.
    convert([](unsigned int pixel) { return (pixel & 0x7FE0) << 1 | (pixel >> 4 & 0x20) | (pixel & 31); });
  } else {
    convert([](unsigned int pixel) { return (pixel >> 1 & 0x7FE0) | (pixel & 31); });
  }
}

}  // namespace vxkrn
