// Hands out the rows of a decoded PNG stream.
#include "beyond/PngReader.h"

#include <algorithm>
#include <cstring>

#include "base/Errors.h"
#include "beyond/EmbeddedStream.h"

namespace vxkrn {

PngInput InputFrom(ByteReader& bytes) noexcept {
  return {&bytes, [](void* owner, unsigned char* to, std::size_t count) {
            return static_cast<ByteReader*>(owner)->Read(to, count);
          }};
}

int SettlePng(int status) noexcept {
  if (status != STATUS_BAD_FORMAT || memory::LastRefusal() == 0) return status;
  return FailForMemory("reading it", memory::LastRefusal());
}

int PngReader::Open() {
  PngDescription description = {};
  const int status = SettlePng(DecodePngRows(InputFrom(bytes_), &decoded_, &description, &rowsThere_));
  if (status != STATUS_OK) return status;
  if (description.width != width_ || description.height != height_) {
    return Fail({STATUS_BAD_FORMAT, VX_REASON_CHANGED_WHILE_READ}, "the file changed while it was read");
  }
  std::copy_n(decoded_.Palette, decoded_.BitsPerPixel <= 8 ? decoded_.ColorCount : 0, palette_);
  return STATUS_OK;
}

RowShape PngReader::Shape() const noexcept {
  return {decoded_.BitsPerPixel, HasAlpha(decoded_)};
}

int PngReader::Next(uint8_t* row) {
  if (row_ >= rowsThere_) return STATUS_READ_ERROR;
  std::memcpy(row, StoredRow(decoded_, row_++),
              static_cast<std::size_t>(PixelBytes(width_, decoded_.BitsPerPixel)));
  return STATUS_OK;
}

int PngReader::Skip(int rows) {
  row_ = std::min(rowsThere_, row_ + rows);
  return row_ < rowsThere_ ? STATUS_OK : STATUS_READ_ERROR;
}

int MakePngReader(const vx_source& source, const bmp::BitmapLayout& layout,
                  memory::Owned<RowReader>* reader) {
  auto made = memory::Make<PngReader>({"kernel/PngReader", __LINE__}, source, layout);
  if (made == nullptr) return FailForMemory("a reader", sizeof(PngReader));
  const int status = made->Open();
  if (status == STATUS_OK) reader->reset(made.release());
  return status;
}

}  // namespace vxkrn
