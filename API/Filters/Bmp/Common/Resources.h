// What a call may hold of the kernel's: open files and tagged memory, each given back exactly once.
// The order of release is the reverse order of declaration unless somebody releases earlier.
#pragma once

#include <vxkrn.h>

#include <cstdint>

#include "Format/Bytes.h"

namespace bmp {

/// The tag by which the kernel tracks this filter's memory.
inline constexpr char kFileTag[] = "API/Filters/Bmp/Common/Bmp";

/// Memory from the kernel. Test it before use: an allocation may fail.
template <class Element = uint8_t>
class Buffer {
 public:
  explicit Buffer(uint32_t count, uint32_t size = sizeof(Element), int line = __builtin_LINE())
      : elements_(static_cast<Element*>(VX_LocalAlloc(count, size, line, kFileTag))) {}
  ~Buffer() { Release(); }
  Buffer(const Buffer&) = delete;
  Buffer& operator=(const Buffer&) = delete;

  explicit operator bool() const { return elements_ != nullptr; }
  [[nodiscard]] Element* Get() const { return elements_; }

  void Release(int line = __builtin_LINE()) {
    if (elements_ != nullptr) VX_LocalFree(elements_, line, kFileTag);
    elements_ = nullptr;
  }

 private:
  Element* elements_;
};

/// A file opened for reading.
class InputFile {
 public:
  explicit InputFile(const char* name) : handle_(VX_RedirectedOpen(name, VX_OPEN_READ, kPermission)) {}
  ~InputFile() {
    if (IsOpen()) VX_RedirectedClose(handle_);
  }
  InputFile(const InputFile&) = delete;
  InputFile& operator=(const InputFile&) = delete;

  [[nodiscard]] bool IsOpen() const { return handle_ != VX_INVALID_HANDLE; }
  [[nodiscard]] HANDLE Handle() const { return handle_; }

 private:
  static constexpr int kPermission = 256;

  HANDLE handle_;
};

/// Reads a whole block. @return false when fewer bytes arrive
template <size_t Size>
[[nodiscard]] bool ReadBlock(HANDLE file, Block<Size>& block) {
  return VX_RedirectedRead(file, block.data(), Size) == static_cast<int>(Size);
}

/// Reads exactly `count` bytes. Counts from 2^31 on cannot be told from an error and fail.
[[nodiscard]] inline bool ReadExactly(HANDLE file, void* bytes, uint32_t count) {
  const int read = VX_RedirectedRead(file, bytes, count);
  return read >= 0 && static_cast<uint32_t>(read) == count;
}

/// Goes to an absolute offset, which counts as unsigned; where that fails, the read that follows tells.
inline void GoTo(HANDLE file, uint32_t offset) {
  VX_RedirectedSeek(file, static_cast<int>(offset), VX_SEEK_START);
}

/// Goes to an absolute offset. @return false when the file is not there then
[[nodiscard]] inline bool SeekTo(HANDLE file, uint32_t offset) {
  const int position = VX_RedirectedSeek(file, static_cast<int>(offset), VX_SEEK_START);
  return position != -1 && static_cast<uint32_t>(position) == offset;
}

}  // namespace bmp
