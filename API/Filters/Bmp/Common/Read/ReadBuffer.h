// The one buffer through which pixel data is read, and the two ways of taking bytes out of it. Both
// consume the same stream, so mask rows continue where the codes of the colour rows ended.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

/// A read buffer over an open file. It owns neither.
struct ReadBuffer {
  ReadBuffer(HANDLE source, uint8_t* memory, int size)
      : file(source), bytes(memory), fillCount(size), position(size) {}

  /// Fills the buffer anew. A short fill is also the size of the next one; the end of the file, or an
  /// error, leaves the buffer empty for good.
  bool Refill() {
    const int read = fillCount > 0 ? VX_RedirectedRead(file, bytes, static_cast<uint32_t>(fillCount)) : 0;
    fillCount = read > 0 ? read : 0;
    return fillCount != 0;
  }

  HANDLE file;
  uint8_t* bytes;
  int fillCount;  // valid bytes; before the first fill, the buffer's size
  int position;   // of the next byte; the buffer is used up when it is not below fillCount
};

/// The next byte; 0 behind the end.
inline uint8_t ReadBufferedByte(ReadBuffer& buffer) {
  if (buffer.position < buffer.fillCount) return buffer.bytes[buffer.position++];
  if (!buffer.Refill()) return 0;
  buffer.position = 1;
  return buffer.bytes[0];
}

/// The next `size` bytes. @return how many were left to take
int ReadBuffered(ReadBuffer& buffer, uint8_t* destination, int size);

}  // namespace bmp
