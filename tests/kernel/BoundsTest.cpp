// What has no bounds of its own: streams that go on, and pictures with sides that nothing else takes.
#include <gtest/gtest.h>
#include <samples/Headers.h>

#include <array>
#include <cmath>
#include <random>

#include "../common/Failures.h"

namespace {

class Bounds : public testing::Test {
 protected:
  void TearDown() override {
    vx_set_memory_limit(0);
    EXPECT_EQ(vx_memory_in_use(), 0U);
  }
};

samples::ImageHeader Header(int width, int height, int bits) {
  samples::ImageHeader header;
  header.width = width;
  header.height = height;
  header.bits = bits;
  return header;
}

/// A stream that begins with some bytes, and then is zeros up to its end, or fails.
struct Stream {
  std::string start;
  uint64_t size = 0;  // bytes before the end
  uint32_t chunk = UINT32_MAX;
  bool fails = false;  // at the end
  uint64_t taken = 0;

  static int64_t Read(void* user, void* buffer, uint32_t count) {
    auto* self = static_cast<Stream*>(user);
    const uint64_t most = std::min({uint64_t{count}, uint64_t{self->chunk}, self->size - self->taken});
    for (uint64_t i = 0; i < most; ++i, ++self->taken) {
      static_cast<char*>(buffer)[i] =
          self->taken < self->start.size() ? self->start[static_cast<size_t>(self->taken)] : '\0';
    }
    return most == 0 && self->fails ? -1 : static_cast<int64_t>(most);
  }
};

TEST_F(Bounds, StreamsAreReadAsFarAsTheyAreWorthIt) {
  constexpr uint64_t kEndless = UINT64_MAX;
  constexpr uint64_t kLittle = 64 * 1024;
  constexpr uint64_t kLimit = 1 << 20;
  struct Case {
    const char* what;
    Stream stream;
    unsigned int flags;
    int status;
    uint64_t mostTaken;
  };
  const Case cases[] = {
      {"zeros", {"", kEndless}, 0, VX_OK, kLittle},
      {"zeros, byte by byte", {"", kEndless, 1}, 0, VX_OK, 3},
      {"text", {"text", kEndless}, 0, VX_OK, kLittle},
      {"nearly PNG", {"\x89PNGx", kEndless}, 0, VX_OK, kLittle},
      {"nothing", {"", 0}, 0, VX_OK, 0},
      {"a bitmap's start, byte by byte", {"BM", 1000, 1}, 0, VX_OK, 1000},
      {"any bytes", {"text", 1000}, VX_STREAM_HEADERLESS, VX_OK, 1000},
      {"as long as memory", {"BM", kLimit}, 0, VX_OK, kLimit},
      {"longer by one", {"BM", kLimit + 1}, 0, VX_NO_MEMORY, kLimit + 1},
      {"endless after a cursor's start", {std::string("\0\0\2\0", 4), kEndless}, 0, VX_NO_MEMORY, kLimit + 1},
      {"broken", {"BM", 100000, 777, true}, 0, VX_READ_ERROR, 100000},
      {"unknown flags", {"BM", 10}, 2, VX_BAD_PARAMETER, 0},
  };
  for (const Case& each : cases) {
    SCOPED_TRACE(each.what);
    Stream stream = each.stream;
    Stream empty;
    const vx::Source other = vx::Source::Stream(Stream::Read, &empty, "s");
    const uint64_t before = vx_memory_in_use() * 2 - 1;  // with the record, but none of the bytes
    vx_set_memory_limit(before + kLimit);
    vx_source* source = nullptr;
    EXPECT_EQ(vx_open_stream(Stream::Read, &stream, "s", each.flags, &source), each.status);
    EXPECT_EQ(source != nullptr, each.status == VX_OK);
    EXPECT_LE(stream.taken, each.mostTaken);
    const std::string detail = vx_error_detail();
    EXPECT_EQ(each.status == VX_NO_MEMORY, detail.find("memory limit of") != std::string::npos) << detail;
    if (each.status == VX_OK) {
      EXPECT_GE(vx_memory_in_use() - before, std::min(stream.taken, kLimit)) << "every byte counts";
      EXPECT_LE(vx_memory_in_use() - before, std::max<uint64_t>(stream.taken, 1)) << "none that is not there";
    }
    vx_close(source);
  }
}

TEST_F(Bounds, AStreamIsTheFileThatItBrings) {
  const samples::Bytes file =
      samples::BitmapFile(samples::Encode(Header(300, 300, 24)), {}, samples::Bytes(270000, 7));
  Stream stream = {{file.begin(), file.end()}, file.size(), 4096};
  const vx::Source source = vx::Source::Stream(Stream::Read, &stream);
  EXPECT_EQ(source.Load().Rgba(), vx::Source::Memory(file).Load().Rgba());
}

double LightOf(int level) {
  const double coded = level / 255.0;
  return coded <= 0.04045 ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4);
}

int LevelOf(double light) {
  return static_cast<int>(
      std::lround(255 * (light <= 0.0031308 ? light * 12.92 : 1.055 * std::pow(light, 1 / 2.4) - 0.055)));
}

TEST_F(Bounds, ShrinkingTakesTheMeansOfLight) {
  struct Case {
    int width, height, largest, factor;
  };
  // Wider than what is read at once, and no multiple of the factor; higher than wide; all in one; as it is.
  for (const Case& each : {Case{2500, 7, 500, 5}, Case{2051, 3, 700, 3}, Case{3, 40, 7, 6}, Case{9, 9, 1, 9},
                           Case{1500, 2, 1500, 1}}) {
    SCOPED_TRACE(each.width);
    const auto width = static_cast<size_t>(each.width);
    std::mt19937 random(5);
    std::vector<uint8_t> rgba(4 * width * static_cast<size_t>(each.height));
    for (size_t i = 0; i < rgba.size(); ++i) {
      rgba[i] = static_cast<uint8_t>(i % 4 == 3 && random() % 3 == 0 ? 255 * (random() % 2) : random());
    }
    const vx::Bitmap smaller =
        vx::Bitmap::FromRgba(each.width, each.height, rgba.data()).Shrink(each.largest);
    const vx_bitmap_info info = smaller.Describe();
    const int n = each.factor;
    ASSERT_EQ(info.width, (each.width + n - 1) / n);
    ASSERT_EQ(info.height, (each.height + n - 1) / n);
    EXPECT_EQ(info.has_alpha, 1);
    const std::vector<uint8_t> got = smaller.Rgba();
    EXPECT_TRUE(n > 1 || got == rgba);
    for (int i = 0; i < info.width * info.height; ++i) {
      std::array<double, 4> sum = {};
      int count = 0;
      for (int y = i / info.width * n; y < std::min((i / info.width + 1) * n, each.height); ++y) {
        for (int x = i % info.width * n; x < std::min((i % info.width + 1) * n, each.width); ++x, ++count) {
          const uint8_t* pixel = &rgba[4 * (static_cast<size_t>(y) * width + static_cast<size_t>(x))];
          for (size_t c = 0; c < 3; ++c) sum[c] += LightOf(pixel[c]) * pixel[3];
          sum[3] += pixel[3];
        }
      }
      const uint8_t* mean = &got[4 * static_cast<size_t>(i)];
      ASSERT_EQ(mean[3], std::lround(sum[3] / count)) << i;
      for (size_t c = 0; c < 3 && sum[3] > 0; ++c) ASSERT_NEAR(mean[c], LevelOf(sum[c] / sum[3]), 1) << i;
    }
  }
}

TEST_F(Bounds, ShrinkingTakesLittleBesideWhatItMakes) {
  // The pixels of bits and of an icon's mask, which are read in pieces: the right half is white.
  constexpr int kWidth = 1 << 20;
  samples::Bytes row(kWidth / 8);
  std::fill(row.begin() + kWidth / 16, row.end(), uint8_t{255});
  const samples::Bytes file =
      samples::BitmapFile(samples::Encode(Header(kWidth, 1, 1)),
                          samples::EncodePalette({{0, 0, 0, 255}, {255, 255, 255, 255}}, 2, 4), row);
  const vx::Bitmap wide = vx::Source::Memory(file).Load();
  vx_set_memory_limit(vx_memory_in_use() + 4096);
  const std::vector<uint8_t> means = wide.Shrink(16).Rgba();
  ASSERT_EQ(means.size(), 64U);
  EXPECT_EQ((std::vector<int>{means[0], means[28], means[32], means[60], means[63]}),
            (std::vector<int>{0, 0, 255, 255, 255}));
  ExpectFailure(VX_NO_MEMORY, "needs 2097152 bytes", [&] { (void)wide.Shrink(1 << 19); });
  vx_bitmap* none = nullptr;
  EXPECT_EQ(vx_bitmap_shrink(wide.Get(), 0, &none), VX_BAD_PARAMETER);
}

TEST_F(Bounds, RowsAsLongAsPicturesCount) {
  // What diffuses over a row owes its pixels 24 bytes each; the row itself takes 3.
  constexpr int kWidth = 1 << 18;
  std::vector<uint8_t> rgba(size_t{4} * kWidth);
  std::mt19937 random(6);
  for (uint8_t& byte : rgba) byte = static_cast<uint8_t>(random());
  const vx::Bitmap noise = vx::Bitmap::FromRgba(kWidth, 1, rgba.data());
  vx_set_memory_limit(vx_memory_in_use() + size_t{16} * kWidth);
  ExpectFailure(VX_NO_MEMORY, "memory limit of",
                [&] { (void)noise.Save(vx::SaveOptions(VX_FORMAT_BMP, 8)); });
  vx_set_memory_limit(0);
  (void)noise.Save(vx::SaveOptions(VX_FORMAT_BMP, 8));
}

}  // namespace
