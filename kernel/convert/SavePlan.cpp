// Decides how a picture goes into a format: which depth, who writes it, what is lost, and whether the filter
// can be shown the picture as it is.
#include "convert/SavePlan.h"

#include <algorithm>
#include <cstring>

#include "base/Errors.h"
#include "base/Remarks.h"
#include "bitmap/Region.h"
#include "convert/FieldPacker.h"
#include "files/OpenFile.h"

namespace vxkrn {
namespace {

using bmp::DepthSet;

bool IsPngCoded(int format) {
  return format == FMT_PNG || format == FMT_VISTA_ICO;
}

bool HasMask(int format) {
  return format == FMT_ICO || format == FMT_CUR;
}

/// @return false for formats that are not saved.
bool FindLimits(int format, vx_format_limits* limits) {
  constexpr int kLargestInCoreHeader = 0xFFFF;
  const int largest = format == FMT_OS2 ? kLargestInCoreHeader : bmp::SaveRuleOf(format).largestSide;
  *limits = {bmp::WrittenDepths(format).bits, largest};
  return limits->depths != 0;
}

int FailForDepth(int format, DepthSet depths, int bitsPerPixel) {
  Fail({STATUS_BAD_BPP, VX_REASON_DEPTH_NOT_IN_FORMAT, bitsPerPixel, format}, bitsPerPixel,
       " bits per pixel do not go into this format (", vx_format_name(format), "); it has ");
  const char* separator = "";
  for (int depth = 1; depth <= 32; ++depth) {
    if (!depths.Has(depth)) continue;
    Detail() << separator << depth;
    separator = ", ";
  }
  return STATUS_BAD_BPP;
}

int CheckSides(const _BITMAPHANDLE& picture, int format, int largest) {
  if (largest == 0 || std::max(picture.Width, picture.Height) <= largest) return STATUS_OK;
  const bool fitsPngIcon = format == FMT_ICO && std::max(picture.Width, picture.Height) == 256;
  Fail({STATUS_BAD_DIMENSIONS, fitsPngIcon ? VX_REASON_NEEDS_PNG_ICON : VX_REASON_TOO_LARGE, largest, format},
       "the picture has ", picture.Width, " x ", picture.Height, " pixels; this format (",
       vx_format_name(format), ") has room for ", largest, " x ", largest);
  if (fitsPngIcon) Detail() << ". Icons with PNG pages have room for 256 x 256";
  return STATUS_BAD_DIMENSIONS;
}

/// Icons of bitmaps and OS/2 1.x headers have no place for a resolution.
bool StatesResolution(int format) {
  return !HasMask(format) && format != FMT_OS2;
}

bool IsOneOf(int value, int first, int second) {
  return value == first || value == second;
}

int CheckMasks(const vx_save_options& options) {
  if (options.masks < VX_MASKS_NONE || options.masks > VX_MASKS_4444) {
    return FailForArgument("masks is ", options.masks, "; it must be a value of vx_masks");
  }
  const bool has16 = IsOneOf(options.bits_per_pixel, 0, 16);
  if (options.masks != VX_MASKS_NONE && (options.format != FMT_BMP || !has16 || options.use_565 != 0)) {
    return FailForArgument("masks is set, but only Windows bitmaps of 16 bits that are not 5-6-5 have such");
  }
  return STATUS_OK;
}

int CheckResolution(const vx_save_options& options) {
  constexpr int kMostDpi = 65535;
  if (options.dpi < 0 || options.dpi > kMostDpi) {
    return FailForArgument("dpi is ", options.dpi, "; it must be 0 to ", kMostDpi);
  }
  if (options.dpi != 0 && !StatesResolution(options.format)) {
    return FailForArgument("dpi is set, but this format (", vx_format_name(options.format),
                           ") states no resolution");
  }
  return STATUS_OK;
}

int CheckOptions(const vx_save_options& options, DepthSet depths) {
  if (!IsOneOf(options.palette, VX_PALETTE_BEST, VX_PALETTE_FIXED) ||
      !IsOneOf(options.dither, VX_DITHER_DIFFUSE, VX_DITHER_NONE)) {
    return FailForArgument("palette is ", options.palette, " and dither ", options.dither,
                           "; both must be values of their types");
  }
  if (options.use_565 != 0 && options.format != FMT_BMP) {
    return FailForArgument("use_565 is set, but only Windows bitmaps can say that they are 5-6-5");
  }
  if (options.use_565 != 0 && !IsOneOf(options.bits_per_pixel, 0, 16)) {
    return FailForArgument("use_565 is set, but bits_per_pixel is ", options.bits_per_pixel,
                           "; 5-6-5 has 16");
  }
  int status = CheckMasks(options);
  if (status == STATUS_OK) status = CheckResolution(options);
  if (status != STATUS_OK) return status;
  if (options.bits_per_pixel == 0 || depths.Has(options.bits_per_pixel)) return STATUS_OK;
  return FailForDepth(options.format, depths, options.bits_per_pixel);
}

/// Files are read and written up to one position; run-length coded ones are nearly always far smaller.
int CheckFileSize(const _BITMAPHANDLE& picture, int format, int bitsPerPixel) {
  constexpr uint64_t kRoomForHeaders = 2048;
  const uint64_t bytes = PictureBytes(picture.Width, picture.Height, bitsPerPixel);
  if (format == FMT_BMP_RLE || IsPngCoded(format) || bytes <= kLastPosition - kRoomForHeaders)
    return STATUS_OK;
  return Fail({STATUS_BAD_DIMENSIONS, VX_REASON_FILE_TOO_LARGE, bytes}, "at ", bitsPerPixel,
              " bits per pixel the picture takes ", bytes, " bytes; files have room for ",
              kLastPosition - kRoomForHeaders);
}

/// What is stored of each channel, by those writers that store alpha.
bmp::FieldMasks MasksOf(int masks) {
  switch (masks) {
    case VX_MASKS_1555: return bmp::kMasks1555;
    case VX_MASKS_4444: return bmp::kMasks4444;
    default: return bmp::kMasks8888;
  }
}

/// Finds depth, writer and losses, one question at a time.
class Decision {
 public:
  Decision(LazyCensus& census, Opacity opacity, const vx_save_options& options, DepthSet depths)
      : census_(census), picture_(census.Bitmap()), opacity_(opacity), options_(options), depths_(depths) {}

  [[nodiscard]] int Depth() const {
    if (options_.bits_per_pixel != 0) return options_.bits_per_pixel;
    if (options_.use_565 != 0 || options_.masks != VX_MASKS_NONE) return 16;
    if (options_.format == FMT_VISTA_ICO || NeedsAlpha()) return 32;
    if (IsGood(picture_.BitsPerPixel)) return picture_.BitsPerPixel;
    int depth = 1;
    while (!IsGood(depth)) ++depth;
    return depth;
  }

  [[nodiscard]] RowTarget TargetAt(int depth) const {
    return {.bitsPerPixel = depth,
            .is565 = depth == 16 && Is565(),
            .usesFixedPalette = options_.palette == VX_PALETTE_FIXED,
            .diffuses = options_.dither == VX_DITHER_DIFFUSE,
            .reservesTransparent = IsPngCoded(options_.format)};
  }

  [[nodiscard]] bmp::Writer WriterAt(int depth) const {
    const bool hasAlpha = options_.masks != VX_MASKS_NONE || (depth == 32 && opacity_ != Opacity::kWhole);
    return bmp::WriterOf(options_.format, depth, hasAlpha);
  }

  [[nodiscard]] bool KeepsColorsAt(int depth) const {
    if (options_.masks == VX_MASKS_NONE) return KeepsColors(census_, TargetAt(depth));
    return KeepsColors(picture_, FieldPacker(MasksOf(options_.masks), depth));
  }

  [[nodiscard]] vx_transparency TransparencyAt(int depth) const {
    const bool isSoft = opacity_ == Opacity::kSoft;
    if (opacity_ == Opacity::kWhole || options_.masks == VX_MASKS_4444) return VX_TRANSPARENCY_KEPT;
    if (depth == 32 && KeepsAlpha()) return VX_TRANSPARENCY_KEPT;
    const bool hasOneBit = IsPngCoded(options_.format) || HasMask(options_.format) || options_.masks != 0;
    if (!hasOneBit) return VX_TRANSPARENCY_LOST;
    return isSoft ? VX_TRANSPARENCY_HARDENED : VX_TRANSPARENCY_KEPT;
  }

 private:
  [[nodiscard]] bool KeepsAlpha() const {
    return IsPngCoded(options_.format) || HasMask(options_.format) || options_.format == FMT_BMP;
  }

  /// Whether 32 bits keep a transparency that no other depth does. A mask keeps one that is there or not.
  [[nodiscard]] bool NeedsAlpha() const {
    if (!KeepsAlpha()) return false;
    return HasMask(options_.format) ? opacity_ == Opacity::kSoft : opacity_ != Opacity::kWhole;
  }

  /// Whether no depth of the format keeps more. The deepest keeps every colour, and below that of PNG with
  /// alpha the transparency's fate is the same at all of them.
  [[nodiscard]] bool IsGood(int depth) const {
    const bool isUnusedAlpha = depth == 32 && (options_.format == FMT_PNG || HasMask(options_.format));
    if (!depths_.Has(depth) || isUnusedAlpha) return false;
    RowTarget target = TargetAt(depth);
    target.usesFixedPalette = false;  // asking for the fixed palette does not rule palettes out
    return KeepsColors(census_, target);
  }

  /// A picture keeps its own layout of 16 bits unless a depth was asked for.
  [[nodiscard]] bool Is565() const {
    if (options_.use_565 != 0) return true;
    const bool isOwn = picture_.BitsPerPixel == 16 && picture_.ColorOrder == ORDER_565;
    return isOwn && options_.bits_per_pixel == 0 && options_.format == FMT_BMP;
  }

  LazyCensus& census_;
  const _BITMAPHANDLE& picture_;
  Opacity opacity_;
  const vx_save_options& options_;
  DepthSet depths_;
};

/// Masks know no halves: a picture with an alpha channel is shown to the filter as one with a region.
int HardenForMask(const _BITMAPHANDLE& record, SavePlan* plan) {
  plan->census.Harden();
  const int status = CopyPixels(record, &plan->copy);
  if (status != STATUS_OK) return status;
  plan->copy.Orientation = record.Orientation;
  if (SetRegionFromAlpha(&plan->copy) != STATUS_OK)
    return FailForMemory("the icon's mask", memory::LastRefusal());
  plan->shown.Pixels = plan->copy.Pixels;
  plan->shown.Region = plan->copy.Region;
  plan->shown.RegionBytesPerLine = plan->copy.RegionBytesPerLine;
  plan->shown.Flags &= ~kBitmapHasAlpha;
  return STATUS_OK;
}

/// The filter writes 5-6-5 whenever that is what it is shown.
int ConvertTo555(const _BITMAPHANDLE& record, SavePlan* plan) {
  const int status = CopyPixels(record, &plan->copy);
  if (status != STATUS_OK) return status;
  for (int row = 0; row < record.Height; ++row) {
    ConvertRow16(StoredRow(plan->copy, row), record.Width, ORDER_BGR);
  }
  plan->shown.Pixels = plan->copy.Pixels;
  plan->shown.ColorOrder = ORDER_BGR;
  return STATUS_OK;
}

/// Prepares the picture's record to be shown. @return whether it is shown without transparency that it has
bool Show(const _BITMAPHANDLE& record, const vx_save_options& options, SavePlan* plan) {
  plan->shown = record;
  if (options.dpi != 0) plan->shown.XResolution = plan->shown.YResolution = options.dpi;
  if (options.drop_alpha == 0) return false;
  plan->shown.Flags &= ~kBitmapHasAlpha;
  plan->shown.Region = nullptr;
  plan->shown.RegionBytesPerLine = 0;
  return LazyCensus(record).HowOpaque() != Opacity::kWhole;
}

/// Whether the picture has alpha, and goes into a page that has a mask alone.
bool NeedsHardening(const _BITMAPHANDLE& shown, const vx_save_options& options, Opacity opacity) {
  const bool isSoftPage =
      options.bits_per_pixel == 32 || (options.bits_per_pixel == 0 && opacity == Opacity::kSoft);
  return HasMask(options.format) && HasAlpha(shown) && !isSoftPage;
}

}  // namespace

int PlanSave(const vx_bitmap& picture, const vx_save_options* options, SavePlan* plan) {
  const vx_save_options chosen = options == nullptr ? vx_save_options VX_SAVE_OPTIONS_DEFAULT : *options;
  const _BITMAPHANDLE& record = picture.record;
  vx_format_limits limits = {};
  if (!FindLimits(chosen.format, &limits)) {
    return Fail({STATUS_NOT_SUPPORTED, VX_REASON_FORMAT_NOT_WRITTEN, chosen.format},
                "pictures cannot be saved in format ", chosen.format, " (", vx_format_name(chosen.format),
                ")");
  }
  const DepthSet depths = {limits.depths};
  int status = CheckOptions(chosen, depths);
  if (status == STATUS_OK) status = CheckSides(record, chosen.format, limits.largest_side);
  if (status != STATUS_OK) return status;

  plan->hotSpot = picture.hotSpot;
  plan->colorSpace = &picture.colorSpace;
  const bool isDropped = Show(record, chosen, plan);
  const Opacity opacity = plan->census.HowOpaque();
  if (NeedsHardening(plan->shown, chosen, opacity)) status = HardenForMask(record, plan);
  if (status != STATUS_OK) return status;

  const Decision decision(plan->census, opacity, chosen, depths);
  const int depth = decision.Depth();
  plan->rows = decision.TargetAt(depth);
  plan->writer = decision.WriterAt(depth);
  plan->masks = MasksOf(chosen.masks);
  status = CheckFileSize(record, chosen.format, depth);
  if (status != STATUS_OK) return status;
  plan->outcome = {bmp::FormatToSave(chosen.format, depth), depth, decision.KeepsColorsAt(depth) ? 0 : 1,
                   isDropped ? VX_TRANSPARENCY_LOST : decision.TransparencyAt(depth)};
  const bool isOther565 = depth == 16 && record.BitsPerPixel == 16 && record.ColorOrder == ORDER_565;
  const bool becomes555 = isOther565 && !plan->rows.is565 && plan->writer == bmp::Writer::kFilter;
  return becomes555 ? ConvertTo555(record, plan) : STATUS_OK;
}

void RemarkOnLosses(const SavePlan& plan, int page) noexcept {
  const vx_save_plan& outcome = plan.outcome;
  if (outcome.transparency == VX_TRANSPARENCY_HARDENED) AddRemark(VX_REMARK_ALPHA_HARDENED, 0, 0, page);
  if (outcome.transparency == VX_TRANSPARENCY_LOST) AddRemark(VX_REMARK_ALPHA_DROPPED, 0, 0, page);
  if (outcome.colors_lost != 0) AddRemark(VX_REMARK_COLORS_LOST, outcome.bits_per_pixel, 0, page);
  // Readers of icons take all of them as sRGB, PNG pages too, so these say nothing of colours either.
  const bool hasPlace = outcome.format == FMT_PNG;
  if (!hasPlace && plan.colorSpace->NeedsPlace()) AddRemark(VX_REMARK_PROFILE_DROPPED, 0, 0, page);
}

}  // namespace vxkrn

int vx_format_describe(int format, vx_format_limits* limits) {
  vxkrn::BeginCall();
  if (limits == nullptr) return vxkrn::FailForArgument("the record to fill must be given");
  *limits = vx_format_limits{};
  if (vxkrn::FindLimits(format, limits)) return VX_OK;
  return vxkrn::Fail({VX_NOT_SUPPORTED, VX_REASON_FORMAT_NOT_WRITTEN, format},
                     "pictures cannot be saved in format ", format, " (", vx_format_name(format), ")");
}

int vx_plan_save(const vx_bitmap* bitmap, const vx_save_options* options, vx_save_plan* plan) {
  return vxkrn::Guarded([&]() -> int {
    if (bitmap == nullptr || plan == nullptr) {
      return vxkrn::FailForArgument("the bitmap and the record to fill must be given");
    }
    *plan = vx_save_plan{};
    vxkrn::SavePlan found = {};
    const int status = vxkrn::PlanSave(*bitmap, options, &found);
    if (status == STATUS_OK) *plan = found.outcome;
    return status;
  });
}
