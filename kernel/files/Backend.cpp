// Keeps each thread's choice of backend, and reads memory as a file. Must not touch the system's files.
#include "files/Backend.h"

#include <algorithm>
#include <cstring>

#include "base/Errors.h"

namespace vxkrn {
namespace {

void* OpenMemory(void* user, const char* /*name*/, int flags) {
  return flags == VX_OPEN_READ ? user : nullptr;
}

int64_t ReadMemory(void* /*user*/, void* file, void* buffer, uint32_t count, uint64_t position) {
  const auto* memory = static_cast<const MemoryFile*>(file);
  if (position >= memory->size) return 0;
  const auto available = static_cast<std::size_t>(std::min<uint64_t>(count, memory->size - position));
  if (available > 0) std::memcpy(buffer, memory->bytes + position, available);
  return static_cast<int64_t>(available);
}

int64_t SizeOfMemory(void* /*user*/, void* file) {
  return static_cast<int64_t>(static_cast<const MemoryFile*>(file)->size);
}

int CloseMemory(void* /*user*/, void* /*file*/) {
  return 0;
}

}  // namespace

const Backend& InstalledBackend() noexcept {
  const Backend& installed = ThisCall().installed;
  return installed.functions.open != nullptr ? installed : kSystemBackend;
}

const Backend& CurrentBackend() noexcept {
  const Backend* scoped = ThisCall().scoped;
  return scoped != nullptr ? *scoped : InstalledBackend();
}

BackendScope::BackendScope(const Backend& backend) noexcept : outer_(ThisCall().scoped) {
  ThisCall().scoped = &backend;
}

BackendScope::~BackendScope() {
  ThisCall().scoped = outer_;
}

Backend MemoryBackend(MemoryFile* file) noexcept {
  return Backend{{OpenMemory, ReadMemory, nullptr, SizeOfMemory, nullptr, CloseMemory}, file};
}

}  // namespace vxkrn

int vx_redirect_files(const vx_file_functions* functions, void* user) {
  vxkrn::BeginCall();
  if (functions == nullptr) {
    vxkrn::ThisCall().installed = {};
    return VX_OK;
  }
  const bool readable = functions->open != nullptr && functions->read_at != nullptr &&
                        functions->size != nullptr && functions->close != nullptr;
  if (!readable || (functions->write_at == nullptr) != (functions->truncate == nullptr)) {
    return vxkrn::FailForArgument(
        "open, read_at, size and close must be given; write_at and truncate both or neither");
  }
  vxkrn::ThisCall().installed = {*functions, user};
  return VX_OK;
}
