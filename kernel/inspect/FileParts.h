// The parts of a whole file, whatever its kind. Throws std::bad_alloc.
#pragma once

#include "files/Source.h"
#include "inspect/Structure.h"

namespace vxkrn {

/// Finds the parts. @return STATUS_OK, or STATUS_BAD_FORMAT with its detail set for what begins like no
/// picture
[[nodiscard]] int FindParts(vx_source& source, memory::Vector<vx_part>* parts);

/// Adds what no part claims, says which share bytes or are cut off, and puts all into the order of the file.
void SettleParts(uint64_t fileSize, memory::Vector<vx_part>* parts);

}  // namespace vxkrn
