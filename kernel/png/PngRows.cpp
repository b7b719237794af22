// One run of libpng, row by row: in the stream's own packing where there is a palette, and widened here.
// Nothing is ever decoded to fewer colours than the stream has.
#include "png/PngRows.h"

#include <algorithm>
#include <cstring>

#include "base/Memory.h"
#include "png/PngColors.h"

namespace vxkrn {
namespace {

constexpr std::size_t kSignatureSize = 8;
constexpr unsigned char kSignature[kSignatureSize + 1] = "\x89PNG\r\n\x1A\n";
// Some writers end the signature like this; the stream after it is the same.
constexpr unsigned char kOtherSignature[kSignatureSize + 1] = "\x89PNG\r\n\r\x05";

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

// Of the compressed data; what is left of a stream that ends inside such a piece is lost.
constexpr std::size_t kSmallPiece = 64;

void AskForColors(png_structp png, bool withFourthByte) {
  png_set_expand(png);
  png_set_scale_16(png);
  png_set_gray_to_rgb(png);
  png_set_bgr(png);
  if (withFourthByte) png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
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

int FailForStream(const PngSession& session, int status) {
  if (status == STATUS_NO_MEMORY) return FailForMemory("decoding a PNG stream", memory::LastRefusal());
  return Fail({status, VX_REASON_PNG_DAMAGED}, "its PNG stream is damaged: ", session.Message());
}

}  // namespace

PngRows::PngRows(const PngInput& input, bool wantsColors) noexcept
    : stream_{input},
      session_(wantsColors ? PngSession::Direction::kReadColors : PngSession::Direction::kRead) {
  if (session_.Png() != nullptr) png_set_read_fn(session_.Png(), &stream_, ReadStream);
}

/// libpng asks for the whole signature first.
void PngRows::ReadStream(png_structp png, png_bytep destination, std::size_t count) {
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

int PngRows::Run(PngSession::Step step, void* argument) {
  const int status = session_.Run(step, argument);
  return status == STATUS_OK ? status : FailForStream(session_, status);
}

int PngRows::ReadHeader(PngDescription* description, ColorSpace* colors) {
  const int status = Run(ReadDescription, description);
  return status == STATUS_OK && colors != nullptr ? TakeColorSpace(session_, colors) : status;
}

bool PngRows::IsInterlaced() const noexcept {
  return png_get_interlace_type(session_.Png(), session_.Info()) != PNG_INTERLACE_NONE;
}

int PngRows::AttachPalette(_BITMAPHANDLE* bitmap) const {
  RGBQUAD palette[256] = {};
  png_colorp colors = nullptr;
  int count = 0;
  if (png_get_PLTE(session_.Png(), session_.Info(), &colors, &count) != 0 &&
      png_get_color_type(session_.Png(), session_.Info()) == PNG_COLOR_TYPE_PALETTE) {
    std::transform(colors, colors + count, palette, [](const png_color& c) {
      return RGBQUAD{c.blue, c.green, c.red, 0};
    });
  } else {
    FillGreys(palette, std::min<int>(png_get_bit_depth(session_.Png(), session_.Info()), 8));
  }
  const int status = VX_SetBitmapNewPalette(bitmap, palette, 1 << bitmap->BitsPerPixel);
  return status == STATUS_NO_MEMORY ? FailForStream(session_, status) : status;
}

/// A step: libpng may jump out of it.
void PngRows::BeginStep(PngSession& session, void* self) {
  auto& rows = *static_cast<PngRows*>(self);
  png_structp png = session.Png();
  png_infop info = session.Info();
  if (rows.depth_ <= 8) {
    png_set_scale_16(png);
  } else {
    AskForColors(png, rows.depth_ == 32);
  }
  rows.passes_ = png_set_interlace_handling(png);
  png_read_update_info(png, info);
  if (png_get_rowbytes(png, info) > static_cast<std::size_t>(rows.bytesPerLine_)) {
    png_error(png, "a row is longer than its header says");
  }
}

int PngRows::Begin(const _BITMAPHANDLE& bitmap) {
  width_ = bitmap.Width;
  depth_ = bitmap.BitsPerPixel;
  bytesPerLine_ = bitmap.BytesPerLine;
  const int status = Run(BeginStep, this);
  packedDepth_ = std::min<int>(png_get_bit_depth(session_.Png(), session_.Info()), 8);
  return status;
}

void PngRows::Widen(uint8_t* row) const noexcept {
  if (depth_ <= 8 && packedDepth_ != depth_) WidenRow(row, width_, packedDepth_, depth_);
}

int PngRows::ReadRow(uint8_t* row) {
  const int status = Run(
      [](PngSession& session, void* to) { png_read_row(session.Png(), static_cast<png_bytep>(to), nullptr); },
      row);
  if (status == STATUS_OK) Widen(row);
  return status;
}

int PngRows::End() {
  return Run([](PngSession& session, void* /*none*/) { png_read_end(session.Png(), nullptr); }, nullptr);
}

/// A step: libpng may jump out of it.
void PngRows::ReadPictureStep(PngSession& session, void* self) {
  auto* rows = static_cast<PngRows*>(self);
  png_structp png = session.Png();
  for (int pass = 0; pass < rows->passes_; ++pass) {
    for (int row = 0; row < rows->bitmap_->Height; ++row) {
      png_read_row(png, StoredRow(*rows->bitmap_, row), nullptr);
      if (pass == rows->passes_ - 1) rows->rowsDone_ = row + 1;
    }
  }
  png_read_end(png, nullptr);
}

void PngRows::WidenAll(const _BITMAPHANDLE& bitmap) const noexcept {
  for (int row = 0; row < bitmap.Height; ++row) Widen(StoredRow(bitmap, row));
}

int PngRows::ReadPicture(const _BITMAPHANDLE& bitmap) {
  bitmap_ = &bitmap;
  int status = Begin(bitmap);
  if (status == STATUS_OK) status = Run(ReadPictureStep, this);
  if (status == STATUS_OK) WidenAll(bitmap);
  return status;
}

int PngRows::ReadParts(const _BITMAPHANDLE& bitmap, int* rowsThere) {
  bitmap_ = &bitmap;
  png_set_compression_buffer_size(session_.Png(), kSmallPiece);
  int status = Begin(bitmap);
  if (status != STATUS_OK) return status;
  status = session_.Run(ReadPictureStep, this);
  *rowsThere = rowsDone_;
  if (status == STATUS_BAD_FORMAT && stream_.hasEnded && rowsDone_ > 0) status = STATUS_OK;
  if (status != STATUS_OK) return FailForStream(session_, status);
  WidenAll(bitmap);
  return STATUS_OK;
}

}  // namespace vxkrn
