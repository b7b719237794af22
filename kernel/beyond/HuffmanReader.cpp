// Decodes the code of fax machines, and tells in which order the bits of its bytes come.
#include "beyond/HuffmanReader.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace vxkrn {
namespace {

// The codes of runs of 0 to 63 pixels, of 64, 128, ... to 1728, and of 1792 to 2560 of either colour. A long
// run's code is followed by another of the same colour, until a short one ends the run.
constexpr std::string_view kWhite =
    "00110101 000111 0111 1000 1011 1100 1110 1111 10011 10100 00111 01000 001000 000011 110100 "
    "110101 101010 101011 0100111 0001100 0001000 0010111 0000011 0000100 0101000 0101011 0010011 "
    "0100100 0011000 00000010 00000011 00011010 00011011 00010010 00010011 00010100 00010101 00010110 "
    "00010111 00101000 00101001 00101010 00101011 00101100 00101101 00000100 00000101 00001010 "
    "00001011 01010010 01010011 01010100 01010101 00100100 00100101 01011000 01011001 01011010 "
    "01011011 01001010 01001011 00110010 00110011 00110100";
constexpr std::string_view kBlack =
    "0000110111 010 11 10 011 0011 0010 00011 000101 000100 0000100 0000101 0000111 00000100 00000111 "
    "000011000 0000010111 0000011000 0000001000 00001100111 00001101000 00001101100 00000110111 "
    "00000101000 00000010111 00000011000 000011001010 000011001011 000011001100 000011001101 "
    "000001101000 000001101001 000001101010 000001101011 000011010010 000011010011 000011010100 "
    "000011010101 000011010110 000011010111 000001101100 000001101101 000011011010 000011011011 "
    "000001010100 000001010101 000001010110 000001010111 000001100100 000001100101 000001010010 "
    "000001010011 000000100100 000000110111 000000111000 000000100111 000000101000 000001011000 "
    "000001011001 000000101011 000000101100 000001011010 000001100110 000001100111";
constexpr std::string_view kLongWhite =
    "11011 10010 010111 0110111 00110110 00110111 01100100 01100101 01101000 01100111 011001100 "
    "011001101 011010010 011010011 011010100 011010101 011010110 011010111 011011000 011011001 "
    "011011010 011011011 010011000 010011001 010011010 011000 010011011";
constexpr std::string_view kLongBlack =
    "0000001111 000011001000 000011001001 000001011011 000000110011 000000110100 000000110101 "
    "0000001101100 0000001101101 0000001001010 0000001001011 0000001001100 0000001001101 "
    "0000001110010 0000001110011 0000001110100 0000001110101 0000001110110 0000001110111 "
    "0000001010010 0000001010011 0000001010100 0000001010101 0000001011010 0000001011011 "
    "0000001100100 0000001100101";
constexpr std::string_view kLongest =
    "00000001000 00000001100 00000001101 000000010010 000000010011 000000010100 000000010101 "
    "000000010110 000000010111 000000011100 000000011101 000000011110 000000011111";

constexpr int kLongestCode = 13;
constexpr int kShortRuns = 64;
constexpr int kFirstLongest = 1792;
constexpr int kEndOfLineZeros = 11;  // and more, before a 1: no code begins so

/// What a code of so many bits means; of none where there is no such code.
struct RunCode {
  uint16_t run = 0;
  uint16_t length = 0;
};
/// By the next bits.
using RunTable = std::array<RunCode, 1 << kLongestCode>;

/// Enters codes that mean `run`, `run` + `step`, and so on.
constexpr void Enter(std::string_view codes, int run, int step, RunTable& table) {
  while (!codes.empty()) {
    const std::string_view code = codes.substr(0, codes.find(' '));
    codes.remove_prefix(std::min(code.size() + 1, codes.size()));
    std::size_t first = 0;
    for (const char bit : code) first = first << 1 | (bit == '1' ? 1U : 0U);
    const std::size_t rest = kLongestCode - code.size();
    for (std::size_t i = 0; i < std::size_t{1} << rest; ++i) {
      table[(first << rest) + i] = {static_cast<uint16_t>(run), static_cast<uint16_t>(code.size())};
    }
    run += step;
  }
}

constexpr RunTable TableOf(std::string_view shortRuns, std::string_view longRuns) {
  RunTable table{};
  Enter(shortRuns, 0, 1, table);
  Enter(longRuns, kShortRuns, kShortRuns, table);
  Enter(kLongest, kFirstLongest, kShortRuns, table);
  return table;
}

constexpr std::array<RunTable, 2> kTables = {TableOf(kWhite, kLongWhite), TableOf(kBlack, kLongBlack)};

constexpr uint8_t Reversed(int byte) {
  int reversed = 0;
  for (int bit = 0; bit < 8; ++bit) reversed |= (byte >> bit & 1) << (7 - bit);
  return static_cast<uint8_t>(reversed);
}

void SetBits(uint8_t* row, int first, int count) noexcept {
  const int end = first + count;
  for (int x = first; x < end;) {
    const int inByte = std::min(8 - x % 8, end - x);
    row[x / 8] = static_cast<uint8_t>(row[x / 8] | (0xFF >> x % 8 & 0xFF << (8 - x % 8 - inByte)));
    x += inByte;
  }
}

/// Whether the bits of a byte come from the lowest on. Nothing in the file says so; but rows are whole only
/// in the right order, because their runs must end where the row does. Where both orders or neither will do,
/// the highest bit comes first, as in files of the system that the coding is from.
bool IsLowBitFirst(const vx_source& source, const bmp::BitmapLayout& layout) noexcept {
  FaxDecoder high(source, layout, false);
  FaxDecoder low(source, layout, true);
  for (int row = 0; row < layout.height; ++row) {
    const bool isHigh = high.Next(nullptr);
    if (isHigh != low.Next(nullptr)) return !isHigh;
    if (!isHigh) break;
  }
  return false;
}

}  // namespace

/// The next bits, the first one highest; 0 behind the last one.
uint32_t FaxDecoder::Peek(int count) noexcept {
  while (bitCount_ < count) {
    const int byte = bytes_.Byte();
    if (byte < 0) break;
    bits_ = bits_ << 8 | (isLowBitFirst_ ? Reversed(byte) : static_cast<uint8_t>(byte));
    bitCount_ += 8;
  }
  const uint64_t wanted = bitCount_ < count ? bits_ << (count - bitCount_) : bits_ >> (bitCount_ - count);
  return static_cast<uint32_t>(wanted & ((uint64_t{1} << count) - 1));
}

/// Passes over the end-of-line code before a row, which not every writer sets. Two of them end the picture.
bool FaxDecoder::FindRow() noexcept {
  for (int codes = 0; codes < 2; ++codes) {
    if (Peek(kEndOfLineZeros) != 0 || bitCount_ < kEndOfLineZeros) return bitCount_ > 0;
    bitCount_ -= kEndOfLineZeros;
    while (Peek(1) == 0 && bitCount_ > 0) --bitCount_;
    if (bitCount_ == 0) return false;
    --bitCount_;
  }
  return false;
}

bool FaxDecoder::DecodeRuns(uint8_t* row) noexcept {
  int x = 0;
  bool isBlack = false;
  bool isRunOver = false;
  while (x < width_ || !isRunOver) {
    const RunCode code = kTables[isBlack ? 1 : 0][Peek(kLongestCode)];
    if (code.length == 0 || code.length > bitCount_ || code.run > width_ - x) return false;
    bitCount_ -= code.length;
    if (isBlack && row != nullptr) SetBits(row, x, code.run);
    x += code.run;
    isRunOver = code.run < kShortRuns;
    isBlack = isBlack != isRunOver;
  }
  return true;
}

bool FaxDecoder::Next(uint8_t* row) noexcept {
  isOver_ = isOver_ || !FindRow() || !DecodeRuns(row);
  return !isOver_;
}

HuffmanReader::HuffmanReader(const vx_source& source, const bmp::BitmapLayout& layout) noexcept
    : CodedReader(layout), decoder_(source, layout, IsLowBitFirst(source, layout)) {}

}  // namespace vxkrn
