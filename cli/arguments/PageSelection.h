// Which pages there are, and which are meant: by number, by range, from the end, by size.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>
#include <vx/image.hpp>

namespace cli {

/// What --page may be, for messages and help.
constexpr std::string_view kSelectionForms =
    "3, 1-3, -1 (the last), 32x32, 32x32@8 and lists of those with commas";

/// @return the directory of an icon or cursor file, whatever its pages are like; nothing for other files and
/// for one without pages. @throws vx::Error where the directory is not whole
std::optional<vx_directory_info> FindDirectory(const vx::Source& source);

/// @return how many pages there are, good or bad. @throws vx::Error where that cannot be told
int CountPages(const vx::Source& source);

/// @return the pages of `source` that are meant, from 1, each once, in the order of the selection.
/// @throws UsageError where it makes no sense, FileError (VX_BAD_PAGE) where there is no such page
std::vector<int> SelectPages(std::string_view selection, const vx::Source& source, std::string_view file);

/// As SelectPages, for one page.
int SelectPage(std::string_view selection, const vx::Source& source, std::string_view file);

}  // namespace cli
