// Decodes run-length rows. One loop reads the codes; what a run or a literal does to the row is the
// business of a small row type for each coding.
//
// Two things make it fast. Codes and literals that lie wholly in the read buffer are taken straight
// from it. And runs are stored in whole chunks that may spill over their end: whatever lies to the
// right of the position is either written later or cleared when the row is complete.
#include "Read/RunLength.h"

#include <algorithm>
#include <cstring>

namespace bmp {
namespace {

constexpr int kChunk = 16;  // bytes stored at once
constexpr int kLongChunk = 64;
constexpr int kLongestRun = 255;

template <int Chunk>
constexpr int RoundedUp(int count) {
  return (count + Chunk - 1) / Chunk * Chunk;
}

/// Stores `count` bytes of `value`; may spill over their end, but never past `room` bytes. Most runs are
/// one store of one size or the other, which the processor can foresee better than their lengths.
inline void StoreRun(uint8_t* to, int count, int room, uint8_t value) {
  if (count <= kChunk && room >= kChunk) {
    std::memset(to, value, kChunk);
  } else if (room >= RoundedUp<kLongChunk>(count)) {
    for (int i = 0; i < count; i += kLongChunk) std::memset(to + i, value, kLongChunk);
  } else {
    std::memset(to, value, static_cast<size_t>(count));
  }
}

/// Literal bytes and how many more may be read behind their start.
struct Literals {
  const uint8_t* bytes;
  int available;
};

/// Stores `count` literal bytes, spilling within `room` and within what may be read.
inline void StoreLiterals(uint8_t* to, int count, int room, const Literals& literals) {
  if (std::min(room, literals.available) < RoundedUp<kChunk>(count)) {
    std::memcpy(to, literals.bytes, static_cast<size_t>(count));
    return;
  }
  for (int i = 0; i < count; i += kChunk) std::memcpy(to + i, literals.bytes + i, kChunk);
}

/// A row of bytes. Everything left of `x` is final; what is right of it is not, until it is cleared.
class Rle8Row {
 public:
  Rle8Row(uint8_t* bytes, int stride) : bytes_(bytes), stride_(stride) {}

  [[nodiscard]] int Limit() const { return stride_; }
  static int BytesFor(int pixels) { return pixels; }

  void Run(int x, int count, uint8_t value) { StoreRun(bytes_ + x, count, stride_ - x, value); }
  void Literal(int x, int count, const Literals& literals) {
    StoreLiterals(bytes_ + x, count, stride_ - x, literals);
  }
  void Clear(int from, int to) { std::memset(bytes_ + from, 0, static_cast<size_t>(to - from)); }

 private:
  uint8_t* bytes_;
  int stride_;
};

/// A row of nibbles, the left pixel of a byte in its high half. Left of `x` all is final, and where
/// `x` is odd, the low half that it is about to fill is 0.
class Rle4Row {
 public:
  Rle4Row(uint8_t* bytes, int stride) : bytes_(bytes), stride_(stride) {}

  [[nodiscard]] int Limit() const { return 2 * stride_; }
  static int BytesFor(int pixels) { return (pixels + 1) / 2; }

  void Run(int x, int count, uint8_t pair) {
    if (x % 2 != 0) {
      bytes_[x / 2] = static_cast<uint8_t>(bytes_[x / 2] | pair >> 4);
      pair = static_cast<uint8_t>(pair << 4 | pair >> 4);
      ++x;
      --count;
    }
    StoreRun(bytes_ + x / 2, BytesFor(count), stride_ - x / 2, pair);
    EndPixels(x + count);
  }

  void Literal(int x, int count, const Literals& literals) {
    uint8_t* to = bytes_ + x / 2;
    if (x % 2 == 0) {
      StoreLiterals(to, BytesFor(count), stride_ - x / 2, literals);
    } else {
      for (int i = 0; i < count; i += 2) {
        const uint8_t pair = literals.bytes[i / 2];
        *to = static_cast<uint8_t>(*to | pair >> 4);
        if (i + 1 < count) *++to = static_cast<uint8_t>(pair << 4);
      }
    }
    EndPixels(x + count);
  }

  void Clear(int from, int to) {
    const int first = BytesFor(from);
    std::memset(bytes_ + first, 0, static_cast<size_t>(BytesFor(to) - first));
  }

 private:
  /// Clears the half byte behind the last pixel before `x`, where there is one.
  void EndPixels(int x) {
    if (x % 2 != 0) bytes_[x / 2] &= 0xF0;
  }

  uint8_t* bytes_;
  int stride_;
};

/// The codes of one row, read through a copy of the buffer's position that stays in registers.
class CodeReader {
 public:
  explicit CodeReader(ReadBuffer& input) : input_(input), position_(input.position) {}
  ~CodeReader() { input_.position = position_; }
  CodeReader(const CodeReader&) = delete;
  CodeReader& operator=(const CodeReader&) = delete;

  struct Pair {
    uint8_t first;
    uint8_t second;
  };

  Pair Next() {
    if (Available() >= 2) {
      const Pair pair{input_.bytes[position_], input_.bytes[position_ + 1]};
      position_ += 2;
      return pair;
    }
    return {SlowByte(), SlowByte()};
  }

  /// Takes `count` literal bytes and the pad byte that keeps codes at even places.
  /// `scratch` holds them when they do not lie together in the buffer.
  Literals TakeLiterals(int count, uint8_t* scratch) {
    Literals literals{scratch, count};
    if (const int available = Available(); available >= count) {
      literals = {input_.bytes + position_, available};
      position_ += count;
    } else {
      for (int i = 0; i < count; ++i) scratch[i] = SlowByte();
    }
    position_ += position_ % 2;
    return literals;
  }

 private:
  [[nodiscard]] int Available() const { return input_.fillCount - position_; }

  uint8_t SlowByte() {
    input_.position = position_;
    const uint8_t byte = ReadBufferedByte(input_);
    position_ = input_.position;
    return byte;
  }

  ReadBuffer& input_;
  int position_;
};

enum Escape : uint8_t { kEndOfLine = 0, kEndOfBitmap = 1, kDelta = 2 };

/// Reads codes until one completes the row. The position never passes the row's limit: out there
/// nothing is stored, however far a delta goes.
template <class Row>
void DecodeCodes(ReadBuffer& input, RunLengthState& state, Row& row) {
  CodeReader codes(input);
  uint8_t scratch[kLongestRun];
  const int limit = row.Limit();
  int x = std::min(state.x, limit);
  row.Clear(0, x);

  for (;;) {
    const auto [first, second] = codes.Next();
    if (first != 0) {
      const int count = std::min<int>(first, limit - x);
      if (count > 0) row.Run(x, count, second);
      x += count;
    } else if (second > kDelta) {
      const Literals literals = codes.TakeLiterals(Row::BytesFor(second), scratch);
      const int count = std::min<int>(second, limit - x);
      if (count > 0) row.Literal(x, count, literals);
      x += count;
    } else if (second == kDelta) {
      const auto [right, rows] = codes.Next();
      const int from = x;
      x += std::min<int>(right, limit - x);
      row.Clear(from, rows == 0 ? x : limit);
      if (rows == 0) continue;
      state.rowsToSkip = rows - 1;
      state.x = x;
      return;
    } else {
      row.Clear(x, limit);
      state.x = 0;
      state.isFinished = second == kEndOfBitmap;
      return;
    }
  }
}

template <class Row>
void DecodeRow(ReadBuffer& input, RunLengthState& state, uint8_t* bytes, int stride) {
  Row row(bytes, stride);
  if (state.isFinished) {
    row.Clear(0, row.Limit());
  } else if (state.rowsToSkip > 0) {
    --state.rowsToSkip;
    row.Clear(0, row.Limit());
  } else {
    DecodeCodes(input, state, row);
  }
}

}  // namespace

void DecodeRle8Row(ReadBuffer& input, RunLengthState& state, uint8_t* row, int stride) {
  DecodeRow<Rle8Row>(input, state, row, stride);
}

void DecodeRle4Row(ReadBuffer& input, RunLengthState& state, uint8_t* row, int stride) {
  DecodeRow<Rle4Row>(input, state, row, stride);
}

}  // namespace bmp
