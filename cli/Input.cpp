// Regular files are opened by the library; everything else is read to its end first.
#include "Input.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "Errors.h"
#include "Output.h"
#include "Text.h"

namespace cli {
namespace {

bool IsStandardInput(const char* path) {
  return path == kStandardStream;
}

/// Pipes, devices and sockets: what has to be read in one go. The library says what is wrong with the rest.
bool IsStream(const char* path) {
  if (IsStandardInput(path)) return true;
  struct stat status {};
  return stat(path, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

class Stream {
 public:
  explicit Stream(const char* path)
      : isOwn_(!IsStandardInput(path)),
        descriptor_(isOwn_ ? open(path, O_RDONLY | O_NOCTTY | O_CLOEXEC) : STDIN_FILENO) {
    if (descriptor_ < 0) throw FileError::FromErrno(InputName(path), "cannot open");
  }
  ~Stream() {
    if (isOwn_) close(descriptor_);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  /// @return the bytes read; 0 at the end, below 0 on an error.
  ssize_t Read(uint8_t* buffer, size_t size) const {
    ssize_t count = 0;
    do {
      count = read(descriptor_, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }

 private:
  bool isOwn_;
  int descriptor_;
};

vx::Source OpenSource(const char* path, std::vector<uint8_t>& bytes) {
  if (!IsStream(path)) return vx::Source::File(path);
  bytes = ReadWhole(path, vx_memory_limit());
  return vx::Source::Memory(bytes, InputName(path));
}

}  // namespace

std::string InputName(const char* path) {
  return IsStandardInput(path) ? "standard input" : path;
}

std::vector<uint8_t> ReadWhole(const char* path, uint64_t limit) {
  constexpr size_t kFirstBlock = size_t{64} * 1024;
  const Stream stream(path);
  std::vector<uint8_t> bytes;
  size_t filled = 0;
  while (true) {
    if (filled == bytes.size()) bytes.resize(filled == 0 ? kFirstBlock : filled * 2);
    const ssize_t count = stream.Read(bytes.data() + filled, bytes.size() - filled);
    if (count < 0) throw FileError::FromErrno(InputName(path), "cannot read");
    if (count == 0) break;
    filled += static_cast<size_t>(count);
    if (filled > limit) {
      throw FileError(InputName(path), fmt::format("holds more than {}", ByteCount(limit)));
    }
  }
  bytes.resize(filled);
  return bytes;
}

Input::Input(const char* path) : source_(OpenSource(path, bytes_)) {}

}  // namespace cli
