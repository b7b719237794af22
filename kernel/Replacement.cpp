// Every way out before the rename leaves the old file as it was and closes the new one, which is gone then or
// is unlinked.
#include "Replacement.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>

#include "Errors.h"

namespace vxkrn {
namespace {

constexpr mode_t kReadWriteForAll = 0666;
constexpr mode_t kPermissions = 07777;
constexpr mode_t kSetIds = S_ISUID | S_ISGID;

template <class Call>
auto Uninterrupted(Call&& call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

std::string FolderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

/// The file behind symbolic links, also behind one whose target is not there yet.
std::string Resolve(const char* path) {
  constexpr int kMostLinks = 40;  // as many as the system follows
  std::string place = path;
  for (int i = 0; i < kMostLinks; ++i) {
    char target[4096];
    const ssize_t length = readlink(place.c_str(), target, sizeof target);
    if (length <= 0 || length == static_cast<ssize_t>(sizeof target)) break;
    const std::string link(target, static_cast<std::size_t>(length));
    place = link.front() == '/' ? link : FolderOf(place).append(link);
  }
  return place;
}

/// A name that no other save of this process, or of another one alive, uses.
std::string UnfinishedName(std::string folder) {
  static std::atomic<unsigned int> count{0};
  return folder.append(".vx-").append(std::to_string(getpid())).append("-").append(std::to_string(++count));
}

/// The way to a file without a name.
std::string LinkTo(int descriptor) {
  return "/proc/self/fd/" + std::to_string(descriptor);
}

}  // namespace

Replacement::~Replacement() {
  const int error = errno;
  if (file_.descriptor >= 0) close(file_.descriptor);
  if (!name_.empty()) unlink(name_.c_str());
  errno = error;
}

int Replacement::FailToWrite(int error) const {
  return Fail(STATUS_WRITE_ERROR, path_, " cannot be written: ", std::strerror(error));
}

int Replacement::OpenUnnamed() {
  const std::string folder = folder_.empty() ? "." : folder_;
  const int descriptor = Uninterrupted([&] {
    return open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC,
                exists_ ? S_IRUSR | S_IWUSR : kReadWriteForAll);
  });
  if (descriptor < 0) return -1;
  // It is named through /proc in the end; without one it had better have a name from the start.
  if (access(LinkTo(descriptor).c_str(), F_OK) == 0) return descriptor;
  close(descriptor);
  errno = EOPNOTSUPP;
  return -1;
}

int Replacement::OpenNamed() {
  int descriptor = -1;
  do {
    name_ = UnfinishedName(folder_);
    descriptor = open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC,
                      exists_ ? S_IRUSR | S_IWUSR : kReadWriteForAll);
  } while (descriptor < 0 && (errno == EEXIST || errno == EINTR));
  if (descriptor < 0) name_.clear();
  return descriptor;
}

int Replacement::Open(const char* path) {
  path_ = path;
  place_ = Resolve(path);
  folder_ = FolderOf(place_);
  const auto fail = [this](int error) {
    return Fail(STATUS_OPEN_WRITE_ERROR, path_, " cannot be written: ", std::strerror(error));
  };
  exists_ = stat(place_.c_str(), &old_) == 0;
  if (!exists_ && (errno != ENOENT || place_.empty())) return fail(errno);
  if (exists_ && S_ISDIR(old_.st_mode)) return fail(EISDIR);
  if (exists_ && !S_ISREG(old_.st_mode)) {
    isStream_ = true;
    return STATUS_OK;
  }
  if (exists_ && access(place_.c_str(), W_OK) != 0) return fail(errno);
  file_.descriptor = OpenUnnamed();
  const bool needsName = file_.descriptor < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL);
  if (needsName) file_.descriptor = OpenNamed();
  return file_.descriptor < 0 ? fail(errno) : STATUS_OK;
}

Backend Replacement::AsBackend() noexcept {
  Backend backend = {kSystemBackend.functions, &file_};
  backend.functions.open = [](void* user, const char* /*name*/, int /*flags*/) { return user; };
  backend.functions.close = [](void* /*user*/, void* /*file*/) { return 0; };
  return backend;
}

int Replacement::Fill(const std::uint8_t* bytes, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t stored = Uninterrupted(
        [&] { return pwrite(file_.descriptor, bytes + done, size - done, static_cast<off_t>(done)); });
    if (stored < 0) return FailToWrite(errno);
    done += static_cast<std::size_t>(stored);
  }
  return STATUS_OK;
}

/// A file that cannot be given to its old owner must not act in the new one's name.
bool Replacement::TakeOverOwnerAndMode() const noexcept {
  if (!exists_) return true;
  const bool hasOwner = fchown(file_.descriptor, old_.st_uid, old_.st_gid) == 0;
  const bool hasGroup = hasOwner || fchown(file_.descriptor, static_cast<uid_t>(-1), old_.st_gid) == 0;
  mode_t mode = old_.st_mode & kPermissions;
  if (!hasOwner) mode &= ~kSetIds;
  if (!hasGroup) mode &= ~static_cast<mode_t>(S_IRWXG);
  return fchmod(file_.descriptor, mode) == 0;
}

bool Replacement::GiveName() {
  if (!name_.empty()) return true;
  const std::string link = LinkTo(file_.descriptor);
  std::string name;
  int result = -1;
  do {
    name = UnfinishedName(folder_);
    result = linkat(AT_FDCWD, link.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW);
  } while (result != 0 && errno == EEXIST);
  if (result == 0) name_ = std::move(name);
  return result == 0;
}

int Replacement::Commit() {
  if (!TakeOverOwnerAndMode() || Uninterrupted([this] { return fsync(file_.descriptor); }) != 0) {
    return FailToWrite(errno);
  }
  if (!GiveName() || rename(name_.c_str(), place_.c_str()) != 0) return FailToWrite(errno);
  name_.clear();
  // The new name outlasts a crash only once the folder is stored too; not every file system can do that.
  const int folder = open(folder_.empty() ? "." : folder_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder >= 0) {
    (void)fsync(folder);
    close(folder);
  }
  return STATUS_OK;
}

int WriteToStream(const char* path, const std::uint8_t* bytes, std::size_t size) {
  const int descriptor = Uninterrupted([path] { return open(path, O_WRONLY | O_NOCTTY | O_CLOEXEC); });
  if (descriptor < 0) {
    return Fail(STATUS_OPEN_WRITE_ERROR, path, " cannot be opened for writing: ", std::strerror(errno));
  }
  ssize_t stored = 0;
  while (size > 0 && stored >= 0) {
    stored = Uninterrupted([&] { return write(descriptor, bytes, size); });
    if (stored < 0) break;
    bytes += stored;
    size -= static_cast<std::size_t>(stored);
  }
  int error = size > 0 ? errno : 0;
  if (close(descriptor) != 0 && error == 0 && errno != EINTR) error = errno;
  if (error == 0) return STATUS_OK;
  return Fail(STATUS_WRITE_ERROR, path, " cannot be written: ", std::strerror(error));
}

}  // namespace vxkrn
