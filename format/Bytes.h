// Little-endian numbers in byte blocks. Every layout is read from a block of known size through these;
// nothing is ever mapped onto the bytes of a file.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace bmp {

template <size_t Size>
using Block = std::array<uint8_t, Size>;

template <size_t Size>
using View = std::span<const uint8_t, Size>;

template <size_t Size>
constexpr uint16_t LoadU16(View<Size> bytes, size_t at) {
  return static_cast<uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

template <size_t Size>
constexpr uint32_t LoadU32(View<Size> bytes, size_t at) {
  return LoadU16(bytes, at) | static_cast<uint32_t>(LoadU16(bytes, at + 2)) << 16;
}

template <size_t Size>
constexpr int32_t LoadI32(View<Size> bytes, size_t at) {
  return static_cast<int32_t>(LoadU32(bytes, at));
}

template <size_t Size>
constexpr void StoreU16(Block<Size>& bytes, size_t at, uint16_t value) {
  bytes[at] = static_cast<uint8_t>(value & 0xFF);
  bytes[at + 1] = static_cast<uint8_t>(value >> 8);
}

template <size_t Size>
constexpr void StoreU32(Block<Size>& bytes, size_t at, uint32_t value) {
  StoreU16(bytes, at, static_cast<uint16_t>(value & 0xFFFF));
  StoreU16(bytes, at + 2, static_cast<uint16_t>(value >> 16));
}

/// The Size bytes from `start` on, as far as the block has them; zeros behind its end.
template <size_t Size, size_t BlockSize>
constexpr Block<Size> Slice(const Block<BlockSize>& block, size_t start) {
  Block<Size> slice{};
  for (size_t i = 0; i < Size && start + i < BlockSize; ++i) slice[i] = block[start + i];
  return slice;
}

}  // namespace bmp
