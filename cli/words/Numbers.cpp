// Reading numbers; the words for those that are none are up to the caller.
#include "words/Numbers.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <climits>
#include <iterator>
#include <string>

namespace cli {
namespace {

template <typename Number>
std::optional<Number> ParseWhole(std::string_view text, int base) {
  Number value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value, base);
  return error == std::errc() && stop == end ? std::optional(value) : std::nullopt;
}

std::string Upper(std::string_view text) {
  std::string upper(text);
  std::transform(upper.begin(), upper.end(), upper.begin(),
                 [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return upper;
}

}  // namespace

std::optional<uint64_t> ParseDecimal(std::string_view text) {
  constexpr int kDecimal = 10;
  return ParseWhole<uint64_t>(text, kDecimal);
}

std::optional<int> ParseInt(std::string_view text, int least) {
  const std::optional<uint64_t> number = ParseDecimal(text);
  if (!number || *number > INT_MAX || static_cast<int>(*number) < least) return std::nullopt;
  return static_cast<int>(*number);
}

std::optional<uint32_t> ParseBits(std::string_view text) {
  constexpr int kDecimal = 10;
  constexpr int kHexadecimal = 16;
  const bool isHex = text.starts_with("0x") || text.starts_with("0X");
  return isHex ? ParseWhole<uint32_t>(text.substr(2), kHexadecimal) : ParseWhole<uint32_t>(text, kDecimal);
}

std::optional<Rgba> ParseColor(std::string_view text) {
  constexpr size_t kDigits = 6;
  constexpr int kHexadecimal = 16;
  if (text.starts_with('#')) text.remove_prefix(1);
  const std::optional<uint32_t> color = ParseWhole<uint32_t>(text, kHexadecimal);
  if (text.size() != kDigits || !color) return std::nullopt;
  return Rgba{static_cast<uint8_t>(*color >> 16U), static_cast<uint8_t>(*color >> 8U),
              static_cast<uint8_t>(*color), UINT8_MAX};
}

std::optional<uint64_t> ParseByteCount(std::string_view text) {
  constexpr std::string_view kUnits = "KMGT";
  constexpr std::string_view kEndings[] = {"", "B", "IB"};
  const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
  const std::optional<uint64_t> value = ParseDecimal(text.substr(0, digits));
  const std::string unit = Upper(text.substr(digits));
  if (!value || unit.empty()) return value;
  const size_t place = kUnits.find(unit.front());
  const bool isKnown = place != std::string_view::npos && std::find(std::begin(kEndings), std::end(kEndings),
                                                                    unit.substr(1)) != std::end(kEndings);
  if (!isKnown) return std::nullopt;
  const auto shift = static_cast<unsigned>(place + 1) * 10;
  return *value > UINT64_MAX >> shift ? std::nullopt : std::optional(*value << shift);
}

}  // namespace cli
