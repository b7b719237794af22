// Regular files are opened by the library; everything else is read first.
#include "Input.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <span>

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
    if (descriptor_ < 0) throw FileError::FromErrno(VX_OPEN_ERROR, InputName(path), "cannot open");
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

/// Whether a picture can begin like this.
bool MayBePicture(std::span<const uint8_t> bytes) {
  constexpr std::array<uint8_t, 2> kSignatures[] = {{'B', 'M'}, {'B', 'A'}, {0, 0}, {0x89, 'P'}};
  return std::any_of(std::begin(kSignatures), std::end(kSignatures), [&](const auto& signature) {
    const size_t count = std::min(bytes.size(), signature.size());
    return std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count), signature.begin());
  });
}

Bytes ReadStream(const char* path, size_t most, Content content) {
  const Stream stream(path);
  Bytes bytes;
  while (bytes.Size() < most && (content == Content::Headerless || MayBePicture(bytes.All()))) {
    const std::span<uint8_t> room = bytes.Room(most);
    const ssize_t count = stream.Read(room.data(), room.size());
    if (count < 0) throw FileError::FromErrno(VX_READ_ERROR, InputName(path), "cannot read");
    if (count == 0) break;
    bytes.Add(static_cast<size_t>(count));
  }
  return bytes;
}

vx::Source OpenSource(const char* path, Content content, Bytes& bytes) {
  if (!IsStream(path)) return vx::Source::File(path);
  constexpr uint64_t kMostTheLibraryTakes = UINT32_MAX - 1;
  const uint64_t limit = std::min(vx_memory_limit(), kMostTheLibraryTakes);
  bytes = ReadStream(path, static_cast<size_t>(limit) + 1, content);
  if (bytes.Size() > limit) {
    throw FileError(VX_NO_MEMORY, InputName(path),
                    fmt::format("goes on after {}; --memory-limit SIZE lets more be read, up to 4 GiB",
                                ByteCount(limit)));
  }
  return vx::Source::Memory(bytes.All(), InputName(path));
}

}  // namespace

std::string InputName(const char* path) {
  return IsStandardInput(path) ? "standard input" : path;
}

Bytes ReadUpTo(const char* path, size_t most) {
  return ReadStream(path, most, Content::Headerless);
}

Input::Input(const char* path, Content content) : source_(OpenSource(path, content, bytes_)) {}

}  // namespace cli
