// What the fields of a part say, in numbers and in words.
#pragma once

#include "files/Source.h"
#include "vx/inspect.h"

namespace vxkrn {

/// Reads the fields of a part as far as the source has them. @param fields room for VX_MOST_FIELDS @return
/// how many
int ReadFields(const vx_source& source, const vx_part& part, vx_field* fields) noexcept;

}  // namespace vxkrn
