// Where a file that is to be written stands: a name in a folder that is held open from then on, so that
// neither a folder renamed meanwhile nor a chdir leads a later step elsewhere. Changes nothing.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <string>

namespace vxkrn {

/// Repeats a call of the system that a signal interrupted.
template <class Call>
auto Uninterrupted(Call&& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

/// A descriptor with an owner.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) noexcept : number_(number) {}
  ~Descriptor() { Reset(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int Number() const noexcept { return number_; }
  [[nodiscard]] bool IsOpen() const noexcept { return number_ >= 0; }
  /// Closes it and takes another one. Leaves errno alone.
  void Reset(int number = -1) noexcept;

 private:
  int number_;
};

[[nodiscard]] constexpr bool AreSameFile(const struct stat& one, const struct stat& other) noexcept {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

class Place {
 public:
  /// Follows the path, its symbolic links too, also one whose target is not there yet. Links are followed as
  /// the system does where links are protected: in a sticky folder that everybody may write to, only one's
  /// own and those of the folder's owner. Throws std::bad_alloc.
  /// @return STATUS_OK, or STATUS_OPEN_WRITE_ERROR with its detail set
  [[nodiscard]] int Find(const char* path);

  /// Whether something stood there when it was looked for.
  [[nodiscard]] bool Exists() const noexcept { return exists_; }
  /// What stood there.
  [[nodiscard]] const struct stat& Found() const noexcept { return found_; }
  /// Whether it is written through: a device, a pipe, or what has no name of its own behind a descriptor.
  [[nodiscard]] bool IsStream() const noexcept { return isStream_; }
  /// Opens a stream for writing; a descriptor of this process is shared, its position with it. The caller
  /// closes it. @return -1 with errno set where that fails
  [[nodiscard]] int OpenStream() const noexcept;
  /// Opens the file anew with these flags. @return -1 with errno set where that fails
  [[nodiscard]] int Open(int flags) const;

  /// The folder; only good for fsync where the user may read it.
  [[nodiscard]] int Folder() const noexcept { return folder_.Number(); }
  [[nodiscard]] const char* Name() const noexcept { return name_.c_str(); }
  /// What the name stands for now. @return false with errno set where there is nothing
  [[nodiscard]] bool Look(struct stat* status) const noexcept;

 private:
  [[nodiscard]] int FollowLinks(std::string path);
  [[nodiscard]] int EnterFolder(const std::string& path);
  [[nodiscard]] int TakeStream();

  Descriptor folder_;
  Descriptor shared_;  ///< this process's descriptor that was named
  std::string name_;
  struct stat found_ = {};
  bool exists_ = false;
  bool isStream_ = false;
  bool followed_ = false;   ///< a link
  bool isForeign_ = false;  ///< a link that may not be followed
};

}  // namespace vxkrn
