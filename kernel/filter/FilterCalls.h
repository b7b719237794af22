// What writes files, the filter's calls first: made over some backend's files, with failures put into words.
// What was written is only known to be kept once the file is closed, so that is looked at here too.
#pragma once

#include <functional>

#include "convert/SavePlan.h"
#include "files/Backend.h"

namespace vxkrn {

// Each returns STATUS_OK, or a failure with its detail set; `name` is for the backend and for messages.

/// Saves the picture as a new file or, as `page` says, as a page of one that exists.
[[nodiscard]] int SavePicture(const Backend& backend, const char* name, const SAVEOPTIONS& page,
                              SavePlan* plan);
/// Writes the picture as a PNG file while it is encoded; no filter is needed. Throws what its provider does.
[[nodiscard]] int SavePng(const Backend& backend, const char* name, SavePlan* plan);
[[nodiscard]] int DeletePage(const Backend& backend, const char* name, int page);
/// Has `writing` write a file, which stands at its start, through the contract's services. What it throws
/// goes on.
/// @param flags VX_OPEN_UPDATE or VX_OPEN_CREATE @param writing returns whether everything was written
[[nodiscard]] int WriteFile(const Backend& backend, const char* name, int flags,
                            const std::function<bool(HANDLE file)>& writing);
/// Writes a whole new file.
[[nodiscard]] int WriteWhole(const Backend& backend, const char* name, const void* bytes, uint64_t size);
/// Writes bytes into a file that exists.
[[nodiscard]] int Overwrite(const Backend& backend, const char* name, uint64_t position, const void* bytes,
                            uint32_t count);

/// For `page`: the picture becomes a new file.
[[nodiscard]] SAVEOPTIONS NewFile() noexcept;

}  // namespace vxkrn
