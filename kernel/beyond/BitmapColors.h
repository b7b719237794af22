// What a bitmap file says of its colours: read out of header and profile, believed where it can be true.
#pragma once

#include "bitmap/ColorSpace.h"
#include "files/Source.h"
#include "format/BitmapLayout.h"

namespace vxkrn {

/// Finds the colour space of an image. A profile that cannot be used is remarked upon and left out, unless
/// `isNeeded`; one in another file is remarked upon. @return STATUS_OK, or a failure with its detail set that
/// does not name the file
[[nodiscard]] int ReadColorSpace(const vx_source& source, const bmp::BitmapLayout& layout, bool isNeeded,
                                 ColorSpace* found) noexcept;

}  // namespace vxkrn
