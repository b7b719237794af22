// Pictures that are compressed in one go: read back by libpng, and their filters beside plain ones.
#include "png/PngWhole.h"

#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <numeric>
#include <set>
#include <vector>

#include "Leaks.h"
#include "png/PngFilter.h"

namespace {

using Bytes = std::vector<unsigned char>;

unsigned char Random(unsigned int* seed) {
  return static_cast<unsigned char>((*seed = *seed * 1103515245 + 12345) >> 16);
}

struct Kind {
  const char* name;
  int width, height, paletteDepth;
  bool hasAlpha, isNoise;
  bool isWhole;  ///< where libdeflate is there
};
constexpr Kind kKinds[] = {
    {"rgb noise", 419, 421, 0, false, true, true},  // 529197 bytes
    {"rgb flat", 421, 431, 0, false, false, true},
    {"rgba noise", 367, 373, 0, true, true, true},
    {"rgba flat", 367, 373, 0, true, false, true},
    {"palette 8", 1023, 512, 8, false, true, true},  // 524288 bytes, the fewest
    {"palette 8, a row less", 1023, 511, 8, false, true, false},
    {"palette 4 noise", 1031, 1031, 4, false, true, true},
    {"palette 4 flat", 1031, 1031, 4, false, false, true},
    {"palette 1", 2053, 2069, 1, false, true, true},
    {"rgb small", 71, 67, 0, false, true, false},
};

/// A picture and what it is made of.
struct Drawn {
  explicit Drawn(const Kind& kind)
      : bits(kind.paletteDepth == 0 ? 32 : kind.paletteDepth),
        rowBytes((static_cast<std::size_t>(kind.width * bits) + 7) / 8),
        rows(rowBytes * static_cast<std::size_t>(kind.height), 0x51) {
    unsigned int seed = 7;
    if (kind.isNoise) std::generate(rows.begin(), rows.end(), [&] { return Random(&seed); });
    for (RGBQUAD& color : palette) color = {Random(&seed), Random(&seed), Random(&seed), 0};
    picture.width = kind.width;
    picture.height = kind.height;
    picture.paletteDepth = kind.paletteDepth;
    picture.hasAlpha = kind.hasAlpha;
    picture.palette = palette;
    picture.colorCount = 1 << (bits & 15);
    picture.owner = this;
    picture.row = [](const void* owner, int row, unsigned char*) {
      const auto* self = static_cast<const Drawn*>(owner);
      return self->rows.data() + self->rowBytes * static_cast<std::size_t>(row);
    };
  }
  Drawn(const Drawn&) = delete;

  [[nodiscard]] Bytes Rgba() const {
    Bytes rgba;
    for (std::size_t row = 0; row < rows.size(); row += rowBytes) {
      for (int x = 0; x < picture.width; ++x) {
        const unsigned char* from = &rows[row + static_cast<std::size_t>(x * bits / 8)];
        const int entry = bits == 32 ? 0 : (*from >> (8 - bits - x * bits % 8)) & ((1 << bits) - 1);
        const RGBQUAD& color = palette[entry];
        const unsigned char listed[] = {color.Red, color.Green, color.Blue, 255};
        rgba.insert(rgba.end(), bits == 32 ? from : listed, (bits == 32 ? from : listed) + 4);
        if (!picture.hasAlpha) rgba.back() = 255;
      }
    }
    return rgba;
  }
  [[nodiscard]] Bytes Encoded() const {
    Bytes stream;
    const auto append = [](void* owner, const unsigned char* bytes, std::size_t count) {
      auto* to = static_cast<Bytes*>(owner);
      to->insert(to->end(), bytes, bytes + count);
      return true;
    };
    EXPECT_EQ(vxkrn::EncodePng(picture, {&stream, append}), STATUS_OK);
    return stream;
  }

  int bits;
  std::size_t rowBytes;
  Bytes rows;
  RGBQUAD palette[256];
  vxkrn::PngPicture picture = {};
};

Bytes ReadByLibpng(const Bytes& stream) {
  png_image image = {};
  image.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_memory(&image, stream.data(), stream.size()), 0) << image.message;
  image.format = PNG_FORMAT_RGBA;
  Bytes rgba(PNG_IMAGE_SIZE(image));
  EXPECT_NE(png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr), 0) << image.message;
  EXPECT_EQ(image.warning_or_error, 0U) << image.message;
  return rgba;
}

using PngWhole = Leaks;

TEST_F(PngWhole, PicturesReadBackTheSameWithMemoryAndWithout) {
  for (const Kind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    const Drawn drawn(kind);
    const Bytes expected = drawn.Rgba();
    const Bytes stream = drawn.Encoded();
    EXPECT_TRUE(ReadByLibpng(stream) == expected);
    EXPECT_TRUE(drawn.Encoded() == stream) << "the same bytes";
    const vxkrn::PngPixels pixels = vxkrn::CompressWhole(drawn.picture);
    ASSERT_EQ(pixels.size != 0, VX_HAS_LIBDEFLATE && kind.isWhole);
    if (pixels.size != 0) {
      // A zlib stream tells how hard it was tried: 2 as usual, 3 hardest. Indices are not looked at.
      EXPECT_EQ(pixels.bytes[1] >> 6, kind.isNoise && kind.paletteDepth == 0 ? 3 : 2);
    }
    vxkrn::memory::SetLimit(vxkrn::memory::InUse() + (20U << 20));
    EXPECT_EQ(vxkrn::CompressWhole(drawn.picture).size, 0U);
    EXPECT_TRUE(ReadByLibpng(drawn.Encoded()) == expected);
    vxkrn::memory::SetLimit(vxkrn::memory::kDefaultLimit);
  }
}

TEST_F(PngWhole, LargePicturesGoRowByRow) {
  Drawn drawn({"", 4095, 1, 8, false, false, false});
  drawn.picture.height = 6145;  // 4096 bytes more than 24 MiB
  drawn.picture.row = [](const void*, int, unsigned char*) -> const unsigned char* { std::abort(); };
  EXPECT_EQ(vxkrn::CompressWhole(drawn.picture).size, 0U);
}

int Predicted(int filter, int left, int above, int corner) {
  if (filter == 4) {
    const int guess = left + above - corner;
    const int byLeft = std::abs(guess - left), byAbove = std::abs(guess - above);
    const int byCorner = std::abs(guess - corner);
    if (byLeft <= byAbove && byLeft <= byCorner) return left;
    return byAbove <= byCorner ? above : corner;
  }
  const int others[] = {0, left, above, (left + above) / 2};
  return others[filter];
}

/// What the filter predicts of byte i, beyond whose pixel on the left there are zeros.
int PredictedAt(int filter, const Bytes& row, const Bytes& above, std::size_t i, std::size_t pixel) {
  const bool isFirst = i < pixel;
  return Predicted(filter, isFirst ? 0 : row[i - pixel], above[i], isFirst ? 0 : above[i - pixel]);
}

/// A row filtered plainly. @return the distance of its bytes from 0
uint64_t FilterPlainly(const Bytes& row, const Bytes& above, std::size_t pixel, Bytes* filtered) {
  uint64_t least = UINT64_MAX;
  for (int filter = 0; filter < 5; ++filter) {
    Bytes tried = {static_cast<unsigned char>(filter)};
    uint64_t sum = 0;
    for (std::size_t i = 0; i < row.size(); ++i) {
      tried.push_back(static_cast<unsigned char>(row[i] - PredictedAt(filter, row, above, i, pixel)));
      sum += static_cast<uint64_t>(std::abs(static_cast<signed char>(tried.back())));
    }
    if (sum < least) {
      least = sum;
      *filtered = tried;
    }
  }
  return least;
}

TEST_F(PngWhole, FiltersAreThePlainOnesAtEveryLength) {
  std::vector<std::size_t> lengths(71);
  std::iota(lengths.begin(), lengths.end(), std::size_t{0});
  lengths.insert(lengths.end(), {1023, 1024, 1025, 2100});
  std::set<int> used;
  unsigned int seed = 3;
  for (const std::size_t length : lengths) {
    for (const std::size_t pixel : {3U, 4U}) {
      SCOPED_TRACE(testing::Message() << length << " bytes, pixels of " << pixel);
      vxkrn::PngFilter filter(length, pixel);
      ASSERT_TRUE(filter.HasMemory());
      uint64_t distance = 0;
      Bytes above(length);
      for (const int easiest : {-1, 4, 3, 1, 2, -1, 4, 0, 3}) {  // the filter that leaves little; -1: noise
        Bytes row(length), expected, filtered(1 + length);
        for (std::size_t i = 0; i < length; ++i) {
          const int near = easiest < 0 ? Random(&seed) : Random(&seed) % 3 - 1;
          const int guess = easiest < 0 ? 0 : PredictedAt(easiest, row, above, i, pixel);
          row[i] = static_cast<unsigned char>(guess + near);
        }
        std::copy(row.begin(), row.end(), filter.Row());
        filter.Filter(filtered.data());
        distance += FilterPlainly(row, above, pixel, &expected);
        EXPECT_EQ(filtered, expected);
        used.insert(filtered[0]);
        above = row;
      }
      EXPECT_EQ(filter.Distance(), distance);
    }
  }
  EXPECT_EQ(used.size(), 5U);
}

}  // namespace
