// Numbers of a PNG stream have their highest byte first.
#include "beyond/PngBody.h"

#include <zlib.h>

#include <algorithm>

namespace vxkrn {
namespace {

constexpr uint32_t kSignature = 8;
constexpr uint32_t kFrame = 12;  // of a chunk: length, name and checksum
constexpr bmp::Block<8> kEnd = {'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82};
constexpr int kMostChunks = 4096;

uint32_t BigEndian(const uint8_t* bytes) noexcept {
  return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

/// 16 bits a channel become 8, and whatever has alpha or two channels becomes 32 in all.
int DepthOf(uint8_t bits, uint8_t colourType) noexcept {
  if (colourType == 2) return 24;
  if (colourType == 4 || colourType == 6) return 32;
  return std::min<int>(bits, 8);
}

/// The end of the chunk that ends the stream; 0 where none does.
uint64_t FindEnd(const vx_source& source, uint64_t offset) noexcept {
  const int64_t fileSize = source.Size();
  uint64_t at = offset + kSignature;
  for (int i = 0; i < kMostChunks; ++i) {
    bmp::Block<8> start{};
    if (source.Peek(start.data(), start.size(), at) < start.size()) return 0;
    const uint64_t end = at + kFrame + BigEndian(start.data());
    if (fileSize >= 0 && end > static_cast<uint64_t>(fileSize)) return 0;
    if (std::equal(kEnd.begin(), kEnd.begin() + 4, start.begin() + 4)) return end;
    at = end;
  }
  return 0;
}

}  // namespace

PngBody LookAtPng(const vx_source& source, uint64_t offset, uint64_t saidSize) noexcept {
  constexpr uint32_t kName = 4;
  constexpr uint32_t kFields = 8;
  constexpr uint32_t kChecksum = 21;
  const auto first = source.BlockAt<kChecksum + 4>(offset + kSignature);
  PngBody body;
  const bool isHeader = BigEndian(&first[0]) == 13 && BigEndian(&first[kName]) == 0x49484452;
  body.isSound = isHeader && crc32(0, &first[kName], kChecksum - kName) == BigEndian(&first[kChecksum]);
  body.width = static_cast<int>(BigEndian(&first[kFields]));
  body.height = static_cast<int>(BigEndian(&first[kFields + 4]));
  body.depth = DepthOf(first[kFields + 8], first[kFields + 9]);
  const bool endsThere =
      saidSize > kSignature + kFrame && source.BlockAt<kEnd.size()>(offset + saidSize - kEnd.size()) == kEnd;
  const uint64_t end = endsThere ? offset + saidSize : FindEnd(source, offset);
  body.size = end == 0 ? 0 : end - offset;
  return body;
}

}  // namespace vxkrn
