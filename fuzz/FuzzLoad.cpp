// Any bytes as a file: described, loaded in every way, saved in every format, and loaded again.
#include <vx/verify.h>

#include <algorithm>
#include <vector>
#include <vx/image.hpp>

#include "Input.h"

namespace {

constexpr int kFormats[] = {VX_FORMAT_BMP, VX_FORMAT_OS2, VX_FORMAT_OS2_2,     VX_FORMAT_BMP_RLE,
                            VX_FORMAT_ICO, VX_FORMAT_CUR, VX_FORMAT_VISTA_ICO, VX_FORMAT_PNG};
constexpr int kDepths[] = {0, 1, 4, 8, 16, 24, 32};
constexpr int kOrders[] = {VX_ORDER_FILE, VX_ORDER_RGB, VX_ORDER_BGR, VX_ORDER_565};

template <std::size_t Count>
int One(const int (&choices)[Count], fuzz::Input& input) {
  return choices[input.Choice(static_cast<int>(Count))];
}

vx::LoadOptions LoadOptionsFrom(fuzz::Input& input) {
  vx::LoadOptions options;
  options.page = input.Page(4);
  options.allow_truncated = input.Choice(2);
  options.color_order = One(kOrders, input);
  options.band_first = input.Choice(9) * input.Choice(2);
  options.band_count = input.Choice(9) * input.Choice(2);
  options.read_buffer_size = 2 * input.Choice(40);
  options.flags = input.Choice(2) == 0 ? 0 : VX_LOAD_TO_SRGB;
  return options;
}

vx_raw RawFrom(fuzz::Input& input) {
  vx_raw raw = {};
  raw.format = VX_FORMAT_RAW + input.Choice(4);
  raw.width = 1 + input.Byte();
  raw.height = 1 + input.Choice(64);
  raw.bits_per_pixel = One(kDepths, input);
  raw.orientation = input.Choice(2) == 0 ? VX_TOP_DOWN : VX_BOTTOM_UP;
  raw.offset = input.Byte();
  raw.has_masks = input.Choice(2);
  for (uint32_t* mask : {&raw.red_mask, &raw.green_mask, &raw.blue_mask}) {
    *mask = input.Byte() * 0x101U << input.Choice(16);
  }
  return raw;
}

vx::SaveOptions SaveOptionsFrom(fuzz::Input& input) {
  vx::SaveOptions options;
  options.format = One(kFormats, input);
  options.bits_per_pixel = One(kDepths, input);
  options.use_565 = input.Choice(2);
  options.palette = input.Choice(2);
  options.dither = input.Choice(2);
  return options;
}

/// Whether all pixels that can be seen are the same.
bool LookAlike(const std::vector<uint8_t>& one, const std::vector<uint8_t>& other) {
  if (one.size() != other.size()) return false;
  for (std::size_t i = 0; i < one.size(); i += 4) {
    const bool isHidden = one[i + 3] == 0 && other[i + 3] == 0;
    if (!isHidden && !std::equal(&one[i], &one[i] + 4, &other[i])) return false;
  }
  return true;
}

/// What was saved is there again as the plan told.
void RequireSame(const vx::Bitmap& picture, const vx_save_plan& plan, const vx::Buffer& file) {
  const vx::Bitmap again = vx::Source::Memory(file.Bytes()).Load();
  const vx_bitmap_info info = again.Describe();
  fuzz::Require(info.width == picture.Describe().width && info.height == picture.Describe().height);
  // A palette with a transparent colour comes out of a PNG stream as pixels with alpha.
  fuzz::Require(info.bits_per_pixel == plan.bits_per_pixel || info.has_alpha != 0);
  if (plan.colors_lost == 0 && plan.transparency == VX_TRANSPARENCY_KEPT) {
    fuzz::Require(LookAlike(picture.Rgba(), again.Rgba()));
  }
}

/// Whatever is found, the library says it in words.
void Verify(const vx::Source& source) {
  const auto take = [](void* /*user*/, const vx_finding* finding) {
    fuzz::Require(finding->text[0] != 0);
    return 0;
  };
  const int status = vx_verify(source.Get(), VX_PURPOSE_ANY, take, nullptr);
  fuzz::Require(status == VX_OK || status == VX_BAD_FORMAT || status == VX_NO_MEMORY);
}

void LoadAndSave(fuzz::Input& input) {
  const bool isRaw = input.Choice(4) == 3;
  vx::LoadOptions options = LoadOptionsFrom(input);
  const vx_raw raw = isRaw ? RawFrom(input) : vx_raw{};
  if (isRaw) options.raw = &raw;
  const vx::SaveOptions saveOptions = SaveOptionsFrom(input);
  const vx::Source source = vx::Source::Memory(input.File());
  if (!isRaw) Verify(source);
  if (!isRaw) (void)source.Describe(options.page);
  const vx::Bitmap picture = source.Load(options);
  (void)picture.EncodePng();
  const vx_save_plan plan = picture.Plan(saveOptions);
  RequireSame(picture, plan, picture.Save(saveOptions));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size) {
  return fuzz::Run(bytes, size, fuzz::kMemoryLimit, LoadAndSave);
}
