// The masks of icons and cursors that are saved.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

/// Makes a 1-bit bitmap of bitmap's region, open for row access. @return null, or a mask for FreeMask
[[nodiscard]] _BITMAPHANDLE* MakeMask(_BITMAPHANDLE* bitmap);
/// Frees a mask; null does nothing.
void FreeMask(_BITMAPHANDLE* mask);
/// Inverts every bit of `count` bytes.
void Invert(uint8_t* bytes, uint32_t count);

/// A mask that may not exist yet, in one scope.
class Mask {
 public:
  Mask() = default;
  ~Mask() { FreeMask(record_); }
  Mask(const Mask&) = delete;
  Mask& operator=(const Mask&) = delete;

  /// Makes the mask of bitmap's region, open for row access. @return whether there is one now
  [[nodiscard]] bool Make(_BITMAPHANDLE* bitmap) {
    record_ = MakeMask(bitmap);
    return record_ != nullptr;
  }
  [[nodiscard]] _BITMAPHANDLE* Record() const { return record_; }

 private:
  _BITMAPHANDLE* record_ = nullptr;
};

}  // namespace bmp
