#include "finding/FolderReader.h"

#include <fcntl.h>

#include <cerrno>

#include "failures/Errors.h"

namespace cli {

FolderReader::FolderReader(const std::string& path)
    : path_(path.empty() ? "." : path), entries_(opendir(path_.c_str()), closedir) {
  if (entries_ == nullptr) throw FileError::FromErrno(VX_OPEN_ERROR, path_, "cannot open the folder");
}

bool FolderReader::Next() {
  do {
    errno = 0;
    entry_ = readdir(entries_.get());
    if (entry_ == nullptr && errno != 0) {
      throw FileError::FromErrno(VX_READ_ERROR, path_, "cannot read the folder");
    }
  } while (entry_ != nullptr && entry_->d_name[0] == '.');
  return entry_ != nullptr;
}

bool FolderReader::IsFolder() const {
  if (entry_->d_type != DT_UNKNOWN) return entry_->d_type == DT_DIR;
  struct stat status {};
  return fstatat(dirfd(entries_.get()), Name(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

std::optional<struct stat> FolderReader::Status() const {
  struct stat status {};
  if (fstatat(dirfd(entries_.get()), Name(), &status, 0) != 0) return std::nullopt;
  return status;
}

}  // namespace cli
