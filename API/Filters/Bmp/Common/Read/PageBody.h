// The body of an icon or cursor page, as far as identification and loading both look into it. A body is
// searched where the directory says it is; a seek that fails shows in the read that follows.
#pragma once

#include <vxkrn.h>

#include <cstdint>

#include "format/BitmapHeader.h"

namespace bmp {

/// Whether the 8 bytes are a signature that PNG streams begin with.
[[nodiscard]] bool IsPngSignature(const uint8_t* bytes);

/// Tells whether the body is a PNG stream. @return STATUS_OK, or STATUS_READ_ERROR when it is not there
[[nodiscard]] int ProbeBody(HANDLE file, const ICONDIRENTRY& entry, bool& isPng);

/// Reads the header of a bitmap body, whatever length it declares. @return false when it is not whole
[[nodiscard]] bool ReadBodyHeader(HANDLE file, const ICONDIRENTRY& entry, ImageHeader& header);

}  // namespace bmp
