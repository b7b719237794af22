// An open source of images: a file or block of memory that stays the same one until it is closed. A filter
// that opens "the file" by name gets this very source, whatever has become of the name. What a file begins
// with is looked at by everybody, so it is read once, and kept with the source.
#pragma once

#include <array>

#include "base/Memory.h"
#include "files/Backend.h"
#include "files/PeekWindows.h"
#include "format/Bytes.h"

namespace vxkrn {

/// What the pages of an icon file say together, once all were looked at: beyond/IconKind.
struct IconPages {
  bool areKnown = false;
  bool lookNewer = false;  ///< some page would make the file one of the newer kind, be it cut off
  int newer = 0;           ///< the page that does so by the filter's rule; 0: none
  int outOfReach = 0;      ///< the first page that the filter would fail over before that one; 0: none
};

}  // namespace vxkrn

struct vx_source {
  /// What was found out about a file and holds until it is closed, whoever writes to it.
  struct Head {
    std::array<uint8_t, 4096> bytes;                   ///< headers, a palette and a usual directory lie there
    uint32_t fill = 0;                                 ///< bytes that were read
    int64_t size;                                      ///< of the file; below 0 when that cannot be told
    IMAGEINFO described;                               ///< the page that was described last
    int describedPage = 0;                             ///< which that is, from 1; 0: none yet
    bool describedAsFilter = false;                    ///< and whether the filter alone had its say
    vxkrn::memory::Owned<vxkrn::PeekWindows> windows;  ///< on what lies behind the bytes, once it is needed

    explicit Head(int64_t fileSize) noexcept : size(fileSize) {}  // the records are filled later
  };

  vxkrn::Backend backend;           ///< what the file came from
  void* file;                       ///< the backend's file
  vxkrn::MemoryFile memory;         ///< behind backend, for sources in memory
  vxkrn::memory::Bytes held;        ///< the bytes of a file that is held in memory
  vxkrn::memory::Owned<Head> head;  ///< of a file; null for the application's bytes and without memory
  vxkrn::IconPages iconPages;       ///< of an icon file
  vxkrn::memory::Bytes name;        ///< for messages, NUL-terminated

  vx_source() noexcept;
  ~vx_source();
  vx_source(const vx_source&) = delete;
  vx_source& operator=(const vx_source&) = delete;

  [[nodiscard]] const char* Name() const noexcept;
  /// Takes a file into memory, if it is not there yet. @return whether there was room and every byte came
  bool Hold() noexcept;
  /// Becomes a source of these bytes, which must outlive it.
  void ReadFromMemory(const unsigned char* bytes, std::size_t size) noexcept;
  /// Asks for the size, and reads what the file begins with, in one go, to keep both. Without memory
  /// everything still works.
  void KeepHead() noexcept;
  /// Holds a small file that begins like an icon one, and is longer than what is kept: its directory is
  /// hopped through entry by entry, over and over.
  void HoldIfSmallIcon() noexcept;
  /// Bytes, or below 0 when that cannot be told.
  [[nodiscard]] int64_t Size() const noexcept;
  /// Reads some bytes at position, at most count. @return how many; 0 at the end, below 0 for an error
  int64_t ReadAt(void* buffer, uint32_t count, uint64_t position) const noexcept;
  /// Reads up to count bytes at offset, as many as there are. @return how many.
  uint32_t PeekAnywhere(void* buffer, uint32_t count, uint64_t offset) const noexcept;
  /// The same, but no bytes from where no picture's can be: the source may be longer than that.
  uint32_t Peek(void* buffer, uint32_t count, uint64_t offset) const noexcept;
  /// The Size bytes at offset; those beyond the end are 0.
  template <uint32_t Size>
  [[nodiscard]] bmp::Block<Size> BlockAt(uint64_t offset) const noexcept {
    bmp::Block<Size> block{};
    (void)Peek(block.data(), Size, offset);
    return block;
  }
  /// A backend that opens this source, for reading, under any name. The source must outlive it.
  [[nodiscard]] vxkrn::Backend View() noexcept;

 private:
  [[nodiscard]] bool HasWindows() const noexcept;
};

namespace vxkrn {

/// @return a source with a copy of its name but no file yet; null without memory.
[[nodiscard]] memory::Owned<vx_source> NewSource(const char* name);

}  // namespace vxkrn
