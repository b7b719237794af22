// Encodes rows as PNG: palette, RGB or RGBA, whichever the picture says. Decides nothing about
// what the rows mean.
#include <algorithm>
#include <cstring>

#include "base/Errors.h"
#include "base/Memory.h"
#include "bitmap/Bitmap.h"
#include "png/Png.h"
#include "png/PngColors.h"
#include "png/PngSession.h"
#include "png/PngWhole.h"

namespace vxkrn {
namespace {

/// Where the stream goes, and whether that went well.
struct Sink {
  const PngOutput& output;
  bool hasRefused = false;
};

void WriteToSink(png_structp png, png_bytep source, std::size_t count) {
  auto* sink = static_cast<Sink*>(png_get_io_ptr(png));
  sink->hasRefused = !sink->output.write(sink->output.owner, source, count);
  if (sink->hasRefused) png_error(png, "not all of the stream is taken");
}

void FlushSink(png_structp /*png*/) {}

png_uint_32 PerMetre(int dpi) {
  return static_cast<png_uint_32>((int64_t{dpi} * 10000 + 127) / 254);
}

/// One entry or one colour is fully transparent, and everything else is opaque.
void WriteTransparency(PngSession& session, const PngPicture& picture) {
  if (picture.transparentEntry >= 0) {
    png_byte alpha[256];
    std::fill_n(alpha, picture.transparentEntry, png_byte{255});
    alpha[picture.transparentEntry] = 0;
    png_set_tRNS(session.Png(), session.Info(), alpha, picture.transparentEntry + 1, nullptr);
  } else if (picture.transparentColor != nullptr) {
    const RGBQUAD& key = *picture.transparentColor;
    const png_color_16 color = {0, key.Red, key.Green, key.Blue, 0};
    png_set_tRNS(session.Png(), session.Info(), nullptr, 0, &color);
  }
}

void WriteHeader(PngSession& session, const PngPicture& picture) {
  png_structp png = session.Png();
  png_infop info = session.Info();
  int type = PNG_COLOR_TYPE_PALETTE;
  if (picture.paletteDepth == 0) type = picture.hasAlpha ? PNG_COLOR_TYPE_RGB_ALPHA : PNG_COLOR_TYPE_RGB;
  png_set_IHDR(png, info, static_cast<png_uint_32>(picture.width), static_cast<png_uint_32>(picture.height),
               picture.paletteDepth == 0 ? 8 : picture.paletteDepth, type, PNG_INTERLACE_NONE,
               PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  if (picture.paletteDepth != 0) {
    png_color colors[256];
    std::transform(picture.palette, picture.palette + picture.colorCount, colors, [](const RGBQUAD& c) {
      return png_color{c.Red, c.Green, c.Blue};
    });
    png_set_PLTE(png, info, colors, picture.colorCount);
  }
  if (picture.colors != nullptr) SetColorSpace(session, *picture.colors);
  WriteTransparency(session, picture);
  if (picture.xDpi > 0 && picture.yDpi > 0) {
    png_set_pHYs(png, info, PerMetre(picture.xDpi), PerMetre(picture.yDpi), PNG_RESOLUTION_METER);
  }
  png_write_info(png, info);
}

struct Job {
  PngPicture picture;
  PngPixels pixels;
};

/// Writes the whole stream. A step: libpng may jump out of it.
void WritePicture(PngSession& session, void* argument) {
  const auto& [picture, pixels] = *static_cast<const Job*>(argument);
  png_structp png = session.Png();
  WriteHeader(session, picture);
  if (pixels.size != 0) {
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IDAT"), pixels.bytes.get(), pixels.size);
    png_write_chunk(png, reinterpret_cast<png_const_bytep>("IEND"), nullptr, 0);
    return;
  }
  if (picture.paletteDepth == 0 && !picture.hasAlpha) png_set_filler(png, 0, PNG_FILLER_AFTER);
  for (int row = 0; row < picture.height; ++row) {
    png_write_row(png, picture.row(picture.owner, row, picture.scratch));
  }
  png_write_end(png, nullptr);
}

}  // namespace

int EncodePng(const PngPicture& picture, const PngOutput& output) {
  Sink sink = {output};
  PngSession session(PngSession::Direction::kWrite);
  if (session.Png() != nullptr) png_set_write_fn(session.Png(), &sink, WriteToSink, FlushSink);
  Job job = {picture, CompressWhole(picture)};
  if (session.Run(WritePicture, &job) == STATUS_OK) return STATUS_OK;
  if (sink.hasRefused) return STATUS_WRITE_ERROR;
  // Writing a valid picture fails otherwise only when memory runs out.
  return FailForMemory("encoding the picture as PNG", memory::LastRefusal());
}

bool PngBytes::MakeRoom(std::size_t count) noexcept {
  if (count <= capacity_ - size_) return true;
  if (count > SIZE_MAX / 2 - size_) return false;
  const std::size_t larger = std::max({std::size_t{4096}, capacity_ * 2, size_ + count});
  memory::Bytes moved = memory::MakeBytes(larger, {"kernel/PngEncode", __LINE__});
  if (moved == nullptr) return false;
  if (size_ > 0) std::memcpy(moved.get(), bytes_.get(), size_);
  bytes_ = std::move(moved);
  capacity_ = larger;
  return true;
}

PngOutput PngBytes::AsOutput() noexcept {
  return {this, [](void* owner, const unsigned char* bytes, std::size_t count) {
            auto* self = static_cast<PngBytes*>(owner);
            if (!self->MakeRoom(count)) return false;
            std::memcpy(self->bytes_.get() + self->size_, bytes, count);
            self->size_ += count;
            return true;
          }};
}

int PngBytes::Settle(int status) noexcept {
  if (status != STATUS_WRITE_ERROR) return status;
  return FailForMemory("encoding the picture as PNG", memory::LastRefusal());
}

}  // namespace vxkrn
