// The application interface where it does more than pass on what the filter says: which file is read,
// options, bands and orders, files that end early, and the words of failures.
#include <gtest/gtest.h>
#include <samples/Headers.h>
#include <samples/Icons.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>

#include "vx/image.hpp"

namespace {

using samples::Bytes;

constexpr int kWidth = 6;
constexpr int kHeight = 8;

/// An 8-bit bitmap whose rows, from the top, hold the indices first, first + 1, ...; the palette is grey.
Bytes GreyBitmap(unsigned int first) {
  Bytes pixels;
  for (unsigned int row = kHeight; row-- > 0;)
    pixels.insert(pixels.end(), 8, static_cast<uint8_t>(first + row));
  std::vector<samples::Color> greys(256);
  for (std::size_t i = 0; i < greys.size(); ++i) {
    const auto level = static_cast<uint8_t>(i);
    greys[i] = {level, level, level, 255};
  }
  samples::ImageHeader header;
  header.width = kWidth;
  header.height = kHeight;
  header.bits = 8;
  return samples::BitmapFile(samples::Encode(header), samples::EncodePalette(greys, 256, 4), pixels);
}

/// The red of each row's first pixel.
std::vector<int> Levels(const vx::Bitmap& bitmap) {
  const std::vector<uint8_t> rgba = bitmap.Rgba();
  std::vector<int> levels;
  for (std::size_t i = 0; i < rgba.size(); i += kWidth * 4) levels.push_back(rgba[i]);
  return levels;
}

std::vector<int> LevelsFrom(int first) {
  std::vector<int> levels(kHeight);
  std::iota(levels.begin(), levels.end(), first);
  return levels;
}

template <class Call>
std::string FailureOf(int status, Call&& call) {
  try {
    call();
  } catch (const vx::Error& error) {
    EXPECT_EQ(error.status(), status) << error.what();
    return error.what();
  }
  ADD_FAILURE() << "it worked";
  return {};
}

class Application : public testing::Test {
 protected:
  void TearDown() override {
    vx_redirect_files(nullptr, nullptr);
    vx_set_memory_limit(0);
    EXPECT_EQ(vx_memory_in_use(), 0U);
  }
};

TEST_F(Application, ReadsTheFileItOpenedWhateverBecomesOfItsName) {
  const std::filesystem::path path =
      std::filesystem::path(testing::TempDir()) / ("vx-application-" + std::to_string(getpid()) + ".bmp");
  const auto write = [&](const Bytes& bytes) {
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  };
  write(GreyBitmap(10));
  const vx::Source source = vx::Source::File(path);
  std::filesystem::remove(path);
  write(GreyBitmap(100));
  EXPECT_EQ(source.Describe().format, VX_FORMAT_BMP);
  EXPECT_EQ(Levels(source.Load()), LevelsFrom(10));
  std::filesystem::remove(path);
  EXPECT_EQ(Levels(source.Load()), LevelsFrom(10));
  EXPECT_NE(FailureOf(VX_OPEN_ERROR, [&] { (void)vx::Source::File(path); }).find("No such file"),
            std::string::npos);
}

/// A file of the application's own that loads another picture whenever it is read.
struct Nested {
  Bytes bytes = GreyBitmap(20);
  int reads = 0;
  int closed = 0;

  static Nested* Of(void* user) { return static_cast<Nested*>(user); }
  static int64_t ReadAt(void* user, void* /*file*/, void* buffer, uint32_t count, uint64_t position) {
    Nested* self = Of(user);
    ++self->reads;
    const Bytes inner = GreyBitmap(50);
    EXPECT_EQ(Levels(vx::Source::Memory(inner).Load()), LevelsFrom(50));
    if (position >= self->bytes.size()) return 0;
    const std::size_t portion =
        std::min<std::size_t>(count, self->bytes.size() - static_cast<std::size_t>(position));
    std::memcpy(buffer, self->bytes.data() + position, portion);
    return static_cast<int64_t>(portion);
  }
};

TEST_F(Application, ReadsThroughFunctionsThatThemselvesLoad) {
  Nested nested;
  const vx_file_functions functions = {
      [](void* user, const char* name, int) { return std::strcmp(name, "it") == 0 ? user : nullptr; },
      Nested::ReadAt,
      nullptr,
      [](void* user, void*) { return static_cast<int64_t>(Nested::Of(user)->bytes.size()); },
      nullptr,
      [](void* user, void*) { return ++Nested::Of(user)->closed, 0; }};
  vx::Check(vx_redirect_files(&functions, &nested));
  FailureOf(VX_OPEN_ERROR, [] { (void)vx::Source::File("other"); });
  {
    const vx::Source source = vx::Source::File("it");
    vx::Check(vx_redirect_files(nullptr, nullptr));
    EXPECT_EQ(Levels(source.Load()), LevelsFrom(20)) << "a source keeps the functions it was opened with";
    EXPECT_GT(nested.reads, 0);
    EXPECT_EQ(nested.closed, 0);
  }
  EXPECT_EQ(nested.closed, 1);
}

TEST_F(Application, DeliversTheOrderAskedFor) {
  for (const bool is565 : {true, false}) {
    samples::ImageHeader header;
    header.width = 256;
    header.height = 1;
    header.bits = 16;
    header.compression = samples::Compression::BitFields;
    const samples::Masks masks =
        is565 ? samples::Masks{0xF800, 0x07E0, 0x001F} : samples::Masks{0x7C00, 0x03E0, 0x001F};
    Bytes pixels;
    for (uint32_t i = 0; i < 256; ++i) samples::Append16(pixels, i * 40503);
    const Bytes file = samples::BitmapFile(samples::Encode(header), samples::Encode(masks), pixels);
    const vx::Source source = vx::Source::Memory(file);
    const vx::Bitmap asIs = source.Load();
    EXPECT_EQ(asIs.Describe().color_order, is565 ? VX_ORDER_565 : VX_ORDER_BGR);
    for (const int order : {VX_ORDER_565, VX_ORDER_BGR}) {
      vx::LoadOptions options;
      options.color_order = order;
      const vx::Bitmap converted = source.Load(options);
      EXPECT_EQ(converted.Describe().color_order, order);
      const std::vector<uint8_t> before = asIs.Rgba();
      const std::vector<uint8_t> after = converted.Rgba();
      for (std::size_t i = 0; i < before.size(); ++i) {
        // Green may lose its sixth bit; nothing else may change.
        ASSERT_LE(std::abs(before[i] - after[i]), i % 4 == 1 ? 5 : 0) << "byte " << i;
      }
      ASSERT_EQ(before[255 * 4 + 1] == 255, after[255 * 4 + 1] == 255);
    }
  }
}

TEST_F(Application, KnowsItsPages) {
  const Bytes bitmap = GreyBitmap(0);
  const samples::Picture moon = samples::MoonBadge(16);
  const Bytes icon =
      samples::IconFile(samples::IconType::Icon, {samples::AlphaPage(moon), samples::PngPage(moon)});
  for (const int page : {-1, 0, 2}) {
    FailureOf(VX_BAD_PAGE, [&] { (void)vx::Source::Memory(bitmap).Describe(page); });
  }
  const vx::Source source = vx::Source::Memory(icon, "moon.ico");
  EXPECT_EQ(source.Describe(2).page_count, 2);
  EXPECT_STREQ(source.Describe(2).compression, "PNG");
  EXPECT_EQ(FailureOf(VX_BAD_PAGE, [&] { (void)source.Load(3); }),
            "STATUS_BAD_PAGE: moon.ico has no page 3: its pages are 1 to 2");
  // The second page's directory entry may claim any depth: what is described is one that bitmaps have.
  for (const unsigned int depth : {0U, 3U, 255U}) {
    Bytes odd = icon;
    odd[6 + 16 + 6] = static_cast<uint8_t>(depth);
    EXPECT_EQ(vx::Source::Memory(odd).Describe(2).bits_per_pixel, 32);
    EXPECT_EQ(vx::Source::Memory(odd).Load(2).Rgba(), moon.Rgba());
  }
}

TEST_F(Application, HoldsPicturesAgainstTheLimit) {
  const Bytes file = GreyBitmap(0);
  const vx::Source source = vx::Source::Memory(file);
  vx_set_memory_limit(vx_memory_in_use() + kHeight * 8 - 1);
  const std::string what = FailureOf(VX_NO_MEMORY, [&] { (void)source.Load(); });
  EXPECT_NE(what.find("needs 64 bytes"), std::string::npos) << what;
  // From nothing upwards: every allocation fails once, until none does.
  bool loaded = false;
  for (uint64_t more = 0; more < 300000 && !loaded; more += 61) {
    vx_set_memory_limit(vx_memory_in_use() + more);
    vx_bitmap* bitmap = nullptr;
    const int status = vx_load(source.Get(), nullptr, &bitmap);
    ASSERT_TRUE(status == VX_OK || status == VX_NO_MEMORY) << vx_status_name(status) << more;
    loaded = status == VX_OK;
    vx_bitmap_free(bitmap);
  }
  EXPECT_TRUE(loaded);
}

TEST_F(Application, RowsThatAreMissingAreBlankNotCopies) {
  Bytes file = GreyBitmap(100);
  file.resize(file.size() - 3 * 8 - 5);  // the last stored rows are the top ones
  const vx::Source source = vx::Source::Memory(file, "cut.bmp");
  const std::string what = FailureOf(VX_READ_ERROR, [&] { (void)source.Load(); });
  EXPECT_NE(what.find("cut.bmp: the file ends at byte " + std::to_string(file.size())), std::string::npos)
      << what;
  vx::LoadOptions options;
  options.allow_truncated = 1;
  EXPECT_EQ(Levels(source.Load(options)), (std::vector<int>{0, 0, 0, 103, 104, 105, 106, 107}));

  file.resize(file.size() + 3 * 8 - 3);  // only the top row is short, which is never an error
  const std::vector<uint8_t> top = vx::Source::Memory(file).Load().Rgba();
  EXPECT_EQ(std::vector<int>({top[0], top[1 * 4], top[5 * 4]}), (std::vector<int>{0, 0, 0}));
}

TEST_F(Application, RefusesOptionsOutOfTheirRange) {
  const Bytes file = GreyBitmap(0);
  const vx::Source source = vx::Source::Memory(file);
  const auto expect = [&](int status, auto&& change) {
    vx::LoadOptions options;
    change(options);
    FailureOf(status, [&] { (void)source.Load(options); });
  };
  expect(VX_BAD_PARAMETER, [](auto& o) { o.read_buffer_size = 3; });
  expect(VX_BAD_PARAMETER, [](auto& o) { o.read_buffer_size = -2; });
  expect(VX_BAD_PARAMETER, [](auto& o) { o.color_order = VX_ORDER_RGB; });
  vx_raw raw = {VX_FORMAT_RAW, 4, 4, 16, 0, 0, nullptr, 0, 0, 0, 0, 0};
  const auto expectRaw = [&](int status, auto&& change) {
    vx_raw changed = raw;
    change(changed);
    expect(status, [&](auto& o) { o.raw = &changed; });
  };
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.format = VX_FORMAT_BMP; });
  expectRaw(VX_BAD_DIMENSIONS, [](auto& r) { r.height = 0; });
  expectRaw(VX_BAD_DIMENSIONS, [](auto& r) { r.width = INT32_MAX; });
  expectRaw(VX_BAD_BPP, [](auto& r) { r.bits_per_pixel = 2; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.orientation = 2; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.offset = 0x80000000; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.palette_count = 1; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.has_masks = 1, r.bits_per_pixel = 32; });
  EXPECT_EQ(vx_load(nullptr, nullptr, nullptr), VX_BAD_PARAMETER);
  EXPECT_EQ(vx_describe(source.Get(), 1, nullptr), VX_BAD_PARAMETER);
  EXPECT_EQ(vx_open_memory(nullptr, 1, nullptr, nullptr), VX_BAD_PARAMETER);
}

TEST_F(Application, SaysWhereAFileIsWrong) {
  const Bytes good = GreyBitmap(0);
  struct {
    const char* what;
    int status;
    std::size_t at;
    uint8_t value;
    std::size_t size;
    const char* words;
  } const cases[] = {
      {"empty", VX_READ_ERROR, 0, 'B', 0, "the file is empty"},
      {"cut header", VX_BAD_FORMAT, 0, 'B', 30, "but the file ends at byte 30"},
      {"depth", VX_BAD_FORMAT, 28, 7, 9999, "at byte 14 (40 bytes) says 7 bits per pixel"},
      {"header length", VX_UNKNOWN_HEADER, 14, 13, 9999, "byte 14 says it is 13 bytes long"},
      {"pixel offset", VX_READ_ERROR, 12, 1, 9999, "start at byte 66614, but the file has 1142 bytes"},
      {"width", VX_BAD_DIMENSIONS, 21, 0x80, 9999, "-2147483642 x 8 pixels"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    Bytes file = good;
    file[each.at] = each.value;
    file.resize(std::min(file.size(), each.size));
    const std::string what = FailureOf(each.status, [&] { (void)vx::Source::Memory(file, "a.bmp").Load(); });
    EXPECT_NE(what.find(each.words), std::string::npos) << what;
    EXPECT_NE(what.find("a.bmp"), std::string::npos) << what;
  }
}

}  // namespace
