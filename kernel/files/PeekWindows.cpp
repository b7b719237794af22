// Few bytes are read after a jump, more the longer somebody reads on.
#include "files/PeekWindows.h"

#include <algorithm>
#include <cstring>

namespace vxkrn {

/// The window that has the byte, or else will: the one that ends there, or the one not used last.
PeekWindows::Window& PeekWindows::WindowFor(uint64_t position) noexcept {
  std::size_t chosen = 1 - last_;
  bool readsOn = false;
  for (std::size_t i = 0; i < windows_.size(); ++i) {
    const Window& window = windows_[i];
    const bool isInside = position - window.start < window.fill;
    const bool isBehind = window.fill > 0 && position == window.start + window.fill;
    if (isInside || isBehind) chosen = i;
    if (isInside) break;
    readsOn = readsOn || isBehind;
  }
  last_ = chosen;
  Window& window = windows_[chosen];
  if (position - window.start < window.fill) return window;
  window.ahead = readsOn ? std::min(window.ahead * 4, kMost) : kFirst;
  window.fill = 0;
  return window;
}

int64_t PeekWindows::Read(const Backend& backend, void* file, void* buffer, uint32_t count,
                          uint64_t position) noexcept {
  Window& window = WindowFor(position);
  if (window.fill == 0) {
    const int64_t got =
        backend.functions.read_at(backend.user, file, window.bytes.data(), window.ahead, position);
    // What lies behind the bytes asked for may be what cannot be read.
    if (got <= 0 || got > window.ahead)
      return backend.functions.read_at(backend.user, file, buffer, count, position);
    window.start = position;
    window.fill = static_cast<uint32_t>(got);
  }
  const auto skipped = static_cast<uint32_t>(position - window.start);
  const uint32_t taken = std::min(count, window.fill - skipped);
  std::memcpy(buffer, window.bytes.data() + skipped, taken);
  return taken;
}

}  // namespace vxkrn
