// One open file: a position, and a window of bytes read ahead and not yet written, so that callers may read
// and write byte by byte. Knows nothing of names or threads.
#pragma once

#include <algorithm>
#include <cstring>

#include "base/Memory.h"
#include "files/Backend.h"

namespace vxkrn {

/// The highest position a file can have; one more is how a failed seek looks.
constexpr uint64_t kLastPosition = 0xFFFFFFFE;

class OpenFile {
 public:
  OpenFile(const Backend& backend, void* file, bool writable) noexcept
      : backend_(backend), file_(file), writable_(writable) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() = default;

  /// Reads until count bytes arrived, the file ends or an error comes. @return bytes, or -1 for an error.
  int Read(uint8_t* destination, uint32_t count) noexcept;
  /// Stores count bytes, perhaps later. @return count, or -1.
  int Write(const uint8_t* source, uint32_t count) noexcept {
    const bool isGatheredOn = count != 0 && count <= room_;
    return isGatheredOn ? Gather(source, count) : WriteAnywhere(source, count);
  }
  /// Ends the file at the position. @return 0, or -1.
  int EndHere() noexcept;
  /// Moves to `base + offset`. @return whether that is a position a file can have.
  [[nodiscard]] bool MoveTo(int64_t target) noexcept;
  /// Stores what waits and closes. @return whether everything written was kept.
  [[nodiscard]] bool Close() noexcept;

  [[nodiscard]] uint64_t Position() const noexcept { return position_; }
  /// Bytes of the file with what still waits in memory; below 0 when it cannot be told.
  [[nodiscard]] int64_t Size() const noexcept;
  [[nodiscard]] const ReadTrace& Trace() const noexcept { return trace_; }
  /// The error number of the first write that failed; 0 when the backend gave none.
  [[nodiscard]] int WriteError() const noexcept { return writeError_; }

 private:
  [[nodiscard]] bool HasWindow() noexcept;
  uint32_t TakeFromWindow(uint8_t* destination, uint32_t count) noexcept;
  int64_t FillWindow(uint32_t count) noexcept;
  int64_t ReadStep(uint8_t* destination, uint32_t count) noexcept;
  int64_t ReadBackend(uint8_t* destination, uint32_t count, uint64_t offset) noexcept;
  [[nodiscard]] bool WriteBackend(const uint8_t* source, std::size_t count, uint64_t offset) noexcept;
  [[nodiscard]] bool Flush() noexcept;
  [[nodiscard]] bool WriteIntoWindow(const uint8_t* source, uint32_t count) noexcept;
  int WriteAnywhere(const uint8_t* source, uint32_t count) noexcept;
  int Gather(const uint8_t* source, uint32_t count) noexcept;
  void NoteWriteFailure() noexcept;

  Backend backend_;
  void* file_;
  uint64_t position_ = 0;
  memory::Bytes window_;
  uint64_t windowStart_ = 0;  // file offset of the window's first byte
  uint32_t windowFill_ = 0;   // bytes in it
  uint32_t readAhead_ = 0;    // bytes the next fill asks for
  uint32_t waitingFrom_ = 0;  // the bytes of the window that are not in the file yet
  uint32_t waitingTo_ = 0;
  bool isGathered_ = false;  // the window's bytes were written, not read
  uint32_t room_ = 0;        // bytes that can be gathered right behind the others without looking at anything
  bool writable_;
  bool writeFailed_ = false;
  int writeError_ = 0;
  ReadTrace trace_;
};

/// Run-length codes come two bytes at a time, so these are copied by one instruction and not by a call.
inline int OpenFile::Gather(const uint8_t* source, uint32_t count) noexcept {
  uint8_t* const end = window_.get() + windowFill_;
  if (count == 2) {
    std::memcpy(end, source, 2);
  } else {
    std::memcpy(end, source, count);
  }
  windowFill_ += count;
  waitingTo_ = windowFill_;
  position_ += count;
  room_ -= count;
  return static_cast<int>(count);
}

}  // namespace vxkrn
