// What a call did that went well, but not whole or not as the file says: for programs, beside its status.
#pragma once

#include <concepts>

#include "base/CallRecord.h"

namespace vxkrn {

/// Notes it for this thread's call, once; there is room for more than any call has to say.
void AddRemark(vx_remark_code code, int64_t first = 0, int64_t second = 0, int page = 0) noexcept;

}  // namespace vxkrn
