// Help that fits a small terminal: what most people need, and examples.
#pragma once

#include <string>
#include <string_view>

#include "arguments/Arguments.h"

namespace cli {

/// Lines of the smallest terminal that people have.
constexpr size_t kBriefLines = 24;

/// @param full all that there is to say, which begins with the summary and the usage and ends with examples
/// @return the same where it is short enough; else its beginning, the essential arguments and as many
/// examples as there is room for
std::string BriefHelp(const Arguments& command, const std::string& full);

/// @return the part of a description that fits on a line beside the word it describes.
std::string BriefOf(std::string_view help);

}  // namespace cli
