// Animated cursors: where the frames lie, in which order they are shown and for how long, what the whole is
// called. Looks at chunks alone, at no picture.
#pragma once

#include "base/Memory.h"
#include "beyond/IconFile.h"
#include "files/Source.h"
#include "format/Animation.h"

namespace vxkrn {

struct Animation {
  bmp::AnimationHeader header = {};  ///< as the file has it: what the chunks say otherwise counts
  memory::Vector<Extent> frames;     ///< each a file of its own
  Extent rates = {};                 ///< jiffies of the steps, a word each; empty: the header's for all
  Extent sequence = {};              ///< frames of the steps, a word each; empty: one after the other
  Extent title = {};
  Extent author = {};

  [[nodiscard]] uint64_t StepCount() const noexcept;
};

/// A moment of the animation.
struct AnimationStep {
  uint32_t frame;    ///< from 0; may be none that there is
  uint32_t jiffies;  ///< sixtieths of a second
};

/// A chunk: of lists and frames its header alone, of others with what is in it.
struct ChunkPlace {
  uint32_t name;
  uint64_t at;
  uint64_t length;
};

/// Whether the source begins like an animated cursor.
[[nodiscard]] bool IsAnimation(const vx_source& source) noexcept;

/// Finds the chunks of a source that begins like an animated cursor, and remarks on the first size or count
/// that lies. Throws std::bad_alloc. @param chunks receives them all in their order; may be null
/// @return STATUS_OK, or STATUS_BAD_FORMAT with its detail set where there is no frame
[[nodiscard]] int FindAnimation(const vx_source& source, Animation* animation,
                                memory::Vector<ChunkPlace>* chunks = nullptr);

/// @param step from 0, below the number of steps
[[nodiscard]] AnimationStep StepAt(const vx_source& source, const Animation& animation,
                                   uint64_t step) noexcept;

}  // namespace vxkrn
