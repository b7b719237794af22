// Icon pages that are saved as PNG streams.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

/// Writes a new icon file whose one page is the image of the record.
/// @return STATUS_OK; STATUS_OPEN_WRITE_ERROR, STATUS_WRITE_ERROR, or what SaveToMemory answered
[[nodiscard]] int WriteNewPngIcon(_SAVEDISPATCH& dispatch);

/// Writes the entry at `entryOffset` of an icon file, and the image of the record at its end.
/// @param file open for reading and writing; closed here whatever happens
/// @return STATUS_OK, STATUS_WRITE_ERROR, or what SaveToMemory answered
[[nodiscard]] int InsertPngPage(_SAVEDISPATCH& dispatch, HANDLE file, uint32_t entryOffset);

}  // namespace bmp
