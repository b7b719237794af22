// vx_open_stream: what cannot be read twice is taken into memory, and what begins like no picture is left
// where it is. What the bytes mean otherwise is not known here.
#include <algorithm>
#include <array>
#include <span>

#include "app/Explain.h"
#include "base/Errors.h"
#include "files/OpenFile.h"
#include "files/Source.h"
#include "format/BitmapLayout.h"

namespace vxkrn {
namespace {

/// Whether a picture can begin like this. Zeros alone begin no icon: anything endless would be one.
bool MayBePicture(std::span<const uint8_t> bytes) {
  struct Start {
    std::array<uint8_t, 6> bytes;
    std::size_t count;
  };
  constexpr Start kStarts[] = {{{'B', 'M'}, 2},
                               {{'B', 'A'}, 2},
                               {{0, 0, 1, 0}, 4},
                               {{0, 0, 2, 0}, 4},
                               {{'I', 'C'}, 2},
                               {{'C', 'I'}, 2},
                               {{'P', 'T'}, 2},
                               {{'C', 'P'}, 2},
                               {{bmp::kCoreHeaderSize, 0, 0, 0}, 4},  // bitmaps without a file header
                               {{bmp::kInfoHeaderSize, 0, 0, 0}, 4},
                               {{bmp::kMasks3HeaderSize, 0, 0, 0}, 4},
                               {{bmp::kMasks4HeaderSize, 0, 0, 0}, 4},
                               {{bmp::kOs2HeaderSize, 0, 0, 0}, 4},
                               {{bmp::kV4HeaderSize, 0, 0, 0}, 4},
                               {{bmp::kV5HeaderSize, 0, 0, 0}, 4},
                               {{0x89, 'P', 'N', 'G', '\r', '\n'}, 6},
                               {{'R', 'I', 'F', 'F'}, 4}};
  constexpr std::array<uint8_t, 4> kAnimation = {'A', 'C', 'O', 'N'};
  constexpr std::size_t kFormAt = 8;  // of what a RIFF file says that it is, which may be a film
  if (bytes.size() >= kFormAt + kAnimation.size() && bytes[0] == 'R' &&
      !std::equal(kAnimation.begin(), kAnimation.end(), bytes.begin() + kFormAt)) {
    return false;
  }
  return std::any_of(std::begin(kStarts), std::end(kStarts), [&](const Start& start) {
    const auto count = static_cast<std::ptrdiff_t>(std::min(bytes.size(), start.count));
    return std::equal(bytes.begin(), bytes.begin() + count, start.bytes.begin());
  });
}

/// A stream's bytes as they come. Memory doubles, and in the end gives back what is too much.
class Reader {
 public:
  Reader(vx_read_function read, void* user, memory::Bytes* bytes) noexcept
      : read_(read), user_(user), bytes_(*bytes) {}

  /// Reads to the end, or as long as `mayGoOn` likes what has come.
  template <class Question>
  int Run(const Question& mayGoOn) {
    while (mayGoOn(std::span(bytes_.get(), size_))) {
      int status = size_ == capacity_ ? Grow() : STATUS_OK;
      if (status == STATUS_OK && size_ == capacity_) return RequireEnd();
      std::size_t got = 0;
      if (status == STATUS_OK) status = ReadTo(bytes_.get() + size_, capacity_ - size_, &got);
      if (status != STATUS_OK) return status;
      if (got == 0) break;
      size_ += got;
    }
    (void)Resize(std::max<std::size_t>(size_, 1));  // smaller, which may fail: nothing is lost
    return STATUS_OK;
  }
  [[nodiscard]] std::size_t Size() const noexcept { return size_; }

 private:
  static constexpr std::size_t kFirst = std::size_t{64} * 1024;

  int ReadTo(uint8_t* to, std::size_t room, std::size_t* got) const noexcept {
    const auto count = static_cast<uint32_t>(std::min<std::size_t>(room, 1 << 30));
    const int64_t answer = read_(user_, to, count);
    if (answer < 0 || answer > count)
      return Fail({STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR}, "it cannot be read");
    *got = static_cast<std::size_t>(answer);
    return STATUS_OK;
  }
  [[nodiscard]] bool Resize(std::size_t capacity) noexcept {
    void* resized = bytes_ == nullptr ? memory::Allocate(capacity, {"kernel/Stream", __LINE__})
                                      : memory::Resize(bytes_.get(), capacity);
    if (resized == nullptr) return false;
    (void)bytes_.release();  // resizing has it
    bytes_.reset(static_cast<uint8_t*>(resized));
    capacity_ = capacity;
    return true;
  }
  /// Makes room, as much as there is: none at the memory limit.
  int Grow() noexcept {
    const uint64_t limit = memory::Limit();
    const uint64_t left = limit - std::min(memory::InUse(), limit);
    const uint64_t most = std::min<uint64_t>(kLastPosition, SIZE_MAX / 2);
    const uint64_t wanted =
        std::min({std::max<uint64_t>(kFirst, capacity_ * uint64_t{2}), capacity_ + left, most});
    if (wanted == capacity_ || Resize(static_cast<std::size_t>(wanted))) return STATUS_OK;
    return FailForMemory("reading it", memory::LastRefusal());
  }
  /// What fills the last byte of memory may be whole.
  int RequireEnd() const noexcept {
    uint8_t next = 0;
    std::size_t got = 0;
    const int status = ReadTo(&next, 1, &got);
    if (status != STATUS_OK || got == 0) return status;
    if (size_ == kLastPosition) {
      return Fail({STATUS_NO_MEMORY, VX_REASON_FILE_TOO_LARGE, size_}, "it goes on after ", size_,
                  " bytes, and no more can be read");
    }
    return Fail({STATUS_NO_MEMORY, VX_REASON_OVER_MEMORY_LIMIT, size_, memory::Limit()}, "it goes on after ",
                size_, " bytes, of which the memory limit of ", memory::Limit(),
                " bytes allows no more. Raise the limit if this is expected");
  }

  vx_read_function read_;
  void* user_;
  memory::Bytes& bytes_;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

int OpenStream(vx_read_function read, void* user, unsigned int flags, vx_source* source) {
  Reader reader(read, user, &source->held);
  const int status = reader.Run([flags](std::span<const uint8_t> bytes) {
    return (flags & VX_STREAM_HEADERLESS) != 0 || MayBePicture(bytes);
  });
  if (status != STATUS_OK) return Explain(status, *source, 0, {});
  source->ReadFromMemory(source->held.get(), reader.Size());
  return STATUS_OK;
}

}  // namespace
}  // namespace vxkrn

int vx_open_stream(vx_read_function read, void* user, const char* name, unsigned int flags,
                   vx_source** source) {
  return vxkrn::Guarded([&]() -> int {
    if (source != nullptr) *source = nullptr;
    if (read == nullptr || source == nullptr || (flags & ~unsigned{VX_STREAM_HEADERLESS}) != 0) {
      return vxkrn::FailForArgument(
          "the function that reads, known flags and the place for the source must be given");
    }
    auto opened = vxkrn::NewSource(name == nullptr ? "stream" : name);
    if (opened == nullptr) return vxkrn::FailForMemory("opening a stream", sizeof(vx_source));
    const int status = vxkrn::OpenStream(read, user, flags, opened.get());
    if (status == STATUS_OK) *source = opened.release();
    return status;
  });
}
