// Editing icon and cursor files. A transaction is a copy of the file in memory (EditFile), edited as a draft
// (IconDraft) that is put together in the end. In place the filter edits the file itself. It trusts its
// caller about that, so everything it would have to ask is looked at here first.
#include "format/PageSlot.h"
#include "format/SaveRules.h"

#include <algorithm>
#include <string>

#include "app/Describe.h"
#include "base/Errors.h"
#include "beyond/IconDraft.h"
#include "beyond/PageWriter.h"
#include "files/EditFile.h"
#include "filter/FilterCalls.h"

struct vx_edit : vxkrn::EditFile {
  vxkrn::IconDraft draft{copy};  ///< of the copy, unless edits go to the file itself
  bool isSpoilt = false;         ///< an edit failed half way
  bool isDone = false;
};

namespace vxkrn {
namespace {

using bmp::kMostPages;
constexpr int kMostHotSpot = 0xFFFF;

int ReadDirectory(const vx_edit& edit, IconDirectory* directory) {
  const IconReader reader(edit.backend, edit.path.c_str());
  const int status = reader.ReadDirectory(directory);
  return status == STATUS_OK ? status : NameFailure(status, edit.path);
}

int Open(vx_edit* edit, unsigned int flags) {
  const int status = edit->Open(flags);
  if (status != STATUS_OK || (flags & VX_EDIT_NEW) != 0) return status;
  IconDirectory directory;
  if (edit->inPlace) return ReadDirectory(*edit, &directory);
  const int read = edit->draft.Read();
  return read == STATUS_OK ? read : NameFailure(read, edit->path);
}

/// What an edit finds when it begins.
struct State {
  bool isEmpty = false;  ///< a new file without pages yet
  bool isCursor = false;
  int count = 0;
  IconDirectory inPlace;  ///< of a file that is edited in place

  [[nodiscard]] int Count() const { return count; }
};

int Begin(const vx_edit* edit, State* state) {
  if (edit == nullptr) return FailForArgument("the edit must be given");
  if (edit->isDone)
    return Fail({STATUS_BAD_PARAMETER, VX_REASON_EDIT_IS_OVER}, edit->path, ": this edit is stored already");
  if (edit->isSpoilt) {
    return Fail({STATUS_BAD_PARAMETER, VX_REASON_EDIT_IS_OVER}, edit->path,
                ": an earlier edit failed half way");
  }
  state->isEmpty = !edit->inPlace && edit->draft.Count() == 0 && edit->copy.Size() == 0;
  state->isCursor = edit->draft.IsCursor();
  state->count = edit->draft.Count();
  if (!edit->inPlace) return STATUS_OK;
  const int status = ReadDirectory(*edit, &state->inPlace);
  state->isCursor = state->inPlace.isCursor;
  state->count = state->inPlace.count;
  return status;
}

const ICONDIRENTRY& EntryOf(const vx_edit& edit, const State& state, int page) {
  return edit.inPlace ? state.inPlace.entries[static_cast<std::size_t>(page) - 1] : edit.draft.Entry(page);
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
  const bool isCursor = !state.isEmpty && state.isCursor;
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
  if (edit->inPlace) return End(edit, WriteHotSpot(edit->backend, edit->path.c_str(), page, hotSpot));
  edit->draft.SetHotSpot(page, hotSpot);
  return STATUS_OK;
}

int Delete(vx_edit* edit, int page) {
  if (edit->inPlace) return End(edit, DeletePage(edit->backend, edit->path.c_str(), page));
  edit->draft.Delete(page);
  return STATUS_OK;
}

enum class Put { kInsert, kReplace };

int PutIntoDraft(vx_edit* edit, const State& state, Put how, int page, SavePlan* plan) {
  const char* name = edit->path.c_str();
  if (state.isEmpty) return edit->draft.Begin(name, plan);
  return how == Put::kInsert ? edit->draft.Insert(name, page, plan) : edit->draft.Replace(name, page, plan);
}

/// Writes the picture as page `page`.
int PutPage(vx_edit* edit, const State& state, Put how, int page, SavePlan* plan) {
  SAVEOPTIONS options = NewFile();
  options.Flags = how == Put::kInsert ? SAVE_PAGE_INSERT : SAVE_PAGE_REPLACE;
  options.PageNumber = page;
  const int written = edit->inPlace ? SavePage(edit->backend, edit->path.c_str(), options, page, plan)
                                    : PutIntoDraft(edit, state, how, page, plan);
  const int status = End(edit, written);
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
  return status == STATUS_OK ? PutPage(edit, state, Put::kInsert, page, &plan) : status;
}

int Replace(vx_edit* edit, const State& state, int page, const vx_bitmap& picture,
            const vx_save_options* options) {
  SavePlan plan = {};
  const int status = PlanPage(*edit, state, picture, options, &plan);
  plan.hotSpot = HotSpotOf(EntryOf(*edit, state, page));
  return status == STATUS_OK ? PutPage(edit, state, Put::kReplace, page, &plan) : status;
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
    return vxkrn::Delete(edit, page);
  });
}

int vx_edit_set_hot_spot(vx_edit* edit, int page, int x, int y) {
  return RunEdit(edit, [&](const State& state) {
    const int status = vxkrn::CheckPage(*edit, state, page);
    if (status != STATUS_OK) return status;
    if (!state.isCursor) {
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
    const int status = edit->draft.Compact();
    return status == STATUS_OK ? status : vxkrn::NameFailure(status, edit->path);
  });
}

int vx_edit_commit(vx_edit* edit) {
  return RunEdit(edit, [&](const State& state) {
    if (state.isEmpty) {
      return Fail({VX_BAD_PARAMETER, VX_REASON_NO_PAGES}, edit->path,
                  ": a file without pages cannot be stored");
    }
    int status = edit->inPlace ? VX_OK : edit->draft.PutTogether();
    if (status == STATUS_OK) status = edit->Commit();
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
