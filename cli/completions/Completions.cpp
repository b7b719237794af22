#include "completions/Completions.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "arguments/BriefHelp.h"

namespace cli {
namespace {

bool IsFileName(std::string_view word) {
  return word == "FILE" || word == "IMAGE" || word == "IN" || word == "OUT";
}

bool IsPlaceholder(std::string_view word) {
  return std::any_of(word.begin(), word.end(), [](unsigned char c) { return std::isupper(c) != 0; });
}

/// @return what stands between the separators.
std::vector<std::string> Split(std::string_view text, char separator) {
  std::vector<std::string> words;
  for (size_t start = 0; start <= text.size();) {
    const size_t end = std::min(text.find(separator, start), text.size());
    words.emplace_back(text.substr(start, end - start));
    start = end + 1;
  }
  return words;
}

Value ValueOf(const Declared& declared) {
  const Argument& argument = declared.argument;
  Value value;
  value.name = declared.IsPositional() && argument.value.empty() ? argument.name : argument.value;
  for (const std::string& word : Split(argument.offers.empty() ? value.name : argument.offers, '|')) {
    if (IsFileName(word)) {
      value.isFile = true;
    } else if (!IsPlaceholder(word)) {
      value.words.push_back(word);
    }
  }
  return value;
}

OfferedOption Offer(const Declared& option) {
  OfferedOption offered;
  offered.names = Split(option.argument.name, ',');
  offered.summary = BriefOf(option.argument.help);
  if (option.HasValue() && option.argument.implied.empty()) offered.value = ValueOf(option);
  return offered;
}

Place Describe(const Arguments& command) {
  Place place = {.path = command.Path(), .commands = {}, .options = {}, .arguments = {}};
  for (const Arguments& below : command.Commands()) {
    place.commands.push_back({below.Words().name, BriefOf(below.Words().summary)});
  }
  for (const Declared& declared : command.All()) {
    if (declared.IsPositional()) {
      place.arguments.push_back({ValueOf(declared), declared.IsMany()});
    } else {
      place.options.push_back(Offer(declared));
    }
  }
  return place;
}

void Collect(const Arguments& command, std::vector<Place>& places) {
  places.push_back(Describe(command));
  for (const Arguments& below : command.Commands()) Collect(below, places);
}

}  // namespace

std::vector<Place> PlacesOf(const Arguments& top) {
  std::vector<Place> places;
  Collect(top, places);
  for (size_t i = 1; i < places.size(); ++i) {
    for (const OfferedOption& option : places.front().options) {
      // The program's options may stand with any command, but those without a value, such as --version, stand
      // alone.
      if (!option.value.name.empty()) places[i].options.push_back(option);
    }
  }
  // The parser does not know help as a command.
  Place help = {.path = "help", .commands = {}, .options = {}, .arguments = {}};
  help.arguments.push_back({{"COMMAND", {}, false}, false});
  for (const OfferedCommand& command : places.front().commands) {
    help.arguments.front().value.words.push_back(command.name);
  }
  places.front().commands.push_back({"help", "Says more about a command"});
  places.push_back(std::move(help));
  return places;
}

}  // namespace cli
