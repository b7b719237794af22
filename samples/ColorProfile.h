// The smallest colour profile that is one.
#pragma once

#include "samples/Bytes.h"

namespace samples {

/// @return an ICC profile by which red is what sRGB calls blue, blue what it calls red, and all else as
/// there.
Bytes SwappingProfile();

}  // namespace samples
