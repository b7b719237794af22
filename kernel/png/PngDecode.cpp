// Describes and decodes PNG streams. Rows are read straight into the bitmap, in the stream's own packing
// where there is a palette, and widened there; nothing is ever decoded to fewer colours than the stream has.
#include <algorithm>
#include <cstring>

#include "base/Errors.h"
#include "base/Memory.h"
#include "bitmap/Bitmap.h"
#include "png/Png.h"
#include "png/PngColors.h"
#include "png/PngSession.h"

namespace vxkrn {
namespace {

constexpr std::size_t kSignatureSize = 8;
constexpr unsigned char kSignature[kSignatureSize + 1] = "\x89PNG\r\n\x1A\n";
// Some writers end the signature like this; the stream after it is the same.
constexpr unsigned char kOtherSignature[kSignatureSize + 1] = "\x89PNG\r\n\r\x05";

struct Stream {
  PngInput input;
  bool isBegun = false;
  bool hasEnded = false;  // before libpng had all it wanted
};

/// Bytes in memory that are read as a stream.
struct Block {
  const unsigned char* bytes;
  std::size_t left;
};

PngInput InputFrom(Block& block) {
  return {&block, [](void* owner, unsigned char* to, std::size_t count) {
            auto* from = static_cast<Block*>(owner);
            const std::size_t got = std::min(count, from->left);
            if (got > 0)
              std::memcpy(to, from->bytes, got);  // a stream without bytes may have no address either
            from->bytes += got;
            from->left -= got;
            return got;
          }};
}

/// libpng asks for the whole signature first.
void ReadStream(png_structp png, png_bytep destination, std::size_t count) {
  auto* stream = static_cast<Stream*>(png_get_io_ptr(png));
  if (stream->input.read(stream->input.owner, destination, count) < count) {
    stream->hasEnded = true;
    png_error(png, "the stream ends early");
  }
  const bool isOther = !stream->isBegun && count == kSignatureSize &&
                       std::memcmp(destination, kOtherSignature, kSignatureSize) == 0;
  if (isOther) std::memcpy(destination, kSignature, kSignatureSize);
  stream->isBegun = true;
}

/// Pixels per metre to dots per inch; 96 where that gives nothing.
int DpiOf(png_uint_32 perMetre) {
  const uint64_t dpi = (uint64_t{perMetre} * 254 + 5000) / 10000;
  return dpi == 0 ? kDefaultDpi : static_cast<int>(dpi);
}

int OwnDepth(png_structp png, png_infop info) {
  const int type = png_get_color_type(png, info);
  if ((type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png, info, PNG_INFO_tRNS) != 0) return 32;
  if (type == PNG_COLOR_TYPE_RGB) return 24;
  const int depth = png_get_bit_depth(png, info);
  return depth == 2 ? 4 : std::min(depth, 8);
}

/// Reads up to the pixels. A step: libpng may jump out of it.
void ReadDescription(PngSession& session, void* argument) {
  auto* description = static_cast<PngDescription*>(argument);
  png_structp png = session.Png();
  png_infop info = session.Info();
  png_read_info(png, info);
  description->width = static_cast<int>(png_get_image_width(png, info));
  description->height = static_cast<int>(png_get_image_height(png, info));
  description->bitsPerPixel = OwnDepth(png, info);
  description->hasAlpha = description->bitsPerPixel == 32;
  description->xDpi = DpiOf(png_get_x_pixels_per_meter(png, info));
  description->yDpi = DpiOf(png_get_y_pixels_per_meter(png, info));
}

struct DecodeJob {
  _BITMAPHANDLE* bitmap;
  bool asPalette;
  bool takesParts;  // what is there of a stream that ends early is worth having
  int rowsDone = 0;
};

// Of the compressed data; what is left of a stream that ends inside such a piece is lost.
constexpr std::size_t kSmallPiece = 64;

void AskForColors(png_structp png, bool withFourthByte) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_bgr(png);
  if (withFourthByte) png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
}

/// Reads the pixels and the rest of the stream. A step: libpng may jump out of it.
void ReadPixels(PngSession& session, void* argument) {
  auto* job = static_cast<DecodeJob*>(argument);
  const _BITMAPHANDLE& bitmap = *job->bitmap;
  png_structp png = session.Png();
  png_infop info = session.Info();
  if (job->takesParts) png_set_compression_buffer_size(png, kSmallPiece);
  if (job->asPalette) {
    png_set_scale_16(png);
  } else {
    AskForColors(png, bitmap.BitsPerPixel == 32);
  }
  const int passes = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) > static_cast<std::size_t>(bitmap.BytesPerLine)) {
    png_error(png, "a row is longer than its header says");
  }
  for (int pass = 0; pass < passes; ++pass) {
    for (int row = 0; row < bitmap.Height; ++row) {
      png_read_row(png, StoredRow(bitmap, row), nullptr);
      if (pass == passes - 1) job->rowsDone = row + 1;
    }
  }
  png_read_end(png, nullptr);
}

unsigned int IndexAt(const unsigned char* row, int x, int depth) {
  const int bit = x * depth;
  return static_cast<unsigned int>(row[bit / 8] >> (8 - depth - bit % 8)) & ((1U << depth) - 1);
}

/// Widens the indices of a row in place, from the right so that none is overwritten unread.
void WidenRow(unsigned char* row, int width, int from, int to) {
  if (to == 8) {
    for (int x = width - 1; x >= 0; --x) row[x] = static_cast<unsigned char>(IndexAt(row, x, from));
    return;
  }
  for (int byte = (width - 1) / 2; byte >= 0; --byte) {
    const unsigned int left = IndexAt(row, byte * 2, from);
    const unsigned int right = byte * 2 + 1 < width ? IndexAt(row, byte * 2 + 1, from) : 0;
    row[byte] = static_cast<unsigned char>((left << 4) | right);
  }
}

void FillGreys(RGBQUAD* palette, int depth) {
  const unsigned int last = (1U << depth) - 1;
  for (unsigned int i = 0; i <= last; ++i) {
    const auto level = static_cast<unsigned char>(i * 255 / last);
    palette[i] = RGBQUAD{level, level, level, 0};
  }
}

/// The palette of 2^depth entries that the indices speak of; what the stream does not name is black.
int AttachPalette(const PngSession& session, _BITMAPHANDLE* bitmap) {
  RGBQUAD palette[256] = {};
  png_colorp colors = nullptr;
  int count = 0;
  if (png_get_PLTE(session.Png(), session.Info(), &colors, &count) != 0 &&
      png_get_color_type(session.Png(), session.Info()) == PNG_COLOR_TYPE_PALETTE) {
    std::transform(colors, colors + count, palette, [](const png_color& c) {
      return RGBQUAD{c.blue, c.green, c.red, 0};
    });
  } else {
    FillGreys(palette, std::min<int>(png_get_bit_depth(session.Png(), session.Info()), 8));
  }
  return VX_SetBitmapNewPalette(bitmap, palette, 1 << bitmap->BitsPerPixel);
}

int FailForStream(const PngSession& session, int status) {
  if (status == STATUS_NO_MEMORY) return FailForMemory("decoding a PNG stream", memory::LastRefusal());
  return Fail({status, VX_REASON_PNG_DAMAGED}, "its PNG stream is damaged: ", session.Message());
}

/// Makes bitmap ready to take the pixels.
int Prepare(const PngDescription& description, int depth, _BITMAPHANDLE* bitmap) {
  const uint64_t bytes = PictureBytes(description.width, description.height, depth);
  if (!memory::Fits(bytes)) return FailForMemory("the PNG picture", bytes);
  int status = VX_InitBitmap(bitmap, sizeof *bitmap, description.width, description.height, depth);
  if (status == STATUS_OK) status = VX_AllocateBitmap(bitmap, BITMAP_ALLOCATE_PIXELS);
  if (status == STATUS_NO_MEMORY) return FailForMemory("the PNG picture", bytes);
  if (status != STATUS_OK) {
    return Fail({status, VX_REASON_BAD_SIZE, description.width, description.height}, "its PNG stream says ",
                description.width, " x ", description.height, " pixels, which is too wide");
  }
  if (description.hasAlpha) bitmap->Flags |= kBitmapHasAlpha;
  bitmap->Orientation = ORIENT_TOP_DOWN;
  bitmap->XResolution = description.xDpi;
  bitmap->YResolution = description.yDpi;
  return STATUS_OK;
}

}  // namespace

int DescribePng(const PngInput& input, PngDescription* description) {
  Stream stream = {input};
  PngSession session(PngSession::Direction::kRead);
  if (session.Png() != nullptr) png_set_read_fn(session.Png(), &stream, ReadStream);
  const int status = session.Run(ReadDescription, description);
  return status == STATUS_OK ? status : FailForStream(session, status);
}

int DescribePng(const unsigned char* bytes, std::size_t size, PngDescription* description) {
  Block block = {bytes, size};
  return DescribePng(InputFrom(block), description);
}

namespace {

/// Gives the decoded rows the depth and the palette of the bitmap.
int FinishIndices(const PngSession& session, _BITMAPHANDLE* bitmap) {
  const int packed = std::min<int>(png_get_bit_depth(session.Png(), session.Info()), 8);
  if (packed != bitmap->BitsPerPixel) {
    for (int row = 0; row < bitmap->Height; ++row) {
      WidenRow(StoredRow(*bitmap, row), bitmap->Width, packed, bitmap->BitsPerPixel);
    }
  }
  return AttachPalette(session, bitmap);
}

/// @param rowsThere null where the stream must be whole
int Decode(const PngInput& input, int askedDepth, _BITMAPHANDLE* bitmap, PngDescription* description,
           ColorSpace* colors, int* rowsThere) {
  *bitmap = _BITMAPHANDLE{};
  Stream stream = {input};
  PngSession session(colors == nullptr ? PngSession::Direction::kRead : PngSession::Direction::kReadColors);
  if (session.Png() != nullptr) png_set_read_fn(session.Png(), &stream, ReadStream);
  int status = session.Run(ReadDescription, description);
  if (status != STATUS_OK) return FailForStream(session, status);

  if (colors != nullptr) status = TakeColorSpace(session, colors);
  if (status != STATUS_OK) return status;

  const int depth = PngTargetDepth(description->bitsPerPixel, askedDepth);
  description->bitsPerPixel = depth;
  status = Prepare(*description, depth, bitmap);
  if (status != STATUS_OK) return status;

  DecodeJob job = {bitmap, depth <= 8, rowsThere != nullptr};
  status = session.Run(ReadPixels, &job);
  if (status == STATUS_BAD_FORMAT && stream.hasEnded && job.takesParts && job.rowsDone > 0) {
    status = STATUS_OK;
  }
  if (status == STATUS_OK && job.asPalette) status = FinishIndices(session, bitmap);
  if (rowsThere != nullptr) *rowsThere = job.rowsDone;
  if (status == STATUS_OK) return status;
  VX_FreeBitmap(bitmap);
  return FailForStream(session, status);
}

}  // namespace

int DecodePng(const unsigned char* bytes, std::size_t size, int askedDepth, _BITMAPHANDLE* bitmap,
              PngDescription* description, ColorSpace* colors) {
  Block block = {bytes, size};
  return Decode(InputFrom(block), askedDepth, bitmap, description, colors, nullptr);
}

int DecodePngRows(const PngInput& input, _BITMAPHANDLE* bitmap, PngDescription* description, int* rowsThere) {
  return Decode(input, 0, bitmap, description, nullptr, rowsThere);
}

}  // namespace vxkrn
