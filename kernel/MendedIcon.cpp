// The directory is the only part that is not the file's own.
#include "MendedIcon.h"

#include <algorithm>
#include <cstring>

#include "IconFile.h"

namespace vxkrn {

bool MendedIcon::MendFor(int page) {
  constexpr std::uint32_t kIconStart = 0x00010000;  // cursors are of one kind, and not searched for it
  if (source_.Number(0, sizeof kIconStart) != kIconStart) return false;
  const Backend view = source_.View();
  const IconReader reader(view, source_.Name());
  IconDirectory directory;
  if (reader.ReadDirectory(&directory) != STATUS_OK) return false;
  if (page < 1 || page > static_cast<int>(directory.entries.size())) return false;
  const ICONDIRENTRY asked = directory.entries[static_cast<std::size_t>(page) - 1];
  if (!reader.IsWithinReach(asked)) return false;
  bool isMended = false;
  for (ICONDIRENTRY& entry : directory.entries) {
    if (reader.IsWithinReach(entry)) continue;
    entry = asked;
    isMended = true;
  }
  entries_ = std::move(directory.entries);
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

std::int64_t MendedIcon::ReadAt(void* user, void* /*file*/, void* buffer, std::uint32_t count,
                                std::uint64_t position) noexcept {
  const auto& self = *static_cast<MendedIcon*>(user);
  const Backend view = self.source_.View();
  const std::int64_t got = view.functions.read_at(view.user, nullptr, buffer, count, position);
  if (got <= 0) return got;
  const std::uint64_t entriesBegin = IconDirectory::EntryOffset(1);
  const std::uint64_t entriesEnd = IconDirectory::EntryOffset(static_cast<int>(self.entries_.size()) + 1);
  const std::uint64_t begin = std::max(position, entriesBegin);
  const std::uint64_t end = std::min(position + static_cast<std::uint64_t>(got), entriesEnd);
  if (begin >= end) return got;
  const void* entries = self.entries_.data();
  std::memcpy(static_cast<unsigned char*>(buffer) + (begin - position),
              static_cast<const unsigned char*>(entries) + (begin - entriesBegin),
              static_cast<std::size_t>(end - begin));
  return got;
}

}  // namespace vxkrn
