// A mask's life in one scope, for the drivers that write one.
#pragma once

#include "../Bmp.h"

namespace bmp {

/// None, until one is made.
class Mask {
 public:
  Mask() = default;
  ~Mask() { FreeMaskBitmap(record_); }
  Mask(const Mask&) = delete;
  Mask& operator=(const Mask&) = delete;

  /// Makes the mask of bitmap's region, open for row access. @return whether there is one now
  [[nodiscard]] bool Make(_BITMAPHANDLE* bitmap) {
    record_ = CreateMaskBitmap(bitmap);
    return record_ != nullptr;
  }
  [[nodiscard]] _BITMAPHANDLE* Record() const { return record_; }

 private:
  _BITMAPHANDLE* record_ = nullptr;
};

}  // namespace bmp
