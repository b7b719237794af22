// A folder that is read, entry by entry, in whatever order the system has them.
#pragma once

#include <dirent.h>
#include <sys/stat.h>

#include <memory>
#include <optional>
#include <string>

namespace cli {

class FolderReader {
 public:
  /// @param path "" for the current folder @throws FileError
  explicit FolderReader(const std::string& path);

  /// Goes on to the next entry whose name does not begin with a dot. @return false where there is none
  /// @throws FileError
  bool Next();

  // Of the entry:
  [[nodiscard]] const char* Name() const { return entry_->d_name; }
  /// Whether it is a folder itself, and not a link to one, which could lead round in circles.
  [[nodiscard]] bool IsFolder() const;
  /// What it is; what it leads to, where it is a link. @return nothing for what cannot be looked at
  [[nodiscard]] std::optional<struct stat> Status() const;

 private:
  std::string path_;
  std::unique_ptr<DIR, int (*)(DIR*)> entries_;
  dirent* entry_ = nullptr;
};

}  // namespace cli
