// Of which kind an icon file is. All pages have it in common, and telling it takes a look at each of them:
// one look a file, for the filter's answer and for what readers make of files that are not whole.
#pragma once

#include "beyond/BitmapFile.h"

namespace vxkrn {

/// FMT_CUR, or the FMT_ICO or FMT_VISTA_ICO that all pages of an icon file have in common.
[[nodiscard]] int FormatOfIconFile(vx_source& source) noexcept;

/// The format that the filter tells for an image that is its own, a bitmap in an icon or cursor file. Throws
/// std::bad_alloc. @return STATUS_OK; STATUS_READ_ERROR, with a detail that does not name the file, where it
/// would search a directory that is not whole
[[nodiscard]] int FindFiltersFormat(vx_source& source, const BitmapImage& image, int* format);

}  // namespace vxkrn
