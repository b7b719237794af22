// Editing icon and cursor files. A transaction is a copy of the file in memory (EditFile), edited by the
// filter, and by beyond/PageWriter, as any file is. The filter trusts its caller about the file, so
// everything it would have to ask is looked at here first.
#include "format/PageSlot.h"
#include "format/SaveRules.h"

#include <algorithm>
#include <string>

#include "app/Describe.h"
#include "base/Errors.h"
#include "beyond/IconFile.h"
#include "beyond/PageWriter.h"
#include "files/EditFile.h"
#include "filter/FilterCalls.h"

struct vx_edit : vxkrn::EditFile {
  bool isSpoilt = false;  ///< an edit failed half way
  bool isDone = false;
};

namespace vxkrn {
namespace {

using bmp::kMostPages;
constexpr int kMostHotSpot = 0xFFFF;

int CheckIsIcon(const vx_edit& edit) {
  const IconReader reader(edit.backend, edit.path.c_str());
  IconDirectory directory;
  const int status = reader.ReadDirectory(&directory);
  return status == STATUS_OK ? status : NameFailure(status, edit.path);
}

int Open(vx_edit* edit, unsigned int flags) {
  const int status = edit->Open(flags);
  return status == STATUS_OK && (flags & VX_EDIT_NEW) == 0 ? CheckIsIcon(*edit) : status;
}

/// What an edit finds when it begins.
struct State {
  bool isEmpty = false;  ///< a new file without pages yet
  IconDirectory directory;

  [[nodiscard]] int Count() const { return static_cast<int>(directory.entries.size()); }
};

int Begin(const vx_edit* edit, State* state) {
  if (edit == nullptr) return FailForArgument("the edit must be given");
  if (edit->isDone)
    return Fail({STATUS_BAD_PARAMETER, VX_REASON_EDIT_IS_OVER}, edit->path, ": this edit is stored already");
  if (edit->isSpoilt) {
    return Fail({STATUS_BAD_PARAMETER, VX_REASON_EDIT_IS_OVER}, edit->path,
                ": an earlier edit failed half way");
  }
  state->isEmpty = !edit->inPlace && edit->copy.Size() == 0;
  if (state->isEmpty) return STATUS_OK;
  const IconReader reader(edit->backend, edit->path.c_str());
  const int status = reader.ReadDirectory(&state->directory);
  return status == STATUS_OK ? status : NameFailure(status, edit->path);
}

int CheckPage(const vx_edit& edit, const State& state, int page) {
  if (page >= 1 && page <= state.Count()) return STATUS_OK;
  return Fail({STATUS_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page, state.Count()}, edit.path, " has no page ",
              page, ": its pages are 1 to ", state.Count());
}

/// After the filter or a write: a failure may have left the file half edited.
int End(vx_edit* edit, int status) {
  if (status != STATUS_OK) edit->isSpoilt = true;
  return status;
}

/// The options with the format that suits file and picture best where none was asked for.
int PlanPage(const vx_edit& edit, const State& state, const vx_bitmap& picture,
             const vx_save_options* options, SavePlan* plan) {
  vx_save_options chosen = VX_SAVE_OPTIONS_DEFAULT;
  chosen.format = 0;
  if (options != nullptr) chosen = *options;
  const bool isCursor = !state.isEmpty && state.directory.isCursor;
  const bool isOpen = chosen.format == 0;
  if (isOpen) chosen.format = isCursor ? FMT_CUR : FMT_ICO;
  const bool isForCursor = chosen.format == FMT_CUR;
  if (!bmp::IsIconFormat(chosen.format) || (!state.isEmpty && isForCursor != isCursor)) {
    return Fail({STATUS_NOT_SUPPORTED, VX_REASON_PAGE_NOT_IN_FILE, chosen.format}, edit.path, " is ",
                isCursor ? "a cursor" : "an icon",
                " file, which cannot have a page of the kind: ", vx_format_name(chosen.format));
  }
  constexpr int kLargestBitmapPage = 255;
  const bool isLarge = std::max(picture.record.Width, picture.record.Height) > kLargestBitmapPage;
  if (isOpen && isLarge && !isCursor) chosen.format = FMT_VISTA_ICO;
  const int status = PlanSave(picture, &chosen, plan);
  return status == STATUS_OK ? status : NameFailure(status, edit.path);
}

int SetHotSpot(vx_edit* edit, int page, HotSpot hotSpot) {
  return End(edit, WriteHotSpot(edit->backend, edit->path.c_str(), page, hotSpot));
}

/// Writes the picture where `flags` say, as page `page`; as the first page of a file that is new.
int PutPage(vx_edit* edit, const State& state, unsigned int flags, int page, SavePlan* plan) {
  SAVEOPTIONS options = NewFile();
  if (!state.isEmpty) {
    options.Flags = flags;
    options.PageNumber = page;
  }
  const int status = End(edit, SavePage(edit->backend, edit->path.c_str(), options, page, plan));
  if (status == STATUS_OK) RemarkOnLosses(*plan, page);
  return status;
}

int Insert(vx_edit* edit, const State& state, int page, const vx_bitmap& picture,
           const vx_save_options* options) {
  if (state.Count() == kMostPages) {
    return Fail({STATUS_BAD_PAGE, VX_REASON_TOO_MANY_PAGES, kMostPages}, edit->path, " has ", kMostPages,
                " pages, which is as many as there can be");
  }
  SavePlan plan = {};
  const int status = PlanPage(*edit, state, picture, options, &plan);
  return status == STATUS_OK ? PutPage(edit, state, SAVE_PAGE_INSERT, page, &plan) : status;
}

int Replace(vx_edit* edit, const State& state, int page, const vx_bitmap& picture,
            const vx_save_options* options) {
  SavePlan plan = {};
  const int status = PlanPage(*edit, state, picture, options, &plan);
  plan.hotSpot = HotSpotOf(state.directory.entries[static_cast<std::size_t>(page) - 1]);
  return status == STATUS_OK ? PutPage(edit, state, SAVE_PAGE_REPLACE, page, &plan) : status;
}

/// Runs one edit. @param edits gets the state and returns a status
template <class Edits>
int RunEdit(vx_edit* edit, const Edits& edits) {
  return Guarded([&]() -> int {
    State state;
    const int status = Begin(edit, &state);
    return status == STATUS_OK ? edits(state) : status;
  });
}

int FailWithoutPicture() {
  return FailForArgument("the bitmap must be given");
}

}  // namespace
}  // namespace vxkrn

using vxkrn::Fail;
using vxkrn::FailForArgument;
using vxkrn::RunEdit;
using vxkrn::State;

int vx_edit_open(const char* path, unsigned int flags, vx_edit** edit) {
  return vxkrn::Guarded([&]() -> int {
    if (edit != nullptr) *edit = nullptr;
    if (path == nullptr || edit == nullptr) {
      return FailForArgument("the path and the place for the edit must be given");
    }
    constexpr unsigned int kKnown = VX_EDIT_IN_PLACE | VX_EDIT_NEW | VX_EDIT_REQUIRE_LOCK;
    if ((flags & ~kKnown) != 0) return FailForArgument("flags is ", flags, "; some of its bits mean nothing");
    auto opened = vxkrn::memory::Make<vx_edit>({"kernel/PageEdit", __LINE__});
    if (opened == nullptr) return vxkrn::FailForMemory("an edit", sizeof(vx_edit));
    opened->path = path;
    const int status = vxkrn::Open(opened.get(), flags);
    if (status == STATUS_OK) *edit = opened.release();
    return status;
  });
}

int vx_edit_page_count(vx_edit* edit, int* count) {
  return RunEdit(edit, [&](const State& state) {
    if (count == nullptr) return FailForArgument("the number to fill must be given");
    *count = state.Count();
    return int{VX_OK};
  });
}

int vx_edit_add(vx_edit* edit, const vx_bitmap* bitmap, const vx_save_options* options) {
  return RunEdit(edit, [&](const State& state) {
    if (bitmap == nullptr) return vxkrn::FailWithoutPicture();
    return vxkrn::Insert(edit, state, state.Count() + 1, *bitmap, options);
  });
}

int vx_edit_insert(vx_edit* edit, int page, const vx_bitmap* bitmap, const vx_save_options* options) {
  return RunEdit(edit, [&](const State& state) {
    if (bitmap == nullptr) return vxkrn::FailWithoutPicture();
    if (page < 1 || page > state.Count() + 1) {
      return Fail({VX_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page, state.Count()}, edit->path,
                  ": a page can be inserted as page 1 to ", state.Count() + 1, ", not as ", page);
    }
    return vxkrn::Insert(edit, state, page, *bitmap, options);
  });
}

int vx_edit_replace(vx_edit* edit, int page, const vx_bitmap* bitmap, const vx_save_options* options) {
  return RunEdit(edit, [&](const State& state) {
    if (bitmap == nullptr) return vxkrn::FailWithoutPicture();
    const int status = vxkrn::CheckPage(*edit, state, page);
    return status == STATUS_OK ? vxkrn::Replace(edit, state, page, *bitmap, options) : status;
  });
}

int vx_edit_delete(vx_edit* edit, int page) {
  return RunEdit(edit, [&](const State& state) {
    const int status = vxkrn::CheckPage(*edit, state, page);
    if (status != STATUS_OK) return status;
    if (state.Count() == 1)
      return Fail({VX_LAST_PAGE, VX_REASON_LAST_PAGE}, edit->path, ": its only page cannot go");
    return vxkrn::End(edit, vxkrn::DeletePage(edit->backend, edit->path.c_str(), page));
  });
}

int vx_edit_set_hot_spot(vx_edit* edit, int page, int x, int y) {
  return RunEdit(edit, [&](const State& state) {
    const int status = vxkrn::CheckPage(*edit, state, page);
    if (status != STATUS_OK) return status;
    if (!state.directory.isCursor) {
      return Fail({VX_NOT_SUPPORTED, VX_REASON_NOT_A_CURSOR}, edit->path,
                  " is an icon file; only cursors have hot spots");
    }
    const auto isInRange = [](int value) { return value >= 0 && value <= vxkrn::kMostHotSpot; };
    if (!isInRange(x) || !isInRange(y)) {
      return FailForArgument("the hot spot is ", x, ", ", y, "; both must be 0 to ", vxkrn::kMostHotSpot);
    }
    return vxkrn::SetHotSpot(edit, page, {static_cast<uint16_t>(x), static_cast<uint16_t>(y)});
  });
}

int vx_edit_compact(vx_edit* edit) {
  return RunEdit(edit, [&](const State& /*state*/) {
    if (edit->inPlace)
      return Fail({VX_NOT_SUPPORTED, VX_REASON_NOT_IN_PLACE}, edit->path, " cannot be compacted in place");
    const int status = vxkrn::Compact(&edit->copy);
    return status == STATUS_OK ? status : vxkrn::NameFailure(status, edit->path);
  });
}

int vx_edit_commit(vx_edit* edit) {
  return RunEdit(edit, [&](const State& state) {
    if (state.isEmpty) {
      return Fail({VX_BAD_PARAMETER, VX_REASON_NO_PAGES}, edit->path,
                  ": a file without pages cannot be stored");
    }
    const int status = edit->Commit();
    if (status == STATUS_OK && !edit->inPlace) edit->isDone = true;
    return vxkrn::End(edit, status);
  });
}

int vx_edit_is_locked(const vx_edit* edit) {
  return edit != nullptr && edit->IsLocked() ? 1 : 0;
}

void vx_edit_close(vx_edit* edit) {
  if (edit != nullptr) vxkrn::memory::Release{}(edit);
}
