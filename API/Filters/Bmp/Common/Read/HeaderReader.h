// Image headers of any declared length.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

/// Reads the first `capacity` bytes of a header of `declaredSize` bytes, or all of a shorter one, and leaves
/// the file behind the header. @return false when the header is not there
[[nodiscard]] bool ReadHeader(HANDLE file, uint8_t* buffer, uint32_t capacity, uint32_t declaredSize);

}  // namespace bmp
