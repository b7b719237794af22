// Adds a page to a file that exists, or replaces one.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Makes the image of the record a page of the icon or cursor file that it names, as SaveOptions say: with a
/// new entry in the directory, or in the place of an old page. The body is appended, and no body is removed.
/// Where no room can be made for an entry, the file is as it was; nothing else is rolled back on a failure.
/// @return STATUS_OK; STATUS_OPEN_WRITE_ERROR where there is no file or an empty one, STATUS_BAD_FORMAT where
/// it ends in its first 6 bytes or before the new entry, STATUS_BAD_PAGE for a page below -1, for a page to
/// replace that does not exist, and where there are 65535 pages already, all with the file untouched;
/// STATUS_READ_ERROR, STATUS_WRITE_ERROR, STATUS_NO_MEMORY, or what a callback answered
[[nodiscard]] int AddPage(_SAVEDISPATCH& dispatch);

}  // namespace bmp
