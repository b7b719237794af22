// vxbmp pages is a list and commands below it; here they meet.
#pragma once

#include <string>

#include "commands/Command.h"

namespace cli {

/// What stands below the options of a command: what SEL is, and an example.
std::string DetailsOf(bool selects, const std::string& example);

void DeclareExtract(Arguments& pages);
/// Declares add, insert, replace, delete, compact and hotspot.
void DeclareEdits(Arguments& pages);

}  // namespace cli
