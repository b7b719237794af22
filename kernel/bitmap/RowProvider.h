// Rows of a bitmap that are not in memory: they come when somebody asks for them.
#pragma once

#include <cstring>

#include "bitmap/Bitmap.h"

namespace vxkrn {

class RowProvider {
 public:
  RowProvider() = default;
  virtual ~RowProvider() = default;
  RowProvider(const RowProvider&) = delete;
  RowProvider& operator=(const RowProvider&) = delete;

  /// @return the bytes of stored row `row`, valid until the next call. The same row again costs nothing.
  /// Throws Failed or std::bad_alloc.
  virtual const uint8_t* Read(int row) = 0;
  /// Whether the first stored row comes first: asked for in another order, rows cost time and memory.
  [[nodiscard]] virtual bool IsSequential() const noexcept = 0;
  // What whoever asks for rows will do: who cannot give them so takes them into memory. Both throw Failed or
  // std::bad_alloc.

  /// Ask for rows in turn, and then again from the first on.
  virtual void PrepareForAnotherPass() {}
  /// Ask for rows in any order.
  virtual void PrepareForAnyOrder() {}
};

// A record that has a provider instead of pixels says so where the contract leaves room in it, so that copies
// of the record have it, too. Whoever owns the provider is somebody else.

inline void SetProvider(_BITMAPHANDLE* bitmap, RowProvider* provider) noexcept {
  static_assert(sizeof(void*) <= sizeof bitmap->Reserved2);
  std::memcpy(bitmap->Reserved2, &provider, sizeof(void*));
}
[[nodiscard]] inline RowProvider* ProviderOf(const _BITMAPHANDLE& bitmap) noexcept {
  RowProvider* provider = nullptr;
  std::memcpy(&provider, bitmap.Reserved2, sizeof(void*));
  return provider;
}

/// Stored row `row`, which must exist, wherever it comes from; valid until the next one is asked for. Throws
/// what providers do.
[[nodiscard]] inline const uint8_t* ReadRow(const _BITMAPHANDLE& bitmap, int row) {
  if (bitmap.Pixels != nullptr) return StoredRow(bitmap, row);
  return ProviderOf(bitmap)->Read(row);
}
[[nodiscard]] inline bool HasRows(const _BITMAPHANDLE& bitmap) noexcept {
  return bitmap.Pixels != nullptr || ProviderOf(bitmap) != nullptr;
}
/// Before a pass that is not the last one. Throws what providers do.
inline void PrepareForAnotherPass(const _BITMAPHANDLE& bitmap) {
  if (bitmap.Pixels == nullptr) ProviderOf(bitmap)->PrepareForAnotherPass();
}

/// Copies pixels into a record that is made anew; palette and region are not copied. Throws what providers
/// do.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int CopyPixels(const _BITMAPHANDLE& from, _BITMAPHANDLE* copy);

}  // namespace vxkrn
