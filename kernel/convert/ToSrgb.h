// A picture in another colour space as one in sRGB.
#pragma once

#include "bitmap/Picture.h"

namespace vxkrn {

/// Converts what needs it: palette, or rows where they are. Alpha and depth stay; 16 bits get the nearest
/// level of each channel. @return STATUS_OK, or a failure with its detail set that does not name the file
[[nodiscard]] int ConvertToSrgb(vx_bitmap* picture) noexcept;

}  // namespace vxkrn
