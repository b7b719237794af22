// The filter's calls that write: made over some backend's files, with their failures put into words. What was
// written is only known to be kept once the file is closed, so that is looked at here too.
#pragma once

#include "convert/SavePlan.h"
#include "files/Backend.h"

namespace vxkrn {

// Each returns STATUS_OK, or a failure with its detail set; `name` is for the backend and for messages.

/// Saves the picture as a new file or, as `page` says, as a page of one that exists.
[[nodiscard]] int SavePicture(const Backend& backend, const char* name, const SAVEOPTIONS& page,
                              SavePlan* plan);
/// Encodes the picture as a PNG file, for which no filter is needed.
[[nodiscard]] int SavePng(const Backend& backend, const char* name, SavePlan* plan);
[[nodiscard]] int DeletePage(const Backend& backend, const char* name, int page);
/// Writes bytes into a file that exists.
[[nodiscard]] int Overwrite(const Backend& backend, const char* name, uint64_t position, const void* bytes,
                            uint32_t count);

/// For `page`: the picture becomes a new file.
[[nodiscard]] SAVEOPTIONS NewFile() noexcept;

}  // namespace vxkrn
