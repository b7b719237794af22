// Any bytes as a picture that becomes pages of icons: made smaller by the library, then fitted by the command
// line's resizer. Sides may be as long as they like, memory may not.
#include <algorithm>
#include <vector>
#include <vx/image.hpp>

#include "Input.h"
#include "commands/Resize.h"

namespace {

/// Makes headers of a few bytes say what makes resizers stumble: a side that is huge, and another that is
/// not.
void Stretch(fuzz::Input& input, std::vector<uint8_t>& file) {
  constexpr std::size_t kWidth = 18;
  constexpr std::size_t kHeight = 22;
  if (file.size() < kHeight + 4 || input.Choice(2) == 0) return;
  const std::size_t side = input.Choice(2) == 0 ? kWidth : kHeight;
  const uint32_t length = 1U << input.Choice(29) | input.Byte();
  for (std::size_t i = 0; i < 4; ++i) file[side + i] = static_cast<uint8_t>(length >> 8 * i);
  const std::size_t other = kWidth + kHeight - side;
  file[other + 1] = file[other + 2] = file[other + 3] = 0;
}

void Scale(fuzz::Input& input) {
  std::vector<uint8_t> file(input.File().begin(), input.File().end());
  vx::LoadOptions options;
  options.page = 1 + input.Choice(4);
  options.allow_truncated = input.Choice(2);
  const int side = input.Choice(4) == 0 ? 256 : 1 + input.Byte();
  const int largest = 1 + input.Byte() * (1 + input.Choice(16));
  Stretch(input, file);
  const vx::Bitmap picture = vx::Source::Memory(file).Load(options);
  const vx_bitmap_info whole = picture.Describe();
  const vx_bitmap_info smaller = picture.Shrink(largest).Describe();
  fuzz::Require(std::max(smaller.width, smaller.height) <= largest);
  fuzz::Require(smaller.has_alpha == 0 || whole.has_alpha != 0 || whole.has_region != 0);
  const vx_bitmap_info page = cli::Resizable(picture).FitInto(side).Describe();
  fuzz::Require(page.width == side && page.height == side);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, std::size_t size) {
  constexpr uint64_t kLittle = fuzz::kMemoryLimit / 8;  // sides are what matters, not areas
  return fuzz::Run(bytes, size, kLittle, Scale);
}
