#include "arguments/BriefHelp.h"

#include <fmt/format.h>

#include <algorithm>

namespace cli {
namespace {

constexpr std::string_view kExamples = "Examples:\n";

size_t CountLines(std::string_view text) {
  return static_cast<size_t>(std::count(text.begin(), text.end(), '\n'));
}

constexpr size_t kNameWidth = 25;
constexpr size_t kHelpWidth = 52;

std::string Line(std::string_view name, std::string_view help) {
  return fmt::format("  {:<{}} {}\n", name, kNameWidth, help);
}

/// The first sentence or, where that is too long, how it begins.
std::string FirstWords(const std::string& help) {
  const size_t end =
      std::min({help.find("; "), help.find(". "), help.find(".\n"), help.find(";\n"), help.size()});
  const std::string sentence = help.substr(0, end);
  return sentence.size() <= kHelpWidth && sentence.find('\n') == std::string::npos ? sentence : BriefOf(help);
}

/// Whether a list of words with spaces between has one of them.
bool Has(std::string_view list, std::string_view word) {
  return fmt::format(" {} ", list).find(fmt::format(" {} ", word)) != std::string::npos;
}

std::string ArgumentLines(const Arguments& command) {
  std::string lines;
  for (const Declared& declared : command.All()) {
    const Argument& argument = declared.argument;
    const bool isShown =
        declared.IsPositional() || argument.isRequired || Has(command.Words().essentials, argument.name);
    if (!isShown) continue;
    const std::string name = argument.name + (argument.value.empty() ? "" : " " + argument.value);
    lines += Line(name.size() > kNameWidth ? argument.name : name, FirstWords(argument.help));
  }
  for (const Arguments& below : command.Commands()) lines += Line(below.Words().name, below.Words().summary);
  return lines;
}

/// The first lines of examples, as many as there may be; one that goes on behind \ is taken whole.
std::string FirstExamples(std::string_view examples, size_t most) {
  std::string taken;
  while (!examples.empty()) {
    size_t end = std::min(examples.find('\n'), examples.size() - 1) + 1;
    while (end < examples.size() && examples.substr(0, end).ends_with("\\\n"))
      end = std::min(examples.find('\n', end), examples.size() - 1) + 1;
    const std::string_view example = examples.substr(0, end);
    examples.remove_prefix(end);
    if (CountLines(taken) + CountLines(example) > most) continue;
    taken += example;
  }
  return taken;
}

}  // namespace

std::string BriefHelp(const Arguments& command, const std::string& full) {
  if (CountLines(full) <= kBriefLines) return full;
  const size_t usageEnd = full.find("\n\n");
  std::string brief = full.substr(0, usageEnd + 2) + ArgumentLines(command) +
                      Line("--help-all", "every option, and what else there is to say");
  const size_t examples = full.find(kExamples);
  if (examples == std::string::npos) return brief;
  brief.append("\n").append(kExamples);
  const size_t used = CountLines(brief);
  const size_t left = used < kBriefLines ? kBriefLines - used : 0;
  return brief + FirstExamples(std::string_view(full).substr(examples + kExamples.size()), left);
}

std::string BriefOf(std::string_view help) {
  std::string text(help);
  std::replace(text.begin(), text.end(), '\n', ' ');
  text.resize(std::min({text.find(": "), text.find("; "), text.find(". "), text.size()}));
  if (text.ends_with('.')) text.pop_back();
  return text;
}

}  // namespace cli
