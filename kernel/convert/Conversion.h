// The save callbacks: an image converted to another depth row by row, or encoded as PNG. Knows neither files
// nor formats of files but PNG.
#pragma once

#include <cstddef>

#include "base/Contract.h"
#include "bitmap/ColorSpace.h"
#include "convert/Census.h"
#include "png/Png.h"

namespace vxkrn {

// The callbacks of the contract's save record, as documented there. At 16 bits the rows are 5-6-5 where flags
// has SAVE_ORDER_565, else 5-5-5. convertArg1 is CONVERT_PALETTE_..., convertArg2 CONVERT_...

int BeginSave(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, int bitsPerPixel, unsigned int* flags,
              unsigned char** rowBuffer, int rowsPerCall, int convertArg1, int convertArg2,
              _SAVEFILESTRUCT** saveFile);
int GetSaveRow(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* converted, unsigned char* rowBuffer, int row,
               int rowCount, unsigned int flags, int convertArg1, int convertArg2, _SAVEFILESTRUCT* saveFile);
int EndSave(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, unsigned int* flags, unsigned char** rowBuffer,
            _SAVEFILESTRUCT** saveFile);
/// Converts as the current FilterCall says; encodes FMT_PNG only.
int SaveToMemory(void** memory, _BITMAPHANDLE* bitmap, int format, int bitsPerPixel, int reserved0,
                 unsigned int* size, int reserved1);

/// The census that the current call brings, if it is one of the same bitmap; else `own`.
[[nodiscard]] LazyCensus& CensusOfCall(LazyCensus& own) noexcept;

/// Encodes the image as a PNG stream of that depth (1, 4, 8, 24 or 32) with its transparency: the alpha
/// channel, else the region. Below 32 bits a pixel is transparent or not: a palette entry of its own, or at
/// 24 bits a colour that no other pixel has. Throws what the image's provider does, if it has one.
/// @return STATUS_OK, STATUS_WRITE_ERROR where the output refuses, or STATUS_BAD_BPP or STATUS_NO_MEMORY with
/// its detail set
[[nodiscard]] int EncodeAsPng(LazyCensus& census, int bitsPerPixel, int convertArg1, int convertArg2,
                              const ColorSpace* colors, const PngOutput& output);

}  // namespace vxkrn
