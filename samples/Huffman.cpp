// The code of fax machines, written the plain way: an end-of-line code, then runs of both colours by turns.
#include "samples/Rows.h"

namespace samples {
namespace {

// The codes of runs of 0 to 63 pixels, each behind a bit that is set.
constexpr uint32_t kWhite[] = {0x135, 0x47,  0x17,  0x18,  0x1B,  0x1C,  0x1E,  0x1F,  0x33,  0x34,  0x27,
                               0x28,  0x48,  0x43,  0x74,  0x75,  0x6A,  0x6B,  0xA7,  0x8C,  0x88,  0x97,
                               0x83,  0x84,  0xA8,  0xAB,  0x93,  0xA4,  0x98,  0x102, 0x103, 0x11A, 0x11B,
                               0x112, 0x113, 0x114, 0x115, 0x116, 0x117, 0x128, 0x129, 0x12A, 0x12B, 0x12C,
                               0x12D, 0x104, 0x105, 0x10A, 0x10B, 0x152, 0x153, 0x154, 0x155, 0x124, 0x125,
                               0x158, 0x159, 0x15A, 0x15B, 0x14A, 0x14B, 0x132, 0x133, 0x134};
constexpr uint32_t kBlack[] = {
    0x437,  0xA,    0x7,    0x6,    0xB,    0x13,   0x12,   0x23,   0x45,   0x44,   0x84,   0x85,   0x87,
    0x104,  0x107,  0x218,  0x417,  0x418,  0x408,  0x867,  0x868,  0x86C,  0x837,  0x828,  0x817,  0x818,
    0x10CA, 0x10CB, 0x10CC, 0x10CD, 0x1068, 0x1069, 0x106A, 0x106B, 0x10D2, 0x10D3, 0x10D4, 0x10D5, 0x10D6,
    0x10D7, 0x106C, 0x106D, 0x10DA, 0x10DB, 0x1054, 0x1055, 0x1056, 0x1057, 0x1064, 0x1065, 0x1052, 0x1053,
    0x1024, 0x1037, 0x1038, 0x1027, 0x1028, 0x1058, 0x1059, 0x102B, 0x102C, 0x105A, 0x1066, 0x1067};
// Those of 64, 128 and 192 pixels, which a short run's code follows.
constexpr uint32_t kLongWhite[] = {0x3B, 0x32, 0x57};
constexpr uint32_t kLongBlack[] = {0x40F, 0x10C8, 0x10C9};
constexpr uint32_t kEndOfLine = 0x1001;

class BitWriter {
 public:
  explicit BitWriter(bool lowBitFirst) : lowBitFirst_(lowBitFirst) {}

  void Put(uint32_t code) {
    uint32_t first = 31;
    while ((code >> first & 1) == 0) --first;
    while (first-- > 0) PutBit(code >> first & 1);
  }
  const Bytes& Written() const { return bytes_; }

 private:
  void PutBit(uint32_t bit) {
    if (count_ % 8 == 0) bytes_.push_back(0);
    const size_t place = lowBitFirst_ ? count_ % 8 : 7 - count_ % 8;
    bytes_.back() = static_cast<uint8_t>(bytes_.back() | bit << place);
    ++count_;
  }

  bool lowBitFirst_;
  size_t count_ = 0;
  Bytes bytes_;
};

}  // namespace

Bytes HuffmanCodes(const Indexed& indexed, bool lowBitFirst, bool withLineEnds) {
  BitWriter writer(lowBitFirst);
  for (int y = indexed.height - 1; y >= 0; --y) {
    if (withLineEnds) writer.Put(kEndOfLine);
    int color = 0;
    for (int x = 0; x < indexed.width; color = 1 - color) {
      const int begin = x;
      while (x < indexed.width && indexed.At(x, y) == color) ++x;
      const auto run = static_cast<size_t>(x - begin);
      if (run >= 64) writer.Put((color == 0 ? kLongWhite : kLongBlack)[run / 64 - 1]);
      writer.Put((color == 0 ? kWhite : kBlack)[run % 64]);
    }
  }
  for (int i = 0; withLineEnds && i < 6; ++i) writer.Put(kEndOfLine);
  return writer.Written();
}

}  // namespace samples
