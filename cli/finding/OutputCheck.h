// What can be known to go wrong with the names of new files before the first is written.
#pragma once

#include <string>

#include "finding/FileFinder.h"
#include "finding/OutputNames.h"

namespace cli {

/// Drops files that were found twice, and sorts the ids of the files.
/// @param folder where the new files are to lie
/// @throws UsageError where two files would become one, or one would take the place of a file that is read
void CheckOutputs(FileFinder& found, const OutputNames& names, const std::string& folder);

/// Whether there is a file of that name, and it is one of those.
bool IsAmong(const FileIds& ids, const std::string& path);

}  // namespace cli
