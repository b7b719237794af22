// The directory of an icon or cursor file while it is edited: an entry more or less, and every image body
// that much farther on.
#pragma once

#include <vxkrn.h>

#include <cstdint>

#include "../Format/IconDirectory.h"

namespace bmp {

/// Makes room for an entry as page `page` of a directory of `count`, and counts it. The room holds stale
/// bytes.
/// @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int OpenSlot(HANDLE file, int page, int count);

/// Removes the entry of page `page` from a directory of `count`. @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int CloseSlot(HANDLE file, int page, int count);

}  // namespace bmp
