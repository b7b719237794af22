// The window holds either bytes read ahead or bytes that wait to be written, never both. Requests as big as
// the window go past it. Without memory for a window everything still works, only slower.
#include "files/OpenFile.h"

#include <cerrno>
#include <climits>

namespace vxkrn {
namespace {

constexpr uint32_t kWindowSize = 16 * 1024;
// Few bytes are read ahead after a jump, more the longer a caller reads on: directories are hopped through.
constexpr uint32_t kFirstReadAhead = 512;

}  // namespace

bool OpenFile::HasWindow() noexcept {
  if (window_ == nullptr) window_ = memory::MakeBytes(kWindowSize, {"kernel/OpenFile", __LINE__});
  return window_ != nullptr;
}

uint32_t OpenFile::TakeFromWindow(uint8_t* destination, uint32_t count) noexcept {
  if (position_ < windowStart_ || position_ - windowStart_ >= windowFill_) return 0;
  const auto start = static_cast<uint32_t>(position_ - windowStart_);
  const uint32_t taken = std::min(count, windowFill_ - start);
  std::memcpy(destination, window_.get() + start, taken);
  return taken;
}

int64_t OpenFile::ReadBackend(uint8_t* destination, uint32_t count, uint64_t offset) noexcept {
  const int64_t got = backend_.functions.read_at(backend_.user, file_, destination, count, offset);
  return got > count ? -1 : got;
}

/// Reads some of the bytes wanted: from the window, around it, or after filling it.
int64_t OpenFile::ReadStep(uint8_t* destination, uint32_t count) noexcept {
  const uint32_t taken = TakeFromWindow(destination, count);
  if (taken > 0) return taken;
  const bool readsOn = position_ == windowStart_ + windowFill_;
  readAhead_ = readsOn && readAhead_ > 0 ? std::min(readAhead_ * 4, kWindowSize) : kFirstReadAhead;
  if (count >= kWindowSize || !HasWindow()) return ReadBackend(destination, count, position_);

  windowFill_ = 0;
  windowStart_ = position_;
  const auto ahead =
      static_cast<uint32_t>(std::min<uint64_t>(std::max(readAhead_, count), kLastPosition - position_));
  const int64_t got = ReadBackend(window_.get(), ahead, position_);
  if (got <= 0) return got;
  windowFill_ = static_cast<uint32_t>(got);
  return TakeFromWindow(destination, count);
}

int OpenFile::Read(uint8_t* destination, uint32_t count) noexcept {
  trace_ = {position_, count, 0};
  if (waiting_ && !Flush()) return -1;
  const auto wanted =
      static_cast<uint32_t>(std::min<uint64_t>({count, uint64_t{INT_MAX}, kLastPosition - position_}));
  uint32_t done = 0;
  int64_t step = 0;
  while (done < wanted && (step = ReadStep(destination + done, wanted - done)) > 0) {
    done += static_cast<uint32_t>(step);
    position_ += static_cast<uint64_t>(step);
  }
  trace_.got = done;
  return step < 0 && done == 0 ? -1 : static_cast<int>(done);
}

void OpenFile::NoteWriteFailure() noexcept {
  if (!writeFailed_) writeError_ = errno;
  writeFailed_ = true;
}

bool OpenFile::WriteBackend(const uint8_t* source, std::size_t count, uint64_t offset) noexcept {
  while (count > 0) {
    errno = 0;
    const int64_t stored =
        backend_.functions.write_at(backend_.user, file_, source, static_cast<uint32_t>(count), offset);
    if (stored <= 0 || static_cast<uint64_t>(stored) > count) {
      NoteWriteFailure();
      return false;
    }
    source += stored;
    count -= static_cast<std::size_t>(stored);
    offset += static_cast<uint64_t>(stored);
  }
  return true;
}

bool OpenFile::Flush() noexcept {
  const uint32_t count = waiting_ ? windowFill_ : 0;
  waiting_ = false;
  windowFill_ = 0;
  return WriteBackend(window_.get(), count, windowStart_) && !writeFailed_;
}

int OpenFile::Write(const uint8_t* source, uint32_t count) noexcept {
  if (count == 0) return EndHere();
  if (!writable_ || writeFailed_ || count > INT_MAX || count > kLastPosition - position_) return -1;

  const bool continues = waiting_ && position_ == windowStart_ + windowFill_;
  if (!continues || count > kWindowSize - windowFill_) {
    if (!Flush()) return -1;
    windowStart_ = position_;
  }
  if (count >= kWindowSize || !HasWindow()) {
    if (!WriteBackend(source, count, position_)) return -1;
    position_ += count;
    return static_cast<int>(count);
  }
  std::memcpy(window_.get() + windowFill_, source, count);
  waiting_ = true;
  windowFill_ += count;
  position_ += count;
  return static_cast<int>(count);
}

int OpenFile::EndHere() noexcept {
  if (!writable_ || !Flush()) return -1;
  errno = 0;
  if (backend_.functions.truncate(backend_.user, file_, position_) < 0) {
    NoteWriteFailure();
    return -1;
  }
  return 0;
}

bool OpenFile::MoveTo(int64_t target) noexcept {
  if (target < 0 || static_cast<uint64_t>(target) > kLastPosition) return false;
  position_ = static_cast<uint64_t>(target);
  return true;
}

int64_t OpenFile::Size() const noexcept {
  const int64_t stored = backend_.functions.size(backend_.user, file_);
  if (stored < 0 || !waiting_) return stored;
  return std::max(stored, static_cast<int64_t>(windowStart_ + windowFill_));
}

bool OpenFile::Close() noexcept {
  const bool flushed = Flush();
  errno = 0;
  const bool closed = backend_.functions.close(backend_.user, file_) >= 0;
  if (writable_ && !closed) NoteWriteFailure();
  return flushed && !writeFailed_;
}

}  // namespace vxkrn
