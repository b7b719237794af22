// vxbmp pages is a list and commands below it; here they meet.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "Command.h"

namespace cli {

/// A command below another, and what it does.
using Nested = std::pair<CLI::App*, Action>;

/// What stands below the options of a command: what SEL is, and an example.
std::string DetailsOf(bool selects, const std::string& example);

Nested DeclareExtract(CLI::App& pages);
/// Adds add, insert, replace, delete, compact and hotspot to `nested`.
void DeclareEdits(CLI::App& pages, std::vector<Nested>& nested);

}  // namespace cli
