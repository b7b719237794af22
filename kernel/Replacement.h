// A file that takes another one's place, whole or not at all. It has no name until it is finished, so that a
// process that ends early leaves nothing behind; where the file system needs a name, it has one beside its
// place. The only code that knows how the system's files are replaced.
#pragma once

#include <sys/stat.h>

#include <string>

#include "Backend.h"
#include "SystemFile.h"

namespace vxkrn {

class Replacement {
 public:
  Replacement() = default;
  /// Forgets the file unless it was committed.
  ~Replacement();
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// Makes an empty file to stand for `path`, which may exist; symbolic links are followed. Throws
  /// std::bad_alloc. @return STATUS_OK, or STATUS_OPEN_WRITE_ERROR with its detail set
  [[nodiscard]] int Open(const char* path);
  /// Whether the path is a device, a pipe or the like, which cannot be replaced: only written to. Nothing is
  /// open then.
  [[nodiscard]] bool IsStream() const noexcept { return isStream_; }
  /// Writes the whole content. @return STATUS_OK, or STATUS_WRITE_ERROR with its detail set
  [[nodiscard]] int Fill(const std::uint8_t* bytes, std::size_t size);
  /// A backend whose every open gives the new file, for reading and writing.
  [[nodiscard]] Backend AsBackend() noexcept;
  /// Stores the new file and moves it to its place. @return STATUS_OK, or STATUS_WRITE_ERROR with its detail
  /// set: the old file is then still there.
  [[nodiscard]] int Commit();

 private:
  [[nodiscard]] int OpenUnnamed();
  [[nodiscard]] int OpenNamed();
  [[nodiscard]] bool TakeOverOwnerAndMode() const noexcept;
  [[nodiscard]] bool GiveName();
  [[nodiscard]] int FailToWrite(int error) const;

  std::string path_;    ///< as given, for messages
  std::string place_;   ///< the file itself, behind symbolic links
  std::string folder_;  ///< the place's, with its last slash; may be empty
  std::string name_;    ///< the unfinished file's; empty while it has none
  struct stat old_ = {};
  bool exists_ = false;
  bool isStream_ = false;
  SystemFile file_ = {-1};
};

/// Writes bytes to a device or pipe from where it stands. @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int WriteToStream(const char* path, const std::uint8_t* bytes, std::size_t size);

}  // namespace vxkrn
