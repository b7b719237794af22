// What is known of the colours that a picture's numbers stand for. Holds it; neither reads nor applies it.
#pragma once

#include "base/Memory.h"
#include "format/Calibration.h"
#include "vx/vx.h"

namespace vxkrn {

struct ColorSpace {
  /// How colours that sRGB lacks are replaced, where the file leaves it to the profile.
  static constexpr int kIntentOfTheProfile = -1;

  vx_color_space kind = VX_COLOR_SPACE_NONE;
  bmp::Calibration calibration = {};  ///< of calibrated colours
  memory::Bytes profile = {};         ///< an RGB profile, or the name of one, which a 0 ends
  uint32_t profileSize = 0;           ///< bytes of the profile, or of the name without its 0
  int intent = kIntentOfTheProfile;   ///< else the number that profiles have for it

  /// Whether a file without a place for it shows other colours than were meant.
  [[nodiscard]] bool NeedsPlace() const noexcept {
    return kind == VX_COLOR_SPACE_CALIBRATED || kind == VX_COLOR_SPACE_PROFILE;
  }
};

}  // namespace vxkrn
