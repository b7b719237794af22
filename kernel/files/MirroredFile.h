// A bitmap file whose rows are written from the top, though the lowest one comes first in it: every row is
// put where it belongs. So a picture that comes from the top needs not be in memory.
#pragma once

#include "base/Memory.h"
#include "files/Backend.h"

namespace vxkrn {

class MirroredFile {
 public:
  /// @param inner what the file is written through, which must outlive this @param rowBytes bytes of each row
  /// @param rows which the file ends with
  MirroredFile(const Backend& inner, uint64_t rowBytes, int rows) noexcept;
  MirroredFile(const MirroredFile&) = delete;
  MirroredFile& operator=(const MirroredFile&) = delete;

  /// A backend for one new file that is written from its first byte to its last. It must not outlive this.
  [[nodiscard]] Backend AsBackend() noexcept;

 private:
  static MirroredFile& Of(void* user) { return *static_cast<MirroredFile*>(user); }
  int64_t Write(void* file, const uint8_t* bytes, uint32_t count, uint64_t position) noexcept;
  int64_t WriteRow(void* file, const uint8_t* bytes, uint32_t count, uint64_t position) noexcept;
  [[nodiscard]] bool WriteAll(void* file, const uint8_t* bytes, uint64_t count,
                              uint64_t place) const noexcept;

  const Backend& inner_;
  uint64_t rowBytes_;
  uint64_t rows_;
  uint64_t firstRow_ = UINT64_MAX;  // where the rows begin, once the file's header was written
  uint64_t rowsAtOnce_;
  memory::Bytes
      gathered_;  // so many rows, in the order of the file; without them rows are written as they come
};

}  // namespace vxkrn
