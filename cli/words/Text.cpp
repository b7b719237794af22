// UTF-8, read strictly: what is not certainly harmless is escaped.
#include "words/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cwchar>

namespace cli {
namespace {

struct CodePoint {
  char32_t value = 0;
  size_t length = 0;  // bytes; 0 where the bytes are not UTF-8
};

bool IsContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// The length that a first byte announces, and the bits of the value in it.
CodePoint FirstByte(unsigned char byte) {
  if (byte < 0x80) return {byte, 1};
  if ((byte & 0xE0) == 0xC0) return {byte & 0x1FU, 2};
  if ((byte & 0xF0) == 0xE0) return {byte & 0x0FU, 3};
  if ((byte & 0xF8) == 0xF0) return {byte & 0x07U, 4};
  return {};
}

bool IsShortestForm(const CodePoint& point) {
  constexpr std::array<char32_t, 5> kSmallest{0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = point.value >= 0xD800 && point.value <= 0xDFFF;
  return point.value >= kSmallest[point.length] && point.value <= 0x10FFFF && !surrogate;
}

/// Decodes the first character of `text`, which is not empty.
CodePoint Decode(std::string_view text) {
  CodePoint point = FirstByte(static_cast<unsigned char>(text.front()));
  if (point.length == 0 || point.length > text.size()) return {};
  for (const char byte : text.substr(1, point.length - 1)) {
    if (!IsContinuation(byte)) return {};
    point.value = point.value << 6U | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return IsShortestForm(point) ? point : CodePoint{};
}

/// Takes the first character off `text`, or one byte where no character begins.
std::string_view Take(std::string_view& text, const CodePoint& point) {
  const std::string_view character = text.substr(0, std::max<size_t>(point.length, 1));
  text.remove_prefix(character.size());
  return character;
}

/// \xNN for every byte.
std::string Escaped(std::string_view bytes) {
  std::string result;
  for (const char byte : bytes) result += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
  return result;
}

/// Controls, line and direction marks, and what takes no space: all that could make text lie.
bool IsTreacherous(char32_t value) {
  struct Range {
    char32_t first;
    char32_t last;
  };
  constexpr Range kRanges[] = {{0x00, 0x1F},     {0x7F, 0x9F},      {0xAD, 0xAD},     {0x61C, 0x61C},
                               {0x200B, 0x200F}, {0x2028, 0x202E},  {0x2060, 0x206F}, {0xFEFF, 0xFEFF},
                               {0xFFF9, 0xFFFB}, {0xE0000, 0xE0FFF}};
  return std::any_of(std::begin(kRanges), std::end(kRanges),
                     [&](const Range& range) { return value >= range.first && value <= range.last; });
}

}  // namespace

std::string Printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const CodePoint point = Decode(text);
    const std::string_view character = Take(text, point);
    if (point.value == U'\\') result += '\\';
    result += point.length == 0 || IsTreacherous(point.value) ? Escaped(character) : std::string(character);
  }
  return result;
}

std::string Utf8(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const CodePoint point = Decode(text);
    const std::string_view character = Take(text, point);
    result += point.length == 0 ? Escaped(character) : std::string(character);
  }
  return result;
}

char32_t TakeCharacter(std::string_view& text) {
  const CodePoint point = Decode(text);
  Take(text, point);
  return point.value;
}

std::string Hexadecimal(std::string_view bytes) {
  std::string result;
  for (const char byte : bytes) result += fmt::format("{:02x}", static_cast<unsigned char>(byte));
  return result;
}

size_t DisplayWidth(std::string_view text) {
  size_t width = 0;
  while (!text.empty()) {
    const CodePoint point = Decode(text);
    const int columns = wcwidth(static_cast<wchar_t>(point.value));
    width += columns < 0 ? 1 : static_cast<size_t>(columns);
    text.remove_prefix(std::max<size_t>(point.length, 1));
  }
  return width;
}

std::string PadRight(std::string_view text, size_t width) {
  const size_t taken = DisplayWidth(text);
  std::string padded(text);
  if (taken < width) padded.append(width - taken, ' ');
  return padded;
}

std::string ByteCount(uint64_t bytes) {
  constexpr uint64_t kKibi = 1024;
  if (bytes < kKibi) return fmt::format("{} bytes", bytes);
  constexpr std::array<const char*, 6> kUnits{"KiB", "MiB", "GiB", "TiB", "PiB", "EiB"};
  auto amount = static_cast<double>(bytes) / kKibi;
  size_t unit = 0;
  for (; amount >= kKibi && unit + 1 < kUnits.size(); ++unit) amount /= kKibi;
  return fmt::format("{:.1f} {}", amount, kUnits[unit]);
}

}  // namespace cli
