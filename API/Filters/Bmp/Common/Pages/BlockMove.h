// Moves the rest of a file, to open a gap in it or to close one.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

/// Moves everything from byte `source` to the end of `file`, which is open for reading and writing, to byte
/// `destination`; towards the start the file ends earlier by as much. Where the file stands then is not
/// defined. Failures are not told. Where the end cannot be found, or `source` lies behind it, nothing moves.
/// What cannot be read stays where it is; towards the start everything behind it stays too, and the file
/// ends where it did.
void BlockMove(HANDLE file, uint32_t source, uint32_t destination);

}  // namespace bmp
