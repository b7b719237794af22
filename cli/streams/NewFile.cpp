// A file without a name is gone with the process, however that ends. Where the file system has no such files,
// one with a name that nobody looks for does as well until it is complete.
#include "streams/NewFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "failures/Errors.h"

namespace cli {
namespace {

constexpr mode_t kMode = 0666;  // but for what the user's mask takes away

std::string FolderOf(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

}  // namespace

void MakeFolder(const std::string& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!error) return;
  errno = error.value();
  throw FileError::FromErrno(VX_OPEN_WRITE_ERROR, folder, "cannot make the folder");
}

NewFile::NewFile(const std::string& path)
    : path_(path), descriptor_(open(FolderOf(path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, kMode)) {
  if (descriptor_ < 0 && (errno == EOPNOTSUPP || errno == EISDIR || errno == EINVAL)) {
    temporary_ = FolderOf(path) + "/.vxbmp-XXXXXX";
    descriptor_ = mkostemp(temporary_.data(), O_CLOEXEC);
    const mode_t mask = umask(0);
    umask(mask);
    if (descriptor_ >= 0) (void)fchmod(descriptor_, kMode & ~mask);
  }
  if (descriptor_ < 0) throw FileError::FromErrno(VX_OPEN_WRITE_ERROR, path_, "cannot make the file");
}

NewFile::~NewFile() {
  close(descriptor_);
  if (!temporary_.empty()) unlink(temporary_.c_str());
}

void NewFile::Write(std::span<const uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t written = write(descriptor_, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) throw FileError::FromErrno(VX_WRITE_ERROR, path_, "cannot write");
    if (written > 0) bytes = bytes.subspan(static_cast<size_t>(written));
  }
}

bool NewFile::Finish() {
  const std::string name = temporary_.empty() ? fmt::format("/proc/self/fd/{}", descriptor_) : temporary_;
  if (linkat(AT_FDCWD, name.c_str(), AT_FDCWD, path_.c_str(), AT_SYMLINK_FOLLOW) == 0) return true;
  if (errno == EEXIST) return false;
  const bool hasNoLinks = !temporary_.empty() && (errno == EPERM || errno == EOPNOTSUPP);
  if (hasNoLinks && renameat2(AT_FDCWD, name.c_str(), AT_FDCWD, path_.c_str(), RENAME_NOREPLACE) == 0) {
    temporary_.clear();
    return true;
  }
  if (errno == EEXIST) return false;
  throw FileError::FromErrno(VX_WRITE_ERROR, path_, "cannot name the file");
}

}  // namespace cli
