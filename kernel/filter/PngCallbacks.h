// The callbacks by which a filter has PNG streams described and decoded. They note in the call's context what
// the filter's own records have no room for.
#pragma once

#include "base/Contract.h"
#include "base/PngDescription.h"

namespace vxkrn {

/// What a stream is, as pages are described; nothing but these fields is touched.
void TellOfPng(const PngDescription& description, IMAGEINFO* info) noexcept;

/// GETPNGINFOFROMMEMORY
int DescribePngPage(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                    unsigned int bufferSize, int reserved0, int reserved1);

/// LOADPNGFROMMEMORY. A failure leaves nothing in `bitmap`, which the filter does not free then.
int LoadPngPage(unsigned char* buffer, _BITMAPHANDLE* bitmap, unsigned int bitmapRecordSize, int bitsPerPixel,
                int reserved1, unsigned int bufferSize, int reserved0, IMAGEINFO* info);

}  // namespace vxkrn
