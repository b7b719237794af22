// The run-length codings of bitmap files, RLE8 and RLE4.
//
// The data is a stream of byte pairs. (n, v) with n > 0 is a run of n pixels: index v, or at 4 bits the
// two nibbles of v in turn. (0, m) is an escape: 0 ends the row, 1 ends the bitmap, 2 moves right
// and that many stored rows on by the two bytes that follow, and m >= 3 announces m literal pixels, padded to
// an even number of bytes. Pixels that no code reaches are 0. No data is ever refused: what falls outside a
// row is dropped, and a stream that ends early reads as ends of rows.
#pragma once

#include <cstdint>

#include "Read/ReadBuffer.h"

namespace bmp {

/// Where the decoder stands between two rows.
struct RunLengthState {
  int x = 0;                // first pixel the next code writes; a byte index for RLE8
  int rowsToSkip = 0;       // blank rows still to deliver before the next code is read
  bool isFinished = false;  // the bitmap has ended: all further rows are blank
};

/// Decodes the next row into `row`, `stride` bytes (below 2^30), every one of which is set.
void DecodeRle8Row(ReadBuffer& input, RunLengthState& state, uint8_t* row, int stride);
void DecodeRle4Row(ReadBuffer& input, RunLengthState& state, uint8_t* row, int stride);

}  // namespace bmp
