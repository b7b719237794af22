// Files that are PNG streams, and pages that are: described and loaded here, without a filter.
#pragma once

#include "beyond/IconPart.h"
#include "bitmap/Picture.h"
#include "files/Source.h"

namespace vxkrn {

[[nodiscard]] bool IsPngFile(const vx_source& source) noexcept;

/// Takes the source into memory and fills the whole of info. @return STATUS_OK, or a failure with its detail
/// set
[[nodiscard]] int DescribePngFile(vx_source& source, IMAGEINFO* info);

/// Loads `count` rows from row `first` on, which must exist, into an empty picture.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int LoadPngFile(vx_source& source, int first, int count, vx_bitmap* picture);

/// The same for a page of an icon or cursor file that is a PNG stream.
[[nodiscard]] int DescribePngBody(const vx_source& source, const IconPart& page, IMAGEINFO* info);
[[nodiscard]] int LoadPngBody(const vx_source& source, const IconPart& page, int first, int count,
                              vx_bitmap* picture);

}  // namespace vxkrn
