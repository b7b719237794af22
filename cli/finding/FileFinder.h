// Finds files: those that are named, those in folders, those that match a pattern. The order depends on the
// names alone, not on the file system.
#pragma once

#include <sys/stat.h>

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "failures/Errors.h"
#include "finding/FileIds.h"
#include "finding/FileList.h"

namespace cli {

class FileFinder {
 public:
  struct Options {
    bool isRecursive = false;  ///< folders are searched with all that is below
    bool takesAll = false;     ///< whatever the names of files in folders end with
    std::string leftOut{};     ///< a folder that is not searched unless it is named; "" for none
  };
  /// Whether the file that was added to the list last is to stay in it.
  using Filter = std::function<bool(const FileList&)>;

  FileFinder(const Options& options, Filter filter);

  /// Finds what a word of the command line means. What is there under that name is a file or a folder; else
  /// * ? [ make a pattern of it, in which ** means any folders, and one that matches nothing stands for
  /// itself. Folders give the files in them that are called as pictures are; nothing that is hidden, and
  /// nothing that is no regular file. @throws std::length_error
  void Find(const std::string& word);

  [[nodiscard]] FileList& Files() { return files_; }
  /// All files that were found, whether or not they are in the list; sorted by whoever looks one up.
  [[nodiscard]] FileIds& Ids() { return ids_; }
  /// The folders that could not be read.
  [[nodiscard]] const std::vector<FileError>& Failures() const { return failures_; }

 private:
  void TakeNamed(const std::string& path);
  void Take(std::string_view name, const std::optional<struct stat>& status);
  void Search(const std::string& path, size_t root, bool isRecursive);
  void Match(const std::string& folder, std::string_view pattern, size_t root);
  void MatchName(const std::string& folder, const std::string& name, std::string_view rest, size_t root);
  void MatchAnyFolder(const std::string& folder, std::string_view rest, size_t root);
  [[nodiscard]] bool IsLeftOut(const std::optional<struct stat>& folder) const;
  template <class Visits>
  void Read(const std::string& folder, size_t root, const Visits& visit);

  Options options_;
  Filter filter_;
  std::optional<struct stat> leftOut_;
  FileList files_;
  FileIds ids_;
  std::vector<FileError> failures_;
  bool hasMatched_ = false;  // the pattern in hand matches something
};

}  // namespace cli
