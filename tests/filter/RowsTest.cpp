// The row decoder: hostile bands, and everything at once on random data, cut data too, against the slow
// model.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "RowModel.h"

namespace {

TEST(Rows, HostileBandsEndInAStatus) {
  for (const int first : {INT_MAX, INT_MIN, 0}) {
    for (const int count : {INT_MAX, INT_MIN, -1}) {
      for (const int orientation : {ORIENT_TOP_DOWN, ORIENT_BOTTOM_UP}) {
        Rig rig;
        rig.kernel.rowsAccepted = 3;
        rig.kernel.target.Orientation = orientation;
        rig.load.BandEnabled = 1;
        rig.load.BandFirstRow = rig.load.BandTopRow = first;
        rig.load.BandRowCount = count;
        const int status = rig.Decode({.width = 100, .height = 100, .bits = 32});
        EXPECT_TRUE(status == STATUS_OK || status == STATUS_READ_ERROR) << status;
      }
    }
  }
}

// 2^31 / 255 deltas to the right in one row take the write position past every int.
TEST(Rows, DeltasWithoutEndStayInTheRow) {
  Rig rig;
  rig.kernel.file.reserve(4 * 8500000 + 2);
  for (int i = 0; i < 8500000; ++i) Append(rig.kernel.file, {0, 2, 0xFF, 0});
  Append(rig.kernel.file, {0xFF, 7});
  rig.load.ReadBufferSize = 1 << 16;
  for (const int compression : {1, 2}) {
    EXPECT_EQ(rig.Decode({.width = 4, .bits = compression == 1 ? 8 : 4, .compression = compression}),
              STATUS_OK);
    EXPECT_EQ(ToHex(rig.kernel.rows.at(0).bytes), "00000000");
  }
}

// ---- random data against the model

class Dice {
 public:
  explicit Dice(unsigned seed) : engine(seed) {}
  int Upto(int highest) { return static_cast<int>(engine() % (static_cast<unsigned>(highest) + 1)); }
  bool OneIn(int n) { return Upto(n - 1) == 0; }
  uint32_t Word() { return static_cast<uint32_t>(engine()); }
  template <class T, std::size_t N>
  const T& Of(const T (&choices)[N]) {
    return choices[engine() % N];
  }
  Bytes Data(int length) {
    Bytes bytes;
    for (int i = 0; i < length; ++i) bytes.push_back(static_cast<uint8_t>(engine()));
    return bytes;
  }

 private:
  std::mt19937 engine;
};

// Mostly whole codes that make sense, so that positions, skips and pads get a chance to go wrong.
Bytes CodeStream(Dice& dice, int codes) {
  Bytes stream;
  for (int i = 0; i < codes; ++i) {
    const auto any = static_cast<uint8_t>(dice.Upto(255));
    const auto small = static_cast<uint8_t>(dice.Upto(20));
    const auto few = static_cast<uint8_t>(dice.Upto(3));
    Bytes literal = {0, static_cast<uint8_t>(3 + small)};
    Append(literal, dice.Data(small + 3));
    const Bytes end = dice.OneIn(8) ? Bytes{0, 1} : Bytes{0, 0};
    const Bytes choices[] = {{small, any}, {small, any},       literal,       literal, {0, 0},
                             end,          {0, 2, small, few}, dice.Data(few)};
    Append(stream, dice.Of(choices));
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
  static constexpr int kResults[] = {Fault::kHalf, 0, -1};
  if (!dice.OneIn(3)) return;
  rig.kernel.faults = {{"read", 1 + dice.Upto(6), dice.OneIn(3), dice.Of(kResults)}};
}

void RandomMasks(Dice& dice, Rig& rig) {
  static constexpr uint32_t kMasks[] = {0x7C00, 0x3E0,  0x1F,       0xF800,     0x7E0, 0xF00,  0xF0,
                                        0xF,    0x8001, 0xFFFFFFFF, 0x80000001, 0,     0x1C000};
  for (auto* mask : {&rig.load.RedMask, &rig.load.GreenMask, &rig.load.BlueMask})
    *mask = dice.OneIn(5) ? dice.Word() : dice.Of(kMasks);
}

// Vectors take 8 pixels at once and leave the rest to words: every width, wherever the rows lie in their
// buffer.
TEST(Rows, FieldsOfEveryWidthAgreeWithTheModel) {
  for (int width = 0; width <= 200; ++width) {
    Dice dice(static_cast<unsigned>(width));
    Rig rig;
    const RowImage image = {.width = width, .height = 3, .bits = 16, .compression = 3, .conversion = 1};
    RandomMasks(dice, rig);
    rig.load.ReadBufferSize = 2 + 2 * dice.Upto(40);
    rig.kernel.file = dice.Data(static_cast<int>(image.Stride()) * image.height);
    const RowResult expected = ModelRows(image, rig.kernel.file, rig.load, {});
    EXPECT_EQ(rig.Decode(image), expected.status) << width;
    EXPECT_EQ(rig.kernel.rows, expected.rows) << width;
  }
}

TEST(Rows, AgreeWithTheModel) {
  static constexpr int kDepths[] = {1, 4, 8, 16, 24, 32, 4, 8};
  static constexpr int kCompressions[] = {0, 1, 2, 3, 1, 2, 4, -1};
  for (unsigned seed = 0; seed < 6000 && !testing::Test::HasFailure(); ++seed) {
    Dice dice(seed);
    Rig rig;
    RowImage image;
    image.width = static_cast<int>(seed % 201);
    image.height = dice.Upto(12);
    image.bits = dice.Of(kDepths);
    image.compression = dice.Of(kCompressions);
    image.conversion = image.bits == 16 && dice.OneIn(2) ? 1 : 0;
    rig.load.ReadBufferSize = 1 + dice.Upto(dice.OneIn(2) ? 63 : 399);
    rig.options.Flags = dice.OneIn(2) ? LOAD_ALLOW_TRUNCATED : 0;
    RandomBand(dice, rig, image.height);
    RandomFault(dice, rig);
    RandomMasks(dice, rig);
    const int stride = static_cast<int>(image.Stride());
    rig.kernel.file = image.compression % 3 == 0 && !dice.OneIn(3)
                          ? dice.Data(stride * image.height - (dice.OneIn(2) ? dice.Upto(stride) : 0))
                          : CodeStream(dice, 1 + dice.Upto(60));

    const RowResult expected = ModelRows(image, rig.kernel.file, rig.load, rig.kernel.faults);
    SCOPED_TRACE(testing::Message() << "seed " << seed << ": " << image.width << 'x' << image.height << 'x'
                                    << image.bits << " compression " << image.compression);
    EXPECT_EQ(rig.Decode(image), expected.status);
    EXPECT_EQ(rig.kernel.rows, expected.rows);
  }
}

}  // namespace
