// The window holds bytes that were read, some of them written over since, or bytes that were only written:
// those may make the file longer, which is found out before anything else is read. Requests as big as the
// window go past it. Without memory for a window everything still works, only slower.
#include "files/OpenFile.h"

#include <cerrno>
#include <climits>

namespace vxkrn {
namespace {

constexpr uint32_t kWindowSize = 16 * 1024;
// Few bytes are read ahead after a jump, more the longer a caller reads on: directories are hopped through.
constexpr uint32_t kFirstReadAhead = 512;
// Who moves bytes within a file writes a little beside what it reads.
constexpr uint32_t kBeside = 64;
constexpr uint32_t kMostBefore = 4096;

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

/// Reads into the window what lies around `count` bytes at the position: ahead of them or, where a file that
/// is written to is read towards its start, before them.
/// @return above 0 where the first of them came, 0 where the file ends there, below 0 for an error
int64_t OpenFile::FillWindow(uint32_t count) noexcept {
  const bool readsBack = writable_ && position_ < windowStart_ && position_ + count >= windowStart_;
  const uint32_t beside = writable_ ? kBeside : 0;
  const uint64_t end = position_ + std::max(readAhead_, count) + beside;
  windowFill_ = 0;
  windowStart_ = position_;
  if (writable_) {  // with what the same call has read of the window before
    const auto before = static_cast<uint32_t>(std::min<uint64_t>(position_ - trace_.offset, kMostBefore));
    windowStart_ -= std::min<uint64_t>(position_, before + beside);
  }
  if (readsBack) {
    const uint64_t last = position_ + count + beside;
    windowStart_ = last - std::min<uint64_t>(last, kWindowSize);
  }
  const uint64_t wanted = std::min({end - windowStart_, uint64_t{kWindowSize}, kLastPosition - windowStart_});
  int64_t got = 1;
  while (got > 0 && windowStart_ + windowFill_ <= position_) {
    got = ReadBackend(window_.get() + windowFill_, static_cast<uint32_t>(wanted) - windowFill_,
                      windowStart_ + windowFill_);
    if (got > 0) windowFill_ += static_cast<uint32_t>(got);
  }
  return got;
}

/// Reads some of the bytes wanted: from the window, around it, or after filling it.
int64_t OpenFile::ReadStep(uint8_t* destination, uint32_t count) noexcept {
  const uint32_t taken = TakeFromWindow(destination, count);
  if (taken > 0) return taken;
  if (!Flush()) return -1;
  const bool readsOn = position_ == windowStart_ + windowFill_;
  readAhead_ = readsOn && readAhead_ > 0 ? std::min(readAhead_ * 4, kWindowSize) : kFirstReadAhead;
  if (count >= kWindowSize || !HasWindow()) return ReadBackend(destination, count, position_);
  const int64_t got = FillWindow(count);
  return got <= 0 ? got : TakeFromWindow(destination, count);
}

int OpenFile::Read(uint8_t* destination, uint32_t count) noexcept {
  trace_ = {position_, count, 0};
  if (isGathered_ && !Flush()) return -1;
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

/// Stores what waits. What was read stays in the window.
bool OpenFile::Flush() noexcept {
  room_ = 0;
  if (waitingFrom_ == waitingTo_) return true;
  const uint32_t from = std::exchange(waitingFrom_, 0);
  const uint32_t count = std::exchange(waitingTo_, 0) - from;
  const bool isStored = WriteBackend(window_.get() + from, count, windowStart_ + from) && !writeFailed_;
  if (isGathered_ || !isStored) windowFill_ = 0;
  isGathered_ = false;
  return isStored;
}

/// Writes over bytes that were read. @return whether they were
bool OpenFile::WriteIntoWindow(const uint8_t* source, uint32_t count) noexcept {
  const bool isRead = !isGathered_ && position_ >= windowStart_ && windowFill_ >= count &&
                      position_ - windowStart_ <= windowFill_ - count;
  if (!isRead) return false;
  const auto from = static_cast<uint32_t>(position_ - windowStart_);
  const bool touches = waitingFrom_ != waitingTo_ && from <= waitingTo_ && from + count >= waitingFrom_;
  if (!touches && !Flush()) return false;
  std::memcpy(window_.get() + from, source, count);
  waitingFrom_ = touches ? std::min(waitingFrom_, from) : from;
  waitingTo_ = touches ? std::max(waitingTo_, from + count) : from + count;
  position_ += count;
  return true;
}

int OpenFile::WriteAnywhere(const uint8_t* source, uint32_t count) noexcept {
  if (count == 0) return EndHere();
  if (!writable_ || writeFailed_ || count > INT_MAX || count > kLastPosition - position_) return -1;
  if (WriteIntoWindow(source, count)) return static_cast<int>(count);

  const bool continues = isGathered_ && position_ == windowStart_ + windowFill_;
  if (!continues || count > kWindowSize - windowFill_) {
    if (!Flush() || writeFailed_) return -1;
    windowFill_ = 0;
    windowStart_ = position_;
  }
  if (count >= kWindowSize || !HasWindow()) {
    if (!WriteBackend(source, count, position_)) return -1;
    position_ += count;
    return static_cast<int>(count);
  }
  isGathered_ = true;
  room_ = static_cast<uint32_t>(std::min<uint64_t>(kWindowSize - windowFill_, kLastPosition - position_));
  return Gather(source, count);
}

int OpenFile::EndHere() noexcept {
  if (!writable_ || writeFailed_ || !Flush()) return -1;
  windowFill_ = 0;
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
  room_ = 0;
  return true;
}

int64_t OpenFile::Size() const noexcept {
  const int64_t stored = backend_.functions.size(backend_.user, file_);
  if (stored < 0 || !isGathered_) return stored;
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
