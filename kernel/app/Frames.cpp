// What an animated cursor says of itself, to applications.
#include "app/Frames.h"

#include <algorithm>

#include "base/Errors.h"

namespace vxkrn {
namespace {

template <std::size_t Size>
void CopyText(const vx_source& source, const Extent& extent, char (&text)[Size]) noexcept {
  const auto count = static_cast<uint32_t>(std::min<uint64_t>(extent.end - extent.begin, Size - 1));
  text[source.Peek(text, count, extent.begin)] = '\0';
}

/// Finds the chunks of a source that must be an animated cursor.
int RequireAnimation(const vx_source& source, Animation* animation) {
  if (IsAnimation(source)) return FindAnimation(source, animation);
  return Fail({STATUS_BAD_FORMAT, VX_REASON_NO_SIGNATURE}, source.Name(), ": it is no animated cursor");
}

}  // namespace

PageNotes::~PageNotes() {
  vx_error_info& failure = Failure();
  if (failure.status != VX_OK) failure.page = page_;
  if (failure.offset >= 0) failure.offset += static_cast<int64_t>(offset_);
  Remarks& remarks = ThisCall().remarks;
  for (int i = before_; i < remarks.count; ++i) remarks.all[static_cast<std::size_t>(i)].page = page_;
}

}  // namespace vxkrn

using vxkrn::FailForArgument;

int vx_animation_describe(vx_source* source, vx_animation_info* info) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || info == nullptr) {
      return FailForArgument("the source and the record to fill must be given");
    }
    *info = vx_animation_info{};
    vxkrn::Animation animation;
    const int status = vxkrn::RequireAnimation(*source, &animation);
    if (status != STATUS_OK) return status;
    info->frame_count = static_cast<int>(animation.frames.size());
    info->step_count = static_cast<int>(animation.StepCount());
    info->jiffies = animation.header.jiffies;
    vxkrn::CopyText(*source, animation.title, info->title);
    vxkrn::CopyText(*source, animation.author, info->author);
    return VX_OK;
  });
}

int vx_animation_steps(vx_source* source, int first, int count, vx_animation_step* steps) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || (steps == nullptr && count != 0)) {
      return FailForArgument("the source and the records to fill must be given");
    }
    vxkrn::Animation animation;
    const int status = vxkrn::RequireAnimation(*source, &animation);
    if (status != STATUS_OK) return status;
    const auto total = static_cast<int>(animation.StepCount());
    if (first < 0 || count < 0 || first > total || count > total - first) {
      return FailForArgument(count, " steps from step ", first, " on were asked for; there are ", total);
    }
    for (int i = 0; i < count; ++i) {
      const auto step =
          vxkrn::StepAt(*source, animation, static_cast<uint64_t>(first) + static_cast<uint64_t>(i));
      const bool isThere = step.frame < animation.frames.size();
      steps[i] = {isThere ? static_cast<int>(step.frame) + 1 : 0, step.jiffies};
    }
    return VX_OK;
  });
}
