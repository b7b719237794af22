// Follows the frame of a PNG stream: a signature, then chunks, each with a length, a name, content and a
// checksum.
#include <algorithm>

#include "format/IconDirectory.h"
#include "inspect/BitmapParts.h"

namespace vxkrn {
namespace {

using bmp::kPngChunkFrame;

constexpr int kMostChunks = 4096;

uint32_t BigEndian(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

bool IsName(std::string_view name) noexcept {
  return std::all_of(name.begin(), name.end(), [](char letter) {
    return (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
  });
}

}  // namespace

uint64_t AddPngParts(const vx_source& source, uint64_t offset, uint64_t end, PartList* list) {
  list->Add(VX_PART_PNG_SIGNATURE, offset, bmp::kPngSignatureSize);
  uint64_t at = offset + bmp::kPngSignatureSize;
  for (int i = 0; i < kMostChunks && at < end && kPngChunkFrame <= end - at; ++i) {
    const auto start = source.BlockAt<8>(at);
    const std::string_view name(reinterpret_cast<const char*>(&start[4]), 4);
    if (!IsName(name)) break;
    const uint64_t length = uint64_t{kPngChunkFrame} + BigEndian(start.data());
    list->AddChunk(VX_PART_PNG_CHUNK, at, length, name);
    at += length;
    if (name == "IEND") break;
  }
  return std::min(at, end);
}

}  // namespace vxkrn
