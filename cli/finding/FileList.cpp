#include "finding/FileList.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace cli {

void FileList::BeginFolder(std::string path, size_t root) {
  const bool isLastInUse = !files_.empty() && files_.back().folder + 1 == folders_.size();
  if (!folders_.empty() && !isLastInUse) folders_.pop_back();
  if (!folders_.empty() && folders_.back().path == path && folders_.back().root == root) return;
  folders_.push_back({std::move(path), root});
}

void FileList::Add(std::string_view name) {
  if (names_.size() > std::numeric_limits<uint32_t>::max() - name.size()) {
    throw std::length_error("the names of the files take more than 4 GiB; --shard takes a part of them");
  }
  files_.push_back({static_cast<uint32_t>(folders_.size() - 1), static_cast<uint32_t>(names_.size())});
  names_.append(name).push_back('\0');
}

void FileList::DropLast() {
  names_.resize(files_.back().name);
  files_.pop_back();
}

void FileList::SortFrom(size_t first) {
  std::sort(files_.begin() + static_cast<ptrdiff_t>(first), files_.end(),
            [this](const File& one, const File& other) {
              return std::string_view(names_.data() + one.name) <
                     std::string_view(names_.data() + other.name);
            });
}

void FileList::Drop(const std::vector<bool>& isDropped) {
  size_t kept = 0;
  for (size_t file = 0; file < files_.size(); ++file) {
    if (!isDropped[file]) files_[kept++] = files_[file];
  }
  files_.resize(kept);
}

std::string FileList::PathOf(size_t file) const {
  return Within(FolderOf(file), NameOf(file));
}

std::string_view FileList::PlaceOf(size_t file) const {
  const Folder& folder = folders_[files_[file].folder];
  std::string_view place = std::string_view(folder.path).substr(folder.root);
  while (place.starts_with('/')) place.remove_prefix(1);
  return place;
}

std::string Within(std::string_view folder, std::string_view name) {
  std::string path(folder);
  if (!path.empty() && path.back() != '/') path += '/';
  return path.append(name);
}

}  // namespace cli
