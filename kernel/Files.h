// What the kernel itself asks of its file services: how the filter's reads went, and whether writes that
// seemed to work failed later. The services proper are the contract's VX_Redirected... functions.
#pragma once

#include "OpenFile.h"

namespace vxkrn {

/// The last read of a handle that is open.
[[nodiscard]] ReadTrace TraceOf(HANDLE file) noexcept;
/// The last read of the handle this thread closed last.
[[nodiscard]] ReadTrace TraceOfLastClosed() noexcept;

/// How storing ended for the files this thread closed since it last asked. A caller of a filter's save or
/// edit asks once before, to start clean, and once after: the filter itself cannot know.
struct LateWrite {
  bool failed;
  int error;  ///< the first failure's errno, 0 where the backend gave none
};
LateWrite TakeLateWrite() noexcept;

}  // namespace vxkrn
