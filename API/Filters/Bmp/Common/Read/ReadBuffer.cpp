// Takes blocks of bytes through the read buffer.
#include "Read/ReadBuffer.h"

#include <algorithm>

namespace bmp {

int ReadBuffered(ReadBuffer& buffer, uint8_t* destination, int size) {
  int copied = 0;
  while (copied < size) {
    if (buffer.position >= buffer.fillCount) {
      buffer.position = 0;
      if (!buffer.Refill()) return copied;
    }
    const int count = std::min(buffer.fillCount - buffer.position, size - copied);
    VX_MemoryCopy(destination + copied, buffer.bytes + buffer.position, static_cast<uint32_t>(count));
    buffer.position += count;
    copied += count;
  }
  return copied;
}

}  // namespace bmp
