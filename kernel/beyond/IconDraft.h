// An icon or cursor file in memory while it is edited. The filter opens and closes a directory in place: that
// moves all bodies and tells every entry, for every page that comes or goes. Here the bodies stay where they
// are and the directory is kept apart, until the file is put together. What comes of it is, byte for byte,
// what the filter makes of the same edits in place.
#pragma once

#include "beyond/EntryList.h"
#include "beyond/IconFile.h"
#include "convert/SavePlan.h"
#include "files/MemoryTarget.h"
#include "format/IconDirectory.h"

namespace vxkrn {

class IconDraft {
 public:
  /// Works on `file`, which must outlive it, and stays empty while that is.
  explicit IconDraft(MemoryTarget& file) noexcept : file_(file) {}

  // Each throws std::bad_alloc. A status is STATUS_OK, or a failure with its detail set.

  /// Reads the directory. A failure does not name the file.
  [[nodiscard]] int Read();
  /// Writes the directory into the file, which is whole then.
  [[nodiscard]] int PutTogether();
  /// Leaves the directory and the bodies of the file. A failure does not name it.
  [[nodiscard]] int Compact();

  [[nodiscard]] bool IsCursor() const noexcept { return type_ == bmp::kCursorType; }
  [[nodiscard]] int Count() const noexcept { return entries_.Count(); }
  [[nodiscard]] const ICONDIRENTRY& Entry(int page) const noexcept { return entries_.At(page); }

  /// Makes the picture the first page of an empty file.
  [[nodiscard]] int Begin(const char* name, SavePlan* plan);
  [[nodiscard]] int Insert(const char* name, int page, SavePlan* plan);
  [[nodiscard]] int Replace(const char* name, int page, SavePlan* plan);
  void Delete(int page) noexcept { entries_.Erase(page); }
  void SetHotSpot(int page, HotSpot hotSpot) noexcept;

 private:
  [[nodiscard]] int Append(const char* name, int pagesMore, SavePlan* plan, ICONDIRENTRY* entry);
  [[nodiscard]] uint32_t Shift(int pagesMore) const noexcept;

  MemoryTarget& file_;
  uint16_t type_ = bmp::kIconType;
  int countInFile_ = 0;  ///< pages of the directory that still stands in the file
  EntryList entries_;    ///< whose bodies are where they are in the file
};

}  // namespace vxkrn
