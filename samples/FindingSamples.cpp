// Small files, each with one thing wrong that a check of files must find.
#include <algorithm>
#include <string_view>
#include <utility>

#include "samples/Families.h"
#include "samples/Headers.h"
#include "samples/Icons.h"
#include "samples/Rows.h"

namespace samples {
namespace {

constexpr int kWidth = 16;
constexpr int kHeight = 12;
constexpr size_t kImageHeader = 14;
constexpr size_t kFirstEntry = 6;
constexpr size_t kSecondEntry = 22;
constexpr size_t kBodyLength = 8;  // in an entry
constexpr size_t kBodyOffset = 12;

Bytes With16(Bytes file, size_t at, uint32_t value) {
  file.at(at) = static_cast<uint8_t>(value & 0xFF);
  file.at(at + 1) = static_cast<uint8_t>(value >> 8 & 0xFF);
  return file;
}

Bytes With32(const Bytes& file, size_t at, uint32_t value) {
  return With16(With16(file, at, value), at + 2, value >> 16);
}

Bytes Followed(Bytes file, const Bytes& more) {
  Append(file, more);
  return file;
}

Bytes Cut(Bytes file, size_t size) {
  file.resize(size);
  return file;
}

ImageHeader HeaderFor(int bits, Compression compression = Compression::None) {
  return {.width = kWidth, .height = kHeight, .bits = bits, .compression = compression};
}

Picture Sea() {
  return Sunset(kWidth, kHeight, "");
}

Bytes TrueColor(ImageHeader header = HeaderFor(24)) {
  return BitmapFile(Encode(header), {}, Rows24(Sea()));
}

/// Four bits, with a table of so many colours.
Bytes Indexed4(uint32_t colors) {
  ImageHeader header = HeaderFor(4);
  header.colorsUsed = colors;
  const Indexed sea = Reduce(Sea(), 16);
  return BitmapFile(Encode(header), EncodePalette(sea.palette, colors, 4), IndexRows(sea, 4));
}

/// A header of 124 bytes with a profile of 8 bytes that is said to be `at` bytes behind it.
Bytes WithProfile(uint32_t at) {
  constexpr size_t kColorSpace = kImageHeader + 56;
  constexpr size_t kProfile = kImageHeader + 112;
  ImageHeader header = HeaderFor(24);
  header.size = 124;
  const Bytes file = With32(TrueColor(header), kColorSpace, 0x4D424544);
  return With32(With32(file, kProfile, at), kProfile + 4, 8);
}

Bytes Codes8(const Bytes& codes, int height = kHeight) {
  ImageHeader header = HeaderFor(8, Compression::Rle8);
  header.height = height;
  header.imageSize = Size32(codes);
  return BitmapFile(Encode(header), EncodePalette({}, 256, 4), codes);
}

/// A run over the whole of each row, and what ends it.
Bytes FullRows(int rows) {
  Bytes codes;
  for (int row = 0; row < rows; ++row) Append(codes, {kWidth, 1, 0, 0});
  return codes;
}

Bytes Moons(IconType type = IconType::Icon) {
  return IconFile(type, {IndexedPage(MoonBadge(16), 1), IndexedPage(MoonBadge(24), 1)});
}

/// 32 bits, and a mask in which every bit is `hides`, of alpha that is `alpha` where it is not 0.
Bytes Masked(uint8_t alpha, uint8_t hides) {
  Picture moon = MoonBadge(16);
  for (Color& color : moon.Pixels()) color.alpha = alpha;
  Page page = AlphaPage(moon);
  std::fill(page.body.end() - 4 * 16, page.body.end(), hides);
  return IconFile(IconType::Icon, {page});
}

Bytes DamagedStream() {
  Bytes file = IconFile(IconType::Icon, {PngPage(MoonBadge(16))});
  constexpr size_t kInData = 60;  // from the end
  file[file.size() - kInData] ^= 0xFF;
  return file;
}

/// An animation of one frame, one of whose two steps shows another.
Bytes StepTooFar() {
  const Bytes frame = IconFile(IconType::Cursor, {IndexedPage(Arrow(16), 1)});
  const auto chunk = [](std::string_view name, const Bytes& content) {
    Bytes all(name.begin(), name.end());
    Append32(all, Size32(content));
    Append(all, content);
    return all;
  };
  Bytes header;
  for (const uint32_t word : {36U, 1U, 2U, 0U, 0U, 0U, 0U, 6U, 3U}) Append32(header, word);
  Bytes sequence;
  for (const uint32_t word : {0U, 7U}) Append32(sequence, word);
  Bytes list{'f', 'r', 'a', 'm'};
  Append(list, chunk("icon", frame));
  Bytes content{'A', 'C', 'O', 'N'};
  for (const Bytes& part : {chunk("anih", header), chunk("seq ", sequence), chunk("LIST", list)}) {
    Append(content, part);
  }
  return chunk("RIFF", content);
}

Sample Odd(std::string name, std::string title, Bytes bytes, Outcome outcome = Outcome::LoadsDamaged) {
  Sample sample;
  sample.name = std::move(name);
  sample.title = std::move(title);
  sample.bytes = std::move(bytes);
  sample.outcome = outcome;
  return sample;
}

std::vector<Sample> OddBitmaps() {
  ImageHeader topDown = HeaderFor(8, Compression::Rle8);
  topDown.height = -kHeight;
  const Bytes codes = Followed(FullRows(kHeight - 1), {kWidth, 1, 0, 1});
  topDown.imageSize = Size32(codes);
  return {
      Odd("odd-planes.bmp", "Bitmap that says it has 3 planes", With16(TrueColor(), kImageHeader + 12, 3)),
      Odd("odd-palette-count.bmp", "4 bits, with 20 colours", Indexed4(20)),
      Odd("odd-palette-short.bmp", "4 bits, with 5 colours where the header means 16",
          With32(Indexed4(5), kImageHeader + 32, 0)),
      Odd("odd-palette-index.bmp", "4 bits, with pixels of colours that are not among its 5", Indexed4(5)),
      Odd("odd-palette-cut.bmp", "4 bits, cut off inside the colour table", Cut(Indexed4(16), 54 + 30),
          Outcome::Refused),
      Odd("odd-header-cut.bmp", "Bitmap that is cut off inside its header", Cut(TrueColor(), 40),
          Outcome::Refused),
      Odd("odd-top-down.bmp", "RLE8 that says its top row is first",
          BitmapFile(Encode(topDown), EncodePalette({}, 256, 4), codes)),
      Odd("odd-codes-no-end.bmp", "RLE8 without a code that ends the picture", Codes8(FullRows(kHeight))),
      Odd("odd-codes-outside.bmp", "RLE8 with two runs behind the last row",
          Codes8(Followed(FullRows(kHeight + 2), {0, 1}))),
      Odd("odd-profile-outside.bmp", "Bitmap whose profile lies behind the end", WithProfile(5000)),
      Odd("odd-profile-in-pixels.bmp", "Bitmap whose profile lies among its pixels", WithProfile(200)),
      Odd("odd-gap.bmp", "Bitmap with 6 bytes between header and pixels",
          With32(BitmapFile(Encode(HeaderFor(24)), Bytes(6, 0xEE), Rows24(Sea())), kImageHeader + 20, 0)),
      Odd("odd-trailing.bmp", "Bitmap with a text behind its end",
          Followed(TrueColor(), {'t', 'e', 'x', 't', '\n'})),
  };
}

std::vector<Sample> OddFiles() {
  const Bytes moons = Moons();
  const auto at = [&](size_t entry) { return uint32_t{moons[entry + kBodyOffset]}; };
  return {
      Odd("odd-stream.ico", "Icon whose PNG page is damaged", DamagedStream(), Outcome::Refused),
      Odd("odd-directory-cut.ico", "Icon that is cut off in its directory", Cut(moons, kSecondEntry + 8),
          Outcome::Refused),
      Odd("odd-page-in-directory.ico", "Icon whose second page is said to begin in the directory",
          With32(moons, kSecondEntry + kBodyOffset, 12)),
      Odd("odd-pages-shared.ico", "Icon whose two pages are the same bytes",
          With32(With32(With16(moons, kSecondEntry, 0x1010), kSecondEntry + kBodyOffset, at(kFirstEntry)),
                 kSecondEntry + kBodyLength, moons[kFirstEntry + kBodyLength])),
      Odd("odd-mask-shows.ico", "Icon, 32 bits, whose mask shows what its alpha hides",
          IconFile(IconType::Icon, {[] {
                     Page page = AlphaPage(MoonBadge(16));
                     std::fill(page.body.end() - 4 * 16, page.body.end(), uint8_t{0});
                     return page;
                   }()})),
      Odd("odd-soft-edges.ico", "Icon, 32 bits, whose mask hides what is half transparent",
          Masked(200, 0xFF)),
      Odd("odd-hot-spot.cur", "Cursor that points 40 pixels to the right",
          IconFile(IconType::Cursor, {WithHotSpot(IndexedPage(Arrow(16), 1), 40, 3)})),
      Odd("odd-steps.ani", "Animated cursor with a step whose frame is not there", StepTooFar()),
  };
}

}  // namespace

std::vector<Sample> FindingSamples() {
  std::vector<Sample> all = OddBitmaps();
  for (Sample& sample : OddFiles()) all.push_back(std::move(sample));
  return all;
}

}  // namespace samples
