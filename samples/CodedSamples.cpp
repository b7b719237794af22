// Bitmaps in codings of OS/2 2.x, and with PNG and JPEG streams in the place of pixels.
#include "samples/Families.h"
#include "samples/Headers.h"
#include "samples/Icons.h"
#include "samples/Jpegs.h"
#include "samples/Rows.h"

namespace samples {
namespace {

constexpr int kWidth = 61;
constexpr int kHeight = 48;

Bytes File(uint32_t headerSize, int width, int height, int bits, uint32_t compression, const Bytes& palette,
           const Bytes& pixels) {
  ImageHeader header;
  header.size = headerSize;
  header.width = width;
  header.height = height;
  header.bits = bits;
  header.compression = static_cast<Compression>(compression);
  header.imageSize = Size32(pixels);
  return BitmapFile(Encode(header), palette, pixels);
}

bool IsBlack(const Color& color) {
  return color == Color{0, 0, 0, 255};
}

void AppendColor(Bytes& bytes, const Color& color) {
  for (const uint8_t channel : {color.blue, color.green, color.red}) bytes.push_back(channel);
}

/// Appends the pixels from x on that are alike as a run, or those that are not as literals. @return behind
/// them
int CodePixels(const Picture& picture, int x, int y, Bytes& bytes) {
  const int width = picture.Width();
  int end = x + 1;
  while (end < width && end - x < 255 && picture.At(end, y) == picture.At(x, y)) ++end;
  if (end - x > 1) {
    Append8(bytes, static_cast<uint32_t>(end - x));
    AppendColor(bytes, picture.At(x, y));
    return end;
  }
  while (end < width && end - x < 255 && !(picture.At(end, y) == picture.At(end - 1, y))) ++end;
  if (end - x < 3) {  // which would be read as an escape
    Append8(bytes, 1);
    AppendColor(bytes, picture.At(x, y));
    return x + 1;
  }
  Append16(bytes, static_cast<uint32_t>(end - x) << 8);
  for (int i = x; i < end; ++i) AppendColor(bytes, picture.At(i, y));
  PadTo(bytes, 2);
  return end;
}

/// Jumps over black pixels, which are there already.
Bytes RunLength24(const Picture& picture) {
  Bytes bytes;
  for (int y = picture.Height() - 1; y >= 0; --y) {
    for (int x = 0; x < picture.Width();) {
      int ink = x;
      while (ink < picture.Width() && IsBlack(picture.At(ink, y))) ++ink;
      if (ink == picture.Width()) break;
      if (ink > x) {
        for (const int byte : {0, 2, ink - x, 0}) Append8(bytes, static_cast<uint32_t>(byte));
      }
      x = CodePixels(picture, ink, y, bytes);
    }
    Append16(bytes, 0);
  }
  Append16(bytes, 0x0100);
  return bytes;
}

Sample Rle24(std::string name, std::string title, const Picture& picture) {
  return MakeSample(std::move(name), std::move(title),
                    File(64, kWidth, kHeight, 24, 4, {}, RunLength24(picture)), picture);
}

Sample Huffman(std::string name, std::string title, bool lowBitFirst, bool withLineEnds) {
  constexpr int kWide = 200;  // so that there are codes of long runs
  const Indexed indexed = Reduce(Boat(kWide, kHeight, "HUFFMAN"), 2, 0, true);
  return MakeSample(std::move(name), std::move(title),
                    File(64, kWide, kHeight, 1, 3, EncodePalette(indexed.palette, 2, 4),
                         HuffmanCodes(indexed, lowBitFirst, withLineEnds)),
                    ToPicture(indexed));
}

/// The header says neither depth nor, as some writers leave it, the right size.
Sample Png() {
  const Picture badge = MoonBadge(32);
  return MakeSample("win-png.bmp", "Windows bitmap whose pixels are a PNG stream with alpha",
                    File(124, 7, 5, 0, 5, {}, PngPage(badge).body), badge);
}

Picture GreyBlocks() {
  Picture picture(16, 13);
  constexpr uint8_t kLevels[2][2] = {{40, 200}, {90, 128}};
  for (int y = 0; y < 13; ++y) {
    for (int x = 0; x < 16; ++x) {
      const uint8_t level = kLevels[y / 8][x / 8];
      picture.At(x, y) = {level, level, level, 255};
    }
  }
  return picture;
}

template <size_t Size>
Sample Jpeg(std::string name, std::string title, const uint8_t (&stream)[Size], const Picture* picture) {
  const Bytes file = File(124, 0, 0, 0, 4, {}, Bytes(stream, stream + Size));
  Sample sample;
  if (picture != nullptr) {
    sample = MakeSample(std::move(name), std::move(title), file, *picture);
  } else {
    sample.name = std::move(name);
    sample.title = std::move(title);
    sample.bytes = file;
  }
#if !VX_READS_JPEG
  sample.outcome = Outcome::Refused;
#endif
  return sample;
}

}  // namespace

std::vector<Sample> CodedSamples() {
  const Picture grey = GreyBlocks();
  return {
      Rle24("os2v2-rle24.bmp", "OS/2 2.x bitmap, RLE24: runs and literals", Sunset(kWidth, kHeight, "RLE24")),
      Rle24("os2v2-rle24-deltas.bmp", "OS/2 2.x bitmap, RLE24 with deltas over the empty parts",
            Boat(kWidth, kHeight, "DELTAS")),
      Huffman("os2v2-huffman.bmp", "OS/2 2.x bitmap, Huffman 1D, highest bit first", false, true),
      Huffman("os2v2-huffman-lsb.bmp", "OS/2 2.x bitmap, Huffman 1D, lowest bit first", true, true),
      Huffman("os2v2-huffman-bare.bmp", "OS/2 2.x bitmap, Huffman 1D without end-of-line codes", false,
              false),
      Png(),
      Jpeg("win-jpeg-grey.bmp", "Windows bitmap whose pixels are a JPEG stream in grey", kGreyJpeg, &grey),
      Jpeg("win-jpeg.bmp", "Windows bitmap whose pixels are a JPEG stream", kColorJpeg, nullptr),
      Jpeg("win-jpeg-progressive.bmp", "Windows bitmap whose pixels are a JPEG stream in several scans",
           kProgressiveJpeg, nullptr),
      Jpeg("win-jpeg-ink.bmp", "Windows bitmap whose pixels are a JPEG stream in four inks", kInkJpeg,
           nullptr),
  };
}

}  // namespace samples
