// A save within the library: what vx_save_file does once its arguments are there.
#pragma once

#include "bitmap/Picture.h"

namespace vxkrn {

/// Throws std::bad_alloc, and what the picture's provider does. @return STATUS_OK, or a failure with its
/// detail set
[[nodiscard]] int SavePictureAs(const vx_bitmap& picture, const char* path, const vx_save_options* options);

}  // namespace vxkrn
