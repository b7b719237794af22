// Finding the files for the demo page, with what is known about them beforehand.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace demo {

struct Item {
  std::filesystem::path path;
  std::string group;         ///< the folder it was found in, as shown on the page
  std::string title;         ///< "" where nothing is known
  std::string rawArguments;  ///< headerless data: what describes it
};

/// @return the bitmaps, icons and cursors in and below the folders. Where a folder has a list of its files,
/// samples.tsv, the order and the titles are the list's, and headerless data named there is included.
std::vector<Item> Collect(const std::vector<std::string>& folders);

}  // namespace demo
