// --files-from: names of files that another program lists.
#pragma once

#include <functional>
#include <string>

namespace cli {

/// Reads names from a file, or from standard input for "-", and hands each over. They end with a 0, where
/// there is one among the first bytes, else with the line; empty ones are passed over.
/// @throws FileError, and what `take` throws
void ReadNames(const std::string& file, const std::function<void(const std::string&)>& take);

}  // namespace cli
