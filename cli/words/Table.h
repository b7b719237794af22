// Text in columns.
#pragma once

#include <string>
#include <vector>

namespace cli {

using TableRow = std::vector<std::string>;

/// @return the rows as lines, the columns as wide as their widest cell on a terminal.
std::string InColumns(const std::vector<TableRow>& rows);

}  // namespace cli
