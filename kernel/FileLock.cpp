// An edit replaces the file, so whoever waited for the lock may have got that of a file that is none any
// more: the name is looked at again then.
#include "FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "Errors.h"

namespace vxkrn {
namespace {

constexpr std::chrono::seconds kPatience{2};
constexpr std::chrono::milliseconds kPause{10};

bool IsStillAt(int descriptor, const char* path) {
  struct stat held = {};
  struct stat named = {};
  return fstat(descriptor, &held) == 0 && stat(path, &named) == 0 && held.st_dev == named.st_dev &&
         held.st_ino == named.st_ino;
}

int FailToOpen(const char* path, int error) {
  return Fail(STATUS_OPEN_WRITE_ERROR, path, " cannot be opened for editing: ", std::strerror(error));
}

}  // namespace

FileLock::~FileLock() {
  if (file_.descriptor >= 0) close(file_.descriptor);
}

int FileLock::Take(const char* path) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  for (;; std::this_thread::sleep_for(kPause)) {
    if (file_.descriptor >= 0) close(file_.descriptor);
    file_.descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
    if (file_.descriptor < 0 && errno != EINTR) return FailToOpen(path, errno);
    struct stat status = {};
    if (fstat(file_.descriptor, &status) == 0 && !S_ISREG(status.st_mode)) {
      return FailToOpen(path, S_ISDIR(status.st_mode) ? EISDIR : ESPIPE);
    }
    if (flock(file_.descriptor, LOCK_EX | LOCK_NB) == 0) {
      if (IsStillAt(file_.descriptor, path)) return STATUS_OK;
    } else if (errno != EWOULDBLOCK && errno != EINTR) {
      return FailToOpen(path, errno);
    }
    if (std::chrono::steady_clock::now() > deadline) {
      return Fail(STATUS_OPEN_WRITE_ERROR, path,
                  " is being edited by another process; try again when it is done");
    }
  }
}

}  // namespace vxkrn
