// Streams by their names, and everything else through the library.
#include "streams/Output.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "failures/Errors.h"

namespace cli {
namespace {

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

std::string_view NameOf(std::string_view path) {
  return path == kStandardStream ? std::string_view("standard output") : path;
}

bool IsTerminal(const char* path) {
  if (path == kStandardStream) return isatty(STDOUT_FILENO) != 0;
  struct stat status {};
  if (stat(path, &status) != 0 || !S_ISCHR(status.st_mode)) return false;
  const Descriptor device(open(path, O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
  return device.IsOpen() && isatty(device.Number()) != 0;
}

}  // namespace

void PrintToStandardOutput(std::string_view text) {
  WriteAll(STDOUT_FILENO, text.data(), text.size(), NameOf(kStandardStream));
}

bool Exists(const std::string& path) {
  struct stat status {};
  return lstat(path.c_str(), &status) == 0;
}

bool AreSameFile(const std::string& one, const std::string& other) {
  struct stat first {};
  struct stat second {};
  return stat(one.c_str(), &first) == 0 && stat(other.c_str(), &second) == 0 && S_ISREG(first.st_mode) &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

void RefuseTerminal(const char* path) {
  if (IsTerminal(path)) {
    throw UsageError(std::string(NameOf(path)) +
                     " is a terminal, and a picture would only garble it: name a file or use a pipe");
  }
}

void WritePicture(const vx::Bitmap& picture, const char* path, const vx_save_options& options) {
  RefuseTerminal(path);
  if (path != kStandardStream) return picture.Save(std::string(path), options);
  const vx::Buffer file = picture.Save(options);
  WriteAll(STDOUT_FILENO, file.Bytes().data(), file.Bytes().size(), NameOf(path));
}

}  // namespace cli
