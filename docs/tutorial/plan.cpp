// plan IN OUT: saves as icon of 8 bits where that loses nothing, else of 32 bits, and says what it costs.
#include <cstdio>
#include <vx/image.hpp>

namespace {

const char* WordFor(int transparency) {
  switch (transparency) {
    case VX_TRANSPARENCY_KEPT: return "kept";
    case VX_TRANSPARENCY_HARDENED: return "hardened";
    default: return "lost";
  }
}

bool LosesNothing(const vx_save_plan& plan) {
  return plan.colors_lost == 0 && plan.transparency == VX_TRANSPARENCY_KEPT;
}

/// What a save would do; nothing is written.
vx_save_plan Ask(const vx::Bitmap& bitmap, const vx::SaveOptions& options) {
  const vx_save_plan plan = bitmap.Plan(options);
  std::printf("%s: %d bits, colours %s, transparency %s\n", vx_format_name(plan.format), plan.bits_per_pixel,
              plan.colors_lost == 0 ? "kept" : "changed", WordFor(plan.transparency));
  return plan;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) return 2;
  const vx::Bitmap bitmap = vx::Source::File(argv[1]).Load();
  vx::SaveOptions options(VX_FORMAT_ICO, 8);
  if (!LosesNothing(Ask(bitmap, options))) {
    options.bits_per_pixel = 32;
    Ask(bitmap, options);
  }
  bitmap.Save(argv[2], options);
  return 0;
} catch (const vx::Error& error) {
  std::printf("%s\n", error.what());
  return 1;
}
