// The pixel of a cursor that points.
#pragma once

#include <cstdint>

namespace vxkrn {

struct HotSpot {
  uint16_t x = 0;
  uint16_t y = 0;
};

}  // namespace vxkrn
