// What a command is: one row in the table of Commands.cpp, one file of its own.
#pragma once

#include <span>

#include "arguments/Arguments.h"

namespace cli {

struct Command {
  const char* name;
  const char* summary;
  const char* details;            ///< shown below the options: what is worth knowing, and examples
  const char* essentials;         ///< options that brief help shows
  Action (*declare)(Arguments&);  ///< adds the command's arguments and gives what uses them
};

/// @return all commands, in the order of the help text.
std::span<const Command> AllCommands();

Action DeclareInfo(Arguments& command);
Action DeclareInspect(Arguments& command);
Action DeclareVerify(Arguments& command);
Action DeclareRepair(Arguments& command);
Action DeclareView(Arguments& command);
Action DeclareConvert(Arguments& command);
Action DeclareBatch(Arguments& command);
Action DeclareCarve(Arguments& command);
Action DeclareDiff(Arguments& command);
Action DeclarePages(Arguments& command);
Action DeclareIcon(Arguments& command);
Action DeclareThumbnail(Arguments& command);
Action DeclareCursor(Arguments& command);
Action DeclareCompletions(Arguments& command);

}  // namespace cli
