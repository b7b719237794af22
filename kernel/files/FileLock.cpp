// Writers replace the file, so whoever waited for the lock may have got that of a file that was replaced
// meanwhile: the name is looked at again. Over NFS a file must be open for writing to be locked.
#include "files/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <thread>

#include "base/Errors.h"

namespace vxkrn {
namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr std::chrono::milliseconds kPause{10};

}  // namespace

FileLock::~FileLock() {
  Close();
}

void FileLock::Close() noexcept {
  if (file_.descriptor >= 0) close(file_.descriptor);
  file_.descriptor = -1;
}

/// For reading and writing, or at least for one of them. @return 0 or the errno
int FileLock::OpenFile(const Place& place) {
  Close();
  whyReadOnly_ = 0;
  for (const int mode : {O_RDWR, O_RDONLY, O_WRONLY}) {
    file_.descriptor = Uninterrupted([&] { return place.Open(mode); });
    if (IsOpen()) {
      if (mode == O_WRONLY) whyReadOnly_ = 0;
      return 0;
    }
    if (whyReadOnly_ == 0) whyReadOnly_ = errno;
    if (errno == ENOENT) break;
  }
  return whyReadOnly_;
}

int FileLock::TryToTake(const Place& place) {
  if (const int error = OpenFile(place); error != 0) return error;
  if (fstat(file_.descriptor, &locked_) != 0) return errno;
  if (!S_ISREG(locked_.st_mode)) return S_ISDIR(locked_.st_mode) ? EISDIR : ESPIPE;
  whyUnlocked_ = flock(file_.descriptor, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
  if (whyUnlocked_ == EWOULDBLOCK || whyUnlocked_ == EINTR) return EWOULDBLOCK;
  struct stat named = {};
  const bool isStillThere = place.Look(&named) && AreSameFile(named, locked_);
  return isStillThere && fstat(file_.descriptor, &locked_) == 0 ? 0 : EWOULDBLOCK;
}

int FileLock::Take(const Place& place, const char* path) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  int error = TryToTake(place);
  while (error == EWOULDBLOCK && std::chrono::steady_clock::now() <= deadline) {
    std::this_thread::sleep_for(kPause);
    error = TryToTake(place);
  }
  if (error == 0) return STATUS_OK;
  Close();
  errno = error;
  if (error == EWOULDBLOCK) {
    return Fail({STATUS_OPEN_WRITE_ERROR, VX_REASON_LOCKED}, path,
                " is being edited, by another process or by another edit of this one; try again when that is "
                "done");
  }
  const bool isNoFile = error == ESPIPE;
  return Fail(SystemCause(STATUS_OPEN_WRITE_ERROR, error), path, " cannot be opened for editing: ",
              isNoFile ? "it is a pipe or a device, and only files can be edited" : std::strerror(error));
}

int FileLock::TakeIfThere(const Place& place, const char* path) {
  const int status = Take(place, path);
  return status != STATUS_OK && errno == ENOENT ? STATUS_OK : status;
}

Backend FileLock::AsBackend() noexcept {
  Backend backend = {kSystemBackend.functions, &file_};
  backend.functions.open = [](void* user, const char* /*name*/, int /*flags*/) { return user; };
  backend.functions.close = [](void* /*user*/, void* file) {
    // Some file systems tell only whoever closes a file that its bytes were not stored.
    const int other = fcntl(static_cast<SystemFile*>(file)->descriptor, F_DUPFD_CLOEXEC, 0);
    return other < 0 || close(other) == 0 || errno == EINTR ? 0 : -1;
  };
  return backend;
}

}  // namespace vxkrn
