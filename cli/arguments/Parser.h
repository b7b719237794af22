// A command line, taken apart by what was declared, and explained where it makes no sense.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "arguments/Arguments.h"

namespace CLI {
class App;
}  // namespace CLI

namespace cli {

/// No command was given, nor anything else.
class CommandMissing : public UsageError {
 public:
  CommandMissing() : UsageError("a command is needed") {}
};

class Parser {
 public:
  explicit Parser(const CommandWords& program);
  ~Parser();
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;

  /// The program's own arguments and, below them, its commands: to be declared before anything else is
  /// called.
  Arguments& Top() { return top_; }

  /// Stores what is given where the declarations say.
  /// @return the help or the version, where that is asked for: it is all there is to do then
  /// @throws UsageError in words for people, CommandMissing
  std::optional<std::string> Parse(int argc, char** argv);
  /// The command that was meant, as far as the words were understood; the program itself where none was.
  [[nodiscard]] const Arguments& Used() const;

  /// @param command "" for the program @throws UsageError where there is no such command
  [[nodiscard]] std::string HelpOf(const std::string& command);

 private:
  /// The parsing library's view of the declarations, made when it is first needed.
  CLI::App& App();

  Arguments top_;
  std::unique_ptr<CLI::App> app_;
};

}  // namespace cli
