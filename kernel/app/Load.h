// A load within the library: vx_load itself, and of what holds files in a file.
#pragma once

#include "bitmap/Picture.h"
#include "files/Source.h"

namespace vxkrn {

/// Loads a page of a source that is no animated cursor. Throws std::bad_alloc.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int Load(vx_source& source, const vx_load_options* options, memory::Owned<vx_bitmap>* loaded);

}  // namespace vxkrn
