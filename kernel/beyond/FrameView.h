// A run of a source's bytes as a source of its own: what is there can be a whole file, such as a frame of an
// animated cursor, and is read as any file is. Knows nothing of what the bytes mean.
#pragma once

#include "beyond/IconFile.h"
#include "files/Source.h"

namespace vxkrn {

class FrameView {
 public:
  /// The outer source must outlive it.
  FrameView(vx_source& outer, const Extent& extent) noexcept : outer_(outer), extent_(extent) {}
  FrameView(const FrameView&) = delete;
  FrameView& operator=(const FrameView&) = delete;

  /// Makes the source. @param page for messages: its number in the outer source
  /// @return STATUS_OK, or STATUS_NO_MEMORY with its detail set
  [[nodiscard]] int Open(int page);
  [[nodiscard]] vx_source& Source() noexcept { return *source_; }

 private:
  static int64_t ReadAt(void* user, void* file, void* buffer, uint32_t count, uint64_t position) noexcept;

  vx_source& outer_;
  Extent extent_;
  memory::Owned<vx_source> source_;
};

}  // namespace vxkrn
