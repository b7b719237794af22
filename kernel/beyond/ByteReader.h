// Bytes of a source one after the other, through a buffer, at any place of a file of any length.
#pragma once

#include <cstddef>

#include "base/Memory.h"
#include "files/Source.h"

namespace vxkrn {

class ByteReader {
 public:
  /// Reads from `position` on. The source must outlive it.
  ByteReader(const vx_source& source, uint64_t position) noexcept : source_(source), position_(position) {}

  /// @return how many bytes came: all, unless the file ends or cannot be read.
  std::size_t Read(uint8_t* bytes, std::size_t count) noexcept;
  /// The next byte; below 0 behind the last one.
  int Byte() noexcept {
    if (used_ == fill_ && !Fill()) return -1;
    return buffer_[used_++];
  }
  void Skip(uint64_t count) noexcept;
  /// Whether bytes that are there could not be read.
  [[nodiscard]] bool HasFailed() const noexcept { return hasFailed_; }
  /// Where the next byte comes from.
  [[nodiscard]] uint64_t Position() const noexcept { return position_ - (fill_ - used_); }

 private:
  static constexpr uint32_t kBufferSize = 64 * 1024;

  bool Fill() noexcept;

  const vx_source& source_;
  uint64_t position_;  // behind what is in the buffer
  memory::Bytes buffer_;
  uint32_t used_ = 0;
  uint32_t fill_ = 0;
  bool hasFailed_ = false;
};

}  // namespace vxkrn
