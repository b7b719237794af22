// What the kernel itself asks of its file services: how the filter's reads went, and whether writes that
// seemed to work failed later. The services proper are the contract's VX_Redirected... functions.
#pragma once

#include "files/OpenFile.h"

namespace vxkrn {

/// The last read of a handle that is open.
[[nodiscard]] ReadTrace TraceOf(HANDLE file) noexcept;
/// How storing ended for the files this thread closed since it last asked. A caller of a filter's save or
/// edit asks once before, to start clean, and once after: the filter itself cannot know.
LateWrite TakeLateWrite() noexcept;

}  // namespace vxkrn
