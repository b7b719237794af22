// Text for terminals: names of files may hold any bytes, and none of them may command the terminal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace cli {

/// @return `text` with control characters, invisible direction marks and bytes that are not UTF-8 written
/// as \xNN, and backslashes doubled, so that two names never look the same.
std::string Printable(std::string_view text);

/// @return `text` with every byte that is not UTF-8 written as \xNN, and the rest as it is.
std::string Utf8(std::string_view text);

/// Takes the first character off text that is not empty. @param text UTF-8, such as Utf8 returns
char32_t TakeCharacter(std::string_view& text);

/// @return two digits a byte, 0 to 9 and a to f.
std::string Hexadecimal(std::string_view bytes);

/// @return the columns that printable UTF-8 text takes on a terminal.
size_t DisplayWidth(std::string_view text);

/// @return `text` followed by spaces up to `width` columns.
std::string PadRight(std::string_view text, size_t width);

/// @return a number of bytes for people, such as "512 bytes" or "1.5 GiB".
std::string ByteCount(uint64_t bytes);

}  // namespace cli
