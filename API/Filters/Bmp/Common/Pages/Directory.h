// The directory of an icon or cursor file while it is edited: an entry more or less, and every image body
// that much farther on.
#pragma once

#include <vxkrn.h>

#include <cstdint>

#include "../Format/IconDirectory.h"

namespace bmp {

/// Makes room for an entry as page `page` of the file's directory, and counts it. The room holds stale bytes.
/// @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int OpenSlot(HANDLE file, int page, const ICONDIR& directory);

/// Removes the entry of page `page` from the file's directory. @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] int CloseSlot(HANDLE file, int page, const ICONDIR& directory);

}  // namespace bmp
