// Edits the directory of an icon or cursor file: adds or removes an entry, and tells all others how far their
// image bodies have moved.
#pragma once

#include <vxkrn.h>

#include <cstdint>

#include "format/IconDirectory.h"

namespace bmp {

/// Makes room for an entry as page `page` of the file's directory, and counts it. The room holds stale bytes.
/// @return STATUS_OK; BlockMove's status where there is no room, with the file as it was; STATUS_WRITE_ERROR
/// where the count cannot be written
[[nodiscard]] int OpenSlot(HANDLE file, int page, ICONDIR directory);

/// Removes the entry of page `page` from the file's directory.
/// @return STATUS_OK; BlockMove's status where the rest of the file cannot be moved, with the count as it
/// was; STATUS_WRITE_ERROR where the slot cannot be reached or the directory cannot be written
[[nodiscard]] int CloseSlot(HANDLE file, int page, ICONDIR directory);

}  // namespace bmp
