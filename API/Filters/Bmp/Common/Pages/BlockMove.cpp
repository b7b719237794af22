// One buffer, chunk by chunk: from the first one towards the start of the file, from the last one towards its
// end, so that nothing is written over before it was read.
#include "BlockMove.h"

#include <algorithm>

#include "../Resources.h"

namespace bmp {
namespace {

constexpr uint32_t kChunkSize = 1024;
using Chunk = Block<kChunkSize>;

void MoveTowardsStart(HANDLE file, uint32_t source, uint32_t destination) {
  Chunk chunk;
  uint32_t size = kChunkSize;
  while (size == kChunkSize) {
    if (!SeekTo(file, source)) return;
    const int read = VX_RedirectedRead(file, chunk.data(), kChunkSize);
    // To end the file now would lose what could not be read.
    if (read < 0 || !SeekTo(file, destination)) return;
    size = static_cast<uint32_t>(read);
    VX_RedirectedWrite(file, chunk.data(), size);
    source += size;
    destination += size;
  }
  VX_RedirectedWrite(file, chunk.data(), 0);
}

void Append(HANDLE file, uint32_t count) {
  constexpr Chunk kFiller{};
  while (count > 0) {
    const uint32_t size = std::min(count, kChunkSize);
    VX_RedirectedWrite(file, kFiller.data(), size);
    count -= size;
  }
}

void MoveTowardsEnd(HANDLE file, uint32_t source, uint32_t destination) {
  const int end = VX_RedirectedSeek(file, 0, VX_SEEK_END);
  auto from = static_cast<uint32_t>(end);
  if (end == -1 || source > from) return;
  Append(file, destination - source);
  const int newEnd = VX_RedirectedSeek(file, 0, VX_SEEK_END);
  auto to = static_cast<uint32_t>(newEnd);
  if (newEnd == -1 || to <= from) return;
  Chunk chunk;
  while (const uint32_t size = std::min(from - source, kChunkSize)) {
    from -= size;
    to -= size;
    // What cannot be read stays; all that comes before it still has to make room.
    if (!SeekTo(file, from) || !ReadExactly(file, chunk.data(), size) || !SeekTo(file, to)) continue;
    VX_RedirectedWrite(file, chunk.data(), size);
  }
}

}  // namespace

void BlockMove(HANDLE file, uint32_t source, uint32_t destination) {
  if (source > destination) MoveTowardsStart(file, source, destination);
  if (source < destination) MoveTowardsEnd(file, source, destination);
}

}  // namespace bmp
