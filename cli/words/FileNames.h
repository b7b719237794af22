// The parts of a file's name.
#pragma once

#include <string>
#include <string_view>

namespace cli {

/// @return the last dot of the name and what follows, in lower case; "" where there is no dot, or only the
/// one that begins the name.
std::string EndingOf(std::string_view path);

/// @return the name without its folder and its ending.
std::string StemOf(std::string_view path);

}  // namespace cli
