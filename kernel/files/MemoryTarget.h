// A file in memory that grows as it is written.
#pragma once

#include "base/Memory.h"
#include "files/Backend.h"

namespace vxkrn {

class MemoryTarget {
 public:
  MemoryTarget() = default;
  MemoryTarget(const MemoryTarget&) = delete;
  MemoryTarget& operator=(const MemoryTarget&) = delete;

  /// A backend whose every open gives this file, for reading and writing. It must not outlive the target.
  [[nodiscard]] Backend AsBackend() noexcept;

  /// Takes `size` bytes in place of its own. @return whether there was memory
  [[nodiscard]] bool Assign(const uint8_t* bytes, std::size_t size) noexcept;
  /// Reads a whole file in place of its own bytes, with room before and behind it for a few more. @return
  /// STATUS_OK, STATUS_NO_MEMORY or STATUS_READ_ERROR
  [[nodiscard]] int ReadFrom(const Backend& backend, void* file) noexcept;

  /// Drops so many bytes at the beginning; below 0, puts as many there, of any value.
  /// @return whether there was memory
  [[nodiscard]] bool MoveBegin(int64_t count) noexcept;

  [[nodiscard]] std::size_t Size() const noexcept { return size_; }
  [[nodiscard]] const uint8_t* Data() const noexcept { return bytes_.get() + begin_; }
  [[nodiscard]] uint8_t* Data() noexcept { return bytes_.get() + begin_; }
  /// Hands the bytes over; the target is empty then.
  [[nodiscard]] memory::Bytes Take() noexcept;

 private:
  static MemoryTarget& Of(void* file) { return *static_cast<MemoryTarget*>(file); }
  [[nodiscard]] bool Reserve(std::size_t size, std::size_t front) noexcept;
  /// Makes the file longer with zeros, or shorter. @return whether there was memory
  [[nodiscard]] bool Resize(uint64_t size) noexcept;
  int64_t ReadAt(void* buffer, uint32_t count, uint64_t position) const noexcept;
  int64_t WriteAt(const void* buffer, uint32_t count, uint64_t position) noexcept;

  memory::Bytes bytes_;
  std::size_t begin_ = 0;  // of the file in them
  std::size_t size_ = 0;   // of the file
  std::size_t capacity_ = 0;
};

}  // namespace vxkrn
