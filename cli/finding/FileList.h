// The names of many files, kept small: a folder's once, a file's as its bytes in one block. A million of them
// take little more than their letters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

class FileList {
 public:
  /// Begins a folder that files are in. @param path "" for the current one @param root the length of the part
  /// of it that was named, below which it was found
  void BeginFolder(std::string path, size_t root);
  /// Adds a file of the folder that was begun last. @throws std::length_error after 4 GiB of names
  void Add(std::string_view name);
  /// Puts the files from `first` on, which are in one folder, in the order of the bytes of their names.
  void SortFrom(size_t first);
  /// Drops files. @param isDropped one element a file
  void Drop(const std::vector<bool>& isDropped);
  void DropLast();

  [[nodiscard]] size_t Size() const { return files_.size(); }
  [[nodiscard]] std::string PathOf(size_t file) const;
  [[nodiscard]] std::string_view NameOf(size_t file) const { return names_.data() + files_[file].name; }
  /// The whole path of its folder.
  [[nodiscard]] std::string_view FolderOf(size_t file) const { return folders_[files_[file].folder].path; }
  /// The folder as it is seen from what was named: "" for files right in it, else such as "sub/below".
  [[nodiscard]] std::string_view PlaceOf(size_t file) const;

 private:
  struct Folder {
    std::string path;
    size_t root;
  };
  struct File {
    uint32_t folder;
    uint32_t name;  // where it begins in names_, in which a 0 ends it
  };

  std::vector<Folder> folders_;
  std::vector<File> files_;
  std::string names_;
};

/// @return the path of what is in a folder; "" is the current one.
std::string Within(std::string_view folder, std::string_view name);

}  // namespace cli
