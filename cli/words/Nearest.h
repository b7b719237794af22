// The word that was meant where another was written.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace cli {

/// @return the candidate that takes the fewest changes, a letter each - left out, put in, replaced, or
/// exchanged with its neighbour; "" where none is near enough to have been meant
std::string_view NearestTo(std::string_view word, std::span<const std::string_view> candidates);

/// @return "; did you mean WORD?", or "" where nothing is near.
std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates);

}  // namespace cli
