// Counts every block by a small header in front of it and lists the live ones in shards, so that threads
// rarely meet at a lock. Must not throw, and must not touch the bytes it hands out.
#include "base/Memory.h"

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <mutex>

#include "base/CallRecord.h"
#include "base/Contract.h"
#include "vx/vx.h"

namespace vxkrn::memory {
namespace {

struct alignas(std::max_align_t) Header {
  Header* previous;
  Header* next;
  std::size_t size;
  Tag tag;
};

/// Two pointers into one object must have a difference that a ptrdiff_t can hold.
constexpr std::size_t kLargestBlock = PTRDIFF_MAX - sizeof(Header);

struct alignas(64) Shard {
  std::mutex mutex;
  Header* first = nullptr;
};

std::array<Shard, 16> shards;
std::atomic<uint64_t> inUse{0};
std::atomic<uint64_t> limit{kDefaultLimit};

Shard& ShardOf(const Header* header) noexcept {
  const auto address = reinterpret_cast<std::uintptr_t>(header);
  return shards[((address >> 6) ^ (address >> 14)) % shards.size()];
}

void Link(Header* header) noexcept {
  Shard& shard = ShardOf(header);
  const std::scoped_lock lock(shard.mutex);
  header->previous = nullptr;
  header->next = shard.first;
  if (shard.first != nullptr) shard.first->previous = header;
  shard.first = header;
}

void Unlink(Header* header) noexcept {
  Shard& shard = ShardOf(header);
  const std::scoped_lock lock(shard.mutex);
  if (header->previous != nullptr) {
    header->previous->next = header->next;
  } else {
    shard.first = header->next;
  }
  if (header->next != nullptr) header->next->previous = header->previous;
}

bool Reserve(uint64_t bytes, uint64_t ceiling) noexcept {
  uint64_t used = inUse.load(std::memory_order_relaxed);
  do {
    if (used > ceiling || bytes > ceiling - used) return false;
  } while (!inUse.compare_exchange_weak(used, used + bytes, std::memory_order_relaxed));
  return true;
}

/// Notes a refusal while what led to it is still in use.
void* Refuse(std::size_t size) noexcept {
  ThisCall().refusal = {size, InUse()};
  return nullptr;
}

using Source = void* (*)(std::size_t);
/// Asks for huge pages under a large block: filling a picture is otherwise mostly the time of page faults.
void PreferHugePages(void* block, std::size_t size) noexcept {
  constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
  if (block == nullptr || size < 4 * kHugePage) return;
  const auto start = (reinterpret_cast<std::uintptr_t>(block) + kHugePage - 1) & ~(kHugePage - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(block) + size) & ~(kHugePage - 1);
  (void)madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
}

void* Plain(std::size_t size) noexcept {
  void* block = std::malloc(size);
  PreferHugePages(block, size);
  return block;
}

void* Zeroed(std::size_t size) noexcept {
  void* block = std::calloc(1, size);
  PreferHugePages(block, size);
  return block;
}

void* Obtain(std::size_t size, Tag tag, Source source, uint64_t ceiling) noexcept {
  if (size > kLargestBlock || !Reserve(size, ceiling)) return Refuse(size);
  auto* header = static_cast<Header*>(source(sizeof(Header) + size));
  if (header == nullptr) {
    inUse.fetch_sub(size, std::memory_order_relaxed);
    return Refuse(size);
  }
  header->size = size;
  header->tag = tag;
  Link(header);
  return header + 1;
}

/// The tag of a service's caller.
Tag TagOf(const char* file, int line) noexcept {
  return Tag{file == nullptr ? "?" : file, line};
}

/// The product of the services' two counts; SIZE_MAX, which no block can have, when it overflows.
std::size_t Product(unsigned int count, unsigned int size) noexcept {
  const uint64_t product = uint64_t{count} * size;
  return product > SIZE_MAX ? SIZE_MAX : static_cast<std::size_t>(product);
}

}  // namespace

void* Allocate(std::size_t size, Tag tag) noexcept {
  return Obtain(size, tag, Plain, Limit());
}

void* AllocateZeroed(std::size_t size, Tag tag) noexcept {
  return Obtain(size, tag, Zeroed, Limit());
}

void* AllocateRecord(std::size_t size, Tag tag) noexcept {
  return Obtain(size, tag, Plain, UINT64_MAX);
}

void* Resize(void* block, std::size_t size) noexcept {
  Header* header = static_cast<Header*>(block) - 1;
  const std::size_t before = header->size;
  const std::size_t added = size > before ? size - before : 0;
  if (size > kLargestBlock || !Reserve(added, Limit())) return Refuse(size);
  Unlink(header);
  auto* resized = static_cast<Header*>(std::realloc(header, sizeof(Header) + size));
  if (resized == nullptr) {
    Link(header);
    inUse.fetch_sub(added, std::memory_order_relaxed);
    return Refuse(size);
  }
  if (size < before) inUse.fetch_sub(before - size, std::memory_order_relaxed);
  resized->size = size;
  Link(resized);
  return resized + 1;
}

void Free(void* block) noexcept {
  if (block == nullptr) return;
  Header* header = static_cast<Header*>(block) - 1;
  Unlink(header);
  inUse.fetch_sub(header->size, std::memory_order_relaxed);
  std::free(header);
}

uint64_t Limit() noexcept {
  return limit.load(std::memory_order_relaxed);
}

void SetLimit(uint64_t bytes) noexcept {
  limit.store(bytes, std::memory_order_relaxed);
}

uint64_t InUse() noexcept {
  return inUse.load(std::memory_order_relaxed);
}

bool Fits(uint64_t bytes) noexcept {
  const uint64_t used = InUse();
  const uint64_t ceiling = Limit();
  return used <= ceiling && bytes <= ceiling - used;
}

uint64_t LastRefusal() noexcept {
  return ThisCall().refusal.bytes;
}

std::vector<Live> LiveByTag() {
  std::vector<Live> live;
  for (Shard& shard : shards) {
    const std::scoped_lock lock(shard.mutex);
    for (const Header* header = shard.first; header != nullptr; header = header->next) {
      const Tag tag = header->tag;
      auto place = std::find_if(live.begin(), live.end(), [&](const Live& entry) {
        return entry.tag.line == tag.line && std::strcmp(entry.tag.file, tag.file) == 0;
      });
      if (place == live.end()) place = live.insert(live.end(), Live{tag, 0, 0});
      ++place->blocks;
      place->bytes += header->size;
    }
  }
  return live;
}

}  // namespace vxkrn::memory

void* VX_LocalAlloc(unsigned int count, unsigned int size, int line, const char* file) {
  return vxkrn::memory::Allocate(vxkrn::memory::Product(count, size), vxkrn::memory::TagOf(file, line));
}

void* VX_LocalAllocInit(unsigned int count, unsigned int size, int line, const char* file) {
  return vxkrn::memory::AllocateZeroed(vxkrn::memory::Product(count, size), vxkrn::memory::TagOf(file, line));
}

void VX_LocalFree(void* memory, int /*line*/, const char* /*file*/) {
  vxkrn::memory::Free(memory);
}

void VX_MemorySet(void* destination, int value, unsigned int count) {
  if (count > 0) std::memset(destination, value, count);
}

void VX_MemoryCopy(void* destination, const void* source, unsigned int count) {
  if (count > 0) std::memcpy(destination, source, count);
}

int VX_MemoryCompare(const void* first, const void* second, unsigned int count) {
  return count == 0 ? 0 : std::memcmp(first, second, count);
}

void vx_free(void* memory) {
  vxkrn::memory::Free(memory);
}

void vx_set_memory_limit(uint64_t bytes) {
  vxkrn::memory::SetLimit(bytes == 0 ? vxkrn::memory::kDefaultLimit : bytes);
}

uint64_t vx_memory_limit(void) {
  return vxkrn::memory::Limit();
}

uint64_t vx_memory_in_use(void) {
  return vxkrn::memory::InUse();
}
