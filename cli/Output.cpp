// Writing files under another name first. The signal handler below is why the name of the unfinished file
// is a plain array: it may be read at any moment.
#include "Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "Errors.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr int kFatalSignals[] = {SIGINT, SIGTERM, SIGHUP};

// Empty when no file is unfinished.
std::array<char, PATH_MAX> unfinishedFile{};

extern "C" void RemoveUnfinishedFile(int signal) {
  if (unfinishedFile[0] != '\0') unlink(unfinishedFile.data());
  // The handler was installed for one call: the signal, sent again, does what it always does.
  raise(signal);
}

void HandleFatalSignals() {
  struct sigaction action {};
  action.sa_handler = RemoveUnfinishedFile;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : kFatalSignals) {
    struct sigaction before {};
    sigaction(signal, nullptr, &before);
    if (before.sa_handler == SIG_DFL) sigaction(signal, &action, nullptr);
  }
}

/// Holds the fatal signals back while the unfinished file and the note of its name disagree.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : kFatalSignals) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_{};
};

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

void WriteAll(int descriptor, const void* data, size_t size, std::string_view name) {
  const auto* next = static_cast<const char*>(data);
  while (size > 0) {
    const ssize_t written = write(descriptor, next, size);
    if (written > 0) {
      next += written;
      size -= static_cast<size_t>(written);
    } else if (written < 0 && errno == EPIPE) {
      throw OutputClosed();
    } else if (written < 0 && errno != EINTR) {
      throw FileError::FromErrno(VX_WRITE_ERROR, name, "cannot write");
    }
  }
}

/// The descriptor that a name stands for, where it names one of this process and not a file.
std::optional<int> NamedDescriptor(std::string_view path) {
  if (path == kStandardStream || path == "/dev/stdout") return STDOUT_FILENO;
  if (path == "/dev/stderr") return STDERR_FILENO;
  constexpr std::string_view kFolder = "/dev/fd/";
  if (!path.starts_with(kFolder)) return std::nullopt;
  int number = -1;
  const char* end = path.data() + path.size();
  const auto [stop, error] = std::from_chars(path.data() + kFolder.size(), end, number);
  return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::string_view NameOf(std::string_view path) {
  return path == kStandardStream ? std::string_view("standard output") : path;
}

/// Follows symbolic links, also one whose target does not exist yet.
std::string Resolve(const char* path) {
  constexpr int kMaxLinks = 40;
  fs::path place(path);
  std::error_code error;
  for (int i = 0; i < kMaxLinks && fs::is_symlink(place, error); ++i) {
    const fs::path target = fs::read_symlink(place, error);
    if (error) break;
    place = place.parent_path() / target;
  }
  return place.string();
}

mode_t DefaultMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

/// A file under another name beside its place, gone again unless it was moved there.
class UnfinishedFile {
 public:
  explicit UnfinishedFile(const std::string& place) : place_(place) {
    const std::string name = (fs::path(place).parent_path() / ".vxbmp-XXXXXX").string();
    if (name.size() >= unfinishedFile.size())
      throw FileError(VX_WRITE_ERROR, place, "cannot write: the name is too long");
    HandleFatalSignals();
    const SignalsHeld held;
    name.copy(unfinishedFile.data(), name.size());
    descriptor_ = mkostemp(unfinishedFile.data(), O_CLOEXEC);
    if (descriptor_ >= 0) return;
    const FileError failure =
        FileError::FromErrno(VX_OPEN_WRITE_ERROR, place, "cannot make a file in its folder");
    unfinishedFile.fill('\0');
    throw failure;
  }
  ~UnfinishedFile() {
    if (descriptor_ >= 0) close(descriptor_);
    const SignalsHeld held;
    if (unfinishedFile[0] != '\0') unlink(unfinishedFile.data());
    unfinishedFile.fill('\0');
  }
  UnfinishedFile(const UnfinishedFile&) = delete;
  UnfinishedFile& operator=(const UnfinishedFile&) = delete;

  void Fill(std::span<const uint8_t> bytes, mode_t mode) const {
    WriteAll(descriptor_, bytes.data(), bytes.size(), place_);
    if (fchmod(descriptor_, mode) != 0 || fsync(descriptor_) != 0) {
      throw FileError::FromErrno(VX_WRITE_ERROR, place_, "cannot write");
    }
  }

  void MoveToItsPlace() {
    const int closed = close(descriptor_);
    descriptor_ = -1;
    const SignalsHeld held;
    if (closed != 0 || rename(unfinishedFile.data(), place_.c_str()) != 0) {
      throw FileError::FromErrno(VX_WRITE_ERROR, place_, "cannot write");
    }
    unfinishedFile[0] = '\0';
  }

 private:
  const std::string& place_;
  int descriptor_ = -1;
};

void ReplaceFile(const std::string& place, std::span<const uint8_t> bytes, mode_t mode) {
  UnfinishedFile file(place);
  file.Fill(bytes, mode);
  file.MoveToItsPlace();
}

bool IsTerminal(const char* path) {
  if (const std::optional<int> number = NamedDescriptor(path)) return isatty(*number) != 0;
  struct stat status {};
  if (stat(path, &status) != 0 || !S_ISCHR(status.st_mode)) return false;
  const Descriptor device(open(path, O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  return device.IsOpen() && isatty(device.Number()) != 0;
}

}  // namespace

void PrintToStandardOutput(std::string_view text) {
  WriteAll(STDOUT_FILENO, text.data(), text.size(), NameOf(kStandardStream));
}

void RefuseTerminal(const char* path) {
  if (IsTerminal(path)) {
    throw UsageError(std::string(NameOf(path)) +
                     " is a terminal, and a picture would only garble it: name a file or use a pipe");
  }
}

void WriteWhole(const char* path, std::span<const uint8_t> bytes) {
  RefuseTerminal(path);
  if (const std::optional<int> number = NamedDescriptor(path)) {
    WriteAll(*number, bytes.data(), bytes.size(), NameOf(path));
    return;
  }
  const std::string place = Resolve(path);
  struct stat existing {};
  const bool exists = stat(place.c_str(), &existing) == 0;
  if (!exists && errno != ENOENT) throw FileError::FromErrno(VX_OPEN_WRITE_ERROR, path, "cannot write");
  if (!exists) {
    ReplaceFile(place, bytes, DefaultMode());
  } else if (!S_ISREG(existing.st_mode)) {
    const Descriptor target(open(place.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    if (!target.IsOpen()) throw FileError::FromErrno(VX_OPEN_WRITE_ERROR, path, "cannot open for writing");
    WriteAll(target.Number(), bytes.data(), bytes.size(), path);
  } else if (access(place.c_str(), W_OK) != 0) {
    throw FileError::FromErrno(VX_OPEN_WRITE_ERROR, path, "cannot write");
  } else {
    ReplaceFile(place, bytes, existing.st_mode & 07777);
  }
}

}  // namespace cli
