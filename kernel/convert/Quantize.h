// Palettes for pictures of more colours than fit.
#pragma once

#include <vector>

#include "convert/Colors.h"

namespace vxkrn {

/// Chooses at most `limit` (1 to 256) colours to show the picture with, ascending. Throws std::bad_alloc.
[[nodiscard]] std::vector<Color> ChoosePalette(ColorRows& rows, Pixels which, std::size_t limit);

}  // namespace vxkrn
