// PNG streams: every kind decoded and compared with libpng's own simplified reader, encoded pictures read
// back, and hostile streams.
#include "png/Png.h"

#include <png.h>
#include <zlib.h>

#include <cstring>
#include "../common/Failures.h"
#include "Leaks.h"
#include "base/Errors.h"
#include "bitmap/Bitmap.h"
#include "bitmap/Picture.h"
#include "filter/PngCallbacks.h"

namespace {

using Bytes = std::vector<unsigned char>;

struct Kind {
  const char* name;
  int colorType;
  int bitDepth;
  bool transparent;
  int ownDepth;
};

constexpr Kind kKinds[] = {
    {"palette 1", PNG_COLOR_TYPE_PALETTE, 1, false, 1},
    {"palette 2", PNG_COLOR_TYPE_PALETTE, 2, false, 4},
    {"palette 4", PNG_COLOR_TYPE_PALETTE, 4, false, 4},
    {"palette 8", PNG_COLOR_TYPE_PALETTE, 8, false, 8},
    {"palette 4 tRNS", PNG_COLOR_TYPE_PALETTE, 4, true, 32},
    {"grey 1", PNG_COLOR_TYPE_GRAY, 1, false, 1},
    {"grey 2", PNG_COLOR_TYPE_GRAY, 2, false, 4},
    {"grey 4", PNG_COLOR_TYPE_GRAY, 4, false, 4},
    {"grey 8", PNG_COLOR_TYPE_GRAY, 8, false, 8},
    {"grey 16", PNG_COLOR_TYPE_GRAY, 16, false, 8},
    {"grey 2 tRNS", PNG_COLOR_TYPE_GRAY, 2, true, 32},
    {"grey alpha 8", PNG_COLOR_TYPE_GRAY_ALPHA, 8, false, 32},
    {"rgb 8", PNG_COLOR_TYPE_RGB, 8, false, 24},
    {"rgb 16", PNG_COLOR_TYPE_RGB, 16, false, 24},
    {"rgb 8 tRNS", PNG_COLOR_TYPE_RGB, 8, true, 32},
    {"rgba 8", PNG_COLOR_TYPE_RGB_ALPHA, 8, false, 32},
    {"rgba 16", PNG_COLOR_TYPE_RGB_ALPHA, 16, false, 32},
    {"grey alpha 16", PNG_COLOR_TYPE_GRAY_ALPHA, 16, false, 32},
};
constexpr int kWidth = 13;
constexpr int kHeight = 11;

void Append(png_structp png, png_bytep bytes, std::size_t count) {
  auto* stream = static_cast<Bytes*>(png_get_io_ptr(png));
  stream->insert(stream->end(), bytes, bytes + count);
}

/// A stream of pseudo-random samples at 300 x 72 dpi.
Bytes MakePng(const Kind& kind, bool interlaced, unsigned int seed = 1) {
  Bytes stream;
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_set_write_fn(png, &stream, Append, [](png_structp) {});
  png_set_IHDR(png, info, kWidth, kHeight, kind.bitDepth, kind.colorType,
               interlaced ? PNG_INTERLACE_ADAM7 : PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
               PNG_FILTER_TYPE_DEFAULT);
  png_color palette[256];
  for (int i = 0; i < 256; ++i) {
    palette[i] = {static_cast<png_byte>(i * 37), static_cast<png_byte>(255 - i),
                  static_cast<png_byte>(i * 101)};
  }
  if (kind.colorType == PNG_COLOR_TYPE_PALETTE) png_set_PLTE(png, info, palette, 1 << kind.bitDepth);
  if (kind.transparent) {
    const png_byte alphas[] = {0, 100, 200};
    const png_color_16 key = {0, 40, 80, 120, 1};
    png_set_tRNS(png, info, alphas, 3, &key);
  }
  png_set_pHYs(png, info, 11811, 2835, PNG_RESOLUTION_METER);
  png_write_info(png, info);
  Bytes pixels(png_get_rowbytes(png, info) * kHeight);
  for (unsigned char& byte : pixels)
    byte = static_cast<unsigned char>((seed = seed * 1103515245 + 12345) >> 16);
  std::vector<png_bytep> rows;
  rows.reserve(kHeight);
  for (int row = 0; row < kHeight; ++row)
    rows.push_back(pixels.data() + png_get_rowbytes(png, info) * static_cast<std::size_t>(row));
  png_write_image(png, rows.data());
  png_write_end(png, info);
  png_destroy_write_struct(&png, &info);
  return stream;
}

/// What libpng's simplified reader makes of the stream, which must not be interlaced: it reads other samples
/// from interlaced streams of 16 bits.
Bytes ReferenceRgba(const Bytes& stream) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_memory(&image, stream.data(), stream.size()), 0);
  image.format = PNG_FORMAT_RGBA;
  image.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // 16-bit samples are scaled, as here, not converted from linear
  Bytes rgba(PNG_IMAGE_SIZE(image));
  EXPECT_NE(png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr), 0) << image.message;
  return rgba;
}

Bytes RgbaOf(vx_bitmap& bitmap) {
  bitmap.TakeColors();
  Bytes rgba;
  for (int row = 0; row < bitmap.record.Height; ++row) {
    Bytes line(static_cast<std::size_t>(bitmap.record.Width) * 4);
    vxkrn::ReadRgba(bitmap.record, bitmap.colors, bitmap.Stored(row), line.data());
    rgba.insert(rgba.end(), line.begin(), line.end());
  }
  return rgba;
}

class Png : public Leaks {
 protected:
  static int Decode(const Bytes& stream, int depth, vx_bitmap* bitmap) {
    vxkrn::PngDescription description = {};
    const int status = vxkrn::DecodePng(stream.data(), stream.size(), depth, &bitmap->record, &description);
    const _BITMAPHANDLE& record = bitmap->record;
    EXPECT_TRUE(status == STATUS_OK ||
                (record.Pixels == nullptr && record.Palette == nullptr && record.Flags == 0));
    return status;
  }
};

TEST_F(Png, EveryKindDecodesToItsColoursAtEveryDepthThatHoldsThem) {
  for (const Kind& kind : kKinds) {
    for (const bool interlaced : {false, true}) {
      const Bytes stream = MakePng(kind, interlaced);
      const Bytes expected = ReferenceRgba(MakePng(kind, false));
      vxkrn::PngDescription description = {};
      ASSERT_EQ(vxkrn::DescribePng(stream.data(), stream.size(), &description), STATUS_OK);
      EXPECT_EQ(description.bitsPerPixel, kind.ownDepth) << kind.name;
      EXPECT_EQ(description.width * 100 + description.height, kWidth * 100 + kHeight);
      for (const int asked : {0, 1, 2, 4, 8, 16, 24, 32, -7, 300}) {
        SCOPED_TRACE(testing::Message()
                     << kind.name << (interlaced ? " interlaced" : "") << " asked " << asked);
        const int wanted = asked == 16 ? 24 : asked;
        const bool holds = vxkrn::IsDepth(wanted) && wanted >= kind.ownDepth;
        vx_bitmap bitmap;
        ASSERT_EQ(Decode(stream, asked, &bitmap), STATUS_OK);
        EXPECT_EQ(bitmap.record.BitsPerPixel, holds ? wanted : kind.ownDepth);
        EXPECT_EQ(vxkrn::HasAlpha(bitmap.record), kind.ownDepth == 32);
        EXPECT_EQ(RgbaOf(bitmap), expected);
        if (bitmap.record.BitsPerPixel == 32 && !vxkrn::HasAlpha(bitmap.record)) {
          EXPECT_EQ(vxkrn::StoredRow(bitmap.record, 3)[7], 255);
        }
      }
    }
  }
}

TEST_F(Png, TheOtherSignatureIsTakenAndNoThird) {
  Bytes stream = MakePng(kKinds[0], false);
  vx_bitmap bitmap;
  stream[6] = 0x0D;
  stream[7] = 0x05;
  EXPECT_EQ(Decode(stream, 0, &bitmap), STATUS_OK);
  stream[7] = 0x06;
  vx_bitmap refused;
  EXPECT_EQ(Decode(stream, 0, &refused), STATUS_BAD_FORMAT);
}

TEST_F(Png, EveryPrefixFailsCleanly) {
  for (const Kind& kind : {kKinds[1], kKinds[15]}) {
    const Bytes stream = MakePng(kind, true);
    for (std::size_t size = 0; size < stream.size(); ++size) {
      const Bytes prefix(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
      vx_bitmap bitmap;
      ASSERT_EQ(Decode(prefix, 0, &bitmap), STATUS_BAD_FORMAT) << size;
      ASSERT_EQ(bitmap.record.Pixels, nullptr);
    }
  }
}

/// A chunk with its checksum.
Bytes Chunk(const std::string& type, const Bytes& data) {
  Bytes chunk(8 + data.size() + 4);
  png_save_uint_32(chunk.data(), static_cast<png_uint_32>(data.size()));
  std::copy(type.begin(), type.end(), chunk.begin() + 4);
  std::copy(data.begin(), data.end(), chunk.begin() + 8);
  const uLong sum = crc32(0, chunk.data() + 4, static_cast<uInt>(4 + data.size()));
  png_save_uint_32(&chunk[8 + data.size()], static_cast<png_uint_32>(sum));
  return chunk;
}

constexpr std::ptrdiff_t kHeaderEnd = 33;  // of the signature and the first chunk

/// The stream with other sides in its header.
Bytes WithSides(Bytes stream, uint32_t width, uint32_t height) {
  png_save_uint_32(&stream[16], width);
  png_save_uint_32(&stream[20], height);
  const Bytes header = Chunk("IHDR", {stream.begin() + 16, stream.begin() + 29});
  std::copy(header.begin(), header.end(), stream.begin() + 8);
  return stream;
}

TEST_F(Png, SizesOverTheLimitAreRefusedBeforeAllocating) {
  const Bytes stream = MakePng(kKinds[12], false);
  vx_bitmap bitmap;
  EXPECT_EQ(Decode(WithSides(stream, 65535, 65535), 0, &bitmap), STATUS_NO_MEMORY);
  EXPECT_NE(std::strstr(vxkrn::Detail().CString(), "12884705280 bytes"), nullptr)
      << vxkrn::Detail().CString();
  Bytes wrong = stream;
  wrong[18] = 0xFF;
  EXPECT_EQ(Decode(wrong, 0, &bitmap), STATUS_BAD_FORMAT) << "its checksum is wrong";
  EXPECT_NE(std::strstr(vxkrn::Detail().CString(), "IHDR: CRC error"), nullptr) << vxkrn::Detail().CString();
  IMAGEINFO info = {};
  EXPECT_EQ(vxkrn::DescribePngPage(wrong.data(), &info, sizeof info - 1, 100, 0, 0), STATUS_BAD_PARAMETER);
}

TEST_F(Png, SidesAreThoseOfEveryPicture) {
  const Bytes stream = MakePng(kKinds[12], false);
  vxkrn::PngDescription description = {};
  const auto describe = [&](uint32_t width, uint32_t height) {
    const Bytes changed = WithSides(stream, width, height);
    return vxkrn::DescribePng(changed.data(), changed.size(), &description);
  };
  constexpr uint32_t kLongest = (1U << 28) - 1;
  EXPECT_EQ(describe(kLongest, 1), STATUS_OK);
  EXPECT_EQ(describe(1, kLongest), STATUS_OK);
  EXPECT_EQ(describe(kLongest + 1, 1), STATUS_BAD_FORMAT);
  EXPECT_EQ(describe(1, kLongest + 1), STATUS_BAD_FORMAT);

  constexpr int kWide = 1000001;
  const Bytes rgba(std::size_t{4} * kWide, 255);
  vx_bitmap* wide = nullptr;
  ASSERT_EQ(vx_bitmap_from_rgba(kWide, 1, rgba.data(), &wide), VX_OK);
  uint8_t* png = nullptr;
  std::size_t size = 0;
  EXPECT_EQ(vx_bitmap_encode_png(wide, &png, &size), VX_OK) << vxkrn::Detail().CString();
  vx_free(png);
  vx_bitmap_free(wide);
}

TEST_F(Png, TextIsNotUnpacked) {
  Bytes text = {'k', 0, 0};  // a keyword, and the only way of compression
  Bytes packed(40000);
  uLongf size = packed.size();
  const Bytes zeros(900000);  // as much as one chunk may hold, nearly
  ASSERT_EQ(compress(packed.data(), &size, zeros.data(), zeros.size()), Z_OK);
  text.insert(text.end(), packed.begin(), packed.begin() + static_cast<std::ptrdiff_t>(size));
  Bytes stream = MakePng(kKinds[12], false);
  const Bytes chunk = Chunk("zTXt", text);
  constexpr std::ptrdiff_t kResolutionChunk = 21;
  stream.erase(stream.begin() + kHeaderEnd, stream.begin() + kHeaderEnd + kResolutionChunk);
  stream.insert(stream.begin() + kHeaderEnd, chunk.begin(), chunk.end());
  vxkrn::memory::SetLimit(200000);
  vxkrn::BeginCall();
  vx_bitmap bitmap;
  EXPECT_EQ(Decode(stream, 0, &bitmap), STATUS_OK);
  EXPECT_EQ(vxkrn::memory::LastRefusal(), 0U);
  EXPECT_EQ(bitmap.record.XResolution, 96) << "where none is named";
}

TEST_F(Png, EveryAllocationMayFail) {
  const Bytes stream = MakePng(kKinds[3], true);
  EXPECT_GT(FailuresForWantOfMemory([&] {
              vx_bitmap bitmap;
              vx::Check(Decode(stream, 0, &bitmap));
            }),
            2);
}

std::string Encoded(const vx_bitmap& bitmap) {
  uint8_t* png = nullptr;
  std::size_t size = 0;
  EXPECT_EQ(vx_bitmap_encode_png(&bitmap, &png, &size), VX_OK);
  std::string stream(png, png + size);
  vx_free(png);
  return stream;
}

TEST_F(Png, EncodedPicturesReadBackTheSame) {
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    vx_bitmap bitmap;
    ASSERT_EQ(Decode(MakePng(kind, false), 0, &bitmap), STATUS_OK);
    const Bytes expected = RgbaOf(bitmap);
    vx_bitmap half;  // that says its resolution across alone
    ASSERT_EQ(Decode(MakePng(kind, false), 0, &half), STATUS_OK);
    half.record.YResolution = 0;
    EXPECT_EQ(Encoded(half).find("pHYs"), std::string::npos);
    const std::string encoded = Encoded(bitmap);
    const Bytes stream(encoded.begin(), encoded.end());
    EXPECT_EQ(ReferenceRgba(stream), expected);
    const std::string kResolution = "pHYs";
    const auto place = std::search(stream.begin(), stream.end(), kResolution.begin(), kResolution.end());
    ASSERT_GE(stream.end() - place, 12);
    EXPECT_EQ(png_get_uint_32(&*place + 4) * 10000 + png_get_uint_32(&*place + 8), 11811 * 10000 + 2835U);
    vx_bitmap back;
    ASSERT_EQ(Decode(stream, 0, &back), STATUS_OK);
    EXPECT_EQ(back.record.BitsPerPixel, bitmap.record.BitsPerPixel);
    EXPECT_EQ(back.record.XResolution * 1000 + back.record.YResolution, 300 * 1000 + 72);
  }
}

}  // namespace
