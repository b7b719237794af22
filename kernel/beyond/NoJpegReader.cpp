// Stands in for the reader of JPEG streams where the library is built without libjpeg.
#include "base/Errors.h"
#include "beyond/EmbeddedStream.h"

namespace vxkrn {

int MakeJpegReader(const vx_source& /*source*/, const bmp::BitmapLayout& layout,
                   memory::Owned<RowReader>* /*reader*/) {
  return Fail(Cause(STATUS_NOT_SUPPORTED, VX_REASON_NO_JPEG).At(layout.pixelOffset),
              "its pixels are a JPEG stream of ", layout.width, " x ", layout.height, " pixels from byte ",
              layout.pixelOffset,
              " on, and this library was built without libjpeg, which reads such streams");
}

}  // namespace vxkrn
