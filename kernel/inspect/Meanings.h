// Words for the values of fields.
#pragma once

#include "base/Errors.h"
#include "inspect/FieldTables.h"

namespace vxkrn {

/// The part that a field is of, as far as its other fields help to understand one.
struct PartView {
  const vx_part& part;
  std::span<const uint8_t> bytes;  ///< as many as the file has
};

/// Says what the value means; nothing where the number says it all.
void Explain(const FieldRule& rule, int64_t value, const PartView& view, Text& words) noexcept;

}  // namespace vxkrn
