// Asks the filter what a page holds, and refuses what the kernel could not make a bitmap of.
#pragma once

#include "bitmap/Bitmap.h"
#include "files/Source.h"

namespace vxkrn {

/// Fills info for one page, as the library sees it or as the filter does. @return STATUS_OK with a size,
/// depth and resolution that hold, or a failure with its detail set.
[[nodiscard]] int Identify(vx_source& source, int page, bool asFilter, IMAGEINFO* info);

/// A resolution as applications see it: 96 where the file names none.
[[nodiscard]] constexpr int DpiOrDefault(int dpi) noexcept {
  return dpi > 0 ? dpi : kDefaultDpi;
}

/// Whether the page is stored as a PNG stream.
[[nodiscard]] bool IsPngPage(const IMAGEINFO& info) noexcept;
/// Whether the page belongs to an icon or cursor file.
[[nodiscard]] bool IsIcon(const IMAGEINFO& info) noexcept;

}  // namespace vxkrn
