// One writer at a time: an advisory lock on a file of the system, held while an edit of it lives or while it
// is replaced. Knows what it was when the lock was taken, and tells whether it is still that.
#pragma once

#include <sys/stat.h>

#include "files/Backend.h"
#include "files/Place.h"
#include "files/SystemFile.h"

namespace vxkrn {

class FileLock {
 public:
  FileLock() = default;
  ~FileLock();
  FileLock(const FileLock&) = delete;
  FileLock& operator=(const FileLock&) = delete;

  /// Opens and locks what stands at the place, for writing too where the user may, and waits up to two
  /// seconds for whoever else has it. `path` is for messages. Where files cannot be locked it is open all the
  /// same.
  /// @return STATUS_OK, or STATUS_OPEN_WRITE_ERROR with its detail set
  [[nodiscard]] int Take(const Place& place, const char* path);
  /// As Take, but where nothing stands there that is STATUS_OK, and nothing is open.
  [[nodiscard]] int TakeIfThere(const Place& place, const char* path);

  [[nodiscard]] bool IsOpen() const noexcept { return file_.descriptor >= 0; }
  /// 0, or the errno that says why there is no lock on what is open.
  [[nodiscard]] int WhyUnlocked() const noexcept { return whyUnlocked_; }
  /// 0, or the errno that says why what is open cannot be written to.
  [[nodiscard]] int WhyReadOnly() const noexcept { return whyReadOnly_; }
  /// The file, open for reading with the system backend's functions.
  [[nodiscard]] SystemFile* File() noexcept { return &file_; }
  [[nodiscard]] int Number() const noexcept { return file_.descriptor; }
  /// A backend whose every open gives the file, whatever the name stands for by then.
  [[nodiscard]] Backend AsBackend() noexcept;

  /// What it was when it was locked.
  [[nodiscard]] const struct stat& Locked() const noexcept { return locked_; }

 private:
  /// @return 0, EWOULDBLOCK where somebody else has it, or why it cannot be had
  [[nodiscard]] int TryToTake(const Place& place);
  [[nodiscard]] int OpenFile(const Place& place);
  void Close() noexcept;

  SystemFile file_ = {-1};
  struct stat locked_ = {};
  int whyUnlocked_ = 0;
  int whyReadOnly_ = 0;
};

}  // namespace vxkrn
