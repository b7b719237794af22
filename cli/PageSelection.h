// Which pages are meant: by number, by range, from the end, by size.
#pragma once

#include <string>
#include <string_view>
#include <vector>
#include <vx/image.hpp>

namespace cli {

/// What --page may be, for messages and help.
constexpr std::string_view kSelectionForms =
    "3, 1-3, -1 (the last), 32x32, 32x32@8 and lists of those with commas";

/// @return the pages of `source` that are meant, from 1, each once, in the order of the selection.
/// @throws UsageError where it makes no sense, FileError (VX_BAD_PAGE) where there is no such page
std::vector<int> SelectPages(std::string_view selection, const vx::Source& source, std::string_view file);

/// As SelectPages, for one page.
int SelectPage(std::string_view selection, const vx::Source& source, std::string_view file);

}  // namespace cli
