// A stranger's program in C++: makes an icon of a picture and adds a mirrored page to it.
#include <algorithm>
#include <cstdio>
#include <vx/image.hpp>

namespace {

vx::Bitmap Mirrored(const vx::Bitmap& bitmap) {
  const vx_bitmap_info info = bitmap.Describe();
  std::vector<uint8_t> pixels = bitmap.Rgba();
  const auto pixelAt = [&](int x, int y) { return pixels.begin() + (y * info.width + x) * 4; };
  for (int y = 0; y < info.height; ++y) {
    for (int x = 0; x < info.width / 2; ++x) {
      std::swap_ranges(pixelAt(x, y), pixelAt(x, y) + 4, pixelAt(info.width - 1 - x, y));
    }
  }
  return vx::Bitmap::FromRgba(info.width, info.height, pixels.data());
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) return 2;
  const vx::Bitmap picture = vx::Source::File(argv[1]).Load();
  picture.Save(argv[2], vx::SaveOptions(VX_FORMAT_VISTA_ICO));
  vx::Edit edit(argv[2]);
  edit.Add(Mirrored(picture));
  edit.Commit();
  std::printf("%d pages\n", vx::Source::File(argv[2]).Describe().page_count);
} catch (const vx::Error& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
