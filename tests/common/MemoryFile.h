// An application's one file, in memory, which does badly what it is told to do badly.
#pragma once

#include <vx/vx.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <vector>

struct MemoryFile {
  std::vector<uint8_t> bytes;
  std::size_t room = SIZE_MAX;  // what would be written beyond it fails
  bool closeFails = false;
  int callsUntilFailure = -1;  // of those that open, write and close; below 0 none fails
  std::function<void(uint64_t)> read = [](uint64_t) {};  // called by every read, with its position
  uint32_t most = 3000;  // bytes of a call: in portions, as pipes and networks do
  int closed = 0;

  static MemoryFile& Of(void* file) { return *static_cast<MemoryFile*>(file); }
  static void* Open(void* user, const char* /*name*/, int /*flags*/) {
    return Of(user).callsUntilFailure-- == 0 ? nullptr : user;
  }
  static int64_t ReadAt(void* /*user*/, void* file, void* buffer, uint32_t count, uint64_t position) {
    const std::vector<uint8_t>& bytes = Of(file).bytes;
    Of(file).read(position);
    if (position >= bytes.size()) return 0;
    const uint64_t portion = std::min<uint64_t>({count, bytes.size() - position, Of(file).most});
    std::copy_n(bytes.data() + position, portion, static_cast<uint8_t*>(buffer));
    return static_cast<int64_t>(portion);
  }
  static int64_t WriteAt(void* /*user*/, void* file, const void* buffer, uint32_t count, uint64_t position) {
    MemoryFile& self = Of(file);
    if (self.callsUntilFailure-- == 0 || position + count > self.room) return errno = ENOSPC, -1;
    const uint32_t portion = std::min(count, self.most);
    self.bytes.resize(std::max(self.bytes.size(), static_cast<std::size_t>(position + portion)));
    std::copy_n(static_cast<const uint8_t*>(buffer), portion, self.bytes.data() + position);
    return portion;
  }
  static int64_t Size(void* /*user*/, void* file) { return static_cast<int64_t>(Of(file).bytes.size()); }
  static int Truncate(void* /*user*/, void* file, uint64_t size) {
    return Of(file).bytes.resize(static_cast<std::size_t>(size)), 0;
  }
  static int Close(void* /*user*/, void* file) {
    ++Of(file).closed;
    return Of(file).callsUntilFailure-- == 0 || Of(file).closeFails ? errno = EIO, -1 : 0;
  }
  static constexpr vx_file_functions kFunctions = {Open, ReadAt, WriteAt, Size, Truncate, Close};
};
