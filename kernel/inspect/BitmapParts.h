// The parts of one image as its headers lay it out. Judges nothing, and decodes no pixel.
#pragma once

#include "beyond/BitmapFile.h"
#include "inspect/FileParts.h"
#include "inspect/Structure.h"

namespace vxkrn {

/// Beyond so many parts no page is taken apart.
inline constexpr std::size_t kMostParts = 1'000'000;

/// The image header as a part.
[[nodiscard]] vx_part HeaderPartOf(const bmp::BitmapLayout& layout) noexcept;

/// Adds what the image has, but for file headers and directories. Throws std::bad_alloc.
void AddImageParts(const vx_source& source, const BitmapImage& image, PartList* list);

/// Adds the images of a source that begins like a bitmap file, an array, or an OS/2 icon, with their file
/// headers; of one that no reader knows as much as there is. Throws std::bad_alloc. @param taker may be null
void AddBitmapParts(vx_source& source, ImageTaker* taker, PartList* list);

/// Adds the chunks of a PNG stream that begins at `offset` and ends at `end` at the latest. Throws
/// std::bad_alloc. @return where it ends
uint64_t AddPngParts(const vx_source& source, uint64_t offset, uint64_t end, PartList* list);

}  // namespace vxkrn
