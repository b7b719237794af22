// The directory of an icon or cursor file: where its pages lie, what nobody refers to, and a file without
// that. Knows how long an image body is, nothing else of it.
#pragma once

#include <vector>

#include "bitmap/HotSpot.h"
#include "files/MemoryTarget.h"

namespace vxkrn {

/// A directory that the file has whole.
struct IconDirectory {
  uint64_t fileSize = 0;
  bool isCursor = false;
  int count = 0;                      ///< of pages
  std::vector<ICONDIRENTRY> entries;  ///< of all pages, once they are read

  /// How long it is in the file.
  [[nodiscard]] uint64_t Bytes() const noexcept;
};

/// @return STATUS_READ_ERROR, with its detail set, for a directory that the file has, and that does not come
[[nodiscard]] int FailToReadDirectory();

/// The hot spot in a cursor's entry. It stands where an icon has planes and depth.
[[nodiscard]] constexpr HotSpot HotSpotOf(const ICONDIRENTRY& entry) noexcept {
  return {entry.Planes, entry.BitCount};
}
/// Writes it into the entry of page `page` of a file. @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int WriteHotSpot(const Backend& backend, const char* name, int page, HotSpot hotSpot);

/// A run of a file's bytes.
struct Extent {
  uint64_t begin;
  uint64_t end;
};

/// A file that is read in places.
class IconReader {
 public:
  IconReader(const Backend& backend, const char* name) noexcept;
  ~IconReader();
  IconReader(const IconReader&) = delete;
  IconReader& operator=(const IconReader&) = delete;

  /// Reads how the directory begins, but no entries. @return STATUS_OK, or a failure with its detail set that
  /// does not name the file
  [[nodiscard]] int ReadStart(IconDirectory* directory) const;
  /// Reads all of it. Throws std::bad_alloc. @return as ReadStart
  [[nodiscard]] int ReadDirectory(IconDirectory* directory) const;
  /// Reads the entry of page `page` alone, from 1, whatever the directory says. @return false where the file
  /// ends before it
  [[nodiscard]] bool ReadEntry(int page, ICONDIRENTRY* entry) const noexcept;
  [[nodiscard]] bool IsPng(const ICONDIRENTRY& entry) const noexcept;
  /// Whether so much of the page is there that a filter can tell of what kind it is.
  [[nodiscard]] bool IsWithinReach(const ICONDIRENTRY& entry) const noexcept;
  /// The page's body as far as the file has it: what the directory says or, because readers go by that, what
  /// the body's own header says if it is more.
  [[nodiscard]] Extent BodyOf(const ICONDIRENTRY& entry, uint64_t directoryBytes,
                              uint64_t fileSize) const noexcept;
  /// All bodies in the order of the file; those that touch are one. What begins in the directory and is no
  /// picture is none. Throws std::bad_alloc.
  [[nodiscard]] std::vector<Extent> Bodies(const IconDirectory& directory) const;

 private:
  [[nodiscard]] bool ReadAt(uint64_t position, void* bytes, uint32_t count) const noexcept;

  Backend backend_;
  void* file_;
};

/// Bytes of the file that are neither directory nor body.
[[nodiscard]] uint64_t UnreferencedBytes(const IconReader& reader, const IconDirectory& directory);

/// Leaves the directory and the bodies, in their order and unchanged. Entries without a body keep their
/// distance from the file's beginning or end. Throws std::bad_alloc.
/// @return STATUS_OK, or STATUS_BAD_FORMAT with its detail set where a picture begins in the directory
[[nodiscard]] int Compact(MemoryTarget* file);

}  // namespace vxkrn
