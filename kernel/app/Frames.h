// The frames of an animated cursor as its pages.
#pragma once

#include "base/CallRecord.h"
#include "beyond/Animation.h"
#include "beyond/FrameView.h"

namespace vxkrn {

/// While it lives, what is noted is of a page that is a file of its own: its first byte stands at `offset` of
/// the whole file.
class PageNotes {
 public:
  PageNotes(int page, uint64_t offset) noexcept
      : page_(page), offset_(offset), before_(ThisCall().remarks.count) {}
  ~PageNotes();
  PageNotes(const PageNotes&) = delete;
  PageNotes& operator=(const PageNotes&) = delete;

 private:
  int page_;
  uint64_t offset_;
  int before_;
};

/// Has `use` look at page `page` of an animated cursor: at a source that holds nothing else, and the number
/// of pages. Throws std::bad_alloc. @return what it returns, or a failure with its detail set
template <class Use>
int WithFrame(vx_source& source, int page, const Use& use) {
  Animation animation;
  int status = FindAnimation(source, &animation);
  if (status != STATUS_OK) return status;
  const auto count = static_cast<int>(animation.frames.size());
  if (page < 1 || page > count) {
    return Fail({STATUS_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page, count}, source.Name(), " has no page ", page,
                ": its pages are 1 to ", count);
  }
  const Extent extent = animation.frames[static_cast<std::size_t>(page) - 1];
  const PageNotes notes(page, extent.begin);
  FrameView frame(source, extent);
  status = frame.Open(page);
  return status == STATUS_OK ? use(frame.Source(), count) : status;
}

}  // namespace vxkrn
