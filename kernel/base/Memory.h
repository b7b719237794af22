// The kernel's allocator: every block is counted, tagged with the place that asked for it and held against
// one limit for the whole process. Nothing here knows what the blocks are for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

namespace vxkrn::memory {

/// The place that asked. `file` is not copied: it must be text that outlives the block.
struct Tag {
  const char* file;
  int line;
};

/// @return `size` bytes aligned for any type, never null for 0 bytes; null over the limit or out of memory.
[[nodiscard]] void* Allocate(std::size_t size, Tag tag) noexcept;
/// As Allocate, every byte 0. Large blocks cost no pages until they are written.
[[nodiscard]] void* AllocateZeroed(std::size_t size, Tag tag) noexcept;
/// As Allocate, counted but not held against the limit: for the kernel's own small records, without which it
/// could not even say that the limit is reached.
[[nodiscard]] void* AllocateRecord(std::size_t size, Tag tag) noexcept;
/// Gives a block of Allocate's another size; what it holds stays as far as there is room for it, and what is
/// added costs no pages until it is written. @return the block, which may have moved; null over the limit or
/// out of memory: then it is as it was
[[nodiscard]] void* Resize(void* block, std::size_t size) noexcept;
/// Frees what the others gave; null does nothing.
void Free(void* block) noexcept;

constexpr uint64_t kDefaultLimit = uint64_t{1} << 30;
[[nodiscard]] uint64_t Limit() noexcept;
void SetLimit(uint64_t bytes) noexcept;
[[nodiscard]] uint64_t InUse() noexcept;
/// Whether `bytes` more would stay below the limit now.
[[nodiscard]] bool Fits(uint64_t bytes) noexcept;

/// An allocation that failed, and what was in use then: much of it may be freed by the time the failure is
/// reported.
struct Refusal {
  uint64_t bytes;
  uint64_t inUse;
};
/// Bytes of this thread's last allocation that failed; 0 when none did since its call began.
[[nodiscard]] uint64_t LastRefusal() noexcept;

/// The blocks alive that one place asked for.
struct Live {
  Tag tag;
  std::size_t blocks;
  uint64_t bytes;
};
/// Everything alive, one element a place; empty when nothing leaked.
[[nodiscard]] std::vector<Live> LiveByTag();

struct Release {
  template <class T>
  void operator()(T* object) const noexcept {
    object->~T();
    Free(object);
  }
};
/// A record of the kernel's in counted memory.
template <class T>
using Owned = std::unique_ptr<T, Release>;

struct FreeBytes {
  void operator()(uint8_t* bytes) const noexcept { Free(bytes); }
};
using Bytes = std::unique_ptr<uint8_t[], FreeBytes>;

/// @return `size` bytes held against the limit, or null.
[[nodiscard]] inline Bytes MakeBytes(std::size_t size, Tag tag) noexcept {
  return Bytes(static_cast<uint8_t*>(Allocate(size, tag)));
}

/// Memory of a container's that is held against the limit. Throws std::bad_alloc.
template <class T>
struct Counted {
  using value_type = T;
  Counted() noexcept = default;
  template <class Other>
  Counted(const Counted<Other>& /*other*/) noexcept {}  // NOLINT(google-explicit-constructor): containers ask

  [[nodiscard]] T* allocate(std::size_t count) {
    void* block =
        count > SIZE_MAX / sizeof(T) ? nullptr : Allocate(count * sizeof(T), {"kernel/Memory", __LINE__});
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<T*>(block);
  }
  void deallocate(T* block, std::size_t /*count*/) noexcept { Free(block); }
  bool operator==(const Counted& /*other*/) const noexcept { return true; }
};
/// For what grows with a picture, be it one row: rows may be as large as pictures.
template <class T>
using Vector = std::vector<T, Counted<T>>;

/// @return a new T, or null when there is no memory. Throws what T's constructor throws.
template <class T, class... Arguments>
[[nodiscard]] Owned<T> Make(Tag tag, Arguments&&... arguments) {
  Bytes block(static_cast<uint8_t*>(AllocateRecord(sizeof(T), tag)));
  if (block == nullptr) return nullptr;
  Owned<T> object(::new (block.get()) T{std::forward<Arguments>(arguments)...});
  (void)block.release();
  return object;
}

}  // namespace vxkrn::memory
