// Damage to files: what headers get wrong, in a few random places.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <random>
#include <vector>

/// @return the bytes with one to four edits among the first `reach`, and often a number of the sort that is
/// hostile.
inline std::vector<uint8_t> Damaged(std::vector<uint8_t> bytes, std::size_t reach, std::mt19937& random) {
  static constexpr uint8_t kExtremes[] = {0, 1, 2, 3, 0x7F, 0x80, 0xFE, 0xFF};
  static constexpr uint32_t kHostile[] = {0,          1,          2,          0x7FFFFFFF,
                                          0x80000000, 0xFFFFFFFF, 0xFFFFFFFE, 0x10000000,
                                          0x40000000, 0x00010000, 256,        0x20000001};
  reach = std::min(reach, bytes.size());
  for (auto edits = 1 + random() % 4; reach > 0 && edits > 0; --edits) {
    const bool isExtreme = random() % 2 == 0;
    bytes[random() % reach] = isExtreme ? kExtremes[random() % std::size(kExtremes)] : random() & 0xFF;
  }
  if (reach > 4 && random() % 2 == 0) {
    const uint32_t word = kHostile[random() % std::size(kHostile)];
    const std::size_t at = random() % (reach - 4);
    for (std::size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<uint8_t>(word >> 8 * i);
  }
  return bytes;
}
