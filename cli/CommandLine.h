// vxbmp's arguments: parses them, runs the command they name, and explains those that make no sense.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "Command.h"

namespace cli {

class CommandLine {
 public:
  CommandLine();

  /// Parses the arguments and does what they say; help and the version count as something to do.
  /// @throws what actions throw, but for UsageError, which is reported here.
  ExitCode Run(int argc, char** argv);

 private:
  /// "help" and "help COMMAND"
  ExitCode Help(const std::vector<std::string>& words) const;
  ExitCode Act();
  void ApplyMemoryLimit() const;
  ExitCode ExplainParsing(const CLI::ParseError& error);
  ExitCode ExplainUsage(const std::string& problem) const;

  CLI::App app_{"Reads and writes Windows and OS/2 bitmaps, icons and cursors."};
  std::string memoryLimit_;
  std::vector<Action> actions_;  // in the order of AllCommands()
};

}  // namespace cli
