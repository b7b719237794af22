// The row decoder: strides, flags, bands, the run-length codes by hand, and everything at once, cut
// data too, against the slow model.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "RowModel.h"

namespace {

std::string RowsAsText(const std::vector<DeliveredRow>& rows) {
  std::string text;
  for (const auto& row : rows) text += (text.empty() ? "" : " ") + ToHex(row.bytes);
  return text;
}

TEST(Rows, BytesPerLine) {
  struct Case {
    int bits, width, bytes;
  };
  const Case cases[] = {{1, 0, 0},  {1, 1, 4},  {1, 32, 4},  {1, 33, 8},  {2, 16, 4},   {2, 17, 8},
                        {4, 3, 4},  {4, 8, 4},  {4, 9, 8},   {8, 4, 4},   {8, 5, 8},    {16, 2, 4},
                        {16, 3, 8}, {24, 1, 4}, {24, 5, 16}, {32, 3, 12}, {12, 100, 0}, {0, 5, 0},
                        {-8, 5, 0}, {64, 5, 0}, {33, 9, 0},  {8, -9, -8}, {32, -3, -12}};
  for (const auto& each : cases) {
    EXPECT_EQ(TheFilter().bytesPerLine(each.bits, each.width, INT_MIN), each.bytes)
        << each.bits << " bits, width " << each.width;
  }
}

TEST(Rows, ColourMasks) {
  struct Case {
    int bits;
    unsigned red, green, blue;
    int status, conversion, is565;
  };
  constexpr int kKept = 7;
  const Case cases[] = {{16, 0x7C00, 0x03E0, 0x001F, STATUS_OK, 0, 0},
                        {16, 0xF800, 0x07E0, 0x001F, STATUS_OK, 0, 1},
                        {16, 0x7C00, 0x07E0, 0x001F, STATUS_OK, 1, 0},
                        {16, 0, 0, 0, STATUS_OK, 1, 0},
                        {16, 0xFF0000, 0xFF00, 0xFF, STATUS_OK, 1, 0},
                        {32, 0xFF0000, 0xFF00, 0xFF, STATUS_OK, kKept, 0},
                        {32, 0xFF, 0xFF00, 0xFF0000, STATUS_BAD_FORMAT, kKept, 0},
                        {32, 0xF800, 0x07E0, 0x001F, STATUS_BAD_FORMAT, kKept, 0},
                        {24, 0xFF0000, 0xFF00, 0xFF, STATUS_BAD_FORMAT, kKept, 0},
                        {8, 0x7C00, 0x03E0, 0x001F, STATUS_BAD_FORMAT, kKept, 0}};
  for (const auto& each : cases) {
    unsigned masks[] = {each.red, each.green, each.blue};
    int conversion = kKept;
    int is565 = kKept;
    EXPECT_EQ(TheFilter().verifyMasks(masks, &conversion, &is565, each.bits), each.status) << each.bits;
    EXPECT_EQ(conversion, each.conversion) << each.bits << " bits, red " << each.red;
    EXPECT_EQ(is565, each.is565) << each.bits << " bits, red " << each.red;
  }
}

TEST(Rows, FlagsAndBands) {
  struct Case {
    const char* name;
    RowImage image;
    int orientation;
    int bandEnabled, bandFirst, bandTop, bandCount;
    const char* delivered;
  };
  const RowImage four{.height = 4};
  const RowImage coded{.height = 4, .compression = 1};
  const RowImage fields{.height = 4, .bits = 16, .compression = 3};
  constexpr int kUp = ORIENT_BOTTOM_UP;
  constexpr int kDown = ORIENT_TOP_DOWN;
  const Case cases[] = {
      {"one row", {}, kUp, 0, 0, 0, 0, "row 0 47"},
      {"one coded row", {.compression = 1}, kUp, 0, 0, 0, 0, "row 0 15"},
      {"all rows, fields of the band ignored", four, kUp, 0, 1, 1, 1,
       "row 0 39, row 1 35, row 2 35, row 3 43"},
      {"bottom-up band", four, kUp, 1, 99, 0, 2, "row 0 35, row 1 43"},
      {"bottom-up band of the first stored rows", four, kUp, 1, 99, 2, 2, "row 0 39, row 1 43"},
      {"top-down band", four, kDown, 1, 1, 99, 2, "row 0 35, row 1 43"},
      {"band of one row", fields, kDown, -1, 0, 99, 1, "row 0 47"},
      {"band of the whole", four, kDown, 1, 0, 0, 4, "row 0 39, row 1 35, row 2 35, row 3 43"},
      {"empty band", four, kUp, 1, 0, 1, 0, ""},
      {"negative band", four, kDown, 1, 2, 0, -1, ""},
      {"band of coded rows", coded, kUp, 1, 0, 1, 1, "row 0 7, row 1 3, row 2 3, row 3 11"},
      {"no rows", {.height = 0}, kUp, 0, 0, 0, 0, ""},
      {"fewer than no rows", {.height = INT_MIN}, kUp, 0, 0, 0, 0, ""},
      {"bit fields at 8 bits are coded", {.compression = 3}, kUp, 0, 0, 0, 0, "row 0 15"},
      {"anything at 4 bits is coded", {.bits = 4, .compression = -1}, kUp, 0, 0, 0, 0, "row 0 15"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = Repeat(4096, 0);
    rig.kernel.target.Orientation = each.orientation;
    rig.load.BandEnabled = each.bandEnabled;
    rig.load.BandFirstRow = each.bandFirst;
    rig.load.BandTopRow = each.bandTop;
    rig.load.BandRowCount = each.bandCount;
    EXPECT_EQ(rig.Decode(each.image), STATUS_OK);
    EXPECT_EQ(rig.kernel.Log({Kind::kRow}), each.delivered);
  }
}

TEST(Rows, RunLengthCodes) {
  struct Case {
    const char* name;
    RowImage image;
    const char* stream;
    const char* rows;
  };
  const RowImage ten{.width = 10, .height = 2, .compression = 1};
  const RowImage eight{.width = 8, .height = 1, .bits = 4, .compression = 2};
  const RowImage tall{.width = 4, .height = 5, .compression = 1};
  const Case cases[] = {
      {"a run clipped at the stride, then dropped until end of line", ten, "1407 0508 0000 0109",
       "070707070707070707070707 090000000000000000000000"},
      {"an odd literal run has a pad byte", ten, "0003 112233ee 0144 0000",
       "112233440000000000000000 000000000000000000000000"},
      {"an even literal run has none", ten, "0004 11223344 0155 0000",
       "112233445500000000000000 000000000000000000000000"},
      {"a literal run clipped", ten, "0a01 0003 aabbccee 0000 0102",
       "01010101010101010101aabb 020000000000000000000000"},
      {"RLE4 literals", eight, "0005 123450ee 01f0 0000", "12345f00"},
      {"RLE4 run from an odd pixel", eight, "01f0 03ab", "faba0000"},
      {"RLE4 run clipped", eight, "ff12 02ee 0000", "12121212"},
      {"delta in the row", tall, "0101 0002 0100 0102 0001", "01000200 00000000 00000000 00000000 00000000"},
      {"delta to the next row at the same place", tall, "0201 0002 0001 0102 0001",
       "01010000 00000200 00000000 00000000 00000000"},
      {"delta over blank rows", tall, "0101 0002 0103 0102 0001",
       "01000000 00000000 00000000 00000200 00000000"},
      {"delta past the last row", tall, "0101 0002 00ff", "01000000 00000000 00000000 00000000 00000000"},
      {"end of bitmap: what follows is not read", tall, "0401 0001 0402",
       "01010101 00000000 00000000 00000000 00000000"},
      {"a stream cut in a run", tall, "0401 0000 04", "01010101 00000000 00000000 00000000 00000000"},
      {"no stream", tall, "", "00000000 00000000 00000000 00000000 00000000"},
      {"24 bits through RLE8 are bytes", {.bits = 24, .compression = 1}, "0205 0000", "05050000"},
      {"1 bit through RLE4 are nibbles", {.bits = 1, .compression = 2}, "0312 0000", "12100000"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.name);
    Rig rig;
    rig.kernel.file = Hex(each.stream);
    EXPECT_EQ(rig.Decode(each.image), STATUS_OK);
    EXPECT_EQ(RowsAsText(rig.kernel.rows), each.rows);
  }
}

TEST(Rows, BuffersAreMadeOnceReadThroughAndFreedInOrder) {
  Rig rig;
  rig.kernel.file = Repeat(100, 1);
  rig.load.ReadBufferSize = 16;
  const RowImage image{.width = 5, .height = 4};
  const std::initializer_list<Kind> kinds = {Kind::kAlloc, Kind::kFree, Kind::kRead, Kind::kSeek, Kind::kRow};
  EXPECT_EQ(rig.Decode(image), STATUS_OK);
  EXPECT_EQ(
      rig.kernel.Log(kinds),
      "alloc #1 20, alloc #2 16, read 16, row 0 39, row 1 35, read 16, row 2 35, row 3 43, free #2, free #1");
  rig.kernel.rowsAccepted = 1;
  EXPECT_EQ(rig.Decode(image), FakeKernel::kRefused);
  EXPECT_EQ(rig.kernel.Log(kinds), "alloc #1 20, alloc #2 16, read 16, row 0 39, row 1 35, free #2, free #1");
  rig.kernel.file.resize(12);
  EXPECT_EQ(rig.Decode(image), STATUS_READ_ERROR);
  EXPECT_EQ(rig.kernel.Log({Kind::kAlloc, Kind::kFree, Kind::kRow}),
            "alloc #1 20, alloc #2 16, row 0 39, free #2, free #1");
  rig.load.BandEnabled = 1;
  rig.load.BandRowCount = 1;
  EXPECT_EQ(rig.Decode({.width = 5, .height = 4, .bits = 24, .compression = 4}), STATUS_BAD_FORMAT);
  EXPECT_EQ(rig.kernel.Log({Kind::kAlloc, Kind::kFree, Kind::kRow}),
            "alloc #1 20, alloc #2 16, free #2, free #1");
  rig.load.BandTopRow = 1;
  EXPECT_EQ(rig.Decode(image), STATUS_OK);
  EXPECT_EQ(rig.kernel.Log(kinds),
            "alloc #1 20, alloc #2 16, seek 16 1, read 16, row 0 43, free #2, free #1");
}

TEST(Rows, HostileNumbersEndInAStatus) {
  struct Case {
    RowImage image;
    int status;
  };
  const Case cases[] = {{{.width = INT_MAX, .bits = 32}, STATUS_NO_MEMORY},
                        {{.width = INT_MAX / 4 + 1, .bits = 1}, STATUS_NO_MEMORY},
                        {{.width = -1}, STATUS_NO_MEMORY},
                        {{.width = INT_MIN, .bits = 24}, STATUS_NO_MEMORY},
                        {{.bits = 24, .compression = 4}, STATUS_BAD_FORMAT},
                        {{.bits = 1, .compression = -1}, STATUS_BAD_FORMAT},
                        {{.height = INT_MAX}, STATUS_READ_ERROR},
                        {{.height = INT_MAX, .compression = 1}, FakeKernel::kRefused}};
  for (const auto& each : cases) {
    Rig rig;
    rig.kernel.rowsAccepted = 3;
    EXPECT_EQ(rig.Decode(each.image), each.status) << each.image.width;
  }
  for (const int size : {0, -1, INT_MIN}) {
    Rig rig;
    rig.kernel.file = Repeat(100, 1);
    rig.load.ReadBufferSize = size;
    EXPECT_EQ(rig.Decode({.height = 2}), STATUS_READ_ERROR);
    EXPECT_EQ(rig.Decode({.height = 2, .compression = 1}), STATUS_OK);
    EXPECT_EQ(RowsAsText(rig.kernel.rows), "00000000 00000000");
  }
  struct Band {
    int orientation, first, top, count;
  };
  for (const auto& band :
       {Band{ORIENT_TOP_DOWN, INT_MAX, 0, INT_MAX}, Band{ORIENT_TOP_DOWN, INT_MIN, 0, INT_MIN},
        Band{ORIENT_BOTTOM_UP, 0, INT_MAX, INT_MAX}, Band{ORIENT_BOTTOM_UP, 0, INT_MIN, -1}}) {
    Rig rig;
    rig.kernel.rowsAccepted = 3;
    rig.kernel.target.Orientation = band.orientation;
    rig.load.BandEnabled = 1;
    rig.load.BandFirstRow = band.first;
    rig.load.BandTopRow = band.top;
    rig.load.BandRowCount = band.count;
    const int status = rig.Decode({.width = 100, .height = 100, .bits = 32});
    EXPECT_TRUE(status == STATUS_OK || status == STATUS_READ_ERROR) << status;
  }
}

// 2^31 / 255 deltas to the right in one row take the write position past every int.
TEST(Rows, DeltasWithoutEndStayInTheRow) {
  Rig rig;
  const Bytes delta = Hex("0002ff00");
  Bytes& file = rig.kernel.file;
  file.reserve(4 * 8500000 + 2);
  for (int i = 0; i < 8500000; ++i) file.insert(file.end(), delta.begin(), delta.end());
  file.insert(file.end(), {0xFF, 7});
  rig.load.ReadBufferSize = 1 << 16;
  for (const int compression : {1, 2}) {
    EXPECT_EQ(rig.Decode({.width = 4, .bits = compression == 1 ? 8 : 4, .compression = compression}),
              STATUS_OK);
    EXPECT_EQ(RowsAsText(rig.kernel.rows), "00000000");
  }
}

// ---- random data against the model -------------------------------------------------------------------

class Dice {
 public:
  explicit Dice(unsigned seed) : engine(seed) {}
  int Upto(int highest) { return static_cast<int>(engine() % (static_cast<unsigned>(highest) + 1)); }
  bool OneIn(int n) { return Upto(n - 1) == 0; }
  std::uint32_t Word() { return static_cast<std::uint32_t>(engine()); }
  template <class T, std::size_t N>
  const T& Of(const T (&choices)[N]) {
    return choices[engine() % N];
  }
  Bytes Data(int length) {
    Bytes bytes;
    for (int i = 0; i < length; ++i) bytes.push_back(static_cast<std::uint8_t>(engine()));
    return bytes;
  }

 private:
  std::mt19937 engine;
};

// Mostly whole codes that make sense, so that positions, skips and pads get a chance to go wrong.
Bytes CodeStream(Dice& dice, int codes) {
  Bytes stream;
  for (int i = 0; i < codes; ++i) {
    const auto any = static_cast<std::uint8_t>(dice.Upto(255));
    const auto small = static_cast<std::uint8_t>(dice.Upto(20));
    const auto few = static_cast<std::uint8_t>(dice.Upto(3));
    const Bytes literal = Join({{0, static_cast<std::uint8_t>(3 + small)}, dice.Data(small + 3)});
    const Bytes end = dice.OneIn(8) ? Bytes{0, 1} : Bytes{0, 0};
    const Bytes choices[] = {{small, any}, {small, any},       literal,       literal, {0, 0},
                             end,          {0, 2, small, few}, dice.Data(few)};
    stream = Join({stream, dice.Of(choices)});
  }
  return stream;
}

void RandomBand(Dice& dice, Rig& rig, int height) {
  rig.load.BandEnabled = dice.OneIn(3) ? 1 : 0;
  rig.load.BandFirstRow = dice.Upto(height + 1) - 1;
  rig.load.BandTopRow = dice.Upto(height + 1) - 1;
  rig.load.BandRowCount = dice.Upto(height + 1);
  rig.kernel.target.Orientation = dice.OneIn(2) ? ORIENT_TOP_DOWN : ORIENT_BOTTOM_UP;
}

void RandomFault(Dice& dice, Rig& rig) {
  static constexpr int kResults[] = {Fault::kHalfRead, 0, -1};
  if (!dice.OneIn(3)) return;
  rig.kernel.fault = Fault{Kind::kRead, 1 + dice.Upto(6), dice.OneIn(3), dice.Of(kResults)};
}

void RandomMasks(Dice& dice, Rig& rig) {
  static constexpr std::uint32_t kMasks[] = {0x7C00, 0x3E0, 0x1F,   0xF800,     0x7E0,      0xF00,
                                             0xF0,   0xF,   0x8001, 0xFFFFFFFF, 0x80000001, 0};
  for (auto* mask : {&rig.load.RedMask, &rig.load.GreenMask, &rig.load.BlueMask})
    *mask = dice.OneIn(5) ? dice.Word() : dice.Of(kMasks);
}

TEST(Rows, AgreeWithTheModel) {
  static constexpr int kDepths[] = {1, 4, 8, 16, 24, 32, 4, 8};
  static constexpr int kCompressions[] = {0, 1, 2, 3, 1, 2, 4};
  for (unsigned seed = 0; seed < 6000 && !testing::Test::HasFailure(); ++seed) {
    Dice dice(seed);
    Rig rig;
    RowImage image;
    image.width = dice.Upto(70);
    image.height = dice.Upto(12);
    image.bits = dice.Of(kDepths);
    image.compression = dice.Of(kCompressions);
    image.conversion = image.bits == 16 && dice.OneIn(2) ? 1 : 0;
    rig.load.ReadBufferSize = 1 + dice.Upto(63);
    rig.options.Flags = dice.OneIn(2) ? LOAD_ALLOW_TRUNCATED : 0;
    RandomBand(dice, rig, image.height);
    RandomFault(dice, rig);
    RandomMasks(dice, rig);
    const int stride = static_cast<int>(image.Stride());
    rig.kernel.file = image.compression % 3 == 0 && !dice.OneIn(3)
                          ? dice.Data(stride * image.height - (dice.OneIn(2) ? dice.Upto(stride) : 0))
                          : CodeStream(dice, 1 + dice.Upto(60));

    const RowResult expected = ModelRows(image, rig.kernel.file, rig.load, rig.kernel.fault);
    SCOPED_TRACE(testing::Message() << "seed " << seed << ": " << image.width << 'x' << image.height << 'x'
                                    << image.bits << " compression " << image.compression);
    EXPECT_EQ(rig.Decode(image), expected.status);
    ASSERT_EQ(rig.kernel.rows.size(), expected.rows.size());
    for (std::size_t i = 0; i < expected.rows.size(); ++i) {
      EXPECT_EQ(rig.kernel.rows[i].flags, expected.rows[i].flags) << "row " << i;
      EXPECT_EQ(rig.kernel.rows[i].number, expected.rows[i].number) << "row " << i;
      EXPECT_EQ(ToHex(rig.kernel.rows[i].bytes), ToHex(expected.rows[i].bytes)) << "row " << i;
    }
  }
}

}  // namespace
