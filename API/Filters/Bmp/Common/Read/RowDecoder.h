// Pixel data, decoded row by row into the kernel's callback.
#pragma once

#include <vxkrn.h>

namespace bmp {

/// Pixel data as a file has it.
struct StoredRows {
  int width = 0;   // pixels of a stored row; not below the target's
  int height = 0;  // stored rows
  int bitsPerPixel = 0;
  int compression = 0;           // as in a bitmap header: 0 none, 1 RLE8, 2 RLE4, 3 bit fields
  bool needsConversion = false;  // 16-bit pixels laid out by the record's masks become 5-5-5
  bool hasIconMask = false;      // the mask of an icon or cursor follows, and is read too
};

/// Decodes the pixel data at which `file` stands and delivers its rows. `file` stays open.
/// @return STATUS_OK; STATUS_READ_ERROR for a row that ends early, STATUS_BAD_FORMAT for an unknown
/// compression, STATUS_NO_MEMORY, or what the callback or a bitmap service answered
[[nodiscard]] int DecodeRows(_LOADDISPATCH& dispatch, HANDLE file, const StoredRows& stored);

}  // namespace bmp
