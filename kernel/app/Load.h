// A load within the library: vx_load itself, and of what holds files in a file.
#pragma once

#include "app/LoadPlan.h"
#include "bitmap/Picture.h"
#include "files/Source.h"

namespace vxkrn {

/// Loads a page of a source that is no animated cursor. Throws std::bad_alloc.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int Load(vx_source& source, const vx_load_options* options, memory::Owned<vx_bitmap>* loaded);

/// The same of any source. (The filter knows no animated cursors.)
[[nodiscard]] int LoadAny(vx_source& source, const vx_load_options* options,
                          memory::Owned<vx_bitmap>* loaded);

/// Loads the rows that the plan aims at into an empty picture, as the file has them: what their fourth bytes
/// mean is decided later, by `pixelBits`, which gets those of 32-bit pixels, all of them or-ed together.
/// @return STATUS_OK, or a failure with its detail set that names the file
[[nodiscard]] int LoadBand(vx_source& source, LoadPlan* plan, vx_bitmap* picture, uint32_t* pixelBits);

/// Rows of the plan's band that the file has of an image.
[[nodiscard]] int RowsOfBand(const vx_source& source, const LoadPlan& plan,
                             const BitmapImage& image) noexcept;

/// Decides what the fourth bytes of 32-bit pixels mean, and remarks on it. @param pixelBits of all of them
void SettleAlpha(const LoadPlan& plan, uint32_t pixelBits, _BITMAPHANDLE* record) noexcept;

}  // namespace vxkrn
