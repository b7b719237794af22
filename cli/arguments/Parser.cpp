// The one file that knows the parsing library. Its words are for programmers; here they become words for
// people.
#include "arguments/Parser.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "arguments/BriefHelp.h"
#include "words/Nearest.h"
#include "words/Text.h"

namespace cli {
namespace {

/// Help without the parser's inner life: an option shows the name of its value, and the words and examples
/// around it say the rest.
class HelpFormatter : public CLI::Formatter {
 public:
  HelpFormatter() {
    constexpr size_t kColumn = 28;
    column_width(kColumn);
    label("Positionals", "Arguments");
    label("SUBCOMMAND", "COMMAND");
    label("OPTIONS", "options");
  }

  std::string make_option_opts(const CLI::Option* option) const override {
    const std::string& text = option->get_option_text();
    return text.empty() || text.starts_with('[') ? text : " " + text;
  }

  /// What must be given stands in the usage by its name.
  std::string make_usage(const CLI::App* app, std::string name) const override {
    std::string usage = CLI::Formatter::make_usage(app, std::move(name));
    std::string required;
    for (const CLI::Option* option : app->get_options()) {
      if (option->get_positional() || !option->get_required()) continue;
      required += fmt::format(" {} {}", option->get_name(), option->get_option_text());
    }
    const size_t others = usage.find(" [options]");
    return others == std::string::npos ? usage : usage.insert(others, required);
  }

  std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
    std::string help = CLI::Formatter::make_help(app, std::move(name), mode);
    for (size_t gap = 0; (gap = help.find("\n\n\n")) != std::string::npos;) help.erase(gap, 1);
    return help;
  }
};

// ---- from declarations to the library's own

/// An empty word is never what was meant: it comes from a variable that was not set.
void RefuseEmptyWords(CLI::Option& option) {
  const char* problem = option.get_positional() ? "the file name is empty" : "the value is empty";
  option.check([problem](const std::string& word) { return word.empty() ? std::string(problem) : ""; });
}

CLI::Option* AddTo(CLI::App& app, const Declared& declared) {
  const Argument& argument = declared.argument;
  if (declared.flag != nullptr) return app.add_flag(argument.name, *declared.flag, argument.help);
  if (declared.value != nullptr) return app.add_option(argument.name, *declared.value, argument.help);
  if (argument.name == kHelpAll) return app.set_help_all_flag(argument.name, argument.help);
  if (declared.values == nullptr) {
    return declared.version.empty() ? app.set_help_flag(argument.name, argument.help)
                                    : app.set_version_flag(argument.name, declared.version, argument.help);
  }
  CLI::Option* option = app.add_option(argument.name, *declared.values, argument.help);
  if (argument.takes != Takes::Many) option->expected(1);
  if (argument.takes == Takes::OneATime) option->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
  return option;
}

void AddAll(CLI::App& app, const Arguments& arguments) {
  app.footer(arguments.Words().details);
  for (const Declared& declared : arguments.All()) {
    const Argument& argument = declared.argument;
    CLI::Option* option = AddTo(app, declared);
    option->required(argument.isRequired);
    if (!argument.value.empty()) {
      option->option_text(argument.implied.empty() ? argument.value : "[=" + argument.value + "]");
    }
    if (!argument.section.empty()) option->group(argument.section);
    if (!argument.needs.empty()) option->needs(app.get_option(argument.needs));
    RefuseEmptyWords(*option);
  }
  for (const auto& [one, other] : arguments.Exclusions())
    app.get_option(one)->excludes(app.get_option(other));
  for (const Arguments& command : arguments.Commands()) {
    CLI::App* below = app.add_subcommand(command.Words().name, command.Words().summary);
    below->group("Commands");
    AddAll(*below, command);
  }
}

/// Writes out the values of options whose names may stand alone: to the library such a value is not optional,
/// or it would take the next word for it.
void AddImplied(const Arguments& arguments, std::vector<std::string>& words) {
  for (const Declared& declared : arguments.All()) {
    const Argument& argument = declared.argument;
    if (!argument.implied.empty())
      std::replace(words.begin(), words.end(), argument.name, argument.name + "=" + argument.implied);
  }
  for (const Arguments& command : arguments.Commands()) AddImplied(command, words);
}

// ---- from the library's words to ours

/// The first word that the parser could not place; of several, an option. "" where there is none.
std::string FirstUnknown(const CLI::App& app) {
  const std::vector<std::string> rest = app.remaining(true);
  const auto option =
      std::find_if(rest.begin(), rest.end(), [](const std::string& word) { return word.starts_with("-"); });
  if (option != rest.end()) return *option;
  return rest.empty() ? "" : rest.front();
}

std::string CommandNames(const Arguments& arguments) {
  std::string names;
  for (const Arguments& command : arguments.Commands())
    names += (names.empty() ? "" : ", ") + command.Words().name;
  return names;
}

std::string NoSuchCommand(const std::string& word, const Arguments& top) {
  std::vector<std::string_view> names;
  for (const Arguments& command : top.Commands()) names.push_back(command.Words().name);
  const std::string meant = DidYouMean(word, names);
  return fmt::format("there is no command {}{}", Printable(word),
                     meant.empty() ? ", only " + CommandNames(top) : meant);
}

void CollectOptions(const Arguments& command, std::vector<std::string_view>& names) {
  for (const Declared& declared : command.All()) {
    const std::string_view name = declared.argument.name;
    if (!declared.IsPositional()) names.push_back(name.substr(std::min(name.find("--"), name.size() - 1)));
  }
}

std::string NoSuchOption(const std::string& word, const Arguments& command, const Arguments& top) {
  std::vector<std::string_view> names;
  CollectOptions(command, names);
  if (&command != &top) CollectOptions(top, names);
  const std::string_view name = std::string_view(word).substr(0, word.find('='));
  return fmt::format("there is no option {}{}", Printable(word), DidYouMean(name, names));
}

std::string TooMany(const std::string& word, const Arguments& command) {
  const std::string commands = CommandNames(command);
  if (commands.empty()) {
    return fmt::format("{} is a word too many{}{}", word, command.Elsewhere().empty() ? "" : "; ",
                       command.Elsewhere());
  }
  return fmt::format("{} is a word too many; the commands of {} are {}", word, command.Path(), commands);
}

const CLI::App& AppUsed(const CLI::App& app) {
  const auto used = app.get_subcommands();
  return used.empty() ? app : AppUsed(*used.front());
}

/// The command that the parsed words name, or the one below it.
const Arguments& CommandUsed(const Arguments& command, const CLI::App& app) {
  const auto used = app.get_subcommands();
  if (used.empty()) return command;
  const auto named =
      std::find_if(command.Commands().begin(), command.Commands().end(),
                   [&](const Arguments& each) { return each.Words().name == used.front()->get_name(); });
  return CommandUsed(*named, *used.front());
}

/// What the parser says of a command, in words for people.
std::string Wording(const CLI::ParseError& error, const CLI::App& app, const Arguments& command) {
  std::string text = error.what();
  switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::ArgumentMismatch: {
      const std::string name = text.substr(0, text.find(':'));
      const CLI::Option* option = AppUsed(app).get_option_no_throw(name);
      const bool isRepeated = option != nullptr && option->count() > 1;
      return name + (isRepeated ? " can be given only once" : " needs a value");
    }
    case CLI::ExitCodes::ConversionError: return "a value was given to an option that takes none";
    case CLI::ExitCodes::ExtrasError: return TooMany(FirstUnknown(app), command);
    default: return text;
  }
}

/// Of the command that was used.
std::string FullHelp(const CLI::App& app) {
  std::string path;
  const CLI::App* used = &app;
  while (!used->get_subcommands().empty()) {
    path += used->get_name() + " ";
    used = used->get_subcommands().front();
  }
  if (!path.empty()) path.pop_back();
  return used->help(path);
}

[[noreturn]] void Explain(const CLI::ParseError& error, const CLI::App& app, const Arguments& top) {
  const std::string word = FirstUnknown(app);
  const Arguments& command = CommandUsed(top, app);
  if (word.starts_with("-")) throw UsageError(NoSuchOption(word, command, top));
  if (&command == &top) {
    if (!word.empty()) throw UsageError(NoSuchCommand(word, top));
    if (error.get_name() == "RequiredError") throw CommandMissing();
  }
  throw UsageError(Printable(Wording(error, app, command)));
}

}  // namespace

Parser::Parser(const CommandWords& program) : top_(program) {}

Parser::~Parser() = default;

CLI::App& Parser::App() {
  if (app_) return *app_;
  app_ = std::make_unique<CLI::App>(top_.Words().summary);
  app_->name(top_.Words().name);
  app_->require_subcommand(1);
  app_->fallthrough();
  app_->formatter(std::make_shared<HelpFormatter>());
  AddAll(*app_, top_);
  return *app_;
}

std::optional<std::string> Parser::Parse(int argc, char** argv) try {
  std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  AddImplied(top_, words);
  std::reverse(words.begin(), words.end());  // as the library takes them
  App().parse(words);
  return std::nullopt;
} catch (const CLI::CallForHelp&) {
  return BriefHelp(Used(), FullHelp(*app_));
} catch (const CLI::CallForAllHelp&) {
  return FullHelp(*app_);
} catch (const CLI::Success& request) {
  std::ostringstream text;
  app_->exit(request, text, text);
  return text.str();
} catch (const CLI::ParseError& error) {
  Explain(error, *app_, top_);
}

const Arguments& Parser::Used() const {
  return app_ ? CommandUsed(top_, *app_) : top_;
}

std::string Parser::HelpOf(const std::string& command) {
  if (command.empty()) return BriefHelp(top_, App().help());
  const auto named = App().get_subcommands([&](const CLI::App* each) { return each->get_name() == command; });
  if (named.empty()) throw UsageError(NoSuchCommand(command, top_));
  const auto arguments = std::find_if(top_.Commands().begin(), top_.Commands().end(),
                                      [&](const Arguments& each) { return each.Words().name == command; });
  return BriefHelp(*arguments, named.front()->help(top_.Words().name));
}

}  // namespace cli
