// The parser behind vxbmp, and the look of its help.
#include "CommandLine.h"

#include <fmt/format.h>
#include <vx/vx.h>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <utility>

#include "Numbers.h"
#include "Output.h"
#include "Report.h"
#include "Text.h"

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
    return option->get_option_text().empty() ? "" : " " + option->get_option_text();
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

/// The first word that the parser could not place; of several, an option. "" where there is none.
std::string FirstUnknown(const CLI::App& app) {
  const std::vector<std::string> rest = app.remaining(true);
  const auto option =
      std::find_if(rest.begin(), rest.end(), [](const std::string& word) { return word.starts_with("-"); });
  if (option != rest.end()) return *option;
  return rest.empty() ? "" : rest.front();
}

/// The command that was meant, or the one below it.
const CLI::App& CommandUsed(const CLI::App& app) {
  const auto used = app.get_subcommands();
  return used.empty() ? app : CommandUsed(*used.front());
}

/// "pages delete"; "" for the program itself
std::string PathOf(const CLI::App& command) {
  const CLI::App* parent = command.get_parent();
  if (parent == nullptr) return "";
  const std::string path = PathOf(*parent);
  return path.empty() ? command.get_name() : path + " " + command.get_name();
}

/// An empty word is never what was meant: it comes from a variable that was not set.
void RefuseEmptyWords(CLI::App& app) {
  for (CLI::App* nested : app.get_subcommands({})) RefuseEmptyWords(*nested);
  for (CLI::Option* option : app.get_options()) {
    const char* problem = option->get_positional() ? "the file name is empty" : "the value is empty";
    option->check([problem](const std::string& word) { return word.empty() ? std::string(problem) : ""; });
  }
}

std::string TooMany(const std::string& word, const CLI::App& command) {
  std::string commands;
  for (const CLI::App* nested : command.get_subcommands({})) {
    commands += (commands.empty() ? "" : ", ") + nested->get_name();
  }
  const std::string hint = fmt::format("; the commands of {} are {}", PathOf(command), commands);
  return word + " is a word too many" + (commands.empty() ? "" : hint);
}

/// What the parser says of a command, in words for people.
std::string Wording(const CLI::ParseError& error, const CLI::App& app, const CLI::App& command) {
  std::string text = error.what();
  switch (static_cast<CLI::ExitCodes>(error.get_exit_code())) {
    case CLI::ExitCodes::ArgumentMismatch: {
      const std::string name = text.substr(0, text.find(':'));
      const CLI::Option* option = command.get_option_no_throw(name);
      const bool isRepeated = option != nullptr && option->count() > 1;
      return name + (isRepeated ? " can be given only once" : " needs a value");
    }
    case CLI::ExitCodes::ConversionError: return "a value was given to an option that takes none";
    case CLI::ExitCodes::ExtrasError: return TooMany(FirstUnknown(app), command);
    default: return text;
  }
}

std::string CommandNames() {
  std::string names;
  for (const Command& command : AllCommands()) names += std::string(names.empty() ? "" : ", ") + command.name;
  return names;
}

std::string NoSuchCommand(const std::string& word) {
  return fmt::format("there is no command {}, only {}", Printable(word), CommandNames());
}

}  // namespace

CommandLine::CommandLine() {
  app_.name("vxbmp");
  app_.require_subcommand(1);
  app_.fallthrough();
  app_.formatter(std::make_shared<HelpFormatter>());
  app_.footer("vxbmp COMMAND --help says more about a command and gives examples.");
  app_.set_help_flag("-h,--help", "print this help and exit");
  app_.set_version_flag(
      "--version", [] { return fmt::format("vxbmp {}", vx_version()); }, "print the version and exit");
  app_.add_option("--memory-limit", memoryLimit_,
                  "memory that pictures may take, such as 512M or 4G; 1G unless given.\n"
                  "Bytes, or with K, M, G or T (KB, KiB and so on: 1024 each)")
      ->option_text("SIZE");
  for (const Command& command : AllCommands()) {
    CLI::App* sub = app_.add_subcommand(command.name, command.summary);
    sub->group("Commands");
    sub->footer(command.details);
    actions_.push_back(command.declare(*sub));
    RefuseEmptyWords(*sub);
  }
  RefuseEmptyWords(app_);
}

ExitCode CommandLine::Run(int argc, char** argv) {
  try {
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    if (!words.empty() && words.front() == "help") return Help(words);
    app_.parse(argc, argv);
    return Act();
  } catch (const CLI::ParseError& error) {
    return ExplainParsing(error);
  } catch (const UsageError& error) {
    return ExplainUsage(error.what());
  }
}

ExitCode CommandLine::Help(const std::vector<std::string>& words) const {
  if (words.size() > 2) throw UsageError("help is about one command at a time");
  if (words.size() < 2) {
    PrintToStandardOutput(app_.help());
    return kExitOk;
  }
  const auto commands = AllCommands();
  const bool isKnown = std::any_of(commands.begin(), commands.end(),
                                   [&](const Command& each) { return each.name == words[1]; });
  if (!isKnown) throw UsageError(NoSuchCommand(words[1]));
  PrintToStandardOutput(app_.get_subcommand(words[1])->help(app_.get_name()));
  return kExitOk;
}

ExitCode CommandLine::Act() {
  ApplyMemoryLimit();
  for (size_t i = 0; i < actions_.size(); ++i) {
    if (app_.got_subcommand(AllCommands()[i].name)) return actions_[i]();
  }
  throw UsageError("a command is needed");
}

void CommandLine::ApplyMemoryLimit() const {
  if (memoryLimit_.empty()) return;
  const std::optional<uint64_t> bytes = ParseByteCount(memoryLimit_);
  if (!bytes || *bytes == 0) {
    throw UsageError(fmt::format("--memory-limit {}: a number of bytes is needed, such as 512M or 4G",
                                 Printable(memoryLimit_)));
  }
  vx_set_memory_limit(*bytes);
}

ExitCode CommandLine::ExplainParsing(const CLI::ParseError& error) {
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
    std::ostringstream text;
    app_.exit(error, text, text);
    PrintToStandardOutput(text.str());
    return kExitOk;
  }
  const std::string word = FirstUnknown(app_);
  const CLI::App& command = CommandUsed(app_);
  if (word.starts_with("-")) return ExplainUsage(fmt::format("there is no option {}", Printable(word)));
  if (&command != &app_) return ExplainUsage(Printable(Wording(error, app_, command)));
  if (!word.empty()) return ExplainUsage(NoSuchCommand(word));
  if (error.get_name() != "RequiredError") return ExplainUsage(Printable(Wording(error, app_, app_)));
  std::fputs(app_.help().c_str(), stderr);
  return kExitUsage;
}

ExitCode CommandLine::ExplainUsage(const std::string& problem) const {
  const std::string path = PathOf(CommandUsed(app_));
  ReportMessage(fmt::format("{}\nTry: vxbmp {}{}--help", problem, path, path.empty() ? "" : " "));
  return kExitUsage;
}

}  // namespace cli
