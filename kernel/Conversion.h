// The save callbacks: an image converted to another depth row by row, or encoded as PNG. Knows neither files
// nor formats of files but PNG.
#pragma once

#include "Contract.h"

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
int SaveToMemory(void** memory, _BITMAPHANDLE* bitmap, int format, int bitsPerPixel, int reserved0,
                 unsigned int* size, int reserved1);

/// Whether every pixel keeps its colour when the image is saved so. Alpha and region are not looked at.
/// @param convertArg1 CONVERT_PALETTE_...
[[nodiscard]] bool KeepsColors(const _BITMAPHANDLE& bitmap, int bitsPerPixel, bool is565, int convertArg1);

}  // namespace vxkrn
