#include "finding/FileFinder.h"

#include <fnmatch.h>

#include <algorithm>
#include <array>
#include <utility>

#include "finding/FolderReader.h"
#include "words/FileNames.h"

namespace cli {
namespace {

/// What files that hold pictures of ours are called.
constexpr std::array<std::string_view, 8> kEndings = {".bmp", ".dib", ".rle", ".ico",
                                                      ".cur", ".ani", ".ptr", ".png"};
constexpr std::string_view kWildcards = "*?[";
constexpr std::string_view kAnyFolders = "**";

bool IsPictureName(std::string_view name) {
  return std::find(kEndings.begin(), kEndings.end(), EndingOf(name)) != kEndings.end();
}

std::optional<struct stat> StatusOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

bool IsFolder(const std::optional<struct stat>& status) {
  return status && S_ISDIR(status->st_mode);
}

/// The part of a path up to the last slash before `end`, and what follows it.
std::pair<std::string, std::string> SplitPath(const std::string& path, size_t end = std::string::npos) {
  const size_t slash = path.rfind('/', end);
  if (slash == std::string::npos) return {"", path};
  return {path.substr(0, std::max<size_t>(slash, 1)), path.substr(slash + 1)};
}

/// Takes the first name off a pattern of several.
std::string TakeName(std::string_view& pattern) {
  const size_t slash = std::min(pattern.find('/'), pattern.size());
  std::string name(pattern.substr(0, slash));
  pattern.remove_prefix(std::min(pattern.find_first_not_of('/', slash), pattern.size()));
  return name;
}

}  // namespace

FileFinder::FileFinder(const Options& options, Filter filter)
    : options_(options), filter_(std::move(filter)) {
  if (!options_.leftOut.empty()) leftOut_ = StatusOf(options_.leftOut);
}

void FileFinder::Find(const std::string& word) {
  const size_t wildcard = word.find_first_of(kWildcards);
  if (wildcard == std::string::npos || StatusOf(word)) return TakeNamed(word);
  const auto [folder, pattern] = SplitPath(word, wildcard);
  hasMatched_ = false;
  Match(folder, pattern, folder.size());
  if (!hasMatched_) TakeNamed(word);
}

void FileFinder::TakeNamed(const std::string& path) {
  const std::optional<struct stat> status = StatusOf(path);
  if (IsFolder(status)) return Search(path, path.size(), options_.isRecursive);
  const auto [folder, name] = SplitPath(path);
  files_.BeginFolder(folder, folder.size());
  Take(name, status);
}

void FileFinder::Take(std::string_view name, const std::optional<struct stat>& status) {
  hasMatched_ = true;
  files_.Add(name);
  if (status) ids_.Add(*status);
  if (!filter_(files_)) files_.DropLast();
}

/// Reads a folder whose files visit(entry) takes; those come into their order then.
template <class Visits>
void FileFinder::Read(const std::string& folder, size_t root, const Visits& visit) try {
  FolderReader entry(folder);
  files_.BeginFolder(folder, root);
  const size_t first = files_.Size();
  while (entry.Next()) visit(entry);
  files_.SortFrom(first);
} catch (const FileError& error) {
  failures_.push_back(error);
}

void FileFinder::Search(const std::string& path, size_t root, bool isRecursive) {
  hasMatched_ = true;
  std::vector<std::string> folders;
  const auto visit = [&](const FolderReader& entry) {
    if (entry.IsFolder()) {
      if (isRecursive && !IsLeftOut(entry.Status())) folders.emplace_back(entry.Name());
    } else if (options_.takesAll || IsPictureName(entry.Name())) {
      const std::optional<struct stat> status = entry.Status();
      if (status && S_ISREG(status->st_mode)) Take(entry.Name(), status);
    }
  };
  Read(path, root, visit);
  std::sort(folders.begin(), folders.end());
  for (const std::string& name : folders) Search(Within(path, name), root, isRecursive);
}

bool FileFinder::IsLeftOut(const std::optional<struct stat>& folder) const {
  return leftOut_ && folder && leftOut_->st_dev == folder->st_dev && leftOut_->st_ino == folder->st_ino;
}

/// Takes what matches in a folder. @param pattern names with slashes between, the first one of this folder
void FileFinder::Match(const std::string& folder, std::string_view pattern, size_t root) {
  const std::string name = TakeName(pattern);
  if (name == kAnyFolders) return MatchAnyFolder(folder, pattern, root);
  if (name.find_first_of(kWildcards) != std::string::npos) return MatchName(folder, name, pattern, root);
  const std::string path = Within(folder, name);
  const std::optional<struct stat> status = StatusOf(path);
  if (!pattern.empty()) return Match(path, pattern, root);
  if (IsFolder(status)) return Search(path, root, options_.isRecursive);
  if (!status) return;
  files_.BeginFolder(folder, root);
  Take(name, status);
}

void FileFinder::MatchName(const std::string& folder, const std::string& name, std::string_view rest,
                           size_t root) {
  std::vector<std::string> folders;
  const auto visit = [&](const FolderReader& entry) {
    if (fnmatch(name.c_str(), entry.Name(), 0) != 0) return;
    const std::optional<struct stat> status = entry.Status();
    if (IsFolder(status)) {
      if (!IsLeftOut(status)) folders.emplace_back(entry.Name());
    } else if (rest.empty() && status && S_ISREG(status->st_mode)) {
      Take(entry.Name(), status);
    }
  };
  Read(folder, root, visit);
  std::sort(folders.begin(), folders.end());
  for (const std::string& below : folders) {
    const std::string path = Within(folder, below);
    if (rest.empty()) {
      Search(path, root, options_.isRecursive);
    } else {
      Match(path, rest, root);
    }
  }
}

/// **: what follows may match here and in every folder below.
void FileFinder::MatchAnyFolder(const std::string& folder, std::string_view rest, size_t root) {
  if (rest.empty()) return Search(folder, root, true);
  Match(folder, rest, root);
  std::vector<std::string> folders;
  Read(folder, root, [&](const FolderReader& entry) {
    if (entry.IsFolder() && !IsLeftOut(entry.Status())) folders.emplace_back(entry.Name());
  });
  std::sort(folders.begin(), folders.end());
  for (const std::string& below : folders) MatchAnyFolder(Within(folder, below), rest, root);
}

}  // namespace cli
