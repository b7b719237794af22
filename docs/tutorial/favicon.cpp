// favicon OUT.ico: a disc in three sizes, each drawn for its size, in one file that appears when it is whole.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>
#include <vx/image.hpp>

namespace {

/// A disc whose edge is a pixel wide and soft.
vx::Bitmap Disc(int side) {
  std::vector<uint8_t> rgba;
  const double middle = (side - 1) / 2.0;
  for (int y = 0; y < side; ++y) {
    for (int x = 0; x < side; ++x) {
      const double inside = middle + 0.5 - std::hypot(x - middle, y - middle);
      const auto alpha = static_cast<uint8_t>(std::lround(255 * std::clamp(inside, 0.0, 1.0)));
      rgba.insert(rgba.end(), {0x20, 0x60, 0xC0, alpha});
    }
  }
  return vx::Bitmap::FromRgba(side, side, rgba.data());
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) return 2;
  vx::Edit edit(argv[1], VX_EDIT_NEW);
  for (const int side : {16, 32, 48}) edit.Add(Disc(side));
  edit.Commit();  // until here nothing is there, or what was there before

  vx::Edit again(argv[1]);  // a file that exists is edited alike
  again.Delete(2);
  again.Compact();
  again.Commit();
  const vx::Source icon = vx::Source::File(argv[1]);
  std::printf("%d pages, %s bytes unused\n", icon.Describe().page_count,
              icon.UnreferencedBytes() == 0 ? "no" : "some");
  return 0;
} catch (const vx::Error& error) {
  std::printf("%s\n", error.what());
  return 1;
}
