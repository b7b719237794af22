// Pages of icon and cursor files as the library understands them: bodies with any header, with masks that are
// not whole, with directories that lie. Reads no pixels.
#pragma once

#include "beyond/BitmapFile.h"

namespace vxkrn {

/// Finds page `page` of a source that begins like an icon or cursor file. Nothing is found where there is no
/// such page, and in bodies of which nobody knows what they are: the filter then has its say.
/// @return STATUS_OK, or a failure with its detail set that does not name the file
[[nodiscard]] int FindIconPage(const vx_source& source, int page, std::optional<BitmapImage>* found) noexcept;

/// What the directory says of a page, and is not so.
struct EntryFaults {
  bool isSizeWrong = false;  ///< in pixels
  bool isDepthWrong = false;
  bool isLengthWrong = false;
  uint64_t length = 0;  ///< bytes that it has, as far as the file goes
};
/// Of a page that was found in a directory.
[[nodiscard]] EntryFaults FaultsOfEntry(const vx_source& source, const BitmapImage& image) noexcept;

/// Remarks on what is odd about the page of an image that has an IconPart, but for what is missing of it.
void RemarkOnPage(const vx_source& source, const BitmapImage& image) noexcept;

}  // namespace vxkrn
