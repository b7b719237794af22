// Little-endian byte building, in the few words the samples need. Not for anything but writing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace samples {

using Bytes = std::vector<uint8_t>;

inline void Append8(Bytes& bytes, uint32_t value) {
  bytes.push_back(static_cast<uint8_t>(value & 0xFF));
}

inline void Append16(Bytes& bytes, uint32_t value) {
  Append8(bytes, value);
  Append8(bytes, value >> 8);
}

inline void Append32(Bytes& bytes, uint32_t value) {
  Append16(bytes, value);
  Append16(bytes, value >> 16);
}

inline void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Appends zeros until the size is a multiple of `unit`.
inline void PadTo(Bytes& bytes, size_t unit) {
  while (bytes.size() % unit != 0) bytes.push_back(0);
}

inline uint32_t Size32(const Bytes& bytes) {
  return static_cast<uint32_t>(bytes.size());
}

}  // namespace samples
