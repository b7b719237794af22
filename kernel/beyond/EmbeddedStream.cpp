// Looks at the heads of embedded streams. Decodes no pixel.
#include "beyond/EmbeddedStream.h"

#include "base/Errors.h"
#include "beyond/ByteReader.h"
#include "beyond/PngReader.h"
#include "format/Bytes.h"

namespace vxkrn {
namespace {

/// What stands in a JPEG stream's frame header.
struct JpegFrame {
  int width = 0;
  int height = 0;
  int components = 0;
};

/// The code behind the next 0xFF that begins a marker; below 0 where the data ends.
int NextMarker(ByteReader& bytes) noexcept {
  for (int byte = bytes.Byte(); byte >= 0; byte = bytes.Byte()) {
    if (byte != 0xFF) continue;
    while (byte == 0xFF) byte = bytes.Byte();
    if (byte != 0) return byte;
  }
  return -1;
}

constexpr bool IsFrame(int marker) {
  constexpr int kTables = 0xC4;
  constexpr int kReserved = 0xC8;
  constexpr int kConditions = 0xCC;
  return marker >= 0xC0 && marker <= 0xCF && marker != kTables && marker != kReserved &&
         marker != kConditions;
}

/// Whether a segment with a length follows the marker.
constexpr bool HasSegment(int marker) {
  return marker > 0x01 && (marker < 0xD0 || marker > 0xD8);
}

int Word(const uint8_t* bytes) noexcept {
  return bytes[0] << 8 | bytes[1];
}

/// Finds the frame header, which stands before the first scan. @return whether it is there
bool FindFrame(ByteReader& bytes, JpegFrame* frame) noexcept {
  constexpr int kStart = 0xD8;
  constexpr int kEnd = 0xD9;
  constexpr int kScan = 0xDA;
  if (bytes.Byte() != 0xFF || bytes.Byte() != kStart) return false;
  for (;;) {
    const int marker = NextMarker(bytes);
    if (marker < 0 || marker == kEnd || marker == kScan) return false;
    if (!HasSegment(marker)) continue;
    uint8_t length[2];
    if (bytes.Read(length, sizeof length) < sizeof length || Word(length) < 2) return false;
    if (!IsFrame(marker)) {
      bytes.Skip(static_cast<uint64_t>(Word(length)) - 2);
      continue;
    }
    uint8_t fields[6];  // precision, height, width, components
    if (bytes.Read(fields, sizeof fields) < sizeof fields) return false;
    *frame = {Word(fields + 3), Word(fields + 1), fields[5]};
    return frame->width > 0 && frame->height > 0;
  }
}

int TakeJpegsWord(const vx_source& source, bmp::BitmapLayout* layout) noexcept {
  ByteReader bytes(source, layout->pixelOffset);
  JpegFrame frame;
  if (!FindFrame(bytes, &frame)) {
    if (memory::LastRefusal() != 0) return FailForMemory("reading it", memory::LastRefusal());
    return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_JPEG_DAMAGED).At(layout->pixelOffset),
                "no size of a picture is found in its JPEG stream, which should begin at byte ",
                layout->pixelOffset);
  }
  layout->width = frame.width;
  layout->height = frame.height;
  layout->depth = frame.components == 1 ? 8 : 24;
  return STATUS_OK;
}

int TakePngsWord(const vx_source& source, bmp::BitmapLayout* layout) noexcept {
  ByteReader bytes(source, layout->pixelOffset);
  PngDescription description = {};
  const int status = SettlePng(DescribePng(InputFrom(bytes), &description));
  if (status != STATUS_OK) return status;
  layout->width = description.width;
  layout->height = description.height;
  layout->depth = description.bitsPerPixel;
  return STATUS_OK;
}

}  // namespace

int TakeStreamsWord(const vx_source& source, bmp::Decoder decoder, bmp::BitmapLayout* layout) noexcept {
  layout->isTopDown = true;
  layout->paletteCount = 0;
  return decoder == bmp::Decoder::kPng ? TakePngsWord(source, layout) : TakeJpegsWord(source, layout);
}

}  // namespace vxkrn
