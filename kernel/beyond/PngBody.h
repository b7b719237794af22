// A PNG stream inside another file, as far as its frame tells: what its first chunk says and where it ends.
#pragma once

#include "files/Source.h"

namespace vxkrn {

struct PngBody {
  bool isSound = false;  ///< the first chunk is the right one, and not damaged
  int width = 0;         ///< pixels; 0 and less where no picture has so many
  int height = 0;
  int depth = 0;      ///< bits per pixel of the bitmap that it becomes
  uint64_t size = 0;  ///< bytes to its end; 0: it has none
};

/// Looks at the stream at `offset`, which the directory says has `saidSize` bytes. An end there is taken for
/// its own; otherwise the chunks are followed, not too many.
[[nodiscard]] PngBody LookAtPng(const vx_source& source, uint64_t offset, uint64_t saidSize) noexcept;

}  // namespace vxkrn
