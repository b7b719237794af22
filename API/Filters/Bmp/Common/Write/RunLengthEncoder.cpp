// A row is a sequence of literal bytes and runs in turn: find the next run, write what stands before it as
// literals, write the run. Both codings work on whole bytes; a byte of RLE4 is a pair of pixels.
//
// Finding runs is the hot loop. It compares eight bytes with their right neighbours at once: a byte of the
// difference that is 0 stands for a pair of equal neighbours, and a run is a row of such pairs.
#include "Write/RunLengthEncoder.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "Kernel.h"
#include "format/Bytes.h"

namespace bmp {
namespace {

struct Coding {
  uint32_t shortestRun;     // bytes; fewer equal ones are literals
  uint32_t longestRun;      // bytes that one code repeats
  uint32_t longestLiteral;  // bytes that one code holds
  uint32_t mostSingles;     // literal bytes that are written as runs of one: the code for literals of so few
                            // pixels means something else
  uint32_t pixelsPerByte;
};
constexpr Coding kRle8 = {
    .shortestRun = 4, .longestRun = 255, .longestLiteral = 254, .mostSingles = 2, .pixelsPerByte = 1};
constexpr Coding kRle4 = {
    .shortestRun = 2, .longestRun = 127, .longestLiteral = 127, .mostSingles = 1, .pixelsPerByte = 2};

constexpr Block<2> kEndOfLine = {0, 0};
constexpr Block<2> kEndOfBitmap = {0, 1};

static_assert(std::endian::native == std::endian::little, "the first byte of a word is its lowest");
constexpr uint32_t kWordSize = 8;

uint64_t LoadWord(const uint8_t* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// The highest bit of every byte that is 0, and no other.
constexpr uint64_t ZeroBytes(uint64_t word) {
  constexpr uint64_t kLowBits = 0x7F7F7F7F7F7F7F7F;
  return ~(((word & kLowBits) + kLowBits) | word | kLowBits);
}

constexpr uint32_t FirstMarkedByte(uint64_t marks) {
  return static_cast<uint32_t>(std::countr_zero(marks)) / 8;
}

/// Where the first run of the `count` bytes starts; count when there is none.
template <Coding kCoding>
uint32_t FindRun(const uint8_t* bytes, uint32_t count) {
  constexpr uint32_t kPairs = kCoding.shortestRun - 1;  // of equal neighbours, which make a run
  constexpr uint32_t kStep = kWordSize - kPairs + 1;    // run starts that one word of pairs can show
  uint32_t at = 0;
  for (; count - at > kWordSize; at += kStep) {
    const uint64_t equalPairs = ZeroBytes(LoadWord(bytes + at) ^ LoadWord(bytes + at + 1));
    uint64_t runs = equalPairs;
    for (uint32_t pair = 1; pair < kPairs; ++pair) runs &= equalPairs >> (8 * pair);
    if (runs != 0) return at + FirstMarkedByte(runs);
  }
  uint32_t equal = 1;
  for (uint32_t i = at + 1; i < count; ++i) {
    equal = bytes[i] == bytes[i - 1] ? equal + 1 : 1;
    if (equal == kCoding.shortestRun) return i + 1 - equal;
  }
  return count;
}

/// How many of the `count` bytes, at least one, are like the first.
uint32_t RunLengthAt(const uint8_t* bytes, uint32_t count) {
  const uint64_t pattern = bytes[0] * 0x0101010101010101U;
  uint32_t length = 1;
  for (; count - length >= kWordSize; length += kWordSize) {
    const uint64_t difference = LoadWord(bytes + length) ^ pattern;
    if (difference != 0) return length + FirstMarkedByte(difference);
  }
  while (length < count && bytes[length] == bytes[0]) ++length;
  return length;
}

/// The two bytes are put together in a register: storing them one by one and reading both would stall.
bool WriteCode(HANDLE file, uint32_t first, uint32_t second) {
  Block<2> code;
  StoreU16(code, 0, static_cast<uint16_t>(first | second << 8));
  return WriteBlock(file, code);
}

template <Coding kCoding>
bool WriteRun(HANDLE file, uint8_t value, uint32_t length) {
  while (length > 0) {
    const uint32_t part = std::min(length, kCoding.longestRun);
    if (!WriteCode(file, part * kCoding.pixelsPerByte, value)) return false;
    length -= part;
  }
  return true;
}

template <Coding kCoding>
bool WriteLiterals(HANDLE file, const uint8_t* bytes, uint32_t count) {
  while (count > kCoding.mostSingles) {
    const uint32_t part = std::min(count, kCoding.longestLiteral);
    if (!WriteCode(file, 0, part * kCoding.pixelsPerByte)) return false;
    if (!WriteExactly(file, bytes, part)) return false;
    if (part % 2 != 0 && !WriteBlock<1>(file, {0})) return false;  // codes start at even offsets
    bytes += part;
    count -= part;
  }
  for (; count > 0; --count, ++bytes) {
    if (!WriteRun<kCoding>(file, *bytes, 1)) return false;
  }
  return true;
}

template <Coding kCoding>
int WriteRow(HANDLE file, const uint8_t* bytes, uint32_t count) {
  while (count > 0) {
    const uint32_t literals = FindRun<kCoding>(bytes, count);
    if (!WriteLiterals<kCoding>(file, bytes, literals)) return STATUS_WRITE_ERROR;
    bytes += literals;
    count -= literals;
    if (count == 0) break;
    const uint32_t run = RunLengthAt(bytes, count);
    if (!WriteRun<kCoding>(file, *bytes, run)) return STATUS_WRITE_ERROR;
    bytes += run;
    count -= run;
  }
  return WriteBlock(file, kEndOfLine) ? STATUS_OK : STATUS_WRITE_ERROR;
}

}  // namespace

int WriteRle8Row(HANDLE file, const uint8_t* row, int width) {
  return WriteRow<kRle8>(file, row, static_cast<uint32_t>(std::max(width, 0)));
}

int WriteRle4Row(HANDLE file, const uint8_t* row, int width) {
  return WriteRow<kRle4>(file, row, (static_cast<uint32_t>(std::max(width, 0)) + 1) / 2);
}

int WriteEndOfBitmap(HANDLE file) {
  return WriteBlock(file, kEndOfBitmap) ? STATUS_OK : STATUS_WRITE_ERROR;
}

}  // namespace bmp
