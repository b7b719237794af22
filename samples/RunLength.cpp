// A run-length encoder for 8 and 4 bits that uses every code there is: runs, literals, deltas, row ends.
#include <algorithm>

#include "samples/Rows.h"

namespace samples {
namespace {

constexpr int kMaxCount = 255;
constexpr int kMinLiteral = 3;  // shorter ones would be read as escapes

class Encoder {
 public:
  Encoder(const Indexed& indexed, int bits) : indexed_(indexed), bits_(bits) {}

  Bytes EncodeAll() {
    for (row_ = 0; row_ < indexed_.height; ++row_) {
      Segment(0, indexed_.width);
      if (row_ + 1 < indexed_.height) Escape(0);
    }
    Escape(1);
    return std::move(bytes_);
  }

  Bytes EncodeWithDeltas() {
    int x = 0;
    int row = 0;
    while (FindInk()) {
      JumpTo(x, row);
      const int end = EndOfInk();
      Segment(column_, end);
      column_ = x = end;
      row = row_;
    }
    Escape(1);
    return std::move(bytes_);
  }

 private:
  uint8_t At(int x) const { return indexed_.At(x, indexed_.height - 1 - row_); }

  void Escape(uint32_t code) {
    Append8(bytes_, 0);
    Append8(bytes_, code);
  }

  /// Moves (column_, row_) to the next pixel that is not 0. @return false when there is none.
  bool FindInk() {
    for (; row_ < indexed_.height; ++row_, column_ = 0) {
      for (; column_ < indexed_.width; ++column_) {
        if (At(column_) != 0) return true;
      }
    }
    return false;
  }

  int EndOfInk() const {
    int end = column_;
    while (end < indexed_.width && At(end) != 0) ++end;
    return end;
  }

  /// Codes the way from where the reader stands to (column_, row_). Deltas never lead to the left, so a row
  /// has to be ended first when the goal lies there.
  void JumpTo(int x, int row) {
    if (column_ < x) {
      Escape(0);
      x = 0;
      ++row;
    }
    if (column_ == x && row_ == row) return;
    Escape(2);
    Append8(bytes_, static_cast<uint32_t>(column_ - x));
    Append8(bytes_, static_cast<uint32_t>(row_ - row));
  }

  /// A run repeats its one index, or at 4 bits its two indices by turns.
  int RunFrom(int x, int end) const {
    const int period = 8 / bits_;
    int length = std::min(period, end - x);
    while (x + length < end && length < kMaxCount && At(x + length) == At(x + length - period)) ++length;
    return length;
  }

  void Segment(int x, int end) {
    while (x < end) {
      const int run = RunFrom(x, end);
      const int literal = LiteralFrom(x, end);
      x += literal >= kMinLiteral ? Literal(x, literal) : Run(x, run);
    }
  }

  /// How many pixels from x on are better not coded as runs.
  int LiteralFrom(int x, int end) const {
    constexpr int kWorthARun = 4;
    int length = 0;
    while (x + length < end && length < kMaxCount && RunFrom(x + length, end) < kWorthARun) ++length;
    return length;
  }

  int Run(int x, int length) {
    Append8(bytes_, static_cast<uint32_t>(length));
    const uint8_t second = length > 1 ? At(x + 1) : uint8_t{0};
    Append8(bytes_, bits_ == 8 ? At(x) : static_cast<uint32_t>(At(x) * 16 + second));
    return length;
  }

  int Literal(int x, int length) {
    Escape(static_cast<uint32_t>(length));
    for (int i = 0; i < length; i += 8 / bits_) {
      const uint8_t second = i + 1 < length ? At(x + i + 1) : uint8_t{0};
      Append8(bytes_, bits_ == 8 ? At(x + i) : static_cast<uint32_t>(At(x + i) * 16 + second));
    }
    PadTo(bytes_, 2);
    return length;
  }

  const Indexed& indexed_;
  int bits_;
  int column_ = 0;
  int row_ = 0;  // in stored order
  Bytes bytes_;
};

}  // namespace

Bytes RunLength(const Indexed& indexed, int bits, Skipping skipping) {
  Encoder encoder(indexed, bits);
  return skipping == Skipping::ByDeltas ? encoder.EncodeWithDeltas() : encoder.EncodeAll();
}

}  // namespace samples
