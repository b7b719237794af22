// Reads image headers of any declared length into buffers of fixed size.
#include "Read/HeaderReader.h"

#include "Kernel.h"

namespace bmp {

bool ReadHeader(HANDLE file, uint8_t* buffer, uint32_t capacity, uint32_t declaredSize) {
  if (declaredSize <= capacity) return ReadExactly(file, buffer, declaredSize);
  if (!ReadExactly(file, buffer, capacity)) return false;
  const int rest = static_cast<int>(declaredSize - capacity);
  return VX_RedirectedSeek(file, rest, VX_SEEK_CURRENT) != -1;
}

}  // namespace bmp
