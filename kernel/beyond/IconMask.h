// The masks of icons whose colours are decoded here become the picture's region.
#pragma once

#include "beyond/BitmapFile.h"

namespace vxkrn {

/// Gives the record, whose rows are the image's stored rows from `firstStored` on, its region: inside is what
/// the AND mask leaves clear, what would invert the screen, and every row that the file does not have. A mask
/// that is missing makes none. @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int SetRegionOf(const vx_source& source, const IconPart& part, int firstStored,
                              _BITMAPHANDLE* record) noexcept;

}  // namespace vxkrn
