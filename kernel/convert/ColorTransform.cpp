// liblcms2, one context for each picture. Profiles are a file's bytes: the engine's memory counts as ours, no
// block of it may be larger than a table that a real profile has, and kinds of tags that take any amount of
// time are refused before (format/IccProfile.h).
#include "convert/ColorTransform.h"

#include <lcms2.h>
#include <lcms2_plugin.h>

#include <array>
#include <cstring>
#include <memory>

#include "base/Errors.h"

namespace vxkrn {
namespace {

/// A table of colours can ask for any size before one byte of it is read.
constexpr uint32_t kLargestBlock = 16 << 20;

void* OnAllocate(cmsContext /*context*/, cmsUInt32Number size) {
  return size > kLargestBlock ? nullptr : memory::Allocate(size, {"kernel/ColorTransform", __LINE__});
}

void OnFree(cmsContext /*context*/, void* block) {
  memory::Free(block);
}

void* OnResize(cmsContext context, void* block, cmsUInt32Number size) {
  if (block == nullptr) return OnAllocate(context, size);
  return size > kLargestBlock ? nullptr : memory::Resize(block, size);
}

cmsPluginMemHandler MemoryHandler() noexcept {
  cmsPluginMemHandler handler = {};
  handler.base.Magic = cmsPluginMagicNumber;
  handler.base.ExpectedVersion = 2060;
  handler.base.Type = cmsPluginMemHandlerSig;
  handler.MallocPtr = OnAllocate;
  handler.FreePtr = OnFree;
  handler.ReallocPtr = OnResize;
  return handler;
}

struct CloseProfile {
  void operator()(void* profile) const noexcept { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

struct FreeCurve {
  void operator()(cmsToneCurve* curve) const noexcept { cmsFreeToneCurve(curve); }
};
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

cmsCIExyY ColourOf(const bmp::Chromaticity& chromaticity) noexcept {
  return {chromaticity.x, chromaticity.y, 1.0};
}

/// What a calibration leaves out is as in sRGB, whose light grows by a power of 2.2, nearly.
Profile ProfileOf(cmsContext context, const bmp::Calibration& calibration) noexcept {
  constexpr double kUsualGamma = 2.2;
  constexpr std::array<bmp::Chromaticity, 3> kUsualPrimaries = {{{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}}};
  const bool has = calibration.hasEndpoints;
  const auto& primaries = has ? calibration.primaries : kUsualPrimaries;
  const cmsCIExyY white = ColourOf(has ? calibration.white : bmp::kWhiteD65);
  const cmsCIExyYTRIPLE ends = {ColourOf(primaries[0]), ColourOf(primaries[1]), ColourOf(primaries[2])};
  std::array<Curve, 3> curves;
  std::array<cmsToneCurve*, 3> borrowed = {};
  for (std::size_t i = 0; i < 3; ++i) {
    curves[i].reset(cmsBuildGamma(context, calibration.hasGamma ? calibration.gamma[i] : kUsualGamma));
    if (curves[i] == nullptr) return nullptr;
    borrowed[i] = curves[i].get();
  }
  return Profile(cmsCreateRGBProfileTHR(context, &white, &ends, borrowed.data()));
}

Profile Open(cmsContext context, const ColorSpace& space) noexcept {
  if (space.kind == VX_COLOR_SPACE_CALIBRATED) return ProfileOf(context, space.calibration);
  return Profile(cmsOpenProfileFromMemTHR(context, space.profile.get(), space.profileSize));
}

cmsUInt32Number FormatOf(PixelBytesOrder order) noexcept {
  switch (order) {
    case PixelBytesOrder::kBgr: return TYPE_BGR_8;
    case PixelBytesOrder::kBgra: return TYPE_BGRA_8;
    case PixelBytesOrder::kRgba: break;
  }
  return TYPE_RGBA_8;
}

}  // namespace

ColorTransform::~ColorTransform() {
  if (transform_ != nullptr) cmsDeleteTransform(transform_);
  if (context_ != nullptr) cmsDeleteContext(static_cast<cmsContext>(context_));
}

int ColorTransform::Prepare(const ColorSpace& from, PixelBytesOrder order) noexcept {
  cmsPluginMemHandler handler = MemoryHandler();
  const auto context = cmsCreateContext(&handler, nullptr);
  context_ = context;
  if (context != nullptr) {
    const Profile source = Open(context, from);
    const Profile target(source == nullptr ? nullptr : cmsCreate_sRGBProfileTHR(context));
    if (target != nullptr) {
      const auto intent = from.intent == ColorSpace::kIntentOfTheProfile
                              ? cmsGetHeaderRenderingIntent(source.get())
                              : static_cast<cmsUInt32Number>(from.intent);
      const cmsUInt32Number format = FormatOf(order);
      transform_ = cmsCreateTransformTHR(context, source.get(), format, target.get(), format, intent, 0);
    }
  }
  if (transform_ != nullptr) return STATUS_OK;
  if (memory::LastRefusal() != 0) return FailForMemory("converting its colours", memory::LastRefusal());
  return Fail({STATUS_BAD_FORMAT, VX_REASON_PROFILE_DAMAGED}, "its colour profile, ", from.profileSize,
              " bytes, cannot be used");
}

void ColorTransform::Apply(uint8_t* pixels, uint32_t count) const noexcept {
  cmsDoTransform(transform_, pixels, pixels, count);
}

}  // namespace vxkrn
