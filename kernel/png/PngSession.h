// One run of libpng, reading or writing, with its errors caught, its memory counted and its limits set. The
// only place that knows how libpng leaves a function.
#pragma once

#include <png.h>

#include <array>

#include "base/Contract.h"

namespace vxkrn {

class PngSession {
 public:
  /// Reading, with or without what a stream says of its colours; writing.
  enum class Direction : uint8_t { kRead, kReadColors, kWrite };
  using Step = void (*)(PngSession& session, void* argument);

  explicit PngSession(Direction direction) noexcept;
  ~PngSession();
  PngSession(const PngSession&) = delete;
  PngSession& operator=(const PngSession&) = delete;

  /// Runs step, in which libpng may fail at any call. libpng then jumps out of it, so step and whatever it
  /// calls must not own anything while in libpng. Throws what step throws; not out of libpng's callbacks.
  /// @return STATUS_OK, STATUS_NO_MEMORY or STATUS_BAD_FORMAT.
  [[nodiscard]] int Run(Step step, void* argument);

  [[nodiscard]] png_structp Png() const noexcept { return png_; }
  [[nodiscard]] png_infop Info() const noexcept { return info_; }
  /// libpng's words for the failure.
  [[nodiscard]] const char* Message() const noexcept { return message_.data(); }

 private:
  static void OnError(png_structp png, png_const_charp message);
  static void OnWarning(png_structp /*png*/, png_const_charp /*message*/) {}
  static png_voidp OnAllocate(png_structp png, png_alloc_size_t size);
  static void OnFree(png_structp png, png_voidp block);

  void SetLimits();

  Direction direction_;
  png_structp png_ = nullptr;
  png_infop info_ = nullptr;
  bool hasLimits_ = false;
  bool outOfMemory_ = false;
  std::array<char, 160> message_{};
};

}  // namespace vxkrn
