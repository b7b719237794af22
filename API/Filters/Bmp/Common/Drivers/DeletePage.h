// Deleting a page of an icon or cursor file.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Removes a page of the file that the record names. Its body stays in the file. Nothing is rolled back on a
/// failure.
/// @return STATUS_OK; STATUS_OPEN_WRITE_ERROR, STATUS_BAD_PAGE, STATUS_LAST_PAGE for the only page, all with
/// the file untouched; CloseSlot's
[[nodiscard]] int DeletePage(_DELETEPAGEDISPATCH& dispatch);

}  // namespace bmp
