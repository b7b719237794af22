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

/// @return the columns that printable UTF-8 text takes on a terminal.
size_t DisplayWidth(std::string_view text);

/// @return `text` followed by spaces up to `width` columns.
std::string PadRight(std::string_view text, size_t width);

/// @return a number of bytes for people, such as "512 bytes" or "1.5 GiB".
std::string ByteCount(uint64_t bytes);

}  // namespace cli
