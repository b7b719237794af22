// The rows that the library decodes itself, into a picture.
#pragma once

#include "app/LoadPlan.h"
#include "bitmap/Picture.h"

namespace vxkrn {

/// Loads the plan's band by a reader of the library's; `pixelBits` are those of 32-bit pixels, all or-ed
/// together. May throw std::bad_alloc.
/// @return STATUS_OK with an empty picture filled, or a failure with its detail set that does not name the
/// file
[[nodiscard]] int LoadOwn(vx_source& source, const LoadPlan& plan, vx_bitmap* picture, uint32_t* pixelBits);

/// Gives a picture that was found here the region that its page's mask makes, if there is one.
/// @return STATUS_OK, or a failure with its detail set that does not name the file
[[nodiscard]] int SetOwnRegion(const vx_source& source, const LoadPlan& plan, _BITMAPHANDLE* record);

}  // namespace vxkrn
