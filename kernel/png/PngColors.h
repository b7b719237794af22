// What PNG streams say of their colours, as chunks of libpng's and as a record.
#pragma once

#include "bitmap/ColorSpace.h"
#include "png/PngSession.h"

namespace vxkrn {

/// Takes what a stream said whose chunks before the pixels were read; a profile that cannot be used is
/// remarked upon. @return STATUS_OK, or STATUS_NO_MEMORY with its detail set
[[nodiscard]] int TakeColorSpace(const PngSession& session, ColorSpace* found) noexcept;

/// Has the stream say it; what chunks have no room for is remarked upon. Part of a step: libpng may jump out.
void SetColorSpace(const PngSession& session, const ColorSpace& space);

}  // namespace vxkrn
