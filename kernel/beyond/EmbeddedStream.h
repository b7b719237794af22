// PNG and JPEG streams in the place of a bitmap's pixels. What such a stream says of its picture counts: the
// bitmap's header has to say it again, which not every writer does, and the rows that come are the stream's.
#pragma once

#include "beyond/RowReader.h"

namespace vxkrn {

/// Puts the stream's width, height and depth into the layout, whose rows then begin at the top; it has no
/// colour table. @return STATUS_OK, or a failure with its detail set that does not name the file
[[nodiscard]] int TakeStreamsWord(const vx_source& source, bmp::Decoder decoder,
                                  bmp::BitmapLayout* layout) noexcept;

/// Decodes the whole stream, into counted memory: PNG streams may come in passes.
/// @return as MakeRowReader
[[nodiscard]] int MakePngReader(const vx_source& source, const bmp::BitmapLayout& layout,
                                memory::Owned<RowReader>* reader);
/// Where the library was built without libjpeg there is none, and this says so. @return as MakeRowReader
[[nodiscard]] int MakeJpegReader(const vx_source& source, const bmp::BitmapLayout& layout,
                                 memory::Owned<RowReader>* reader);

}  // namespace vxkrn
