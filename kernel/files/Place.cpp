// Links are followed one by one, because the system tells which file a path leads to, but not in which folder
// it stands under which name. Each is held open while it is judged and read, so that nobody exchanges it in
// between; in the end the system has to come to the same file.
#include "files/Place.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <charconv>
#include <climits>
#include <cstring>
#include <optional>

#include "base/Errors.h"

namespace vxkrn {
namespace {

bool IsOfProc(int descriptor) {
  struct statfs system = {};
  return fstatfs(descriptor, &system) == 0 && system.f_type == PROC_SUPER_MAGIC;
}

/// The descriptor that an entry of a folder in /proc stands for, where it is one of this process.
std::optional<int> OwnDescriptor(int folder, const std::string& name) {
  struct stat held = {};
  struct stat own = {};
  if (fstat(folder, &held) != 0 || stat("/proc/self/fd", &own) != 0 || !AreSameFile(held, own)) return {};
  int number = -1;
  const char* end = name.data() + name.size();
  const auto [stop, error] = std::from_chars(name.data(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

/// The system's rule of protected links, which it applies where it is told to and only to what it opens.
bool MayFollow(int folder, const struct stat& link) {
  struct stat parent = {};
  if (fstat(folder, &parent) != 0) return false;
  constexpr mode_t kForAll = S_ISVTX | S_IWOTH;
  return (parent.st_mode & kForAll) != kForAll || link.st_uid == geteuid() || link.st_uid == parent.st_uid;
}

int ReadLink(int link, std::string* text) {
  text->resize(PATH_MAX);
  const ssize_t length = readlinkat(link, "", text->data(), text->size());
  if (length < 0) return errno;
  if (length == 0 || length == PATH_MAX) return ENAMETOOLONG;
  text->resize(static_cast<std::size_t>(length));
  return 0;
}

}  // namespace

void Descriptor::Reset(int number) noexcept {
  const int error = errno;
  if (number_ >= 0) close(number_);
  number_ = number;
  errno = error;
}

/// Splits the path into folder, which is opened, and name. @return 0 or the errno
int Place::EnterFolder(const std::string& path) {
  const std::size_t nameAt = path.rfind('/') + 1;
  name_ = path.substr(nameAt);
  const std::string folder = nameAt == 0 ? "." : path.substr(0, nameAt);
  const int base = folder_.IsOpen() ? folder_.Number() : AT_FDCWD;
  constexpr int kFlags = O_DIRECTORY | O_CLOEXEC;
  int opened = Uninterrupted([&] { return openat(base, folder.c_str(), O_RDONLY | kFlags); });
  if (opened < 0 && errno == EACCES) opened = openat(base, folder.c_str(), O_PATH | kFlags);
  if (opened < 0 || path.empty()) return opened < 0 ? errno : ENOENT;
  folder_.Reset(opened);
  return name_.empty() || name_ == "." || name_ == ".." ? EISDIR : 0;
}

/// Takes what an entry of /proc leads to. @return 0 or the errno
int Place::TakeStream() {
  isStream_ = exists_ = true;
  if (const std::optional<int> number = OwnDescriptor(folder_.Number(), name_)) {
    shared_.Reset(fcntl(*number, F_DUPFD_CLOEXEC, 0));
    if (!shared_.IsOpen()) return errno;
  }
  if (!Look(&found_)) return errno;
  return S_ISDIR(found_.st_mode) ? EISDIR : 0;
}

/// @return 0 or the errno
int Place::FollowLinks(std::string path) {
  constexpr int kMostLinks = 40;  // as many as the system follows
  for (int links = 0; links <= kMostLinks; ++links) {
    if (const int error = EnterFolder(path); error != 0) return error;
    const Descriptor entry(openat(folder_.Number(), Name(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    if (!entry.IsOpen()) return errno == ENOENT ? 0 : errno;
    if (fstat(entry.Number(), &found_) != 0) return errno;
    if (!S_ISLNK(found_.st_mode)) {
      exists_ = true;
      isStream_ = !S_ISREG(found_.st_mode);
      return S_ISDIR(found_.st_mode) ? EISDIR : 0;
    }
    if (IsOfProc(folder_.Number())) return TakeStream();
    isForeign_ = !MayFollow(folder_.Number(), found_);
    if (isForeign_) return EACCES;
    if (const int error = ReadLink(entry.Number(), &path); error != 0) return error;
    followed_ = true;
  }
  return ELOOP;
}

int Place::Find(const char* path) {
  int error = FollowLinks(path);
  if (error == 0 && followed_ && !shared_.IsOpen()) {
    struct stat status = {};
    const bool isThere = stat(path, &status) == 0;
    if (!isThere && (exists_ || errno != ENOENT)) error = errno;
    if (isThere && !(exists_ && AreSameFile(status, found_))) error = ESTALE;
  }
  if (error == 0) return STATUS_OK;
  return Fail(SystemCause(STATUS_OPEN_WRITE_ERROR, error), path, " cannot be written: ", std::strerror(error),
              isForeign_ ? "; it leads through a link that somebody else put in a folder for all" : "");
}

int Place::OpenStream() const noexcept {
  if (shared_.IsOpen()) return fcntl(shared_.Number(), F_DUPFD_CLOEXEC, 0);
  return Uninterrupted(
      [this] { return openat(Folder(), Name(), O_WRONLY | O_TRUNC | O_NOCTTY | O_CLOEXEC); });
}

int Place::Open(int flags) const {
  const int all = flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  if (shared_.IsOpen()) return open(("/proc/self/fd/" + std::to_string(shared_.Number())).c_str(), all);
  return openat(Folder(), Name(), isStream_ ? all : all | O_NOFOLLOW);
}

bool Place::Look(struct stat* status) const noexcept {
  if (shared_.IsOpen()) return fstat(shared_.Number(), status) == 0;
  return fstatat(Folder(), Name(), status, isStream_ ? 0 : AT_SYMLINK_NOFOLLOW) == 0;
}

}  // namespace vxkrn
