// Files that are PNG streams, and pages that are: described and loaded here, without a filter.
#pragma once

#include "beyond/ByteReader.h"
#include "beyond/IconPart.h"
#include "bitmap/Picture.h"
#include "files/Source.h"

namespace vxkrn {

[[nodiscard]] bool IsPngFile(const vx_source& source) noexcept;

/// Fills the whole of info. @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int DescribePngFile(const vx_source& source, IMAGEINFO* info);

/// Loads `count` rows from row `first` on, which must exist, into an empty picture.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int LoadPngFile(const vx_source& source, int first, int count, vx_bitmap* picture);

/// What is to be said where a stream that `bytes` came from failed with `status`. @return the status to go on
/// with
[[nodiscard]] int SettlePngFile(const vx_source& source, const ByteReader& bytes, int status) noexcept;

/// The same for a page of an icon or cursor file that is a PNG stream.
[[nodiscard]] int DescribePngBody(const vx_source& source, const IconPart& page, IMAGEINFO* info);
[[nodiscard]] int LoadPngBody(const vx_source& source, const IconPart& page, int first, int count,
                              vx_bitmap* picture);

}  // namespace vxkrn
