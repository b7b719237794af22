// An icon file as the filter is shown it where some page is out of reach. To tell the file's kind the filter
// looks at every page and fails over one that is not there; the others are none the worse for it.
#pragma once

#include <vector>

#include "files/Source.h"

namespace vxkrn {

class MendedIcon {
 public:
  /// The source must outlive it.
  explicit MendedIcon(vx_source& source) noexcept : source_(source) {}

  /// Puts the entry of `page` in the place of every entry whose page is out of reach, and leaves out those
  /// behind it where they would cover the page. Throws std::bad_alloc.
  /// @return whether there was one, and `page` itself is within reach; where the directory is not whole, the
  /// detail says so
  [[nodiscard]] bool MendFor(int page);
  /// A backend that opens the source with its directory mended, for reading, under any name.
  [[nodiscard]] Backend View() noexcept;
  /// How many pages the file says that it has, once it is mended.
  [[nodiscard]] int PageCount() const noexcept { return pageCount_; }

 private:
  static int64_t ReadAt(void* user, void* file, void* buffer, uint32_t count, uint64_t position) noexcept;

  vx_source& source_;
  std::vector<uint8_t> directory_;  ///< its bytes as they would stand at the file's beginning
  int pageCount_ = 0;
};

}  // namespace vxkrn
