// Windows and OS/2 bitmap files: every depth, coding and header the reader knows, good files all of them.
#include <utility>

#include "samples/Families.h"
#include "samples/Headers.h"
#include "samples/Rows.h"

namespace samples {
namespace {

// An odd width leaves padding bits and bytes in the rows of every depth.
constexpr int kWidth = 61;
constexpr int kHeight = 48;
// Pictures of 4 bytes a pixel are smaller, so that their files are too.
constexpr int kSmallWidth = 47;
constexpr int kSmallHeight = 36;

ImageHeader HeaderFor(int width, int height, int bits) {
  return {.width = width, .height = height, .bits = bits};
}

ImageHeader HeaderFor(const Indexed& indexed, int bits) {
  return HeaderFor(indexed.width, indexed.height, bits);
}

Indexed SunsetFor(int bits, std::string_view label) {
  constexpr int kDither[] = {0, 90, 0, 0, 22};
  return Reduce(Sunset(kWidth, kHeight, label), 1 << bits, bits <= 4 ? kDither[bits] : 0);
}

Indexed BoatFor(std::string_view label) {
  return Reduce(Boat(kWidth, kHeight, label), 16, 0, true);
}

Bytes IndexedFile(const Indexed& indexed, const ImageHeader& header, const Bytes& pixels) {
  const size_t entries = header.colorsUsed != 0 ? header.colorsUsed : size_t{1} << header.bits;
  const size_t entrySize = header.size == 12 ? 3 : 4;
  return BitmapFile(Encode(header), EncodePalette(indexed.palette, entries, entrySize), pixels);
}

Sample IndexedSample(std::string name, std::string title, int bits, std::string_view label,
                     uint32_t headerSize = 40) {
  const Indexed indexed = SunsetFor(bits, label);
  ImageHeader header = HeaderFor(indexed, bits);
  header.size = headerSize;
  return MakeSample(std::move(name), std::move(title), IndexedFile(indexed, header, IndexRows(indexed, bits)),
                    ToPicture(indexed));
}

Sample FewColors() {
  const Indexed indexed = Reduce(Sunset(kWidth, kHeight, "20 COL"), 20);
  ImageHeader header = HeaderFor(indexed, 8);
  header.colorsUsed = 20;
  return MakeSample("win-8bit-20-colours.bmp", "Windows bitmap, 8 bits, a palette of 20 colours only",
                    IndexedFile(indexed, header, IndexRows(indexed, 8)), ToPicture(indexed));
}

Sample TopDownIndexed() {
  const Indexed indexed = SunsetFor(8, "TOP");
  ImageHeader header = HeaderFor(kWidth, -kHeight, 8);
  return MakeSample("win-8bit-top-down.bmp", "Windows bitmap, 8 bits, top row first",
                    IndexedFile(indexed, header, IndexRows(indexed, 8, RowOrder::TopDown)),
                    ToPicture(indexed));
}

Sample TrueColor(std::string name, std::string title, std::string_view label, uint32_t headerSize) {
  const Picture picture = Sunset(kWidth, kHeight, label);
  ImageHeader header = HeaderFor(kWidth, kHeight, 24);
  header.size = headerSize;
  header.dpi = 144;
  return MakeSample(std::move(name), std::move(title), BitmapFile(Encode(header), {}, Rows24(picture)),
                    picture);
}

Sample TopDownTrueColor() {
  const Picture picture = ColorWheel(kWidth, kHeight, "TOP");
  return MakeSample(
      "win-24bit-top-down.bmp", "Windows bitmap, 24 bits, top row first",
      BitmapFile(Encode(HeaderFor(kWidth, -kHeight, 24)), {}, Rows24(picture, RowOrder::TopDown)), picture);
}

Sample Plain16() {
  const Picture picture = ColorWheel(kWidth, kHeight, "555");
  return MakeSample("win-16bit.bmp", "Windows bitmap, 16 bits, 5-5-5 without masks",
                    BitmapFile(Encode(HeaderFor(kWidth, kHeight, 16)), {}, Rows16(picture, kLayout555)),
                    As16(picture, kLayout555));
}

Sample Plain32() {
  const Picture picture = ColorWheel(kSmallWidth, kSmallHeight, "32");
  return MakeSample("win-32bit.bmp", "Windows bitmap, 32 bits, the fourth byte unused",
                    BitmapFile(Encode(HeaderFor(kSmallWidth, kSmallHeight, 32)), {}, Rows32(picture, false)),
                    picture);
}

/// The masks follow a 40-byte header, and are part of a longer one.
Sample BitFields16(std::string name, std::string title, std::string_view label, const Layout16& layout,
                   uint32_t headerSize = 40) {
  const Picture picture = ColorWheel(kWidth, kHeight, label);
  ImageHeader header = HeaderFor(kWidth, kHeight, 16);
  header.size = headerSize;
  header.compression = Compression::BitFields;
  header.masks = MasksOf(layout);
  const Bytes masks = headerSize == 40 ? Encode(header.masks) : Bytes{};
  return MakeSample(std::move(name), std::move(title),
                    BitmapFile(Encode(header), masks, Rows16(picture, layout)), As16(picture, layout));
}

Sample BitFields32(std::string name, std::string title, std::string_view label, uint32_t headerSize) {
  const Picture picture = ColorWheel(kSmallWidth, kSmallHeight, label);
  ImageHeader header = HeaderFor(kSmallWidth, kSmallHeight, 32);
  header.size = headerSize;
  header.compression = Compression::BitFields;
  header.masks = kMasks888;
  const Bytes masks = headerSize == 40 ? Encode(header.masks) : Bytes{};
  return MakeSample(std::move(name), std::move(title),
                    BitmapFile(Encode(header), masks, Rows32(picture, false)), picture);
}

/// Red lies where blue usually does.
Sample SwappedFields32() {
  const Picture picture = ColorWheel(kSmallWidth, kSmallHeight, "MRGB");
  Picture swapped = picture;
  for (Color& pixel : swapped.Pixels()) std::swap(pixel.red, pixel.blue);
  ImageHeader header = HeaderFor(kSmallWidth, kSmallHeight, 32);
  header.compression = Compression::BitFields;
  const Masks masks{kMasks888.blue, kMasks888.green, kMasks888.red};
  return MakeSample("win-32bit-masks-rgb.bmp", "Windows bitmap, 32 bits, red and blue masks changed over",
                    BitmapFile(Encode(header), Encode(masks), Rows32(swapped, false)), picture);
}

Sample RunLengthSample(std::string name, std::string title, const Indexed& indexed, int bits,
                       Skipping skipping, uint32_t headerSize = 40) {
  const Bytes codes = RunLength(indexed, bits, skipping);
  ImageHeader header = HeaderFor(indexed, bits);
  header.size = headerSize;
  header.compression = bits == 8 ? Compression::Rle8 : Compression::Rle4;
  header.imageSize = Size32(codes);
  return MakeSample(std::move(name), std::move(title), IndexedFile(indexed, header, codes),
                    ToPicture(indexed));
}

Sample BitmapArray() {
  constexpr uint32_t kArrayHeaderSize = 14;
  const Indexed indexed = SunsetFor(4, "ARRAY");
  const Bytes image = BitmapFile(Encode(HeaderFor(indexed, 4)), EncodePalette(indexed.palette, 16, 4),
                                 IndexRows(indexed, 4), kArrayHeaderSize);
  Bytes file{'B', 'A'};
  Append32(file, kArrayHeaderSize + 40);
  Append32(file, 0);  // no further image
  Append16(file, 640);
  Append16(file, 480);
  Append(file, image);
  return MakeSample("os2-array.bmp", "OS/2 bitmap array; its first image, 4 bits, is the one read", file,
                    ToPicture(indexed));
}

Sample OneByOne() {
  Picture picture(1, 1);
  picture.At(0, 0) = {220, 60, 90, 255};
  return MakeSample("win-24bit-1x1.bmp", "Windows bitmap of a single pixel",
                    BitmapFile(Encode(HeaderFor(1, 1, 24)), {}, Rows24(picture)), picture);
}

}  // namespace

std::vector<Sample> BitmapSamples() {
  return {
      IndexedSample("win-1bit.bmp", "Windows bitmap, 1 bit, two colours of its own", 1, "1 BIT"),
      IndexedSample("win-4bit.bmp", "Windows bitmap, 4 bits", 4, "4 BIT"),
      IndexedSample("win-8bit.bmp", "Windows bitmap, 8 bits, 256 colours", 8, "8 BIT"),
      FewColors(),
      TopDownIndexed(),
      Plain16(),
      TrueColor("win-24bit.bmp", "Windows bitmap, 24 bits, 144 dots per inch", "24 BIT", 40),
      TopDownTrueColor(),
      Plain32(),
      OneByOne(),
      BitFields16("win-16bit-masks-555.bmp", "Windows bitmap, 16 bits, masks 5-5-5", "M555", kLayout555),
      BitFields16("win-16bit-masks-565.bmp", "Windows bitmap, 16 bits, masks 5-6-5", "M565", kLayout565),
      BitFields16("win-16bit-masks-444.bmp", "Windows bitmap, 16 bits, masks 4-4-4", "M444", kLayout444),
      BitFields32("win-32bit-masks.bmp", "Windows bitmap, 32 bits, masks 8-8-8", "M888", 40),
      SwappedFields32(),
      RunLengthSample("win-rle8.bmp", "Windows bitmap, RLE8: runs and literals", SunsetFor(8, "RLE8"), 8,
                      Skipping::None),
      RunLengthSample("win-rle8-deltas.bmp", "Windows bitmap, RLE8 with deltas over the empty parts",
                      BoatFor("RLE8 DELTAS"), 8, Skipping::ByDeltas),
      RunLengthSample("win-rle4.bmp", "Windows bitmap, RLE4: runs of two colours by turns, and literals",
                      SunsetFor(4, "RLE4"), 4, Skipping::None),
      RunLengthSample("win-rle4-deltas.bmp", "Windows bitmap, RLE4 with deltas over the empty parts",
                      BoatFor("RLE4 DELTAS"), 4, Skipping::ByDeltas),
      IndexedSample("os2-1bit.bmp", "OS/2 1.x bitmap, 1 bit", 1, "OS/2 1", 12),
      IndexedSample("os2-4bit.bmp", "OS/2 1.x bitmap, 4 bits", 4, "OS/2 4", 12),
      IndexedSample("os2-8bit.bmp", "OS/2 1.x bitmap, 8 bits", 8, "OS/2 8", 12),
      TrueColor("os2-24bit.bmp", "OS/2 1.x bitmap, 24 bits", "OS/2 24", 12),
      IndexedSample("os2v2-16-byte-header.bmp", "OS/2 2.x bitmap with the shortest header, 16 bytes", 8,
                    "H16", 16),
      IndexedSample("os2v2-24-byte-header.bmp", "OS/2 2.x bitmap, header of 24 bytes, no resolution", 4,
                    "H24", 24),
      IndexedSample("os2v2-48-byte-header.bmp", "OS/2 2.x bitmap, header of 48 bytes", 1, "H48", 48),
      IndexedSample("os2v2-64-byte-header.bmp", "OS/2 2.x bitmap with the full header, 64 bytes", 8, "H64",
                    64),
      RunLengthSample("os2v2-rle4.bmp", "OS/2 2.x bitmap, RLE4", SunsetFor(4, "V2RLE4"), 4, Skipping::None,
                      64),
      BitmapArray(),
      BitFields16("win-v3-masks-565.bmp", "Windows bitmap, header of 56 bytes that holds masks 5-6-5", "H56",
                  kLayout565, 56),
      BitFields16("win-v4-masks-444.bmp", "Windows bitmap, header of 108 bytes that holds masks 4-4-4", "V4",
                  kLayout444, 108),
      BitFields32("win-v4-32bit.bmp", "Windows bitmap, header of 108 bytes, 32 bits, masks 8-8-8", "V4", 108),
      IndexedSample("win-v5-8bit.bmp", "Windows bitmap, header of 124 bytes, 8 bits", 8, "V5", 124),
      TrueColor("win-v5-24bit.bmp", "Windows bitmap, header of 124 bytes, 24 bits", "V5", 124),
  };
}

}  // namespace samples
