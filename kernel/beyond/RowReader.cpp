// Which reader decodes what. The rules are format/Decoders.h's; here are the readers.
#include "beyond/RowReader.h"

#include "base/Errors.h"
#include "beyond/EmbeddedStream.h"
#include "beyond/FieldsReader.h"
#include "beyond/HuffmanReader.h"
#include "beyond/PixelReaders.h"
#include "beyond/Rle24Reader.h"
#include "beyond/RunOnReader.h"

namespace vxkrn {
namespace {

template <class Reader>
int Make(const vx_source& source, const bmp::BitmapLayout& layout, memory::Owned<RowReader>* reader) {
  auto made = memory::Make<Reader>({"kernel/RowReader", __LINE__}, source, layout);
  if (made == nullptr) return FailForMemory("a reader", sizeof(Reader));
  reader->reset(made.release());
  return STATUS_OK;
}

}  // namespace

int MakeRowReader(vx_source& source, const BitmapImage& image, memory::Owned<RowReader>* reader) {
  const bmp::BitmapLayout& layout = image.layout;
  switch (image.decoder) {
    case bmp::Decoder::kFields: return Make<FieldsReader>(source, layout, reader);
    case bmp::Decoder::kFilter:
      if (IsPlain(layout, image.decoder)) return Make<CopyReader>(source, layout, reader);
      break;
    case bmp::Decoder::kTwoBits: return Make<TwoBitReader>(source, layout, reader);
    case bmp::Decoder::kWide: return Make<WideReader>(source, layout, reader);
    case bmp::Decoder::kRunOn: return Make<RunOnReader>(source, layout, reader);
    case bmp::Decoder::kRle24: return Make<Rle24Reader>(source, layout, reader);
    case bmp::Decoder::kHuffman: return Make<HuffmanReader>(source, layout, reader);
    case bmp::Decoder::kJpeg: return MakeJpegReader(source, layout, reader);
    case bmp::Decoder::kPng: return MakePngReader(source, layout, reader);
    default: break;
  }
  return Fail({STATUS_BAD_FORMAT, VX_REASON_UNSUPPORTED_CODING, layout.compression, layout.depth},
              "nobody reads coding ", layout.compression, " at ", layout.depth, " bits per pixel");
}

}  // namespace vxkrn
