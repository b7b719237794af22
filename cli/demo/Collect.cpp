// Walking through folders; unreadable ones are passed over.
#include "Collect.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <map>
#include <sstream>
#include <utility>

namespace demo {
namespace {

namespace fs = std::filesystem;

constexpr const char* kListName = "samples.tsv";
constexpr std::array<std::string_view, 5> kExtensions{".bmp", ".dib", ".ico", ".cur", ".rle"};

struct Listed {
  size_t place = 0;
  std::string title;
  std::string rawArguments;
};
using List = std::map<std::string, Listed>;  // by file name

/// Lines of: name, title, outcome, arguments, with tabs between them.
List ReadList(const fs::path& folder) {
  List list;
  std::ifstream file(folder / kListName);
  for (std::string line; std::getline(file, line);) {
    std::istringstream fields(line);
    std::string name;
    std::string outcome;
    Listed listed{list.size(), {}, {}};
    std::getline(fields, name, '\t');
    std::getline(fields, listed.title, '\t');
    std::getline(fields, outcome, '\t');
    std::getline(fields, listed.rawArguments, '\t');
    list.emplace(name, std::move(listed));
  }
  return list;
}

bool HasKnownExtension(const fs::path& path) {
  std::string extension = path.extension().string();
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return std::find(kExtensions.begin(), kExtensions.end(), extension) != kExtensions.end();
}

std::vector<Item> CollectFolder(const fs::path& folder, const std::string& group) {
  const List list = ReadList(folder);
  std::vector<std::pair<size_t, Item>> found;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (!entry.is_regular_file(error)) continue;
    const auto listed = list.find(entry.path().filename().string());
    if (listed != list.end() && (HasKnownExtension(entry.path()) || !listed->second.rawArguments.empty())) {
      found.push_back(
          {listed->second.place, {entry.path(), group, listed->second.title, listed->second.rawArguments}});
    } else if (HasKnownExtension(entry.path())) {
      found.push_back({list.size(), {entry.path(), group, {}, {}}});
    }
  }
  std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
    return std::pair(a.first, a.second.path) < std::pair(b.first, b.second.path);
  });
  std::vector<Item> items;
  items.reserve(found.size());
  for (auto& [place, item] : found) items.push_back(std::move(item));
  return items;
}

}  // namespace

std::vector<Item> Collect(const std::vector<std::string>& folders) {
  std::vector<Item> items;
  for (const std::string& name : folders) {
    const fs::path top = fs::path(name).lexically_normal();
    const fs::path base = top.has_filename() ? top.filename() : top.parent_path().filename();
    std::vector<fs::path> places{top};
    std::error_code error;
    const auto options = fs::directory_options::skip_permission_denied;
    fs::recursive_directory_iterator entry(top, options, error);
    for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
      std::error_code unknown;
      if (entry->is_directory(unknown)) places.push_back(entry->path());
    }
    std::sort(places.begin(), places.end());
    for (const fs::path& place : places) {
      const fs::path group = place == top ? base : base / place.lexically_relative(top);
      std::vector<Item> some = CollectFolder(place, group.string());
      std::move(some.begin(), some.end(), std::back_inserter(items));
    }
  }
  return items;
}

}  // namespace demo
