// Bitmaps that say what their alpha is, which the filter does not write.
#pragma once

#include "convert/SavePlan.h"
#include "files/Backend.h"

namespace vxkrn {

/// Writes the picture as a file. Throws std::bad_alloc. @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int SaveAlphaBitmap(const Backend& backend, const char* name, const SavePlan& plan);

}  // namespace vxkrn
