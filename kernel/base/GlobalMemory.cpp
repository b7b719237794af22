// Global memory blocks and the tracking of resources. Handles are numbers that are never used twice, so that
// one that is unknown or was freed is refused instead of followed.
#include "base/GlobalMemory.h"

#include <algorithm>
#include <mutex>
#include <vector>

namespace vxkrn {
namespace {

struct GlobalBlock {
  std::uintptr_t handle;
  memory::Bytes bytes;
  int locks = 0;
  int kind = 0;          ///< as registered; 0 for a block that is not
  memory::Tag tag = {};  ///< the place that registered it
};

struct Registry {
  std::mutex mutex;
  std::vector<GlobalBlock> blocks;
  std::uintptr_t lastHandle = 0;

  /// With the mutex held. @return null for an unknown handle
  GlobalBlock* Find(const void* handle) noexcept {
    const auto number = reinterpret_cast<std::uintptr_t>(handle);
    const auto block = std::find_if(blocks.begin(), blocks.end(),
                                    [number](const GlobalBlock& each) { return each.handle == number; });
    return block == blocks.end() ? nullptr : &*block;
  }
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

void* MakeGlobal(memory::Bytes bytes) noexcept {
  Registry& registry = TheRegistry();
  const std::lock_guard lock(registry.mutex);
  try {
    registry.blocks.push_back({registry.lastHandle + 1, std::move(bytes)});
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return reinterpret_cast<void*>(++registry.lastHandle);
}

}  // namespace vxkrn

using vxkrn::GlobalBlock;

int VX_ResourceAdd(int kind, void* handle, int line, const char* file) {
  vxkrn::Registry& registry = vxkrn::TheRegistry();
  const std::lock_guard lock(registry.mutex);
  GlobalBlock* block = registry.Find(handle);
  if (block == nullptr) return STATUS_BAD_PARAMETER;
  block->kind = kind;
  block->tag = {file, line};
  return STATUS_OK;
}

void* WinGlobalLock(void* handle) {
  vxkrn::Registry& registry = vxkrn::TheRegistry();
  const std::lock_guard lock(registry.mutex);
  GlobalBlock* block = registry.Find(handle);
  if (block == nullptr) return nullptr;
  ++block->locks;
  return block->bytes.get();
}

int WinGlobalUnlock(void* handle) {
  vxkrn::Registry& registry = vxkrn::TheRegistry();
  const std::lock_guard lock(registry.mutex);
  GlobalBlock* block = registry.Find(handle);
  if (block == nullptr || block->locks == 0) return STATUS_BAD_PARAMETER;
  --block->locks;
  return STATUS_OK;
}

int VX_OsFreeHandle(void* handle, int /*line*/, const char* /*file*/) {
  vxkrn::Registry& registry = vxkrn::TheRegistry();
  const std::lock_guard lock(registry.mutex);
  GlobalBlock* block = registry.Find(handle);
  if (block == nullptr) return STATUS_BAD_PARAMETER;
  registry.blocks.erase(registry.blocks.begin() + (block - registry.blocks.data()));
  return STATUS_OK;
}
