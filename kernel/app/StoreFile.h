// Bytes that become a file.
#pragma once

#include "base/Memory.h"

namespace vxkrn {

/// Stores a file as vx_save_file does: whole or not at all. Throws std::bad_alloc.
/// @return STATUS_OK, or a failure with its detail set
[[nodiscard]] int StoreFile(const char* path, const memory::Vector<uint8_t>& bytes);

/// The same where nothing stands under that name; what does stays. The system's files only.
[[nodiscard]] int StoreNewFile(const char* path, const uint8_t* bytes, std::size_t size);

}  // namespace vxkrn
