// Files that are PNG streams: described and loaded here, without a filter.
#pragma once

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

}  // namespace vxkrn
