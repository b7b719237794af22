// Moves chunk by chunk through one buffer. A move towards the start of the file begins with the first chunk,
// one towards its end with the last, so that nothing is written over before it was read.
#include "Pages/BlockMove.h"

#include <algorithm>

#include "Kernel.h"

namespace bmp {
namespace {

constexpr uint32_t kChunkSize = 1024;
using Chunk = Block<kChunkSize>;

/// Writes bytes where the file stands; 0 bytes end the file there. Ending it may fail, which harms nobody:
/// stale bytes then stay behind the last page.
bool Store(HANDLE file, const Chunk& chunk, uint32_t size) {
  const int stored = VX_RedirectedWrite(file, chunk.data(), size);
  return size == 0 || stored == static_cast<int>(size);
}

int MoveTowardsStart(HANDLE file, uint32_t source, uint32_t destination) {
  Chunk chunk;
  uint32_t size = kChunkSize;
  while (size == kChunkSize) {
    if (!SeekTo(file, source)) return STATUS_WRITE_ERROR;
    const int read = VX_RedirectedRead(file, chunk.data(), kChunkSize);
    if (read < 0) return STATUS_READ_ERROR;  // to end the file now would lose what could not be read
    size = static_cast<uint32_t>(read);
    if (!SeekTo(file, destination) || !Store(file, chunk, size)) return STATUS_WRITE_ERROR;
    source += size;
    destination += size;
  }
  static_cast<void>(Store(file, chunk, 0));
  return STATUS_OK;
}

/// Undoes a move towards the end that got as far down as `from`. The caller reports a failure anyway, so a
/// failure in here is not told.
void PutBack(HANDLE file, uint32_t from, uint32_t distance) {
  static_cast<void>(MoveTowardsStart(file, from + distance, from));
}

/// Makes a file that stands at its end longer. @return bytes stored
uint32_t Append(HANDLE file, uint32_t count) {
  constexpr Chunk kFiller{};
  uint32_t stored = 0;
  while (stored < count) {
    const uint32_t size = std::min(count - stored, kChunkSize);
    const int part = VX_RedirectedWrite(file, kFiller.data(), size);
    if (part > 0) stored += static_cast<uint32_t>(part);
    if (part != static_cast<int>(size)) break;
  }
  return stored;
}

/// Makes the file longer by `count` bytes. @return false when it cannot be, and is as long as it was
bool Grow(HANDLE file, uint32_t end, uint32_t count) {
  const uint32_t stored = Append(file, count);
  if (stored == count) {
    const int newEnd = VX_RedirectedSeek(file, 0, VX_SEEK_END);
    if (newEnd != -1 && static_cast<uint32_t>(newEnd) == end + count) return true;
  }
  if (stored > 0) PutBack(file, end, count);
  return false;
}

/// Moves a chunk to a place that overlaps its old one, which is put back where that fails half way.
int MoveChunk(HANDLE file, uint32_t from, uint32_t to, uint32_t size) {
  Chunk chunk;
  if (!SeekTo(file, from)) return STATUS_WRITE_ERROR;
  if (!ReadExactly(file, chunk.data(), size)) return STATUS_READ_ERROR;
  if (!SeekTo(file, to)) return STATUS_WRITE_ERROR;
  if (Store(file, chunk, size)) return STATUS_OK;
  if (SeekTo(file, from)) static_cast<void>(Store(file, chunk, size));
  return STATUS_WRITE_ERROR;
}

int MoveTowardsEnd(HANDLE file, uint32_t source, uint32_t distance) {
  const int end = VX_RedirectedSeek(file, 0, VX_SEEK_END);
  if (end == -1) return STATUS_WRITE_ERROR;
  auto from = static_cast<uint32_t>(end);
  if (source > from) return STATUS_BAD_FORMAT;
  if (!Grow(file, from, distance)) return STATUS_WRITE_ERROR;
  while (const uint32_t size = std::min(from - source, kChunkSize)) {
    const int status = MoveChunk(file, from - size, from - size + distance, size);
    if (status != STATUS_OK) {
      PutBack(file, from, distance);
      return status;
    }
    from -= size;
  }
  return STATUS_OK;
}

}  // namespace

int BlockMove(HANDLE file, uint32_t source, uint32_t destination) {
  if (source > destination) return MoveTowardsStart(file, source, destination);
  return source < destination ? MoveTowardsEnd(file, source, destination - source) : STATUS_OK;
}

}  // namespace bmp
