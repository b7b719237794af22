// A file that takes another one's place, whole or not at all. It has no name until it is finished, so that a
// process that ends early leaves nothing behind. Where an older file or the file system needs it to have one
// beside its place, it is locked while it does: what is not locked was left by a process that has ended, and
// the next replacement in the folder removes it. The only code that knows how the system's files are
// replaced.
#pragma once

#include <functional>
#include <string>

#include "files/Backend.h"
#include "files/FileLock.h"
#include "files/Place.h"
#include "files/SystemFile.h"

namespace vxkrn {

class Replacement {
 public:
  Replacement() = default;
  /// Forgets the file unless it was committed.
  ~Replacement();
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// Makes an empty file to stand at `place`, which is no stream and must outlive this. `path` is for
  /// messages. Throws std::bad_alloc. @return STATUS_OK, or STATUS_OPEN_WRITE_ERROR with its detail set
  [[nodiscard]] int Open(const char* path, const Place& place);
  /// Writes the whole content. @return STATUS_OK, or STATUS_WRITE_ERROR with its detail set
  [[nodiscard]] int Fill(const uint8_t* bytes, std::size_t size);
  /// A backend whose every open gives the new file, for reading and writing.
  [[nodiscard]] Backend AsBackend() noexcept;

  /// Stores the new file and moves it to its place, whatever stands there by then, once nobody else edits it.
  /// @return STATUS_OK; or STATUS_OPEN_WRITE_ERROR where somebody does, or STATUS_WRITE_ERROR, with the
  /// detail set. The old file is still there after a failure, unless the detail says that the folder cannot
  /// be stored
  [[nodiscard]] int Commit();
  /// The same over the file that `lock` holds. Where it holds none, nothing may stand there: a file that
  /// somebody made meanwhile stays, and the result is VX_FILE_CHANGED. `check` is called right before the
  /// move; any status of it but STATUS_OK, with the detail set, becomes the result.
  [[nodiscard]] int CommitOver(const FileLock& lock, const std::function<int()>& check);

 private:
  [[nodiscard]] int OpenUnnamed();
  [[nodiscard]] int OpenNamed();
  [[nodiscard]] bool GiveName();
  [[nodiscard]] int Store();
  [[nodiscard]] int StoreFolder();
  void Close() noexcept;
  [[nodiscard]] int MoveOver(const FileLock& lock, const std::function<int()>& check);
  [[nodiscard]] int PutOver(const FileLock& lock, const std::function<int()>& check);
  [[nodiscard]] int PutWhereNothingIs();
  [[nodiscard]] int FailToWrite(int error) const;

  std::string path_;  ///< as given, for messages
  const Place* place_ = nullptr;
  std::string name_;  ///< the unfinished file's; empty while it has none
  SystemFile file_ = {-1};
};

/// Writes bytes to a stream from where it stands. What a file behind a descriptor has beyond them is cut off.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int WriteToStream(const char* path, const Place& place, const uint8_t* bytes, std::size_t size);
/// Writes over the whole of a file that is open for writing. @return as WriteToStream
[[nodiscard]] int WriteOver(const char* path, int file, const uint8_t* bytes, std::size_t size);

}  // namespace vxkrn
