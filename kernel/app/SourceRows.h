// A picture whose rows are read from its source when somebody asks for them: pieces of it are loaded as bands
// are.
#pragma once

#include "app/LoadPlan.h"
#include "bitmap/Picture.h"

namespace vxkrn {

/// Fills a picture, whose colour space is known unless it is a PNG file's, with all but the pixels, and gives
/// it a provider that needs the source as long as it lives. Nothing is done where rows depend on others
/// before them, but for PNG files that are not interlaced. Throws std::bad_alloc.
/// @return STATUS_OK and whether it is done, or a failure with its detail set that names the file
[[nodiscard]] int LoadRowByRow(vx_source& source, const LoadPlan& plan, vx_bitmap* picture, bool* isDone);

}  // namespace vxkrn
