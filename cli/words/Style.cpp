// Sequences that every terminal with colours has.
#include "words/Style.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdlib>

namespace cli {

Style Style::OfStandardOutput() {
  const char* refusal = std::getenv("NO_COLOR");
  const char* terminal = std::getenv("TERM");
  const bool isRefused = refusal != nullptr && *refusal != '\0';
  const bool isDumb = terminal == nullptr || std::string_view(terminal) == "dumb";
  return Style(!isRefused && !isDumb && isatty(STDOUT_FILENO) != 0);
}

std::string Style::Wrap(std::string_view code, std::string_view text) const {
  return isColored_ ? fmt::format("\033[{}m{}\033[0m", code, text) : std::string(text);
}

}  // namespace cli
