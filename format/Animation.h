// Animated cursors: chunks of RIFF, one behind the other, the frames among them. Byte layouts only; which
// size fields are believed is the reader's business.
#pragma once

#include <cstdint>

#include "format/Bytes.h"

namespace bmp {

inline constexpr uint32_t kChunkHeaderSize = 8;
inline constexpr uint32_t kListHeaderSize = 12;  // of RIFF and LIST chunks: what they are lists of follows
inline constexpr uint32_t kAnimationHeaderSize = 36;

inline constexpr uint32_t kFramesAreIcons = 1;  // flags of the animation
inline constexpr uint32_t kHasSequence = 2;
inline constexpr uint32_t kJiffiesPerSecond = 60;

/// The name of a chunk as the number that its four characters make.
constexpr uint32_t ChunkName(const char (&name)[5]) {
  uint32_t number = 0;
  for (int i = 3; i >= 0; --i) number = number << 8 | static_cast<uint8_t>(name[i]);
  return number;
}

namespace chunk {
inline constexpr uint32_t kRiff = ChunkName("RIFF");
inline constexpr uint32_t kAnimation = ChunkName("ACON");  // what the RIFF chunk is a list of
inline constexpr uint32_t kList = ChunkName("LIST");
inline constexpr uint32_t kInfo = ChunkName("INFO");    // a list of texts
inline constexpr uint32_t kFrames = ChunkName("fram");  // the list of frames
inline constexpr uint32_t kTitle = ChunkName("INAM");
inline constexpr uint32_t kAuthor = ChunkName("IART");
inline constexpr uint32_t kHeader = ChunkName("anih");
inline constexpr uint32_t kRates = ChunkName("rate");
inline constexpr uint32_t kSequence = ChunkName("seq ");
inline constexpr uint32_t kFrame = ChunkName("icon");
}  // namespace chunk

/// Where the fields of a chunk's header lie.
namespace chunk_at {
inline constexpr uint32_t kName = 0;
inline constexpr uint32_t kSize = 4;
inline constexpr uint32_t kListOf = 8;
}  // namespace chunk_at

/// Where the fields of an animation's header lie, from the beginning of its chunk's content.
namespace animation_at {
inline constexpr uint32_t kSize = 0;
inline constexpr uint32_t kFrames = 4;
inline constexpr uint32_t kSteps = 8;
inline constexpr uint32_t kWidth = 12;
inline constexpr uint32_t kHeight = 16;
inline constexpr uint32_t kBits = 20;
inline constexpr uint32_t kPlanes = 24;
inline constexpr uint32_t kJiffies = 28;
inline constexpr uint32_t kFlags = 32;
}  // namespace animation_at

struct ChunkHeader {
  uint32_t name;
  uint32_t size;  ///< bytes of content, without this header and without padding
  bool operator==(const ChunkHeader&) const = default;
};

constexpr ChunkHeader DecodeChunk(View<kChunkHeaderSize> bytes) {
  return {LoadU32(bytes, chunk_at::kName), LoadU32(bytes, chunk_at::kSize)};
}

constexpr Block<kChunkHeaderSize> EncodeChunk(const ChunkHeader& header) {
  Block<kChunkHeaderSize> bytes{};
  StoreU32(bytes, chunk_at::kName, header.name);
  StoreU32(bytes, chunk_at::kSize, header.size);
  return bytes;
}

/// Chunks begin at even bytes.
constexpr uint64_t PaddedSize(uint64_t size) {
  return size + size % 2;
}

/// Whether the four characters could be a chunk's name: letters, digits, blanks and the like.
constexpr bool IsChunkName(uint32_t name) {
  for (uint32_t shift = 0; shift < 32; shift += 8) {
    const uint32_t character = name >> shift & 0xFF;
    if (character < ' ' || character > '~') return false;
  }
  return true;
}

/// Whether it is the name of a chunk that animated cursors are known to have.
constexpr bool IsKnownChunk(uint32_t name) {
  return name == chunk::kList || name == chunk::kTitle || name == chunk::kAuthor || name == chunk::kHeader ||
         name == chunk::kRates || name == chunk::kSequence || name == chunk::kFrame;
}

struct AnimationHeader {
  uint32_t size = kAnimationHeaderSize;
  uint32_t frames = 0;
  uint32_t steps = 0;
  uint32_t width = 0;  ///< this and the next three are for frames that are no icons
  uint32_t height = 0;
  uint32_t bits = 0;
  uint32_t planes = 0;
  uint32_t jiffies = 0;  ///< that a step is shown where no rates are given
  uint32_t flags = 0;
  bool operator==(const AnimationHeader&) const = default;
};

constexpr AnimationHeader DecodeAnimation(View<kAnimationHeaderSize> bytes) {
  return {.size = LoadU32(bytes, animation_at::kSize),
          .frames = LoadU32(bytes, animation_at::kFrames),
          .steps = LoadU32(bytes, animation_at::kSteps),
          .width = LoadU32(bytes, animation_at::kWidth),
          .height = LoadU32(bytes, animation_at::kHeight),
          .bits = LoadU32(bytes, animation_at::kBits),
          .planes = LoadU32(bytes, animation_at::kPlanes),
          .jiffies = LoadU32(bytes, animation_at::kJiffies),
          .flags = LoadU32(bytes, animation_at::kFlags)};
}

constexpr Block<kAnimationHeaderSize> EncodeAnimation(const AnimationHeader& header) {
  Block<kAnimationHeaderSize> bytes{};
  StoreU32(bytes, animation_at::kSize, header.size);
  StoreU32(bytes, animation_at::kFrames, header.frames);
  StoreU32(bytes, animation_at::kSteps, header.steps);
  StoreU32(bytes, animation_at::kWidth, header.width);
  StoreU32(bytes, animation_at::kHeight, header.height);
  StoreU32(bytes, animation_at::kBits, header.bits);
  StoreU32(bytes, animation_at::kPlanes, header.planes);
  StoreU32(bytes, animation_at::kJiffies, header.jiffies);
  StoreU32(bytes, animation_at::kFlags, header.flags);
  return bytes;
}

inline constexpr AnimationHeader kSomeAnimation = {36, 2, 3, 4, 5, 6, 7, 8, 9};
static_assert(DecodeAnimation(EncodeAnimation(kSomeAnimation)) == kSomeAnimation);
static_assert(DecodeChunk(EncodeChunk({chunk::kFrame, 0x89ABCDEF})) ==
              ChunkHeader{chunk::kFrame, 0x89ABCDEF});
static_assert(EncodeChunk({chunk::kRiff, 1})[0] == 'R' && EncodeChunk({chunk::kRiff, 1})[3] == 'F');
static_assert(IsChunkName(chunk::kSequence) && !IsChunkName(ChunkName("\0ico")) && !IsChunkName(0));

}  // namespace bmp
