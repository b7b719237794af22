// Headerless pixel data; each sample carries the arguments that tell vxbmp what is in it.
#include "samples/Families.h"
#include "samples/Headers.h"
#include "samples/Rows.h"

namespace samples {
namespace {

constexpr int kWidth = 61;
constexpr int kHeight = 48;

Sample WithArguments(Sample sample, std::string arguments) {
  sample.raw = std::move(arguments);
  return sample;
}

Sample WithPalette(Sample sample, std::string arguments, const std::vector<Color>& palette, int bits) {
  sample.palette = EncodePalette(palette, size_t{1} << bits, 4);
  sample.raw = std::move(arguments) + " --palette " + PaletteFileName(sample);
  return sample;
}

Sample AfterForeignHeader() {
  constexpr uint32_t kForeignHeaderSize = 100;
  const Picture picture = ColorWheel(kWidth, kHeight, "AT 100");
  Bytes bytes(kForeignHeaderSize, 0x2E);
  Append(bytes, Rows24(picture, RowOrder::TopDown));
  return WithArguments(
      MakeSample("raw-24bit-offset.raw", "24 bits, top row first, 100 foreign bytes ahead", bytes, picture),
      "--raw 61x48x24 --offset 100 --top-down");
}

}  // namespace

std::vector<Sample> RawSamples() {
  const Indexed two = Reduce(Sunset(kWidth, kHeight, "RAW 1"), 2, 90);
  const Indexed sixteen = Reduce(Sunset(kWidth, kHeight, "RAW4"), 16, 22);
  const Indexed many = Reduce(Sunset(kWidth, kHeight, "RAW8"), 256);
  const Picture wheel = ColorWheel(kWidth, kHeight, "RAW16");
  return {
      WithPalette(MakeSample("raw-1bit.raw", "1 bit with a palette file", IndexRows(two, 1), ToPicture(two)),
                  "--raw 61x48x1", two.palette, 1),
      WithPalette(MakeSample("raw-rle4.raw", "RLE4 codes with a palette file", RunLength(sixteen, 4),
                             ToPicture(sixteen)),
                  "--raw 61x48x4:rle4", sixteen.palette, 4),
      WithPalette(
          MakeSample("raw-rle8.raw", "RLE8 codes with a palette file", RunLength(many, 8), ToPicture(many)),
          "--raw 61x48x8:rle8", many.palette, 8),
      WithArguments(MakeSample("raw-16bit-444.raw", "16 bits, masks 4-4-4", Rows16(wheel, kLayout444),
                               As16(wheel, kLayout444, true)),
                    "--raw 61x48x16:bitfields --masks 0xF00,0xF0,0xF"),
      WithArguments(MakeSample("raw-16bit-565.raw", "16 bits, masks 5-6-5", Rows16(wheel, kLayout565),
                               As16(wheel, kLayout565)),
                    "--raw 61x48x16:bitfields --masks 0xF800,0x7E0,0x1F"),
      AfterForeignHeader(),
  };
}

}  // namespace samples
