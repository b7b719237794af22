// Identification: what an open file holds.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Fills the record's FileInfo and clamps LoadOptions->PageNumber. The file stays open.
/// @return STATUS_OK; STATUS_READ_ERROR, STATUS_BAD_FORMAT, STATUS_FAILURE, STATUS_NO_MEMORY, or what
/// GetPngInfoFromMemory answered
[[nodiscard]] int Identify(_INFODISPATCH& dispatch);

}  // namespace bmp
