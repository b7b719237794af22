// A bitmap's pixels as one block of colours, in a size that is worth drawing. Must not know of terminals.
#pragma once

#include <vxkrn.h>

#include <cstddef>

namespace vxdis {

/// Memory of the kernel's, held against its limit.
class Memory {
 public:
  Memory() noexcept = default;
  ~Memory() { VX_LocalFree(bytes_, __LINE__, "display/Pixels"); }
  Memory(const Memory&) = delete;
  Memory& operator=(const Memory&) = delete;

  /// @return whether there are `count` elements of `size` bytes now, every byte 0.
  [[nodiscard]] bool Allocate(unsigned int count, unsigned int size) noexcept {
    bytes_ = static_cast<unsigned char*>(VX_LocalAllocInit(count, size, __LINE__, "display/Pixels"));
    return bytes_ != nullptr;
  }
  [[nodiscard]] unsigned char* Get() const noexcept { return bytes_; }

 private:
  unsigned char* bytes_ = nullptr;
};

/// Rows of red, green, blue, alpha from the top, without padding.
struct Pixels {
  int width = 0;
  int height = 0;
  Memory rgba;
};

/// No terminal shows more pixels than this on a side.
constexpr int kMostPixels = 4096;

/// Takes the bitmap's pixels, transparent outside its region. A picture of more than kMostPixels on a side is
/// made smaller by a whole factor: every block of pixels becomes their mean, weighted by how much can be seen
/// of them. @return STATUS_OK, STATUS_NO_MEMORY, or what the bitmap services answered
[[nodiscard]] int TakePixels(_BITMAPHANDLE* bitmap, Pixels* pixels) noexcept;

/// Adds transparent pixels at the right and at the bottom up to this size. @return STATUS_OK or
/// STATUS_NO_MEMORY
[[nodiscard]] int Pad(const Pixels& pixels, int width, int height, Pixels* padded) noexcept;

}  // namespace vxdis
