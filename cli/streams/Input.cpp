// Regular files are opened by the library; everything else is a stream that it reads.
#include "streams/Input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "failures/Errors.h"
#include "streams/Output.h"

namespace cli {
namespace {

bool IsStandardInput(const char* path) {
  return path == kStandardStream;
}

class Stream {
 public:
  explicit Stream(const char* path)
      : path_(path),
        isOwn_(!IsStandardInput(path)),
        descriptor_(isOwn_ ? open(path, O_RDONLY | O_NOCTTY | O_CLOEXEC) : STDIN_FILENO) {
    if (descriptor_ < 0) throw FileError::FromErrno(VX_OPEN_ERROR, InputName(path), "cannot open");
  }
  ~Stream() {
    if (isOwn_) close(descriptor_);
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;

  /// A vx_read_function; `user` is the Stream. @return the bytes read; 0 at the end, below 0 on an error.
  static int64_t Read(void* user, void* buffer, uint32_t size) {
    const auto* stream = static_cast<const Stream*>(user);
    ssize_t count = 0;
    do {
      count = read(stream->descriptor_, buffer, size);
    } while (count < 0 && errno == EINTR);
    return count;
  }
  /// What errno says of the last read. @throws FileError
  [[noreturn]] void FailToRead() const {
    throw FileError::FromErrno(VX_READ_ERROR, InputName(path_), "cannot read");
  }

 private:
  const char* path_;
  bool isOwn_;
  int descriptor_;
};

vx::Source OpenSource(const char* path, Content content) {
  if (!IsStream(path)) return vx::Source::File(path);
  Stream stream(path);
  const unsigned int flags = content == Content::Headerless ? VX_STREAM_HEADERLESS : 0;
  try {
    return vx::Source::Stream(Stream::Read, &stream, InputName(path), flags);
  } catch (const vx::Error& error) {
    if (error.status() == VX_READ_ERROR) stream.FailToRead();
    throw;
  }
}

}  // namespace

std::string InputName(const char* path) {
  return IsStandardInput(path) ? "standard input" : path;
}

bool IsStream(const char* path) {
  if (IsStandardInput(path)) return true;
  struct stat status {};
  // The library says what is wrong with folders.
  return stat(path, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

std::vector<uint8_t> ReadUpTo(const char* path, size_t most) {
  Stream stream(path);
  std::vector<uint8_t> bytes(most);
  size_t size = 0;
  int64_t count = 1;
  while (size < most && count > 0) {
    count = Stream::Read(&stream, bytes.data() + size, static_cast<uint32_t>(most - size));
    if (count < 0) stream.FailToRead();
    size += static_cast<size_t>(count);
  }
  bytes.resize(size);
  return bytes;
}

Input::Input(const char* path, Content content) : source_(OpenSource(path, content)) {}

}  // namespace cli
