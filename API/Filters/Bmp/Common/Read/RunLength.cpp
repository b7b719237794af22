// Decodes run-length rows. One loop reads the codes; what a run or a literal does to the row is the
// business of a small row type for each coding.
//
// Two things make it fast. Codes and literals that lie wholly in the read buffer are taken straight
// from it. And runs are stored in whole chunks that may spill over their end: whatever lies to the
// right of the position is either written later or cleared when the row is complete. Short codes, of
// which most pictures are made, are one such chunk each, as long as buffer and row have room for one.
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
  template <class Count>
  static constexpr Count BytesFor(Count pixels) {
    return pixels;
  }

  void Run(int x, int count, uint8_t value) { StoreRun(bytes_ + x, count, stride_ - x, value); }
  void Literal(int x, int count, const Literals& literals) {
    StoreLiterals(bytes_ + x, count, stride_ - x, literals);
  }
  void Clear(int from, int to) { std::memset(bytes_ + from, 0, static_cast<size_t>(to - from)); }

  static constexpr size_t kLongestShort = kChunk;  // pixels of a short code
  static constexpr size_t kShortChunk = kChunk;    // bytes that one reads behind its start, and stores
  void BeginShorts(size_t /*x*/) {}
  void ShortRun(size_t x, uint8_t value) { std::memset(bytes_ + x, value, kShortChunk); }
  void ShortLiteral(size_t x, size_t /*count*/, const uint8_t* literals) {
    std::memcpy(bytes_ + x, literals, kShortChunk);
  }
  void EndShorts(size_t /*x*/) {}

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
  template <class Count>
  static constexpr Count BytesFor(Count pixels) {
    return (pixels + 1) / 2;
  }

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

  // Where `x` is odd, the pixel left of it waits in `half_` for its other half instead of in the row.
  static constexpr size_t kLongestShort = 15;  // with the half that waits, those of 8 bytes
  static constexpr size_t kShortChunk = 8;
  void BeginShorts(size_t x) { half_ = x % 2 != 0 ? bytes_[x / 2] : 0U; }
  void ShortRun(size_t x, uint8_t pair) {
    const unsigned shift = 4 * (x % 2);
    const uint64_t turned = (pair * 0x101U >> shift) & 0xFF;  // its high half is an even pixel's
    const uint64_t first = (0xF0 & (half_ ^ turned) & (0 - (x % 2)));
    StoreWord(x, turned * 0x0101010101010101 ^ first);
    half_ = turned & 0xF0;
  }
  void ShortLiteral(size_t x, size_t count, const uint8_t* literals) {
    const size_t odd = x % 2;
    uint64_t pixels;
    std::memcpy(&pixels, literals, sizeof pixels);
    pixels = __builtin_bswap64(pixels) >> 4 * odd;  // the leftmost pixel is the highest half byte
    pixels |= (half_ & (0 - odd)) << 56;
    StoreWord(x, __builtin_bswap64(pixels));
    half_ = pixels << 4 * ((odd + count) & 14) >> 56 & 0xF0;
  }
  void EndShorts(size_t x) {
    if (x % 2 != 0) bytes_[x / 2] = static_cast<uint8_t>(half_);
  }

 private:
  void StoreWord(size_t x, uint64_t word) { std::memcpy(bytes_ + x / 2, &word, sizeof word); }

  /// Clears the half byte behind the last pixel before `x`, where there is one.
  void EndPixels(int x) {
    if (x % 2 != 0) bytes_[x / 2] &= 0xF0;
  }

  uint8_t* bytes_;
  int stride_;
  uint64_t half_ = 0;
};

enum Escape : uint8_t { kEndOfLine = 0, kEndOfBitmap = 1, kDelta = 2 };

/// The codes of one row, read through a copy of the buffer's position that stays in registers.
class CodeReader {
 public:
  explicit CodeReader(ReadBuffer& input) : input_(input), position_(input.position) {}
  ~CodeReader() { input_.position = position_; }
  CodeReader(const CodeReader&) = delete;
  CodeReader& operator=(const CodeReader&) = delete;

  /// Takes short codes as long as there are some that lie wholly in the buffer. The row is a copy, for one
  /// that others know would be read from memory again behind every store. @return the new position
  template <class Row>
  int TakeShorts(Row row, int start) {
    constexpr size_t kFirstLiteral = kDelta + 1;
    constexpr size_t kNeeded = 2 + Row::kShortChunk;
    const int last = input_.fillCount - static_cast<int>(kNeeded);
    const int room = row.Limit() - static_cast<int>(Row::kLongestShort);
    if (position_ > last || start > room) return start;
    const uint8_t* const bytes = input_.bytes;
    auto at = static_cast<size_t>(position_);
    auto x = static_cast<size_t>(start);
    row.BeginShorts(x);
    while (at <= static_cast<size_t>(last) && x <= static_cast<size_t>(room)) {
      const size_t first = bytes[at];
      const size_t second = bytes[at + 1];
      if (first - 1 < Row::kLongestShort) {
        row.ShortRun(x, static_cast<uint8_t>(second));
        x += first;
        at += 2;
      } else if (first == 0 && second - kFirstLiteral <= Row::kLongestShort - kFirstLiteral) {
        row.ShortLiteral(x, second, bytes + at + 2);
        x += second;
        at += 2 + Row::BytesFor(second);
        at += at % 2;
      } else {
        break;
      }
    }
    row.EndShorts(x);
    position_ = static_cast<int>(at);
    return static_cast<int>(x);
  }

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
    x = codes.TakeShorts(row, x);
    const auto [first, second] = codes.Next();
    if (first != 0) {
      const int count = std::min<int>(first, limit - x);
      if (count > 0) row.Run(x, count, second);
      x += count;
    } else if (second > kDelta) {
      const Literals literals = codes.TakeLiterals(Row::BytesFor(int{second}), scratch);
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
