#include "files/MemoryTarget.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace vxkrn {

bool MemoryTarget::Reserve(std::size_t capacity) noexcept {
  if (capacity <= capacity_) return true;
  constexpr std::size_t kLeast = 4096;
  const std::size_t larger = std::max({kLeast, capacity, capacity_ + capacity_ / 2});
  memory::Bytes moved = memory::MakeBytes(larger, {"kernel/MemoryTarget", __LINE__});
  if (moved == nullptr) return false;
  if (size_ > 0) std::memcpy(moved.get(), bytes_.get(), size_);
  bytes_ = std::move(moved);
  capacity_ = larger;
  return true;
}

bool MemoryTarget::Resize(uint64_t size) noexcept {
  if (size > SIZE_MAX / 2 || !Reserve(static_cast<std::size_t>(size))) {
    errno = ENOMEM;
    return false;
  }
  const auto bytes = static_cast<std::size_t>(size);
  if (bytes > size_) std::memset(bytes_.get() + size_, 0, bytes - size_);
  size_ = bytes;
  return true;
}

int64_t MemoryTarget::ReadAt(void* buffer, uint32_t count, uint64_t position) const noexcept {
  if (position >= size_) return 0;
  const std::size_t available = std::min<std::size_t>(count, size_ - static_cast<std::size_t>(position));
  std::memcpy(buffer, bytes_.get() + position, available);
  return static_cast<int64_t>(available);
}

int64_t MemoryTarget::WriteAt(const void* buffer, uint32_t count, uint64_t position) noexcept {
  const uint64_t end = position + count;
  if (end > size_ && !Resize(end)) return -1;
  std::memcpy(bytes_.get() + position, buffer, count);
  return count;
}

bool MemoryTarget::Assign(const uint8_t* bytes, std::size_t size) noexcept {
  if (!Reserve(size)) return false;
  std::memcpy(bytes_.get(), bytes, size);
  size_ = size;
  return true;
}

int MemoryTarget::ReadFrom(const Backend& backend, void* file) noexcept {
  const int64_t size = backend.functions.size(backend.user, file);
  if (size < 0) return STATUS_READ_ERROR;
  if (!Resize(static_cast<uint64_t>(size))) return STATUS_NO_MEMORY;
  for (std::size_t done = 0; done < size_;) {
    constexpr std::size_t kMostAtOnce = 1 << 30;
    const auto count = static_cast<uint32_t>(std::min(size_ - done, kMostAtOnce));
    const int64_t got = backend.functions.read_at(backend.user, file, bytes_.get() + done, count, done);
    if (got <= 0 || got > count) return STATUS_READ_ERROR;
    done += static_cast<std::size_t>(got);
  }
  return STATUS_OK;
}

memory::Bytes MemoryTarget::Take() noexcept {
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
