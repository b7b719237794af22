// Reads image headers of any declared length into buffers of fixed size.
#include "../Bmp.h"
#include "../Resources.h"

int ReadBMPHeader(HANDLE file, unsigned char* buffer, unsigned int capacity, unsigned int declaredSize) {
  if (declaredSize <= capacity) return bmp::ReadExactly(file, buffer, declaredSize) ? 1 : 0;
  if (!bmp::ReadExactly(file, buffer, capacity)) return 0;
  const int rest = static_cast<int>(declaredSize - capacity);
  return VX_RedirectedSeek(file, rest, VX_SEEK_CURRENT) != -1 ? 1 : 0;
}
