#include "Completions.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace cli {
namespace {

bool IsFileName(std::string_view word) {
  return word == "FILE" || word == "IMAGE" || word == "IN" || word == "OUT";
}

bool IsPlaceholder(std::string_view word) {
  return std::any_of(word.begin(), word.end(), [](unsigned char c) { return std::isupper(c) != 0; });
}

Value ValueOf(const CLI::Option& option) {
  Value value;
  const std::string& shown = option.get_positional() && option.get_option_text().empty()
                                 ? option.get_name()
                                 : option.get_option_text();
  value.name = shown;
  const std::string type = option.get_type_name();
  const std::string& text = type.empty() || type == "TEXT" ? shown : type;
  for (const std::string& word : CLI::detail::split(text, '|')) {
    if (IsFileName(word)) {
      value.isFile = true;
    } else if (!word.empty() && !IsPlaceholder(word)) {
      value.words.push_back(word);
    }
  }
  return value;
}

/// The part of a description that fits on a line beside the word it describes.
std::string SummaryOf(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  text.resize(std::min({text.find(": "), text.find("; "), text.find(". "), text.size()}));
  if (text.ends_with('.')) text.pop_back();
  return text;
}

OfferedOption Offer(const CLI::Option& option) {
  OfferedOption offered;
  for (const std::string& name : option.get_snames()) offered.names.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) offered.names.push_back("--" + name);
  offered.summary = SummaryOf(option.get_description());
  if (option.get_items_expected_max() > 0) offered.value = ValueOf(option);
  return offered;
}

Place Describe(const CLI::App& app, std::string path) {
  Place place = {.path = std::move(path), .commands = {}, .options = {}, .arguments = {}};
  for (const CLI::App* nested : app.get_subcommands({})) {
    place.commands.push_back({nested->get_name(), SummaryOf(nested->get_description())});
  }
  for (const CLI::Option* option : app.get_options()) {
    if (option->get_positional()) {
      place.arguments.push_back({ValueOf(*option), option->get_items_expected_max() > 1});
    } else {
      place.options.push_back(Offer(*option));
    }
  }
  return place;
}

void Collect(const CLI::App& app, const std::string& path, std::vector<Place>& places) {
  places.push_back(Describe(app, path));
  for (const CLI::App* nested : app.get_subcommands({})) {
    Collect(*nested, path.empty() ? nested->get_name() : path + " " + nested->get_name(), places);
  }
}

}  // namespace

std::vector<Place> PlacesOf(const CLI::App& app) {
  std::vector<Place> places;
  Collect(app, "", places);
  for (size_t i = 1; i < places.size(); ++i) {
    for (const OfferedOption& option : places.front().options) {
      // They hold everywhere, but those without a value, such as --version, want to be alone.
      if (!option.value.name.empty()) places[i].options.push_back(option);
    }
  }
  // The one command that the parser does not know as such.
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
