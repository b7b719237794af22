// Pictures of kinds that others read: recognised, so that people learn what they have.
#pragma once

#include <string_view>

#include "files/Source.h"

namespace vxkrn {

struct ForeignKind {
  vx_foreign number;
  std::string_view name;  ///< "a JPEG picture"
};

/// @return null where the source is of none of those kinds
[[nodiscard]] const ForeignKind* ForeignKindOf(const vx_source& source) noexcept;

}  // namespace vxkrn
