// Moves the rest of a file, to open a gap in it or to close one.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

/// Moves everything from byte `source` to the end of `file`, which is open for reading and writing, to byte
/// `destination`; towards the start the file ends earlier by as much. Where the file stands then is not
/// defined. A move towards the end that fails is taken back: the file is as it was unless that fails, too.
/// One towards the start stops where it is, and has changed nothing where its first chunk could not be moved.
/// @return STATUS_OK; STATUS_READ_ERROR; STATUS_WRITE_ERROR where less is stored or a seek does not land;
///         STATUS_BAD_FORMAT where the file ends before a `source` that is to be moved towards the end
[[nodiscard]] int BlockMove(HANDLE file, uint32_t source, uint32_t destination);

}  // namespace bmp
