// Files with something wrong in them: what is cut short, what overruns, what contradicts itself.
#include <algorithm>

#include "samples/Families.h"
#include "samples/Headers.h"
#include "samples/Icons.h"
#include "samples/Rows.h"

namespace samples {
namespace {

constexpr int kWidth = 61;
constexpr int kHeight = 48;

Sample Broken(std::string name, std::string title, Bytes bytes, Outcome outcome) {
  Sample sample;
  sample.name = std::move(name);
  sample.title = std::move(title);
  sample.bytes = std::move(bytes);
  sample.outcome = outcome;
  return sample;
}

ImageHeader HeaderFor(int bits, Compression compression = Compression::None) {
  return {.width = kWidth, .height = kHeight, .bits = bits, .compression = compression};
}

Bytes CutBy(Bytes bytes, size_t count) {
  bytes.resize(bytes.size() - count);
  return bytes;
}

Bytes TrueColorFile(std::string_view label) {
  return BitmapFile(Encode(HeaderFor(24)), {}, Rows24(Sunset(kWidth, kHeight, label)));
}

/// A coded picture in which the first `runLength` of each row run on past its end.
Sample RunsPastTheRow() {
  const Indexed boat = Reduce(Boat(kWidth, kHeight, "OVERRUN"), 16, 0, true);
  Bytes codes;
  for (int y = kHeight - 1; y >= 0; --y) {
    for (int x = 0; x < kWidth; ++x) {
      Append8(codes, x + 1 < kWidth ? 1 : 200);
      Append8(codes, boat.At(x, y));
    }
    Append16(codes, 0);
  }
  Append16(codes, 0x0100);
  Sample sample = MakeSample(
      "bad-rle8-overrun.bmp", "RLE8 whose last run in each row is 199 pixels too long",
      BitmapFile(Encode(HeaderFor(8, Compression::Rle8)), EncodePalette(boat.palette, 256, 4), codes),
      ToPicture(boat));
  sample.outcome = Outcome::LoadsDamaged;
  return sample;
}

/// The rows that the codes no longer reach take index 0.
Sample CodesEndEarly() {
  Indexed boat = Reduce(Boat(kWidth, kHeight, "CUT"), 16, 0, true);
  constexpr int kRowsLeft = 24;
  Indexed lowerHalf{kWidth, kRowsLeft, boat.palette, {}};
  const auto cut = boat.indices.begin() + (kHeight - kRowsLeft) * kWidth;
  lowerHalf.indices.assign(cut, boat.indices.end());
  std::fill(boat.indices.begin(), cut, uint8_t{0});
  const Bytes codes = CutBy(RunLength(lowerHalf, 4), 2);  // without the end-of-bitmap code
  Sample sample = MakeSample(
      "bad-rle4-cut.bmp", "RLE4 codes that end in the middle of the picture",
      BitmapFile(Encode(HeaderFor(4, Compression::Rle4)), EncodePalette(boat.palette, 16, 4), codes),
      ToPicture(boat));
  sample.outcome = Outcome::LoadsDamaged;
  return sample;
}

Sample EmptyMasks() {
  const ImageHeader header = HeaderFor(32, Compression::BitFields);
  return Broken("bad-32bit-masks.bmp", "32 bits with masks in which no bit is set",
                BitmapFile(Encode(header), Encode(Masks{}), Rows32(Sunset(kWidth, kHeight, "BGR"), false)),
                Outcome::Refused);
}

Bytes WithEntryPastTheEnd() {
  constexpr size_t kImageOffsetAt = 6 + 12;
  Bytes file = IconFile(IconType::Icon, {IndexedPage(MoonBadge(16), 4)});
  file[kImageOffsetAt + 2] = 0x10;
  return file;
}

}  // namespace

std::vector<Sample> DamagedSamples() {
  const ImageHeader threeBits = HeaderFor(3);
  ImageHeader oddHeader = HeaderFor(8);
  oddHeader.size = 13;
  const Bytes icon = IconFile(IconType::Icon, {IndexedPage(MoonBadge(48), 8)});
  constexpr size_t kRow24 = 184;
  constexpr size_t kHalfAMask = 48 / 2 * 8;
  return {
      Broken("bad-rows-cut.bmp", "24 bits, of which the upper third is missing",
             CutBy(TrueColorFile("CUT"), kRow24 * 16 + 50), Outcome::NeedsAllowTruncated),
      Broken("bad-last-row-cut.bmp", "24 bits whose last row ends early", CutBy(TrueColorFile("LAST"), 100),
             Outcome::LoadsDamaged),
      Broken("bad-mask-cut.ico", "Icon that ends in the middle of its AND mask", CutBy(icon, kHalfAMask),
             Outcome::LoadsDamaged),
      RunsPastTheRow(),
      CodesEndEarly(),
      EmptyMasks(),
      Broken("bad-3bit.bmp", "3 bits a pixel, which no reader of this family takes",
             BitmapFile(Encode(threeBits), {}, Bytes(24 * kHeight, 0x1B)), Outcome::Refused),
      Broken("bad-rle4-at-8-bits.bmp", "RLE4 codes at a depth of 8 bits",
             BitmapFile(Encode(HeaderFor(8, Compression::Rle4)), Bytes(1024), {2, 0, 0, 1}),
             Outcome::Refused),
      Broken("bad-header-13.bmp", "An image header of 13 bytes", BitmapFile(Encode(oddHeader), {}, {}),
             Outcome::Refused),
      Broken("bad-entry-past-end.ico", "Icon whose only page is said to lie past the end of the file",
             WithEntryPastTheEnd(), Outcome::Refused),
      Broken("bad-no-pages.ico", "Icon without pages", IconFile(IconType::Icon, {}), Outcome::Refused),
      Broken("bad-text.bmp", "A text file that calls itself a bitmap",
             {'N', 'o', 't', ' ', 'a', ' ', 'p', 'i', 'c', 't', 'u', 'r', 'e', '.', '\n'}, Outcome::Refused),
  };
}

}  // namespace samples
