// pixels: draws every page of a file with characters, the darker the denser; what is transparent stays blank.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>
#include <vx/image.hpp>

namespace {

char Shade(const uint8_t* rgba) {
  constexpr char kShades[] = "#*+-.";  // from dark to bright
  constexpr int kCount = 5;
  if (rgba[3] < 128) return ' ';
  const int brightness = (2 * rgba[0] + 5 * rgba[1] + rgba[2]) / 8;
  return kShades[brightness * kCount / 256];
}

void Draw(const vx::Bitmap& bitmap) {
  const vx_bitmap_info info = bitmap.Describe();
  std::vector<uint8_t> row(static_cast<std::size_t>(info.width) * 4);
  for (int y = 0; y < info.height; ++y) {  // from the top, whatever order the file has
    bitmap.ReadRgba(y, row.data());        // red, green, blue, alpha, whatever depth the file has
    for (std::size_t x = 0; x < row.size(); x += 4) std::putchar(Shade(&row[x]));
    std::putchar('\n');
  }
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) return 2;
  const vx::Source source = vx::Source::File(argv[1]);
  for (int page = 1; page <= source.Describe().page_count; ++page) Draw(source.Load(page));
  return 0;
} catch (const vx::Error& error) {
  std::printf("%s\n", error.what());
  return 1;
}
