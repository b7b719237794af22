// What can be mended of a file without guessing pixels. Nothing here proves that pixels stay as they are:
// whoever stores the outcome does.
#pragma once

#include "files/Source.h"
#include "verify/Findings.h"

namespace vxkrn {

/// The bytes of a file.
using Content = memory::Vector<uint8_t>;

// Each reads the file from `source` and throws std::bad_alloc.

/// Writes into `content`, which begins as the source's bytes, the numbers that the findings say are right.
void MendFields(const vx_source& source, std::span<const Found> findings, Content* content);

/// An icon or cursor file written anew: each page with bytes of its own, whole masks and its right entry.
/// @return false where that cannot be done, or the source is no such file
[[nodiscard]] bool MendPages(const vx_source& source, Content* content);

/// Any other file without the bytes that nobody refers to. @return whether there were some
[[nodiscard]] bool MendGaps(vx_source& source, Content* content);

}  // namespace vxkrn
