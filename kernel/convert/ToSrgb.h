// A picture in another colour space as one in sRGB.
#pragma once

#include "bitmap/Picture.h"
#include "convert/ColorTransform.h"

namespace vxkrn {

/// Converts what needs it: palette, or rows where they are. Alpha and depth stay; 16 bits get the nearest
/// level of each channel. @return STATUS_OK, or a failure with its detail set that does not name the file
[[nodiscard]] int ConvertToSrgb(vx_bitmap* picture) noexcept;

/// The two halves of it, for a picture that comes in pieces: a transform for its depth, and what that does to
/// palette or rows.
[[nodiscard]] int PrepareForSrgb(const vx_bitmap& picture, ColorTransform* transform) noexcept;
[[nodiscard]] int ConvertPixels(const ColorTransform& transform, vx_bitmap* picture) noexcept;

}  // namespace vxkrn
