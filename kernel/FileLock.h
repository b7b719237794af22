// One editor at a time: an advisory lock on a file of the system, held while an edit of it lives.
#pragma once

#include "SystemFile.h"

namespace vxkrn {

class FileLock {
 public:
  FileLock() = default;
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// Opens and locks the file, and waits up to two seconds for whoever else has it.
  /// @return STATUS_OK, or STATUS_OPEN_WRITE_ERROR with its detail set
  [[nodiscard]] int Take(const char* path);

  /// The locked file, open for reading with the system backend's functions.
  [[nodiscard]] SystemFile* File() noexcept { return &file_; }

 private:
  SystemFile file_ = {-1};
};

}  // namespace vxkrn
