// Where files come from: the system, a block of memory, or functions an application installed. All of them
// are one record of functions, so that everything above works alike over each.
#pragma once

#include "base/CallRecord.h"

namespace vxkrn {

/// The system's files. Only regular files open: a pipe or terminal cannot be sought, and opening one could
/// wait forever.
extern const Backend kSystemBackend;

/// What this thread's files are opened through unless a scope says otherwise.
const Backend& InstalledBackend() noexcept;
/// What VX_RedirectedOpen uses now: the innermost scope's backend, else the installed one.
const Backend& CurrentBackend() noexcept;

/// While it lives, this thread's VX_RedirectedOpen goes to `backend`, which must outlive the scope.
class BackendScope {
 public:
  explicit BackendScope(const Backend& backend) noexcept;
  ~BackendScope();
  BackendScope(const BackendScope&) = delete;
  BackendScope& operator=(const BackendScope&) = delete;

 private:
  const Backend* outer_;
};

/// A block of memory as a read-only file; `user` of its backend.
struct MemoryFile {
  const unsigned char* bytes;
  uint64_t size;
};
/// A backend whose every open gives `file`, which must outlive it.
[[nodiscard]] Backend MemoryBackend(MemoryFile* file) noexcept;

}  // namespace vxkrn
