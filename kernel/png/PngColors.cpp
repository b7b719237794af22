// Chunks iCCP, sRGB, cHRM and gAMA, of which the first that is there counts. libpng checks each, and drops
// what contradicts itself.
#include "png/PngColors.h"

#include <cmath>
#include <cstring>

#include "base/Errors.h"
#include "base/Remarks.h"
#include "format/IccProfile.h"

namespace vxkrn {
namespace {

int TakeProfile(png_const_bytep profile, png_uint_32 size, ColorSpace* found) noexcept {
  if (bmp::ProfileSize({profile, size}) != size || !bmp::IsRgbProfile({profile, size})) {
    AddRemark(VX_REMARK_PROFILE_DAMAGED);
    return STATUS_OK;
  }
  found->profile = memory::MakeBytes(size, {"kernel/PngColors", __LINE__});
  if (found->profile == nullptr) return FailForMemory("its colour profile", size);
  std::memcpy(found->profile.get(), profile, size);
  found->profileSize = size;
  found->kind = VX_COLOR_SPACE_PROFILE;
  return STATUS_OK;
}

/// gAMA has one number, to which light is raised to become the pixel's.
void SetCalibration(const PngSession& session, const bmp::Calibration& said) {
  const auto& gamma = said.gamma;
  const auto isNear = [&gamma](double other) { return std::abs(gamma[0] - other) < 0.005; };
  if (!isNear(gamma[1]) || !isNear(gamma[2])) return AddRemark(VX_REMARK_PROFILE_DROPPED);
  png_structp png = session.Png();
  png_infop info = session.Info();
  if (said.hasGamma) png_set_gAMA(png, info, 1 / gamma[0]);
  if (!said.hasEndpoints) return;
  const auto& [red, green, blue] = said.primaries;
  png_set_cHRM(png, info, said.white.x, said.white.y, red.x, red.y, green.x, green.y, blue.x, blue.y);
  if (png_get_valid(png, info, PNG_INFO_cHRM) == 0) AddRemark(VX_REMARK_PROFILE_DROPPED);
}

}  // namespace

int TakeColorSpace(const PngSession& session, ColorSpace* found) noexcept {
  png_structp png = session.Png();
  png_infop info = session.Info();
  png_charp name = nullptr;
  int compression = 0;
  png_bytep profile = nullptr;
  png_uint_32 size = 0;
  if (png_get_iCCP(png, info, &name, &compression, &profile, &size) != 0)
    return TakeProfile(profile, size, found);
  int intent = 0;
  if (png_get_sRGB(png, info, &intent) != 0) {
    found->kind = VX_COLOR_SPACE_SRGB;
    return STATUS_OK;
  }
  bmp::Calibration& said = found->calibration;
  auto& [red, green, blue] = said.primaries;
  double gamma = 0;
  said.hasEndpoints = png_get_cHRM(png, info, &said.white.x, &said.white.y, &red.x, &red.y, &green.x,
                                   &green.y, &blue.x, &blue.y) != 0;
  said.hasGamma = png_get_gAMA(png, info, &gamma) != 0 && gamma > 0;
  if (said.hasGamma) said.gamma.fill(1 / gamma);
  if (said.hasEndpoints || said.hasGamma) found->kind = VX_COLOR_SPACE_CALIBRATED;
  return STATUS_OK;
}

void SetColorSpace(const PngSession& session, const ColorSpace& space) {
  png_structp png = session.Png();
  png_infop info = session.Info();
  png_set_benign_errors(png, 1);  // a profile that libpng does not like is left out
  switch (space.kind) {
    case VX_COLOR_SPACE_SRGB: png_set_sRGB(png, info, PNG_sRGB_INTENT_PERCEPTUAL); break;
    case VX_COLOR_SPACE_CALIBRATED: SetCalibration(session, space.calibration); break;
    case VX_COLOR_SPACE_PROFILE:
      png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, space.profile.get(),
                   space.profileSize);
      if (png_get_valid(png, info, PNG_INFO_iCCP) == 0) AddRemark(VX_REMARK_PROFILE_DROPPED);
      break;
    default: break;
  }
}

}  // namespace vxkrn
