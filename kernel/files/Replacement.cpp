// Every way out before the rename leaves the old file as it was and closes the new one, which is gone then or
// is unlinked.
#include "files/Replacement.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/Errors.h"
#include "files/FileAttributes.h"

namespace vxkrn {
namespace {

constexpr mode_t kReadWriteForAll = 0666;
constexpr int kMostSlots = 10000;  // unfinished files in one folder at a time

std::string UnfinishedName(int slot) {
  return ".vx-unfinished-" + std::to_string(slot);
}

bool IsAt(int folder, const std::string& name, int file) {
  struct stat held = {};
  struct stat named = {};
  return fstat(file, &held) == 0 && fstatat(folder, name.c_str(), &named, AT_SYMLINK_NOFOLLOW) == 0 &&
         AreSameFile(held, named);
}

/// Removes an unfinished file whose process has ended. @return whether the name is free
bool Clear(int folder, const std::string& name) {
  const Descriptor left(openat(folder, name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!left.IsOpen()) return errno == ENOENT;
  struct stat status = {};
  const bool isFile = fstat(left.Number(), &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
  return isFile && flock(left.Number(), LOCK_EX | LOCK_NB) == 0 && IsAt(folder, name, left.Number()) &&
         unlinkat(folder, name.c_str(), 0) == 0;
}

/// Removes what ended processes left, without reading the folder, which may be long.
void ClearFirst(int folder) {
  constexpr int kLooked = 4;
  for (int slot = 0; slot < kLooked; ++slot) (void)Clear(folder, UnfinishedName(slot));
}

/// Locks the file, which shows that its process is alive. Where files cannot be locked nobody removes it.
bool Claim(int file) {
  return flock(file, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

/// Has `take` use the first free name. @return whether it did, with the name; else with errno set
template <class Take>
bool TakeSlot(int folder, std::string* name, const Take& take) {
  for (int slot = 0; slot < kMostSlots; ++slot) {
    *name = UnfinishedName(slot);
    for (int i = 0; i < 2; ++i) {
      if (take(name->c_str())) return true;
      if (errno != EEXIST) return false;
      if (!Clear(folder, *name)) break;
    }
  }
  errno = EEXIST;
  return false;
}

/// The way to a file without a name.
std::string LinkTo(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

template <class Write>
bool WriteAll(const uint8_t* bytes, std::size_t size, const Write& write) {
  for (std::size_t done = 0; done < size;) {
    const ssize_t stored = Uninterrupted([&] { return write(bytes + done, size - done, done); });
    if (stored < 0) return false;
    done += static_cast<std::size_t>(stored);
  }
  return true;
}

bool WriteAt(int file, const uint8_t* bytes, std::size_t size) {
  return WriteAll(bytes, size, [file](const uint8_t* from, std::size_t count, std::size_t at) {
    return pwrite(file, from, count, static_cast<off_t>(at));
  });
}

/// Not every file system can store a folder, and not every folder can be opened for that.
bool CannotStoreFolders(int error) {
  return error == EINVAL || error == EBADF || error == EOPNOTSUPP || error == ENOSYS || error == EROFS;
}

int FailToWriteTo(const char* path, int error) {
  return Fail(SystemCause(STATUS_WRITE_ERROR, error), path, " cannot be written: ", std::strerror(error));
}

int FailToOpen(const char* path, int error) {
  return Fail(SystemCause(STATUS_OPEN_WRITE_ERROR, error), path,
              " cannot be written: ", std::strerror(error));
}

}  // namespace

Replacement::~Replacement() {
  Close();
}

/// Closes the file, which ends its lock. A file that was not moved to its place is removed before that: as
/// soon as the lock ends, the name may belong to somebody else.
void Replacement::Close() noexcept {
  const int error = errno;
  const bool isLeft = !name_.empty() && IsAt(place_->Folder(), name_, file_.descriptor);
  if (isLeft) unlinkat(place_->Folder(), name_.c_str(), 0);
  if (file_.descriptor >= 0) close(file_.descriptor);
  name_.clear();
  file_.descriptor = -1;
  errno = error;
}

int Replacement::FailToWrite(int error) const {
  return FailToWriteTo(path_.c_str(), error);
}

int Replacement::OpenUnnamed() {
  const int descriptor = Uninterrupted([&] {
    return openat(place_->Folder(), ".", O_TMPFILE | O_RDWR | O_CLOEXEC,
                  place_->Exists() ? S_IRUSR | S_IWUSR : kReadWriteForAll);
  });
  if (descriptor < 0) return -1;
  // A file without a name gets one through /proc in the end; where there is no /proc it needs one from the
  // start.
  if (access(LinkTo(descriptor).c_str(), F_OK) == 0 && Claim(descriptor)) return descriptor;
  close(descriptor);
  errno = EOPNOTSUPP;
  return -1;
}

int Replacement::OpenNamed() {
  int descriptor = -1;
  const auto open = [&](const char* name) {
    descriptor = Uninterrupted([&] {
      return openat(place_->Folder(), name, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC,
                    place_->Exists() ? S_IRUSR | S_IWUSR : kReadWriteForAll);
    });
    if (descriptor < 0) return false;
    // Somebody may have taken it for left over before it was locked.
    if (Claim(descriptor) && IsAt(place_->Folder(), name, descriptor)) return true;
    close(descriptor);
    errno = EEXIST;
    return false;
  };
  if (TakeSlot(place_->Folder(), &name_, open)) return descriptor;
  name_.clear();
  return -1;
}

int Replacement::Open(const char* path, const Place& place) {
  path_ = path;
  place_ = &place;
  if (place.Exists() && faccessat(place.Folder(), place.Name(), W_OK, AT_EACCESS) != 0) {
    return FailToOpen(path, errno);
  }
  ClearFirst(place.Folder());
  file_.descriptor = OpenUnnamed();
  const bool needsName = file_.descriptor < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL);
  if (needsName) file_.descriptor = OpenNamed();
  return file_.descriptor < 0 ? FailToOpen(path, errno) : STATUS_OK;
}

Backend Replacement::AsBackend() noexcept {
  Backend backend = {kSystemBackend.functions, &file_};
  backend.functions.open = [](void* user, const char* /*name*/, int /*flags*/) { return user; };
  backend.functions.close = [](void* /*user*/, void* /*file*/) { return 0; };
  return backend;
}

int Replacement::Fill(const uint8_t* bytes, std::size_t size) {
  return WriteAt(file_.descriptor, bytes, size) ? STATUS_OK : FailToWrite(errno);
}

bool Replacement::GiveName() {
  if (!name_.empty()) return true;
  const std::string link = LinkTo(file_.descriptor);
  const auto take = [&](const char* name) {
    return linkat(AT_FDCWD, link.c_str(), place_->Folder(), name, AT_SYMLINK_FOLLOW) == 0;
  };
  const bool isTaken = TakeSlot(place_->Folder(), &name_, take);
  if (!isTaken) name_.clear();
  return isTaken;
}

int Replacement::Store() {
  return Uninterrupted([this] { return fsync(file_.descriptor); }) == 0 ? STATUS_OK : FailToWrite(errno);
}

/// The new name outlasts a crash only once the folder is stored too.
int Replacement::StoreFolder() {
  name_.clear();
  const bool isStored = Uninterrupted([this] { return fsync(place_->Folder()); }) == 0;
  if (isStored || CannotStoreFolders(errno)) return STATUS_OK;
  return Fail({STATUS_WRITE_ERROR, VX_REASON_FOLDER_NOT_STORED, errno}, path_,
              " is written, but its folder cannot be stored, so a crash may bring ",
              "back what was there before: ", std::strerror(errno));
}

int Replacement::MoveOver(const FileLock& lock, const std::function<int()>& check) {
  const int error = TakeOverAttributes(lock.Number(), file_.descriptor);
  if (error != 0) return FailToWrite(error);
  if (const int status = Store(); status != STATUS_OK) return status;
  if (!GiveName()) return FailToWrite(errno);
  if (const int status = check ? check() : STATUS_OK; status != STATUS_OK) return status;
  const int folder = place_->Folder();
  if (renameat(folder, name_.c_str(), folder, place_->Name()) != 0) return FailToWrite(errno);
  return StoreFolder();
}

int Replacement::PutOver(const FileLock& lock, const std::function<int()>& check) {
  const int status = MoveOver(lock, check);
  Close();
  return status;
}

/// @return STATUS_OK; a failure, with errno EEXIST where something is there
int Replacement::PutWhereNothingIs() {
  if (const int status = Store(); status != STATUS_OK) return status;
  const int folder = place_->Folder();
  int result = -1;
  if (name_.empty()) {
    const std::string link = LinkTo(file_.descriptor);
    result = linkat(AT_FDCWD, link.c_str(), folder, place_->Name(), AT_SYMLINK_FOLLOW);
  } else {
    result = renameat2(folder, name_.c_str(), folder, place_->Name(), RENAME_NOREPLACE);
    const bool isUnknown = result != 0 && (errno == EINVAL || errno == ENOSYS);
    if (isUnknown) result = renameat(folder, name_.c_str(), folder, place_->Name());
  }
  if (result != 0) return FailToWrite(errno);
  const int status = StoreFolder();
  Close();
  return status;
}

int Replacement::Commit() {
  constexpr int kMostTries = 100;
  int status = STATUS_OK;
  for (int i = 0; i < kMostTries; ++i) {
    FileLock lock;
    status = lock.TakeIfThere(*place_, path_.c_str());
    if (status != STATUS_OK) return status;
    if (lock.IsOpen()) return PutOver(lock, nullptr);
    errno = 0;
    status = PutWhereNothingIs();
    if (status == STATUS_OK || errno != EEXIST) break;
  }
  return status;
}

int Replacement::CommitOver(const FileLock& lock, const std::function<int()>& check) {
  if (lock.IsOpen()) return PutOver(lock, check);
  errno = 0;
  const int status = PutWhereNothingIs();
  if (status == STATUS_OK || errno != EEXIST) return status;
  return Fail({VX_FILE_CHANGED, VX_REASON_FILE_CHANGED}, path_,
              " was made by somebody else since the edit began, and is not overwritten");
}

int WriteOver(const char* path, int file, const uint8_t* bytes, std::size_t size) {
  const bool isStored = WriteAt(file, bytes, size) &&
                        Uninterrupted([&] { return ftruncate(file, static_cast<off_t>(size)); }) == 0 &&
                        Uninterrupted([&] { return fsync(file); }) == 0;
  return isStored ? STATUS_OK : FailToWriteTo(path, errno);
}

int WriteToStream(const char* path, const Place& place, const uint8_t* bytes, std::size_t size) {
  const int stream = place.OpenStream();
  if (stream < 0) {
    return Fail(SystemCause(STATUS_OPEN_WRITE_ERROR, errno), path,
                " cannot be opened for writing: ", std::strerror(errno));
  }
  const auto put = [stream](const uint8_t* from, std::size_t count, std::size_t /*at*/) {
    return write(stream, from, count);
  };
  bool isWritten = WriteAll(bytes, size, put);
  if (isWritten && S_ISREG(place.Found().st_mode)) {
    const off_t end = lseek(stream, 0, SEEK_CUR);
    isWritten = end >= 0 && Uninterrupted([&] { return ftruncate(stream, end); }) == 0;
  }
  int error = isWritten ? 0 : errno;
  if (close(stream) != 0 && error == 0 && errno != EINTR) error = errno;
  return error == 0 ? STATUS_OK : FailToWriteTo(path, error);
}

}  // namespace vxkrn
