// Pictures in other sizes.
#pragma once

#include <vx/image.hpp>

namespace cli {

/// @return the picture fitted into a square of `side` pixels, with nothing beside it where it is no square.
/// Light is averaged, not its coding, and pixels count for as much as can be seen of them. @throws
/// std::bad_alloc
vx::Bitmap FitInto(const vx::Bitmap& picture, int side);

}  // namespace cli
