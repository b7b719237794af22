// A picture as a page of an icon or cursor file: the filter's work where the filter has the depth, else this
// library's.
#pragma once

#include "convert/SavePlan.h"
#include "files/Backend.h"

namespace vxkrn {

/// Writes the picture and a cursor's hot spot as page `page`, from 1, of a file: a new one, or one that
/// exists, as `where` says. The file may be left half written. Throws std::bad_alloc.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int SavePage(const Backend& backend, const char* name, const SAVEOPTIONS& where, int page,
                           SavePlan* plan);

}  // namespace vxkrn
