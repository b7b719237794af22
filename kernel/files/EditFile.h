// Where an edit's file comes from and where it goes to: a copy in memory that is put in the file's place in
// the end, or the file itself. Knows nothing of pages.
#pragma once

#include <string>

#include "files/FileLock.h"
#include "files/MemoryTarget.h"
#include "files/Place.h"
#include "files/Replacement.h"

namespace vxkrn {

struct EditFile {
  std::string path;
  bool inPlace = false;  ///< edits go to the file itself
  MemoryTarget copy;
  Backend backend = {};  ///< where the edits go

  /// Opens and locks the file and takes a copy of it. Throws std::bad_alloc.
  /// @param flags vx_edit_flags @return STATUS_OK, or a failure with its detail set
  [[nodiscard]] int Open(unsigned int flags);
  /// Stores the copy, unless the file is another one than it was. @return STATUS_OK, or a failure with its
  /// detail set: the file is as it was then, but for what is written in place or through descriptors
  [[nodiscard]] int Commit();
  /// Whether other edits and saves have to wait.
  [[nodiscard]] bool IsLocked() const noexcept { return lock_.IsOpen() && lock_.WhyUnlocked() == 0; }

 private:
  [[nodiscard]] int OpenSystemFile(unsigned int flags);
  [[nodiscard]] int TakeLock(unsigned int flags);
  [[nodiscard]] int TakeCopy();
  [[nodiscard]] int CheckIsSameFile() const;
  [[nodiscard]] int CheckIsUnchanged() const;
  [[nodiscard]] int CommitInPlace() const;

  bool isNew_ = false;
  uint64_t checksum_ = 0;  ///< of what was copied
  Place place_;
  FileLock lock_;
  Replacement replacement_;  // gone before the lock and the place
};

}  // namespace vxkrn
