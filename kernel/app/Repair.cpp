// vx_repair: mends a copy in memory in steps, keeps of those what leaves every page as it was shown before,
// and stores the outcome. What was done is told from what is found afterwards, not from what was tried.
#include <algorithm>
#include <array>
#include <set>

#include "app/Load.h"
#include "app/StoreFile.h"
#include "base/Errors.h"
#include "beyond/BitmapFile.h"
#include "files/EditFile.h"
#include "format/IconDirectory.h"
#include "verify/Judge.h"
#include "verify/Mend.h"
#include "vx/verify.h"

namespace vxkrn {
namespace {

uint64_t SizeOf(const vx_source& source) noexcept {
  return static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
}

/// Bytes as a source. They must outlive it.
memory::Owned<vx_source> SourceOf(const Content& content, const char* name) {
  auto source = NewSource(name);
  if (source == nullptr) throw std::bad_alloc();
  source->ReadFromMemory(content.data(), content.size());
  return source;
}

/// How many pages are to be compared.
int CountPages(vx_source& source) {
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
  if (bmp::IsValidDirectory(directory)) return directory.Count;
  vx_info info = {};
  const int status = vx_describe(&source, 1, &info);
  BeginCall();
  return status == STATUS_OK ? info.page_count : 1;
}

/// What a page loads as.
struct Shown {
  int status = STATUS_OK;
  memory::Owned<vx_bitmap> picture;
};

Shown Show(vx_source& source, int page) {
  vx_load_options options = VX_LOAD_OPTIONS_DEFAULT;
  options.page = page;
  options.allow_truncated = 1;
  Shown shown;
  shown.status = LoadAny(source, &options, &shown.picture);
  if (shown.status == STATUS_NO_MEMORY) throw std::bad_alloc();
  BeginCall();
  return shown;
}

bool ShowSame(const vx_bitmap& one, const vx_bitmap& other) {
  const _BITMAPHANDLE& first = one.record;
  if (first.Width != other.record.Width || first.Height != other.record.Height) return false;
  if (one.rowsPresent != other.rowsPresent) return false;
  const std::size_t bytes = static_cast<std::size_t>(first.Width) * 4;
  memory::Vector<uint8_t> row(2 * bytes);
  for (int y = 0; y < first.Height; ++y) {
    const bool areRead = vx_bitmap_read_rgba(&one, y, row.data()) == VX_OK &&
                         vx_bitmap_read_rgba(&other, y, row.data() + bytes) == VX_OK;
    if (!areRead || !std::equal(row.data(), row.data() + bytes, row.data() + bytes)) return false;
  }
  return true;
}

/// Whether every page loads as the same picture, or fails as it did. Pages that the directory says the same
/// of are one.
bool AreSame(vx_source& before, vx_source& after) {
  using Entry = bmp::Block<bmp::kEntrySize>;
  std::set<Entry, std::less<>, memory::Counted<Entry>> seen;
  const int count = CountPages(before);
  if (count != CountPages(after)) return false;
  for (int page = 1; page <= count; ++page) {
    const bool isIcon = bmp::LoadU16(bmp::View<2>(before.BlockAt<2>(0)), 0) == bmp::kIconSignature;
    if (isIcon && !seen.insert(before.BlockAt<bmp::kEntrySize>(bmp::EntryOffset(page))).second) continue;
    const Shown old = Show(before, page);
    const Shown mended = Show(after, page);
    if (old.status != mended.status) return false;
    if (old.status == STATUS_OK && !ShowSame(*old.picture, *mended.picture)) return false;
  }
  return true;
}

Findings Judged(vx_source& source) {
  Findings findings(SizeOf(source));
  if (JudgeFile(source, VX_PURPOSE_ANY, &findings) != STATUS_OK) BeginCall();
  return findings;
}

bool HasMendable(const Findings& findings) {
  const auto all = findings.All();
  return std::any_of(all.begin(), all.end(), [](const Found& found) { return CanBeMended(found.code); });
}

/// A file that is mended step by step.
class Repair {
 public:
  explicit Repair(vx_source& source) : source_(source), before_(SizeOf(source)) {}

  /// @return STATUS_OK, or a failure with its detail set
  int Run() {
    int status = JudgeFile(source_, VX_PURPOSE_ANY, &before_);
    if (status == STATUS_OK) status = ReadAll();
    if (status != STATUS_OK || !HasMendable(before_)) return status;
    Try([](vx_source& from, const Findings& found, Content* to) { MendFields(from, found.All(), to); });
    Try([](vx_source& from, const Findings& /*found*/, Content* to) {
      Content pages;
      if (MendPages(from, &pages)) {
        *to = std::move(pages);
      } else {
        (void)MendGaps(from, to);
      }
    });
    Try([](vx_source& from, const Findings& found, Content* to) { MendFields(from, found.All(), to); });
    return status;
  }

  /// Tells what was mended and what is left. @return errors that are left
  int Tell(vx_repair_function take, void* user) {
    const auto source = SourceOf(content_, source_.Name());
    const Findings after = Judged(*source);
    std::set<Place, std::less<>, memory::Counted<Place>> left;
    for (const Found& found : after.All()) left.insert({found.code, found.page});
    for (const Found& found : before_.All()) {
      const bool isMended = CanBeMended(found.code) && !left.contains({found.code, found.page});
      if (isMended) TellOf(before_, found, true, take, user);
    }
    int errors = 0;
    for (const Found& found : after.All()) {
      const FindingRule& rule = *FindingRuleOf(found.code);
      if (rule.severity == VX_ERROR) ++errors;
      if (rule.severity != VX_NOTE || CanBeMended(found.code)) TellOf(after, found, false, take, user);
    }
    return errors;
  }

  [[nodiscard]] const Content& Bytes() const noexcept { return content_; }
  [[nodiscard]] bool HasChanged() const noexcept { return hasChanged_; }

 private:
  using Place = std::pair<int, int>;  // code and page

  int ReadAll() {
    content_.resize(static_cast<std::size_t>(SizeOf(source_)));
    const auto size = static_cast<uint32_t>(content_.size());
    if (source_.Peek(content_.data(), size, 0) == size) return STATUS_OK;
    return Fail({STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR}, source_.Name(), ": not all of its ", size,
                " bytes can be read");
  }

  /// Takes a step if every page is shown as before.
  template <class Step>
  void Try(const Step& step) {
    const auto source = SourceOf(content_, source_.Name());
    const Findings found = Judged(*source);
    if (!HasMendable(found)) return;
    Content mended = content_;
    step(*source, found, &mended);
    BeginCall();
    if (mended == content_) return;
    const auto after = SourceOf(mended, source_.Name());
    if (!AreSame(source_, *after)) return;
    content_ = std::move(mended);
    hasChanged_ = true;
  }

  static void TellOf(const Findings& findings, const Found& found, bool isMended, vx_repair_function take,
                     void* user) {
    if (take == nullptr) return;
    struct Call {
      vx_repair_function take;
      void* user;
      bool isMended;
    } call = {take, user, isMended};
    const auto tell = [](void* data, const vx_finding* finding) {
      const auto& told = *static_cast<Call*>(data);
      const FindingRule& rule = *FindingRuleOf(finding->code);
      const char* what = told.isMended ? rule.done
                         : CanBeMended(finding->code)
                             ? "Here it cannot be mended without a change of what is shown."
                             : rule.advice;
      const vx_repair_step step = {finding, told.isMended ? 1 : 0, what};
      told.take(told.user, &step);
      return 0;
    };
    (void)findings.Tell(found, tell, &call);
  }

  vx_source& source_;
  Findings before_;
  Content content_;
  bool hasChanged_ = false;
};

/// Puts the mended file in the place of the one that is locked.
int StoreInPlace(EditFile* file, const char* backup, const Content& content) {
  int status = STATUS_OK;
  if (backup != nullptr) status = StoreNewFile(backup, file->copy.Data(), file->copy.Size());
  if (status != STATUS_OK) return status;
  if (!file->copy.Assign(content.data(), content.size())) {
    return FailForMemory("the file", memory::LastRefusal());
  }
  return file->Commit();
}

int RepairInPlace(const char* path, const char* backup, vx_repair_function take, void* user,
                  vx_repair_outcome* outcome) {
  EditFile file;
  file.path = path;
  int status = file.Open(0);
  if (status != STATUS_OK) return status;
  if (file.inPlace) {
    return Fail({STATUS_NOT_SUPPORTED, VX_REASON_NOT_IN_PLACE}, path,
                ": files of the application's own cannot be repaired in place");
  }
  const Content old(file.copy.Data(), file.copy.Data() + file.copy.Size());
  const auto source = SourceOf(old, path);
  Repair repair(*source);
  status = repair.Run();
  if (status == STATUS_OK && repair.HasChanged()) status = StoreInPlace(&file, backup, repair.Bytes());
  if (status != STATUS_OK) return status;
  *outcome = {repair.HasChanged() ? 1 : 0, repair.Tell(take, user)};
  return STATUS_OK;
}

}  // namespace
}  // namespace vxkrn

int vx_repair(vx_source* source, const char* path, vx_repair_function take, void* user,
              vx_repair_outcome* outcome) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || path == nullptr || outcome == nullptr) {
      return vxkrn::FailForArgument("the source, the path and the place for the outcome must be given");
    }
    *outcome = {};
    vxkrn::Repair repair(*source);
    int status = repair.Run();
    if (status == STATUS_OK) status = vxkrn::StoreFile(path, repair.Bytes());
    if (status != STATUS_OK) return status;
    *outcome = {repair.HasChanged() ? 1 : 0, repair.Tell(take, user)};
    return VX_OK;
  });
}

int vx_repair_in_place(const char* path, const char* backup, vx_repair_function take, void* user,
                       vx_repair_outcome* outcome) {
  return vxkrn::Guarded([&]() -> int {
    if (path == nullptr || outcome == nullptr) {
      return vxkrn::FailForArgument("the path and the place for the outcome must be given");
    }
    *outcome = {};
    return vxkrn::RepairInPlace(path, backup, take, user, outcome);
  });
}
