// vxbmp's arguments: parses them, runs the command they name, and explains those that make no sense.
#pragma once

#include <string>
#include <vector>

#include "arguments/Parser.h"

namespace cli {

class CommandLine {
 public:
  CommandLine();

  /// Parses the arguments and does what they say; help and the version count as something to do.
  /// @throws what actions throw, but for UsageError, which is reported here.
  ExitCode Run(int argc, char** argv);

 private:
  /// "help" and "help COMMAND"
  ExitCode Help(const std::vector<std::string>& words);
  ExitCode Act() const;
  void ApplyMemoryLimit() const;

  Parser parser_;
  std::string memoryLimit_;
};

}  // namespace cli
