// Offsets and sizes of profiles are a file's word, and so is everything in them: no byte is taken into memory
// that the file has not, and no profile is kept that is none by its own header.
#include "beyond/BitmapColors.h"

#include <algorithm>
#include <span>

#include "base/Errors.h"
#include "base/Remarks.h"
#include "format/IccProfile.h"

namespace vxkrn {
namespace {

using bmp::ColourSpace;

/// Paths are shorter on every system.
constexpr uint32_t kLongestName = 1024;

/// Header numbers of rendering intents, as profiles count them.
int IntentOf(uint32_t stored) noexcept {
  switch (stored) {
    case 1: return 2;  // business graphics: saturation
    case 2: return 1;  // graphics: relative colorimetric
    case 4: return 0;  // images: perceptual
    case 8: return 3;  // absolute colorimetric
    default: return ColorSpace::kIntentOfTheProfile;
  }
}

/// Colours as they are, with a remark, or no picture at all where they had to be right.
template <class... Why>
int GiveUp(const ColourSpace& colour, bool isNeeded, const Why&... why) noexcept {
  if (isNeeded) {
    return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_PROFILE_DAMAGED).At(colour.profileOffset), why...);
  }
  AddRemark(VX_REMARK_PROFILE_DAMAGED);
  return STATUS_OK;
}

/// Reads what the header calls the profile, and a 0 behind it. @return STATUS_OK with nothing read where not
/// all of it is there or it is longer than `most`
int ReadBytes(const vx_source& source, const ColourSpace& colour, uint32_t most, ColorSpace* found) noexcept {
  const int64_t size = source.Size();
  const uint32_t count = colour.profileSize;
  const bool mayBeThere = size < 0 || (colour.profileOffset <= static_cast<uint64_t>(size) &&
                                       count <= static_cast<uint64_t>(size) - colour.profileOffset);
  if (count == 0 || count > most || !mayBeThere) return STATUS_OK;
  memory::Bytes bytes = memory::MakeBytes(std::size_t{count} + 1, {"kernel/BitmapColors", __LINE__});
  if (bytes == nullptr) return FailForMemory("its colour profile", count);
  if (source.Peek(bytes.get(), count, colour.profileOffset) < count) return STATUS_OK;
  bytes[count] = 0;
  found->profile = std::move(bytes);
  found->profileSize = count;
  return STATUS_OK;
}

int ReadEmbedded(const vx_source& source, const ColourSpace& colour, bool isNeeded,
                 ColorSpace* found) noexcept {
  ColorSpace read;
  const int status = ReadBytes(source, colour, bmp::kLargestProfile, &read);
  if (status != STATUS_OK) return status;
  if (read.profile == nullptr) {
    return GiveUp(colour, isNeeded, "its colour profile is to have ", colour.profileSize, " bytes from byte ",
                  colour.profileOffset, " on, which are not there or more than any profile has");
  }
  read.profileSize = bmp::ProfileSize({read.profile.get(), read.profileSize});
  if (read.profileSize == 0 || !bmp::IsRgbProfile({read.profile.get(), read.profileSize})) {
    return GiveUp(colour, isNeeded, "what its header calls a colour profile, ", colour.profileSize,
                  " bytes from byte ", colour.profileOffset, " on, is none for red, green and blue");
  }
  read.kind = VX_COLOR_SPACE_PROFILE;
  read.intent = IntentOf(colour.intent);
  *found = std::move(read);
  return STATUS_OK;
}

int ReadLinked(const vx_source& source, const ColourSpace& colour, ColorSpace* found) noexcept {
  AddRemark(VX_REMARK_PROFILE_LINKED);
  const int status = ReadBytes(source, colour, kLongestName, found);
  if (found->profile != nullptr) found->kind = VX_COLOR_SPACE_LINKED;
  return status;
}

int TakeCalibration(const ColourSpace& colour, bool isNeeded, ColorSpace* found) noexcept {
  if (!bmp::SaysCalibration(colour)) return STATUS_OK;
  const std::optional<bmp::Calibration> calibration = bmp::CalibrationOf(colour);
  if (!calibration) return GiveUp(colour, isNeeded, "no colours can be calibrated as its header says");
  found->kind = VX_COLOR_SPACE_CALIBRATED;
  found->calibration = *calibration;
  found->intent = IntentOf(colour.intent);
  return STATUS_OK;
}

}  // namespace

int ReadColorSpace(const vx_source& source, const bmp::BitmapLayout& layout, bool isNeeded,
                   ColorSpace* found) noexcept {
  if (layout.family != bmp::HeaderFamily::kWindows || layout.headerSize < bmp::kV4HeaderSize)
    return STATUS_OK;
  const ColourSpace& colour = layout.colour;
  switch (colour.type) {
    case ColourSpace::kSrgb:
    case ColourSpace::kWindows:  // what the system has unless told otherwise, which is sRGB
      found->kind = VX_COLOR_SPACE_SRGB;
      return STATUS_OK;
    case ColourSpace::kCalibrated: return TakeCalibration(colour, isNeeded, found);
    case ColourSpace::kEmbedded: return ReadEmbedded(source, colour, isNeeded, found);
    case ColourSpace::kLinked: return ReadLinked(source, colour, found);
    default: return STATUS_OK;
  }
}

}  // namespace vxkrn
