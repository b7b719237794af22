// headerless IN OUT: pixels that stand 100 bytes into a file, 61 x 48 of them, 24 bits each, top row first.
#include <cstdio>
#include <vx/image.hpp>

int main(int argc, char** argv) try {
  if (argc != 3) return 2;
  vx_raw raw = {};  // bottom-up, without palette and masks, unless it says otherwise
  raw.format = VX_FORMAT_RAW;
  raw.width = 61;
  raw.height = 48;
  raw.bits_per_pixel = 24;
  raw.orientation = VX_TOP_DOWN;
  raw.offset = 100;

  vx::LoadOptions options;
  options.raw = &raw;
  options.band_first = 10;  // of these, 20 rows from row 10 on
  options.band_count = 20;
  const vx::Bitmap band = vx::Source::File(argv[1]).Load(options);
  band.Save(argv[2], vx::SaveOptions(VX_FORMAT_BMP));
  std::printf("%d rows of %d pixels\n", band.Describe().height, band.Describe().width);
  return 0;
} catch (const vx::Error& error) {
  std::printf("%s\n", error.what());
  return 1;
}
