// The bytes before and behind the run are out of reach.
#include "beyond/FrameView.h"

#include <algorithm>

#include "base/Errors.h"

namespace vxkrn {

int FrameView::Open(int page) {
  Text name;
  name << outer_.Name() << ", page " << page << " from byte " << extent_.begin << " on";
  source_ = NewSource(name.CString());
  if (source_ == nullptr) return FailForMemory("opening a page", sizeof(vx_source));
  source_->backend.functions.read_at = ReadAt;
  source_->backend.functions.size = [](void* user, void* /*file*/) {
    const Extent& extent = static_cast<FrameView*>(user)->extent_;
    return static_cast<int64_t>(extent.end - extent.begin);
  };
  source_->backend.functions.close = [](void* /*user*/, void* /*file*/) { return 0; };
  source_->backend.user = this;
  source_->file = this;
  source_->HoldIfSmallIcon();
  return STATUS_OK;
}

int64_t FrameView::ReadAt(void* user, void* /*file*/, void* buffer, uint32_t count,
                          uint64_t position) noexcept {
  const auto& self = *static_cast<FrameView*>(user);
  const uint64_t size = self.extent_.end - self.extent_.begin;
  if (position >= size) return 0;
  const auto available = static_cast<uint32_t>(std::min<uint64_t>(count, size - position));
  return self.outer_.ReadAt(buffer, available, self.extent_.begin + position);
}

}  // namespace vxkrn
