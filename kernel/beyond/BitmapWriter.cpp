#include "beyond/BitmapWriter.h"

#include "beyond/FieldRows.h"
#include "filter/FilterCalls.h"
#include "format/AlphaEncoding.h"

namespace vxkrn {

int SaveAlphaBitmap(const Backend& backend, const char* name, const SavePlan& plan) {
  const _BITMAPHANDLE& bitmap = plan.shown;
  const int depth = plan.outcome.bits_per_pixel;
  const auto size = static_cast<uint32_t>(PictureBytes(bitmap.Width, bitmap.Height, depth));
  const bmp::NewHeader header = {.width = static_cast<uint32_t>(bitmap.Width),
                                 .height = static_cast<uint32_t>(bitmap.Height),
                                 .bitCount = static_cast<uint16_t>(depth),
                                 .compression = bmp::kCompressionBitFields,
                                 .imageSize = size,
                                 .xPixelsPerMetre = bmp::PixelsPerMetre(bitmap.XResolution),
                                 .yPixelsPerMetre = bmp::PixelsPerMetre(bitmap.YResolution)};
  constexpr uint32_t kDataOffset = bmp::kFileHeaderSize + bmp::kV5HeaderSize;
  FieldRows rows(plan);
  return WriteFile(backend, name, VX_OPEN_CREATE, [&](HANDLE file) {
    bool isWritten = Put(file, bmp::EncodeFileHeader(kDataOffset + size, kDataOffset)) &&
                     Put(file, bmp::EncodeV5Header(header, plan.masks));
    for (int row = 0; row < rows.Count() && isWritten; ++row) isWritten = Put(file, rows.Pixels(row));
    return isWritten;
  });
}

}  // namespace vxkrn
