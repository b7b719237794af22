// Rows that are coded, and streams inside bitmaps: what becomes of each code, of data that breaks off, and of
// what is no code. Expected bytes are worked out by hand.
#include <gtest/gtest.h>
#include <samples/Headers.h>
#include <samples/Icons.h>
#include <samples/Samples.h>

#include <algorithm>

#include "../common/Failures.h"
#include "Loading.h"

namespace {

using loading::Bytes;

Bytes File(uint32_t headerSize, int width, int height, int bits, uint32_t compression, const Bytes& pixels) {
  samples::ImageHeader header;
  header.size = headerSize;
  header.width = width;
  header.height = height;
  header.bits = bits;
  header.compression = static_cast<samples::Compression>(compression);
  const auto palette = samples::EncodePalette({{255, 255, 255, 255}}, bits <= 8 ? size_t{1} << bits : 0, 4);
  return samples::BitmapFile(samples::Encode(header), palette, pixels);
}

const samples::Sample& Named(const std::string& name) {
  static const std::vector<samples::Sample> kAll = samples::All();
  return *std::find_if(kAll.begin(), kAll.end(), [&](const auto& sample) { return sample.name == name; });
}

/// The red of every pixel as a letter: '.' for 0, 'a' for 1 and so on, '#' for 255; rows from the top.
std::string Letters(const vx::Bitmap& bitmap) {
  const Bytes rgba = bitmap.Rgba();
  std::string letters;
  for (std::size_t i = 0; i < rgba.size(); i += 4) {
    if (i > 0 && i / 4 % static_cast<std::size_t>(bitmap.Describe().width) == 0) letters += '|';
    letters += rgba[i] == 0 ? '.' : rgba[i] == 255 ? '#' : static_cast<char>('a' + rgba[i] - 1);
  }
  return letters;
}

struct Case {
  const char* name;
  Bytes data;
  const char* picture;  // with truncated data allowed; "" where there is none
  int rows;             // that are there
  int reason;           // of failing without
};

/// Codes of a picture of 4 x 3, stored bottom-up.
void ExpectCases(const std::vector<Case>& cases, uint32_t headerSize, int bits, uint32_t compression) {
  for (const Case& each : cases) {
    SCOPED_TRACE(each.name);
    const Bytes file = File(headerSize, 4, 3, bits, compression, each.data);
    loading::ExpectDefinedOutcomes(file);
    const vx::Source source = vx::Source::Memory(file);
    EXPECT_EQ(StatusOf([&] { (void)source.Load(); }) == VX_OK, each.reason == VX_REASON_NONE);
    EXPECT_EQ(vx_error_reason(), each.reason) << vx_error_detail();
    vx::LoadOptions options;
    options.allow_truncated = 1;
    std::string picture;
    const int status = StatusOf([&] {
      const vx::Bitmap bitmap = source.Load(options);
      picture = Letters(bitmap);
      EXPECT_EQ(bitmap.Describe().rows_present, each.rows);
    });
    EXPECT_EQ(status == VX_OK, *each.picture != '\0') << vx_error_detail();
    EXPECT_EQ(picture, each.picture);
  }
}

TEST(Coded, RunLengthsOfWholeColours) {
  ExpectCases(
      {
          // a run that is clipped, literals with a pad byte that are clipped, a delta, the end
          {"clipped",
           {9, 0, 0, 1, 0, 0, 0, 5, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0, 5, 0, 0, 0, 0, 1},
           "....|abcd|aaaa",
           3,
           VX_REASON_NONE},
          {"a delta to the right and up",
           {1, 0, 0, 1, 0, 2, 1, 2, 1, 0, 0, 2, 0, 1},
           "..b.|....|a...",
           3,
           VX_REASON_NONE},
          {"a delta past everything",
           {1, 0, 0, 1, 0, 2, 255, 255, 1, 0, 0, 2},
           "....|....|a...",
           3,
           VX_REASON_NONE},
          {"data that ends with a full row", {4, 0, 0, 1}, "....|....|aaaa", 1, VX_REASON_NONE},
          {"data that ends inside a literal",
           {4, 0, 0, 1, 0, 0, 0, 4, 0, 0, 2, 0, 0},
           "....|b...|aaaa",
           1,
           VX_REASON_NONE},
          {"nothing but part of a row", {2, 0, 0, 1}, "", 0, VX_REASON_TOO_LITTLE_DATA},
          {"nothing", {}, "", 0, VX_REASON_TOO_LITTLE_DATA},
      },
      64, 24, 4);
}

/// White is index 0, which what is missing has, too.
TEST(Coded, RowsOfRunLengthsAreThereAsFarAsTheirDataIs) {
  ExpectCases({{"a whole literal", {4, 1, 0, 0, 0, 4, 1, 2, 3, 4}, "####|....|....", 2, VX_REASON_NONE},
               {"half of it", {4, 1, 0, 0, 0, 4, 1, 2}, "####|..##|....", 1, VX_REASON_NONE},
               {"nothing of it", {4, 1, 0, 0, 0, 4}, "####|####|....", 1, VX_REASON_NONE}},
              40, 8, 1);
  ExpectCases({{"a whole literal", {4, 17, 0, 0, 0, 4, 18, 52}, "####|....|....", 2, VX_REASON_NONE},
               {"half of it", {4, 17, 0, 0, 0, 4, 18}, "####|..##|....", 1, VX_REASON_NONE}},
              40, 4, 2);
}

/// White is the first colour, which rows that are missing have, too. 4 white: 1011; 0 white: 00110101; 2
/// white: 0111; 4 black: 011; 2 black: 11.
TEST(Coded, HuffmanCodes) {
  ExpectCases(
      {
          // 0111 11, 00110101 011, 1011
          {"bare", {0b01111100, 0b11010101, 0b11011000}, "####|....|##..", 3, VX_REASON_NONE},
          {"bare, lowest bit first",
           {0b00111110, 0b10101011, 0b00011011},
           "####|....|##..",
           3,
           VX_REASON_NONE},
          // 00000000 0001 1011 twice, then 01 0111 11 with two bits of fill before its end-of-line code
          {"with ends of lines and fill",
           {0, 0b00011011, 0, 0b00011011, 0, 0b00000101, 0b11110000},
           "##..|####|####",
           3,
           VX_REASON_NONE},
          // the second row's 1000 (3 white) 011 (4 black) is longer than it
          {"a run past its row", {0b10111000, 0b01110111, 0}, "####|####|####", 1, VX_REASON_ROWS_MISSING},
          // 1011, then 0000 0000 1: no code
          {"a code that does not exist",
           {0b10110000, 0b00001000, 0xFF},
           "####|####|####",
           1,
           VX_REASON_ROWS_MISSING},
          // 1011 and two end-of-line codes
          {"an end before the last row",
           {0b10110000, 0b00000001, 0, 0b00010000, 0xBB},
           "####|####|####",
           1,
           VX_REASON_ROWS_MISSING},
          {"data that ends", {0b10111011}, "####|####|####", 2, VX_REASON_ROWS_MISSING},
          {"noise", {0x01, 0x80, 0xFF}, "", 0, VX_REASON_TOO_LITTLE_DATA},
          {"zeros", Bytes(100, 0), "", 0, VX_REASON_TOO_LITTLE_DATA},
          {"nothing", {}, "", 0, VX_REASON_TOO_LITTLE_DATA},
      },
      64, 1, 3);
}

/// Bands pass over the rows before them; every coded sample has rows that differ.
TEST(Coded, BandsArePiecesOfTheWhole) {
  for (const char* name :
       {"os2v2-rle24.bmp", "os2v2-rle24-deltas.bmp", "os2v2-huffman-lsb.bmp", "win-png.bmp"}) {
    SCOPED_TRACE(name);
    const samples::Sample& sample = Named(name);
    vx::LoadOptions options;
    options.band_first = 5;
    options.band_count = 9;
    const auto band = loading::Load(sample.bytes, options);
    const auto first = sample.rgba.begin() + 5 * 4 * sample.width;
    EXPECT_EQ(loading::FirstDifference(band, sample.width, 9, Bytes(first, first + 9 * 4 * sample.width)),
              "");
  }
}

TEST(Coded, LackOfMemoryIsSaid) {
  for (const char* name :
       {"os2v2-rle24.bmp", "os2v2-huffman.bmp", "win-png.bmp", "win-jpeg-progressive.bmp"}) {
    SCOPED_TRACE(name);
    const vx::Source source = vx::Source::Memory(Named(name).bytes);
    if (Named(name).outcome != samples::Outcome::Loads) continue;
    EXPECT_GT(FailuresForWantOfMemory([&] { (void)source.Load(); }), 3);
  }
}

/// A stream with a header before it that says another size.
Bytes WithStream(uint32_t compression, const Bytes& stream) {
  return File(40, 3, 3, 24, compression, stream);
}

/// 40 x 50 pixels of noise, which take more than one piece.
Bytes NoisyPng() {
  samples::Picture picture(40, 50);
  uint32_t noise = 1;
  for (auto& color : picture.Pixels()) {
    noise = noise * 1664525 + 1013904223;
    color = {static_cast<uint8_t>(noise >> 24), static_cast<uint8_t>(noise >> 16), 0, 255};
  }
  return samples::PngPage(picture).body;
}

TEST(Coded, PngStreamsThatEndEarlyHaveTheirFirstRows) {
  Bytes stream = NoisyPng();
  const auto whole = loading::LoadPage(WithStream(5, stream));
  ASSERT_EQ(whole.status, VX_OK) << whole.detail;
  Bytes damaged = stream;
  damaged[stream.size() / 2] ^= 0x55;
  EXPECT_EQ(loading::LoadPage(WithStream(5, damaged), 1, true).status, VX_BAD_FORMAT);
  EXPECT_EQ(vx_error_reason(), VX_REASON_PNG_DAMAGED);
  stream.resize(stream.size() / 2);
  const Bytes file = WithStream(5, stream);
  loading::ExpectDefinedOutcomes(file);
  vx::LoadOptions options;
  options.allow_truncated = 1;
  const vx::Bitmap half = vx::Source::Memory(file).Load(options);
  const int rows = half.Describe().rows_present;
  EXPECT_TRUE(rows > 20 && rows < 26) << rows;
  const Bytes pixels = half.Rgba();
  EXPECT_TRUE(std::equal(pixels.begin(), pixels.begin() + 160 * rows, whole.rgba.begin()));
}

TEST(Coded, JpegStreams) {
  struct {
    const char* name;
    Bytes corners;  // red, green, blue of the top left and the bottom right pixel
  } cases[] = {{"win-jpeg.bmp", {201, 40, 30, 30, 150, 60}},
               {"win-jpeg-progressive.bmp", {201, 40, 30, 30, 150, 60}},
               {"win-jpeg-ink.bmp", {44, 125, 173, 44, 125, 173}}};
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    const samples::Sample& sample = Named(each.name);
    const auto loaded = loading::LoadPage(sample.bytes);
    if (sample.outcome != samples::Outcome::Loads) {
      EXPECT_EQ(vx_error_reason(), VX_REASON_NO_JPEG) << loaded.detail;
      continue;
    }
    ASSERT_EQ(loaded.status, VX_OK) << loaded.detail;
    for (std::size_t i = 0; i < 3; ++i) {
      EXPECT_NEAR(loaded.rgba[i], each.corners[i], 1);
      EXPECT_NEAR(loaded.rgba[loaded.rgba.size() - 4 + i], each.corners[3 + i], 1);
    }
    Bytes cut = sample.bytes;
    cut.resize(cut.size() - 2);  // without the marker at its end, which only a stream in scans needs
    const bool isInScans = loaded.status == VX_OK && sample.name == "win-jpeg-progressive.bmp";
    EXPECT_EQ(loading::LoadPage(cut).status, isInScans ? VX_BAD_FORMAT : VX_OK) << vx_error_detail();
    cut[138] = 'x';
    EXPECT_EQ(loading::LoadPage(cut, 1, true).status, VX_BAD_FORMAT);
    EXPECT_EQ(vx_error_reason(), VX_REASON_JPEG_DAMAGED);
  }
}

}  // namespace
