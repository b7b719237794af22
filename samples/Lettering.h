// A tiny alphabet for labels inside the pictures: capital letters, digits, and little else.
#pragma once

#include <string_view>

#include "samples/Picture.h"

namespace samples {

/// Writes `text` with its top left corner at (left, top), `scale` pixels a dot, clipped to the picture.
/// Letters are 3 x 5 dots and stand 4 dots apart; characters without a shape leave a gap.
void Write(Picture& picture, int left, int top, int scale, Color color, std::string_view text);

}  // namespace samples
