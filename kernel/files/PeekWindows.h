// What small reads of a file found around what they asked for. Directories are hopped through: an entry, the
// page it names, the next entry. So there is a window for each of the two places. A window holds what the
// file had when it was read, whoever writes to it.
#pragma once

#include <array>

#include "files/Backend.h"

namespace vxkrn {

class PeekWindows {
 public:
  /// The most that is read through a window.
  static constexpr uint32_t kMostBytes = 256;

  /// Reads some bytes at position, at most count, which is 1 to kMostBytes. @return as vx_source::ReadAt
  int64_t Read(const Backend& backend, void* file, void* buffer, uint32_t count, uint64_t position) noexcept;

 private:
  static constexpr uint32_t kFirst = 512;  // bytes read after a jump
  static constexpr uint32_t kMost = 4096;  // and by those who read on

  struct Window {
    std::array<uint8_t, kMost> bytes;
    uint64_t start = 0;
    uint32_t fill = 0;
    uint32_t ahead = 0;  ///< bytes that were asked for
  };

  [[nodiscard]] Window& WindowFor(uint64_t position) noexcept;

  std::array<Window, 2> windows_;
  std::size_t last_ = 0;  ///< the one that was read from last
};

}  // namespace vxkrn
