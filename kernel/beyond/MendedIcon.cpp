// The directory is the only part that is not the file's own.
#include "beyond/MendedIcon.h"

#include <algorithm>
#include <cstring>

#include "beyond/IconFile.h"
#include "format/HeaderEncoding.h"

namespace vxkrn {

bool MendedIcon::MendFor(int page) {
  const ICONDIR start = bmp::DecodeDirectory(source_.BlockAt<bmp::kDirectorySize>(0));
  // Cursors are of one kind, and not searched for it.
  if (start.Reserved != 0 || start.Type != bmp::kIconType) return false;
  const Backend view = source_.View();
  const IconReader reader(view, source_.Name());
  IconDirectory directory;
  if (reader.ReadStart(&directory) != STATUS_OK || page < 1 || page > directory.count) return false;
  ICONDIRENTRY asked;
  if (!reader.ReadEntry(page, &asked) || !reader.IsWithinReach(asked)) return false;
  if (reader.ReadDirectory(&directory) != STATUS_OK) return false;
  bool isMended = false;
  for (ICONDIRENTRY& entry : directory.entries) {
    if (reader.IsWithinReach(entry)) continue;
    entry = asked;
    isMended = true;
  }
  pageCount_ = directory.count;
  // A count that is too high makes entries of the pages themselves: the page asked for must not be covered.
  if (asked.ImageOffset < directory.Bytes()) directory.entries.resize(static_cast<std::size_t>(page));
  ICONDIR shown = start;
  shown.Count = static_cast<uint16_t>(directory.entries.size());
  const auto head = bmp::EncodeDirectory(shown);
  directory_.assign(head.begin(), head.end());
  for (const ICONDIRENTRY& entry : directory.entries) {
    const auto bytes = bmp::EncodeEntry(entry);
    directory_.insert(directory_.end(), bytes.begin(), bytes.end());
  }
  return isMended;
}

Backend MendedIcon::View() noexcept {
  Backend view = source_.View();
  view.functions.open = [](void* user, const char* /*name*/, int flags) {
    return flags == VX_OPEN_READ ? user : nullptr;
  };
  view.functions.read_at = ReadAt;
  view.functions.size = [](void* user, void* /*file*/) {
    return static_cast<MendedIcon*>(user)->source_.Size();
  };
  view.user = this;
  return view;
}

int64_t MendedIcon::ReadAt(void* user, void* /*file*/, void* buffer, uint32_t count,
                           uint64_t position) noexcept {
  const auto& self = *static_cast<MendedIcon*>(user);
  const Backend view = self.source_.View();
  const int64_t got = view.functions.read_at(view.user, nullptr, buffer, count, position);
  if (got <= 0) return got;
  const uint64_t end = std::min<uint64_t>(position + static_cast<uint64_t>(got), self.directory_.size());
  if (position >= end) return got;
  std::memcpy(buffer, self.directory_.data() + position, static_cast<std::size_t>(end - position));
  return got;
}

}  // namespace vxkrn
