// What a call may hold of the kernel's: open files and tagged memory, each given back exactly once.
// The order of release is the reverse order of declaration unless somebody releases earlier.
#pragma once

#include <vxkrn.h>

#include <cstdint>
#include <utility>

#include "format/Bytes.h"

namespace bmp {

/// The tag by which the kernel tracks this filter's memory.
inline constexpr char kFileTag[] = "API/Filters/Bmp/Common/Bmp";

/// Memory from the kernel. Test it before use: an allocation may fail.
template <class Element = uint8_t>
class Buffer {
 public:
  Buffer() = default;  // empty until something is allocated
  explicit Buffer(uint32_t count, uint32_t size = sizeof(Element), int line = __builtin_LINE())
      : elements_(static_cast<Element*>(VX_LocalAlloc(count, size, line, kFileTag))) {}
  ~Buffer() { Release(); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  explicit operator bool() const { return elements_ != nullptr; }
  [[nodiscard]] Element* Get() const { return elements_; }

  /// Allocates `count` elements, every byte 0, in place of what was held.
  [[nodiscard]] bool AllocateZeroed(uint32_t count, int line = __builtin_LINE()) {
    Release(line);
    elements_ = static_cast<Element*>(VX_LocalAllocInit(count, sizeof(Element), line, kFileTag));
    return elements_ != nullptr;
  }
  /// Hands the memory over; it goes back through VX_LocalFree.
  [[nodiscard]] Element* Take() { return std::exchange(elements_, nullptr); }

  void Release(int line = __builtin_LINE()) {
    if (elements_ != nullptr) VX_LocalFree(elements_, line, kFileTag);
    elements_ = nullptr;
  }

 private:
  Element* elements_ = nullptr;
};

/// How a file is opened. Opening never makes an existing file shorter.
struct OpenMode {
  int flags;
  int permission;
};
inline constexpr OpenMode kForReading = {VX_OPEN_READ, VX_PERMISSION_READ};
inline constexpr OpenMode kForNewImage = {VX_OPEN_CREATE, VX_PERMISSION_WRITE};
inline constexpr OpenMode kForNewPngIcon = {VX_OPEN_CREATE, VX_PERMISSION_READ};
inline constexpr OpenMode kForEditing = {VX_OPEN_UPDATE, VX_PERMISSION_READ};

/// An open file.
class File {
 public:
  File(const char* name, OpenMode mode) : handle_(VX_RedirectedOpen(name, mode.flags, mode.permission)) {}
  /// Takes over an open file.
  explicit File(HANDLE handle) : handle_(handle) {}
  ~File() { Close(); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  [[nodiscard]] bool IsOpen() const { return handle_ != VX_INVALID_HANDLE; }
  [[nodiscard]] HANDLE Handle() const { return handle_; }
  /// Hands the open file over.
  [[nodiscard]] HANDLE Take() { return std::exchange(handle_, VX_INVALID_HANDLE); }

  void Close() {
    if (IsOpen()) VX_RedirectedClose(Take());
  }

 private:
  HANDLE handle_;
};

/// Reads a whole block. @return false when fewer bytes arrive
template <size_t Size>
[[nodiscard]] bool ReadBlock(HANDLE file, Block<Size>& block) {
  return VX_RedirectedRead(file, block.data(), Size) == static_cast<int>(Size);
}

/// Reads exactly `count` bytes. A count from 2^31 on fails, because the kernel's answer would look like an
/// error.
[[nodiscard]] inline bool ReadExactly(HANDLE file, void* bytes, uint32_t count) {
  const int read = VX_RedirectedRead(file, bytes, count);
  return read >= 0 && static_cast<uint32_t>(read) == count;
}

/// Writes exactly `count` bytes. A write of 0 bytes would end the file, so it is not passed on.
/// @return false when fewer were stored
[[nodiscard]] inline bool WriteExactly(HANDLE file, const void* bytes, uint32_t count) {
  if (count == 0) return true;
  const int written = VX_RedirectedWrite(file, bytes, count);
  return written >= 0 && static_cast<uint32_t>(written) == count;
}

template <size_t Size>
[[nodiscard]] bool WriteBlock(HANDLE file, const Block<Size>& block) {
  return WriteExactly(file, block.data(), Size);
}

/// Goes to an absolute offset, which counts as unsigned. A failure shows in the read that follows.
inline void GoTo(HANDLE file, uint32_t offset) {
  VX_RedirectedSeek(file, static_cast<int>(offset), VX_SEEK_START);
}

/// Goes to an absolute offset. @return false when the file stands elsewhere afterwards
[[nodiscard]] inline bool SeekTo(HANDLE file, uint32_t offset) {
  const int position = VX_RedirectedSeek(file, static_cast<int>(offset), VX_SEEK_START);
  return position != -1 && static_cast<uint32_t>(position) == offset;
}

}  // namespace bmp
