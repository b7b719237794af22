// The kernel's own side of global memory blocks: making one. The services over them are the contract's.
#pragma once

#include "base/Contract.h"
#include "base/Memory.h"

namespace vxkrn {

/// Hands bytes over to a new block. @return its handle, which VX_OsFreeHandle frees; null without memory
[[nodiscard]] void* MakeGlobal(memory::Bytes bytes) noexcept;

}  // namespace vxkrn
