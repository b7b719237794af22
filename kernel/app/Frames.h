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

/// Has `use` look at page `page`, which there is, of an animated cursor: at a source that holds nothing else.
/// Throws std::bad_alloc. @return what it returns, or a failure with its detail set
template <class Use>
int WithFrameOf(vx_source& source, const Animation& animation, int page, const Use& use) {
  const Extent extent = animation.frames[static_cast<std::size_t>(page) - 1];
  const PageNotes notes(page, extent.begin);
  FrameView frame(source, extent);
  const int status = frame.Open(page);
  return status == STATUS_OK ? use(frame.Source()) : status;
}

/// The same of any page there may be; `use` is shown the animation, too.
template <class Use>
int WithFrame(vx_source& source, int page, const Use& use) {
  Animation animation;
  const int status = FindAnimation(source, &animation);
  if (status != STATUS_OK) return status;
  const auto count = static_cast<int>(animation.frames.size());
  if (page < 1 || page > count) {
    return Fail({STATUS_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page, count}, source.Name(), " has no page ", page,
                ": its pages are 1 to ", count);
  }
  return WithFrameOf(source, animation, page, [&](vx_source& frame) { return use(frame, animation); });
}

}  // namespace vxkrn
