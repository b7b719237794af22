// The system's files as a backend. Positions are absolute, so one open file serves many readers. Must not
// buffer: that is done once, above all backends.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "base/Memory.h"
#include "files/Backend.h"
#include "files/SystemFile.h"

namespace vxkrn {
namespace {

int DescriptorOf(void* file) noexcept {
  return static_cast<SystemFile*>(file)->descriptor;
}

/// 0 when the open file is a regular one, whose size is told, else the errno that says what it is.
int WhyUnusable(int descriptor, int64_t* size) noexcept {
  struct stat status = {};
  if (fstat(descriptor, &status) != 0) return errno;
  *size = status.st_size;
  if (S_ISREG(status.st_mode)) return 0;
  return S_ISDIR(status.st_mode) ? EISDIR : ESPIPE;
}

int OpenDescriptor(const char* name, int flags) noexcept {
  int mode = O_RDONLY;
  if (flags != VX_OPEN_READ) mode = flags == VX_OPEN_CREATE ? O_RDWR | O_CREAT : O_RDWR;
  constexpr mode_t kReadWriteForAll = 0666;
  int descriptor = -1;
  do {
    // Without waiting: a pipe without a writer would hold the caller up before it could be refused.
    descriptor = open(name, mode | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, kReadWriteForAll);
  } while (descriptor < 0 && errno == EINTR);
  return descriptor;
}

void* OpenSystem(void* /*user*/, const char* name, int flags) {
  const int descriptor = OpenDescriptor(name, flags);
  if (descriptor < 0) return nullptr;
  int64_t size = -1;
  int reason = WhyUnusable(descriptor, &size);
  if (reason == 0) {
    if (flags != VX_OPEN_READ) size = -1;  // it will change
    auto file = memory::Make<SystemFile>(memory::Tag{"kernel/SystemBackend", __LINE__}, descriptor, size);
    if (file != nullptr) return file.release();
    reason = ENOMEM;
  }
  close(descriptor);
  errno = reason;
  return nullptr;
}

int64_t ReadSystem(void* /*user*/, void* file, void* buffer, uint32_t count, uint64_t position) {
  ssize_t got = 0;
  do {
    got = pread(DescriptorOf(file), buffer, count, static_cast<off_t>(position));
  } while (got < 0 && errno == EINTR);
  return got;
}

int64_t WriteSystem(void* /*user*/, void* file, const void* buffer, uint32_t count, uint64_t position) {
  ssize_t stored = 0;
  do {
    stored = pwrite(DescriptorOf(file), buffer, count, static_cast<off_t>(position));
  } while (stored < 0 && errno == EINTR);
  return stored;
}

int64_t SizeOfSystem(void* /*user*/, void* file) {
  const int64_t known = static_cast<const SystemFile*>(file)->size;
  if (known >= 0) return known;
  struct stat status = {};
  return fstat(DescriptorOf(file), &status) == 0 ? static_cast<int64_t>(status.st_size) : -1;
}

int TruncateSystem(void* /*user*/, void* file, uint64_t size) {
  int result = 0;
  do {
    result = ftruncate(DescriptorOf(file), static_cast<off_t>(size));
  } while (result < 0 && errno == EINTR);
  return result;
}

int CloseSystem(void* /*user*/, void* file) {
  const memory::Owned<SystemFile> owned(static_cast<SystemFile*>(file));
  // Not repeated when interrupted: the descriptor is gone by then and may belong to someone else.
  return close(owned->descriptor) == 0 || errno == EINTR ? 0 : -1;
}

}  // namespace

const Backend kSystemBackend = {
    {OpenSystem, ReadSystem, WriteSystem, SizeOfSystem, TruncateSystem, CloseSystem}, nullptr};

}  // namespace vxkrn
