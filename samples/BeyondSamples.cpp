// Bitmaps that the library reads beside the filter: masks and alpha of any kind, odd depths, tables and
// offsets that writers of such files meant otherwise than the filter takes them.
#include <cmath>
#include <utility>

#include "samples/Families.h"
#include "samples/Headers.h"
#include "samples/Rows.h"

namespace samples {
namespace {

constexpr int kWidth = 37;
constexpr int kHeight = 29;
constexpr int kSide = 32;

ImageHeader HeaderFor(const Picture& picture, int bits, uint32_t size = 40) {
  ImageHeader header;
  header.size = size;
  header.width = picture.Width();
  header.height = picture.Height();
  header.bits = bits;
  return header;
}

/// A channel of `mask` with `value`, 0 to 255, in it: the mask's bits from the lowest to the highest,
/// wherever they lie.
uint32_t Place(uint8_t value, uint32_t mask) {
  unsigned bits = 0;
  for (uint32_t rest = mask; rest != 0; rest &= rest - 1) ++bits;
  const auto level = static_cast<uint64_t>(std::llround(value * (std::exp2(bits) - 1) / 255));
  uint32_t placed = 0;
  for (unsigned bit = 0, next = 0; bit < 32; ++bit) {
    if ((mask >> bit & 1) != 0) placed |= static_cast<uint32_t>(level >> next++ & 1) << bit;
  }
  return placed;
}

uint8_t Shown(uint8_t value, uint32_t mask) {
  unsigned bits = 0;
  for (uint32_t rest = mask; rest != 0; rest &= rest - 1) ++bits;
  const double top = std::exp2(bits) - 1;
  return top == 0 ? uint8_t{0} : static_cast<uint8_t>(std::lround(std::round(value * top / 255) * 255 / top));
}

Bytes FieldRows(const Picture& picture, int bits, const Masks& masks) {
  Bytes rows;
  for (int y = picture.Height() - 1; y >= 0; --y) {
    for (int x = 0; x < picture.Width(); ++x) {
      const Color& color = picture.At(x, y);
      const uint32_t pixel = Place(color.red, masks.red) | Place(color.green, masks.green) |
                             Place(color.blue, masks.blue) | Place(color.alpha, masks.alpha);
      bits == 16 ? Append16(rows, pixel) : Append32(rows, pixel);
    }
    PadTo(rows, 4);
  }
  return rows;
}

Picture AsFields(const Picture& picture, const Masks& masks) {
  Picture shown = picture;
  for (Color& color : shown.Pixels()) {
    color = {Shown(color.red, masks.red), Shown(color.green, masks.green), Shown(color.blue, masks.blue),
             masks.alpha == 0 ? uint8_t{255} : Shown(color.alpha, masks.alpha)};
  }
  return shown;
}

Sample Fields(std::string name, std::string title, int bits, const Masks& masks, uint32_t headerSize) {
  const Picture picture = masks.alpha != 0 ? MoonBadge(kSide) : ColorWheel(kWidth, kHeight, "ANY");
  ImageHeader header = HeaderFor(picture, bits, headerSize);
  header.masks = masks;
  header.compression =
      headerSize == 40 && masks.alpha != 0 ? Compression::AlphaFields : Compression::BitFields;
  const Bytes behind = headerSize == 40 ? Encode(masks) : Bytes{};
  return MakeSample(std::move(name), std::move(title),
                    BitmapFile(Encode(header), behind, FieldRows(picture, bits, masks)),
                    AsFields(picture, masks));
}

/// Alpha is 0 in every pixel, which cannot be meant.
Sample EmptyAlpha() {
  const Picture picture = ColorWheel(kWidth, kHeight, "A 0");
  ImageHeader header = HeaderFor(picture, 32, 124);
  header.compression = Compression::BitFields;
  header.masks = {0xFF0000, 0xFF00, 0xFF, 0xFF000000};
  return MakeSample("win-v5-alpha-empty.bmp",
                    "Windows bitmap, header of 124 bytes, alpha that hides every pixel",
                    BitmapFile(Encode(header), {}, Rows32(picture, false)), picture);
}

Sample TwoBits() {
  const Indexed indexed = Reduce(Sunset(kWidth, kHeight, "2 BIT"), 4, 60);
  return MakeSample("win-2bit.bmp", "Bitmap of 2 bits, as pocket computers had them",
                    BitmapFile(Encode(HeaderFor(ToPicture(indexed), 2)), EncodePalette(indexed.palette, 4, 4),
                               IndexRows(indexed, 2)),
                    ToPicture(indexed));
}

/// 16 bits a channel: numbers with 13 bits behind the point, in linear light.
Sample SixtyFourBits() {
  const Picture picture = MoonBadge(kSide);
  Bytes rows;
  for (int y = kSide - 1; y >= 0; --y) {
    for (int x = 0; x < kSide; ++x) {
      const Color& color = picture.At(x, y);
      for (const uint8_t value : {color.blue, color.green, color.red}) {
        const double coded = value / 255.0;
        const double linear = coded <= 0.04045 ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4);
        Append16(rows, static_cast<uint32_t>(std::lround(linear * 8192)));
      }
      Append16(rows, static_cast<uint32_t>(std::lround(color.alpha * 8192 / 255.0)));
    }
  }
  Bytes file = BitmapFile(Encode(HeaderFor(picture, 64)), {}, rows);
  return MakeSample("win-64bit.bmp", "Bitmap of 64 bits, 16 a channel in linear light", file, picture);
}

/// The colours in use and no more stand behind a long header.
Sample ShortTable() {
  const Indexed indexed = Reduce(Sunset(kWidth, kHeight, "21"), 21);
  ImageHeader header = HeaderFor(ToPicture(indexed), 8, 124);
  header.colorsUsed = 21;
  return MakeSample("win-v5-21-colours.bmp", "Windows bitmap, header of 124 bytes, a table of 21 colours",
                    BitmapFile(Encode(header), EncodePalette(indexed.palette, 21, 4), IndexRows(indexed, 8)),
                    ToPicture(indexed));
}

/// The file header says that the pixels begin where the table does, or nothing at all.
Sample WrongOffset(std::string name, uint32_t offset) {
  const Indexed indexed = Reduce(Boat(kWidth, kHeight, "AT 0"), 16, 0, true);
  ImageHeader header = HeaderFor(ToPicture(indexed), 4);
  header.colorsUsed = 16;
  Bytes file = BitmapFile(Encode(header), EncodePalette(indexed.palette, 16, 4), IndexRows(indexed, 4));
  constexpr size_t kDataOffsetAt = 10;
  file[kDataOffsetAt] = static_cast<uint8_t>(offset);
  return MakeSample(std::move(name), "Windows bitmap whose data offset is " + std::to_string(offset), file,
                    ToPicture(indexed));
}

Sample WithoutFileHeader(std::string name, const Sample& sample, const Bytes& behindHeader = {}) {
  Sample bare = sample;
  bare.name = std::move(name);
  bare.title = sample.title + ", without a file header";
  bare.bytes.erase(bare.bytes.begin(), bare.bytes.begin() + 14);
  const auto end = bare.bytes.begin() + static_cast<std::ptrdiff_t>(bare.bytes[0]);
  bare.bytes.insert(end, behindHeader.begin(), behindHeader.end());
  return bare;
}

Sample RunLengthWithoutFileHeader() {
  const Indexed boat = Reduce(Boat(kWidth, kHeight, "RLE"), 16, 0, true);
  ImageHeader header = HeaderFor(ToPicture(boat), 8);
  header.compression = Compression::Rle8;
  return WithoutFileHeader(
      "bare-rle8.dib",
      MakeSample("", "Windows bitmap, RLE8",
                 BitmapFile(Encode(header), EncodePalette(boat.palette, 256, 4), RunLength(boat, 8)),
                 ToPicture(boat)));
}

/// The end-of-line codes are left out.
Sample RunsOn(std::string name, int bits) {
  Indexed boat = Reduce(Boat(kWidth, kHeight, "ON"), 16, 0, true);
  Bytes codes;
  for (int y = kHeight - 1; y >= 0; --y) {
    for (int x = 0; x < kWidth; ++x) {
      Append8(codes, 1);
      Append8(codes, static_cast<uint32_t>(boat.At(x, y) << (bits == 4 ? 4 : 0)));
    }
  }
  Append16(codes, 0x0100);
  ImageHeader header = HeaderFor(ToPicture(boat), bits);
  header.compression = bits == 4 ? Compression::Rle4 : Compression::Rle8;
  const Bytes palette = EncodePalette(boat.palette, size_t{1} << bits, 4);
  return MakeSample(std::move(name), "Windows bitmap, run-length codes that end no row",
                    BitmapFile(Encode(header), palette, codes), ToPicture(boat));
}

/// A run and a literal go over the end of a row, as far as the rows after it.
Sample RunsOverTheEnd() {
  Indexed stripes{3, 4, {{0, 0, 0, 255}, {200, 30, 30, 255}, {30, 30, 200, 255}, {30, 200, 30, 255}}, {}};
  stripes.indices = {3, 0, 0, 1, 2, 3, 1, 1, 1, 1, 1, 1};  // from the top
  ImageHeader header = HeaderFor(ToPicture(stripes), 4);
  header.compression = Compression::Rle4;
  // three of 1 fill the first row exactly; then three more, and a literal 1 2 3 3 of which one pixel is left
  // over
  const Bytes codes{3, 0x11, 3, 0x11, 0, 4, 0x12, 0x33, 0, 1};
  return MakeSample(
      "win-rle4-over-the-end.bmp", "Windows bitmap, RLE4, a literal that goes on in the next row",
      BitmapFile(Encode(header), EncodePalette(stripes.palette, 16, 4), codes), ToPicture(stripes));
}

/// Higher than its file is long: one pixel in the lowest row, one 101 rows above it, and an end.
Sample HighRunLength() {
  const std::vector<Color> colors{{10, 20, 30, 255}, {250, 200, 0, 255}, {0, 90, 200, 255}};
  Indexed picture{3, 2000, colors, std::vector<uint8_t>(6000, 0)};
  picture.indices[1999 * 3] = 1;
  picture.indices[1898 * 3 + 1] = 2;
  ImageHeader header = HeaderFor(ToPicture(picture), 8);
  header.compression = Compression::Rle8;
  header.colorsUsed = 3;
  const Bytes codes{1, 1, 0, 0, 0, 2, 1, 100, 1, 2, 0, 1};
  return MakeSample("win-rle8-high.bmp", "Windows bitmap, RLE8, nearly all of it blank",
                    BitmapFile(Encode(header), EncodePalette(colors, 3, 4), codes), ToPicture(picture));
}

Sample BareV5() {
  const Masks masks{0xFF0000, 0xFF00, 0xFF, 0xFF000000};
  Masks repeated = masks;
  repeated.alpha = 0;
  return WithoutFileHeader("bare-v5-masks-twice.dib", Fields("", "Windows bitmap, alpha", 32, masks, 124),
                           Encode(repeated));
}

}  // namespace

std::vector<Sample> BeyondSamples() {
  const Masks alpha32{0xFF0000, 0xFF00, 0xFF, 0xFF000000};
  const Sample fields = Fields("win-32bit-masks-10-10-10.bmp", "Windows bitmap, 32 bits, masks 10-10-10", 32,
                               {0x3FF00000, 0xFFC00, 0x3FF, 0}, 40);
  return {
      Fields("win-16bit-alpha-4444.bmp", "Windows bitmap, 16 bits, masks 4-4-4-4", 16,
             {0xF00, 0xF0, 0xF, 0xF000}, 124),
      Fields("win-16bit-masks-231.bmp", "Windows bitmap, 16 bits, masks 2-3-1", 16, {0x30, 0xE, 0x1, 0}, 40),
      fields,
      Fields("win-32bit-masks-with-holes.bmp", "Windows bitmap, 32 bits, masks with holes", 32,
             {0xF0F00000, 0x000A5A00, 0x000000F7, 0}, 40),
      Fields("win-32bit-alpha-fields.bmp", "Windows bitmap, 32 bits, four masks behind a header of 40 bytes",
             32, {0xFF000000, 0xFF00, 0xFF, 0xFF0000}, 40),
      Fields("win-v3-alpha.bmp", "Windows bitmap, header of 56 bytes, 8-8-8-8 with alpha", 32, alpha32, 56),
      Fields("win-v5-alpha.bmp", "Windows bitmap, header of 124 bytes, 8-8-8-8 with alpha", 32, alpha32, 124),
      EmptyAlpha(),
      TwoBits(),
      SixtyFourBits(),
      ShortTable(),
      WrongOffset("win-4bit-offset-0.bmp", 0),
      WrongOffset("win-4bit-offset-in-table.bmp", 58),
      WithoutFileHeader("bare-32bit-masks.dib", fields),
      RunLengthWithoutFileHeader(),
      BareV5(),
      RunsOn("win-rle8-runs-on.bmp", 8),
      RunsOn("win-rle4-runs-on.bmp", 4),
      RunsOverTheEnd(),
      HighRunLength(),
  };
}

}  // namespace samples
