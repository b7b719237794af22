// What the fields of a part say, in numbers and in words.
#pragma once

#include <array>
#include <string_view>

#include "files/Source.h"
#include "vx/inspect.h"

namespace vxkrn {

/// Reads the fields of a part as far as the source has them. @param fields room for VX_MOST_FIELDS @return
/// how many
int ReadFields(const vx_source& source, const vx_part& part, vx_field* fields) noexcept;

/// The fields of a part, by their names.
class FieldSet {
 public:
  FieldSet(const vx_source& source, const vx_part& part) noexcept
      : count_(ReadFields(source, part, fields_.data())) {}
  /// @return null where the part has no such field, or the file ends before it
  [[nodiscard]] const vx_field* Find(std::string_view name) const noexcept;

 private:
  std::array<vx_field, VX_MOST_FIELDS> fields_;
  int count_;
};

}  // namespace vxkrn
