#include "files/MemoryTarget.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace vxkrn {
namespace {

/// Where it is much, bytes that begin as 0 come in huge pages: to fill it is otherwise mostly page faults.
memory::Bytes MakeFresh(std::size_t size) noexcept {
  constexpr std::size_t kMuch = std::size_t{8} << 20;
  constexpr memory::Tag kTag = {"kernel/MemoryTarget", __LINE__};
  return memory::Bytes(static_cast<uint8_t*>(size < kMuch ? memory::Allocate(size, kTag)
                                                          : memory::AllocateZeroed(size, kTag)));
}

}  // namespace

/// Makes room for a file of `size` bytes with `front` before it.
bool MemoryTarget::Reserve(std::size_t size, std::size_t front) noexcept {
  if (front == begin_ && size <= capacity_ - begin_) return true;
  constexpr std::size_t kLeast = 4096;
  const std::size_t larger = std::max({kLeast, front + size, capacity_ + capacity_ / 2});
  memory::Bytes moved = MakeFresh(larger);
  if (moved == nullptr) return false;
  if (size_ > 0) std::memcpy(moved.get() + front, Data(), size_);
  bytes_ = std::move(moved);
  begin_ = front;
  capacity_ = larger;
  return true;
}

bool MemoryTarget::MoveBegin(int64_t count) noexcept {
  const auto added = static_cast<std::size_t>(count < 0 ? -count : 0);
  if (added > begin_ && !Reserve(size_, added)) return false;
  begin_ = static_cast<std::size_t>(static_cast<int64_t>(begin_) + count);
  size_ = static_cast<std::size_t>(static_cast<int64_t>(size_) - count);
  return true;
}

bool MemoryTarget::Resize(uint64_t size) noexcept {
  if (size > SIZE_MAX / 2 || !Reserve(static_cast<std::size_t>(size), begin_)) {
    errno = ENOMEM;
    return false;
  }
  const auto bytes = static_cast<std::size_t>(size);
  if (bytes > size_) std::memset(Data() + size_, 0, bytes - size_);
  size_ = bytes;
  return true;
}

int64_t MemoryTarget::ReadAt(void* buffer, uint32_t count, uint64_t position) const noexcept {
  if (position >= size_) return 0;
  const std::size_t available = std::min<std::size_t>(count, size_ - static_cast<std::size_t>(position));
  std::memcpy(buffer, Data() + position, available);
  return static_cast<int64_t>(available);
}

int64_t MemoryTarget::WriteAt(const void* buffer, uint32_t count, uint64_t position) noexcept {
  const uint64_t end = position + count;
  if (end > size_ && !Resize(end)) return -1;
  std::memcpy(Data() + position, buffer, count);
  return count;
}

bool MemoryTarget::Assign(const uint8_t* bytes, std::size_t size) noexcept {
  if (!Reserve(size, begin_)) return false;
  std::memcpy(Data(), bytes, size);
  size_ = size;
  return true;
}

int MemoryTarget::ReadFrom(const Backend& backend, void* file) noexcept {
  const int64_t size = backend.functions.size(backend.user, file);
  if (size < 0) return STATUS_READ_ERROR;
  constexpr std::size_t kRoom = std::size_t{64} << 10;
  if (static_cast<uint64_t>(size) > SIZE_MAX / 2) return STATUS_NO_MEMORY;
  const auto wanted = static_cast<std::size_t>(size);
  size_ = 0;
  const bool hasRoom = Reserve(wanted + wanted / 8 + kRoom, kRoom) || Reserve(wanted, 0);
  if (!hasRoom) return STATUS_NO_MEMORY;
  while (size_ < wanted) {
    constexpr std::size_t kMostAtOnce = 1 << 30;
    const auto count = static_cast<uint32_t>(std::min(wanted - size_, kMostAtOnce));
    const int64_t got = backend.functions.read_at(backend.user, file, Data() + size_, count, size_);
    if (got <= 0 || got > count) return STATUS_READ_ERROR;
    size_ += static_cast<std::size_t>(got);
  }
  return STATUS_OK;
}

memory::Bytes MemoryTarget::Take() noexcept {
  if (begin_ > 0) std::memmove(bytes_.get(), Data(), size_);
  begin_ = 0;
  size_ = 0;
  capacity_ = 0;
  return std::move(bytes_);
}

Backend MemoryTarget::AsBackend() noexcept {
  return {
      {.open = [](void* user, const char* /*name*/, int /*flags*/) { return user; },
       .read_at = [](void* /*user*/, void* file, void* buffer, uint32_t count,
                     uint64_t position) { return Of(file).ReadAt(buffer, count, position); },
       .write_at = [](void* /*user*/, void* file, const void* buffer, uint32_t count,
                      uint64_t position) { return Of(file).WriteAt(buffer, count, position); },
       .size = [](void* /*user*/, void* file) { return static_cast<int64_t>(Of(file).Size()); },
       .truncate = [](void* /*user*/, void* file, uint64_t size) { return Of(file).Resize(size) ? 0 : -1; },
       .close = [](void* /*user*/, void* /*file*/) { return 0; }},
      this};
}

}  // namespace vxkrn
