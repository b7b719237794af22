// In place of ColorTransform.cpp where there is no colour engine.
#include "base/Errors.h"
#include "convert/ColorTransform.h"

namespace vxkrn {

ColorTransform::~ColorTransform() = default;

int ColorTransform::Prepare(const ColorSpace& /*from*/, PixelBytesOrder /*order*/) noexcept {
  return Fail({STATUS_NOT_SUPPORTED, VX_REASON_NO_COLOR_MANAGEMENT},
              "its colours are not sRGB, and this library was built without liblcms2, which converts them");
}

void ColorTransform::Apply(uint8_t* /*pixels*/, uint32_t /*count*/) const noexcept {}

}  // namespace vxkrn
