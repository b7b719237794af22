// The filter still writes every page: into a file with a directory of one entry, from which entry and body
// are taken over.
#include "beyond/IconDraft.h"

#include <algorithm>
#include <array>

#include "base/Errors.h"
#include "beyond/PageWriter.h"
#include "files/OpenFile.h"
#include "filter/FilterCalls.h"
#include "format/HeaderEncoding.h"
#include "format/IconDirectory.h"

namespace vxkrn {
namespace {

using bmp::DirectoryBytes;

/// Has the picture written as the only page of a file.
int WriteAlone(const char* name, uint16_t type, SavePlan* plan, MemoryTarget* file) {
  std::array<uint8_t, DirectoryBytes(1)> directory{};
  const auto head = bmp::EncodeDirectory({.Reserved = 0, .Type = type, .Count = 1});
  std::copy(head.begin(), head.end(), directory.begin());
  if (!file->Assign(directory.data(), directory.size()))
    return FailForMemory("a page", memory::LastRefusal());
  SAVEOPTIONS where = NewFile();
  where.Flags = SAVE_PAGE_REPLACE;
  where.PageNumber = 1;
  return SavePage(file->AsBackend(), name, where, 1, plan);
}

}  // namespace

int IconDraft::Read() {
  const IconReader reader(file_.AsBackend(), "");
  IconDirectory directory;
  const int status = reader.ReadDirectory(&directory);
  if (status != STATUS_OK) return status;
  type_ = directory.isCursor ? bmp::kCursorType : bmp::kIconType;
  countInFile_ = directory.count;
  entries_.Assign(directory.entries);
  return STATUS_OK;
}

/// How far bodies will have moved once there are so many pages more.
uint32_t IconDraft::Shift(int pagesMore) const noexcept {
  return bmp::kEntrySize * static_cast<uint32_t>(entries_.Count() + pagesMore - countInFile_);
}

int IconDraft::PutTogether() {
  const uint32_t before = DirectoryBytes(static_cast<uint32_t>(countInFile_));
  const uint32_t after = DirectoryBytes(static_cast<uint32_t>(entries_.Count()));
  if (!file_.MoveBegin(int64_t{before} - int64_t{after})) {
    return FailForMemory("the directory", memory::LastRefusal());
  }
  const uint32_t shift = Shift(0);
  const auto count = static_cast<uint16_t>(entries_.Count());
  const auto head = bmp::EncodeDirectory({.Reserved = 0, .Type = type_, .Count = count});
  uint8_t* to = std::copy(head.begin(), head.end(), file_.Data());
  entries_.ForEach([&](ICONDIRENTRY entry) {
    entry.ImageOffset += shift;
    const auto bytes = bmp::EncodeEntry(entry);
    to = std::copy(bytes.begin(), bytes.end(), to);
  });
  return Read();
}

int IconDraft::Compact() {
  int status = PutTogether();
  if (status == STATUS_OK) status = vxkrn::Compact(&file_);
  return status == STATUS_OK ? Read() : status;
}

int IconDraft::Begin(const char* name, SavePlan* plan) {
  const int status = SavePage(file_.AsBackend(), name, NewFile(), 1, plan);
  return status == STATUS_OK ? Read() : status;
}

/// Appends a page's body to the file. @param entry receives what the directory says of it
int IconDraft::Append(const char* name, int pagesMore, SavePlan* plan, ICONDIRENTRY* entry) {
  constexpr uint32_t kBodyAt = DirectoryBytes(1);
  MemoryTarget page;
  if (const int status = WriteAlone(name, type_, plan, &page); status != STATUS_OK) return status;
  bmp::Block<bmp::kEntrySize> bytes{};
  std::copy_n(page.Data() + bmp::kDirectorySize, bytes.size(), bytes.begin());
  *entry = bmp::DecodeEntry(bytes);
  const uint64_t end = file_.Size();
  const std::size_t size = page.Size() - kBodyAt;
  const int64_t endThen = static_cast<int64_t>(end) + static_cast<int32_t>(Shift(pagesMore));
  const bool fits = endThen + static_cast<int64_t>(size) <= static_cast<int64_t>(kLastPosition);
  if (!fits) {
    return Fail(SystemCause(STATUS_WRITE_ERROR, 0), name,
                " cannot be written: the file functions refused it");
  }
  entry->ImageOffset = static_cast<uint32_t>(end);
  return Overwrite(file_.AsBackend(), name, end, page.Data() + kBodyAt, static_cast<uint32_t>(size));
}

int IconDraft::Insert(const char* name, int page, SavePlan* plan) {
  ICONDIRENTRY entry = {};
  const int status = Append(name, 1, plan, &entry);
  if (status == STATUS_OK) entries_.Insert(page, entry);
  return status;
}

int IconDraft::Replace(const char* name, int page, SavePlan* plan) {
  ICONDIRENTRY entry = {};
  const int status = Append(name, 0, plan, &entry);
  if (status == STATUS_OK) entries_.At(page) = entry;
  return status;
}

void IconDraft::SetHotSpot(int page, HotSpot hotSpot) noexcept {
  ICONDIRENTRY& entry = entries_.At(page);
  entry.Planes = hotSpot.x;
  entry.BitCount = hotSpot.y;
}

}  // namespace vxkrn
