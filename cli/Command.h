// What a command is: one row in the table of Commands.cpp, one file of its own.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <span>

#include "Errors.h"

namespace cli {

/// Does the work once the arguments are parsed.
/// @throws UsageError, FileError, OutputClosed, vx::Error
using Action = std::function<ExitCode()>;

struct Command {
  const char* name;
  const char* summary;
  const char* details;           ///< shown below the options: what is worth knowing, and examples
  Action (*declare)(CLI::App&);  ///< adds the command's options and gives what uses them
};

/// @return all commands, in the order of the help text.
std::span<const Command> AllCommands();

Action DeclareInfo(CLI::App& command);
Action DeclareView(CLI::App& command);
Action DeclareConvert(CLI::App& command);
Action DeclarePages(CLI::App& command);
Action DeclareIcon(CLI::App& command);
Action DeclareCompletions(CLI::App& command);

}  // namespace cli
