// Pixels of a colour space as pixels of sRGB. The only place that knows the colour engine, if there is one.
#pragma once

#include <cstdint>

#include "bitmap/ColorSpace.h"

namespace vxkrn {

enum class PixelBytesOrder : uint8_t { kBgr, kBgra, kRgba };  // the fourth byte stays as it is

class ColorTransform {
 public:
  ColorTransform() noexcept = default;
  ~ColorTransform();  // NOLINT(performance-trivially-destructible): an engine has something to give back
  ColorTransform(const ColorTransform&) = delete;
  ColorTransform& operator=(const ColorTransform&) = delete;

  /// @return STATUS_OK, or a failure with its detail set: no engine was built in, it cannot use the profile,
  /// or memory is short
  [[nodiscard]] int Prepare(const ColorSpace& from, PixelBytesOrder order) noexcept;
  /// Converts `count` pixels where they are.
  void Apply(uint8_t* pixels, uint32_t count) const noexcept;

 private:
  void* context_ = nullptr;  // the engine's: its memory is counted as the library's own
  void* transform_ = nullptr;
};

}  // namespace vxkrn
