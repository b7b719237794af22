// The parts of one image as its headers lay it out. Judges nothing, and decodes no pixel.
#pragma once

#include "beyond/BitmapFile.h"
#include "inspect/Structure.h"

namespace vxkrn {

/// Adds what the image has, but for file headers and directories. Throws std::bad_alloc.
void AddImageParts(const vx_source& source, const BitmapImage& image, PartList* list);

/// Adds image `page` of a source that begins like a bitmap file, an array, or an OS/2 icon, with its file
/// headers; of one that no reader knows as much as there is. Throws std::bad_alloc.
/// @return the number of images
int AddBitmapParts(const vx_source& source, int page, PartList* list);

/// Adds the chunks of a PNG stream that begins at `offset` and ends at `end` at the latest. Throws
/// std::bad_alloc. @return where it ends
uint64_t AddPngParts(const vx_source& source, uint64_t offset, uint64_t end, PartList* list);

}  // namespace vxkrn
