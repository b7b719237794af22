// Icons and pointers of OS/2, alone and in arrays. Reads no pixels.
#pragma once

#include "beyond/BitmapFile.h"

namespace vxkrn {

/// Whether a file header of such a picture begins so.
[[nodiscard]] bool IsOs2IconSignature(uint16_t signature) noexcept;

/// Lays out the picture whose file header stands at `fileHeader`. @return whether there is one
[[nodiscard]] bool FindOs2Icon(const vx_source& source, uint64_t fileHeader, BitmapImage* image) noexcept;

}  // namespace vxkrn
