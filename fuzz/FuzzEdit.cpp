// Any bytes as an icon or cursor file, and any edits of its pages, in place: the filter's own way of editing.
#include <vector>
#include <vx/image.hpp>

#include "../tests/common/MemoryFile.h"
#include "Input.h"

namespace {

vx::Bitmap PictureFrom(fuzz::Input& input) {
  const int width = 1 + input.Byte();
  const int height = 1 + input.Choice(20);
  std::vector<uint8_t> rgba(4 * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
  const uint8_t step = input.Byte();
  for (std::size_t i = 0; i < rgba.size(); ++i) rgba[i] = static_cast<uint8_t>(i * step);
  return vx::Bitmap::FromRgba(width, height, rgba.data());
}

/// A page that was added, inserted or replaced without a complaint is there, at 32 bits pixel for pixel.
void RequirePage(const char* name, int page, const vx::Bitmap& picture, int bits) {
  const vx::Bitmap loaded = vx::Source::File(name).Load(page);
  fuzz::Require(loaded.Describe().width == picture.Describe().width);
  fuzz::Require(loaded.Describe().height == picture.Describe().height);
  fuzz::Require(bits != 32 || loaded.Rgba() == picture.Rgba());
}

void EditOnce(fuzz::Input& input, const char* name) {
  vx::Edit edit(name, VX_EDIT_IN_PLACE);
  const int count = edit.PageCount();
  const int page = input.Page(3);
  switch (input.Choice(5)) {
    case 3: return edit.Delete(page);
    case 4: return edit.SetHotSpot(page, input.Byte(), input.Byte());
    default: break;
  }
  const vx::Bitmap picture = PictureFrom(input);
  constexpr int kDepths[] = {0, 1, 4, 8, 24, 32};
  vx_save_options options = VX_SAVE_OPTIONS_DEFAULT;
  options.format = 0;
  options.bits_per_pixel = kDepths[input.Choice(6)];
  switch (input.Choice(3)) {
    case 0: edit.Add(picture, &options); return RequirePage(name, count + 1, picture, options.bits_per_pixel);
    case 1: edit.Insert(page, picture, &options); break;
    default: edit.Replace(page, picture, &options); break;
  }
  RequirePage(name, page, picture, options.bits_per_pixel);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size) {
  return fuzz::Run(bytes, size, fuzz::kMemoryLimit, [](fuzz::Input& input) {
    MemoryFile file{{input.File().begin(), input.File().end()}, std::size_t{1} << 20};
    (void)vx_redirect_files(&MemoryFile::kFunctions, &file);
    for (int i = 0; i < 3; ++i) {
      try {
        EditOnce(input, "icon");
      } catch (const vx::Error&) {  // most edits make no sense
        fuzz::wentAllTheWay = false;
      }
    }
    (void)vx_redirect_files(nullptr, nullptr);
  });
}
