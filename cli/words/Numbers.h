// Numbers as people write them on a command line. A leading 0 means nothing, and a number is the whole word.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace cli {

/// Reads decimal digits and nothing else.
std::optional<uint64_t> ParseDecimal(std::string_view text);

/// Reads a decimal number from `least` to the highest int.
std::optional<int> ParseInt(std::string_view text, int least);

/// Reads 32 bits: a decimal number, or a hexadecimal one after 0x.
std::optional<uint32_t> ParseBits(std::string_view text);

/// Reads a number of bytes: "1048576", "512M", "4GB", "4GiB", in either case; a K is 1024.
std::optional<uint64_t> ParseByteCount(std::string_view text);

/// Red, green, blue, alpha.
using Rgba = std::array<uint8_t, 4>;

/// Reads an opaque colour: six hexadecimal digits, with or without # before them.
std::optional<Rgba> ParseColor(std::string_view text);

}  // namespace cli
