// An open source of images: a file or block of memory that stays the same one until it is closed. A filter
// that opens "the file" by name gets this very source, whatever has become of the name.
#pragma once

#include "Backend.h"
#include "Memory.h"

struct vx_source {
  vxkrn::Backend backend;     ///< what the file came from
  void* file;                 ///< the backend's file
  vxkrn::MemoryFile memory;   ///< behind backend, for sources in memory
  vxkrn::memory::Bytes held;  ///< the bytes of a file that is held in memory
  vxkrn::memory::Bytes name;  ///< for messages, NUL-terminated

  vx_source() noexcept;
  ~vx_source();
  vx_source(const vx_source&) = delete;
  vx_source& operator=(const vx_source&) = delete;

  [[nodiscard]] const char* Name() const noexcept;
  /// Takes a file into memory, if it is not there yet. @return whether there was room and every byte came
  bool Hold() noexcept;
  /// Becomes a source of these bytes, which must outlive it.
  void ReadFromMemory(const unsigned char* bytes, std::size_t size) noexcept;
  /// Holds a small file that begins like an icon one: its directory is hopped through entry by entry, over
  /// and over.
  void HoldIfSmallIcon() noexcept;
  /// Bytes, or below 0 when that cannot be told.
  [[nodiscard]] std::int64_t Size() const noexcept;
  /// Reads up to count bytes at offset, as many as there are. @return how many.
  std::uint32_t Peek(void* buffer, std::uint32_t count, std::uint64_t offset) const noexcept;
  /// The little-endian number of up to 4 bytes at offset; bytes beyond the end count as 0.
  [[nodiscard]] std::uint32_t Number(std::uint64_t offset, std::uint32_t count) const noexcept;
  /// A backend that opens this source, for reading, under any name. The source must outlive it.
  [[nodiscard]] vxkrn::Backend View() noexcept;
};

namespace vxkrn {

/// @return a source with a copy of its name but no file yet; null without memory.
[[nodiscard]] memory::Owned<vx_source> NewSource(const char* name);

}  // namespace vxkrn
