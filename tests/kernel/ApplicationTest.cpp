// The application interface where it does more than pass on what the filter says: which file is read,
// options, bands and orders, files that end early, and the words of failures.
#include <gtest/gtest.h>
#include <samples/Headers.h>
#include <samples/Icons.h>
#include <samples/Samples.h>

#include <numeric>

#include "../common/Failures.h"
#include "../common/Folder.h"
#include "../common/MemoryFile.h"

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

class Application : public testing::Test {
 protected:
  void TearDown() override {
    vx_redirect_files(nullptr, nullptr);
    vx_set_memory_limit(0);
    EXPECT_EQ(vx_memory_in_use(), 0U);
  }
};

TEST_F(Application, ReadsTheFileItOpenedWhateverBecomesOfItsName) {
  const Folder folder;
  const std::string path = folder / "a.bmp";
  const auto write = [&](const Bytes& bytes) { WriteFile(path, {bytes.begin(), bytes.end()}); };
  write(GreyBitmap(10));
  const vx::Source source = vx::Source::File(path);
  std::filesystem::remove(path);
  write(GreyBitmap(100));
  EXPECT_EQ(source.Describe().format, VX_FORMAT_BMP);
  EXPECT_EQ(Levels(source.Load()), LevelsFrom(10));
  std::filesystem::remove(path);
  EXPECT_EQ(Levels(source.Load()), LevelsFrom(10));
  ExpectFailure(VX_OPEN_ERROR, "No such file", [&] { (void)vx::Source::File(path); });
}

/// Opens the file through functions that know it as "it", and no other.
vx::Source Open(MemoryFile& file) {
  vx_file_functions functions = MemoryFile::kFunctions;
  functions.open = [](void* user, const char* name, int) {
    return name == std::string("it") ? user : nullptr;
  };
  vx::Check(vx_redirect_files(&functions, &file));
  ExpectFailure(VX_OPEN_ERROR, "", [] { (void)vx::Source::File("other"); });
  vx::Source source = vx::Source::File("it");
  vx::Check(vx_redirect_files(nullptr, nullptr));
  return source;
}

TEST_F(Application, ReadsThroughFunctionsThatThemselvesLoad) {
  const Bytes inner = GreyBitmap(50);
  int reads = 0;
  MemoryFile file = {.bytes = GreyBitmap(20)};
  file.read = [&](uint64_t) {
    ++reads;
    EXPECT_EQ(Levels(vx::Source::Memory(inner).Load()), LevelsFrom(50));
  };
  {
    const vx::Source source = Open(file);
    EXPECT_EQ(Levels(source.Load()), LevelsFrom(20)) << "a source keeps the functions it was opened with";
    EXPECT_GT(reads, 0);
    EXPECT_EQ(file.closed, 0);
  }
  EXPECT_EQ(file.closed, 1);
}

/// What becomes of a page: its description, and its pixels or why there are none.
std::string OutcomeOf(const vx::Source& source, int page) {
  vx_info info = {};
  std::string outcome = std::to_string(vx_describe(source.Get(), page, &info));
  outcome.append(reinterpret_cast<const char*>(&info), sizeof info);
  try {
    const std::vector<uint8_t> pixels = source.Load(page).Rgba();
    return outcome.append(pixels.begin(), pixels.end());
  } catch (const vx::Error& error) {
    return outcome + error.what();
  }
}

TEST_F(Application, ReadsWhatAFileBeginsWithOnce) {
  std::vector<samples::Sample> all = samples::All();
  all.emplace_back().bytes = samples::PngPage(samples::MoonBadge(16)).body;
  for (const samples::Sample& sample : all) {
    SCOPED_TRACE(sample.name);
    const bool isArray = sample.bytes[1] == 'A';
    const std::size_t offsetAt = isArray ? 24 : 10;
    const bool isBitmap = sample.raw.empty() && sample.bytes[0] == 'B';
    const uint64_t says = isBitmap ? sample.bytes[offsetAt] + 256U * sample.bytes[offsetAt + 1] : 0;
    const uint64_t pixelsAt = isBitmap ? std::max<uint64_t>(says, 26) : 0;
    int reads = 0;
    MemoryFile file = {.bytes = sample.bytes};
    file.read = [&](uint64_t position) { reads += position < pixelsAt ? 1 : 0; };
    for (const uint32_t most : {UINT32_MAX, 7U}) {
      file.most = most;
      const vx::Source source = Open(file);
      const vx::Source model = vx::Source::Memory(sample.bytes, "it");
      for (const int page : {1, 2, 1}) EXPECT_EQ(OutcomeOf(source, page), OutcomeOf(model, page)) << page;
      EXPECT_TRUE(most == 7 || reads == (isBitmap ? 1 : 0)) << reads << " reads before the pixels";
    }
  }
  int reads = 0;
  MemoryFile large = {.bytes = Bytes(5 << 20)};  // begins like an icon file
  large.most = UINT32_MAX;
  large.read = [&](uint64_t) { ++reads; };
  (void)Open(large);
  EXPECT_EQ(reads, 1);
  MemoryFile small = {
      .bytes = samples::IconFile(samples::IconType::Icon, {samples::AlphaPage(samples::MoonBadge(40))})};
  small.most = UINT32_MAX;
  std::vector<uint64_t> positions;
  small.read = [&](uint64_t position) { positions.push_back(position); };
  EXPECT_EQ(Open(small).Load().Describe().width, 40);
  EXPECT_EQ(positions, (std::vector<uint64_t>{0, 4096})) << "no byte of a small icon file is read twice";
  Bytes changing = GreyBitmap(0);  // whose owner may do so
  const vx::Source source = vx::Source::Memory(changing);
  EXPECT_EQ(source.Describe().width, kWidth);
  changing[18] = 1;
  EXPECT_EQ(source.Describe().width, 1);
}

int sizesAsked;

TEST_F(Application, LooksThroughADirectoryOnceForAllItsPages) {
  constexpr int kPages = 1000;
  Bytes icon = samples::IconFile(samples::IconType::Icon,
                                 std::vector(kPages, samples::AlphaPage(samples::MoonBadge(16))));
  icon.resize(5 << 20);  // too large to be held
  int reads = 0;
  MemoryFile file = {.bytes = icon};
  file.most = UINT32_MAX;
  file.read = [&](uint64_t) { ++reads; };
  vx_file_functions functions = MemoryFile::kFunctions;
  functions.size = [](void* user, void* opened) { return ++sizesAsked, MemoryFile::Size(user, opened); };
  sizesAsked = 0;
  vx::Check(vx_redirect_files(&functions, &file));
  {
    const vx::Source source = vx::Source::File("it");
    for (int page = 1; page <= kPages; ++page) {
      ASSERT_EQ(source.Describe(page).format, VX_FORMAT_ICO);
      ASSERT_EQ(source.DescribePage(page).is_png, 0);
    }
    EXPECT_EQ(source.DescribeDirectory().page_count, kPages);
  }
  EXPECT_LT(reads, 2 * kPages + 50) << "one to tell the file's kind, one to describe the page";
  EXPECT_EQ(sizesAsked, 1);
  // What lies behind the bytes asked for may be what cannot be read.
  functions.read_at = [](void* user, void* opened, void* buffer, uint32_t count, uint64_t position) {
    return position > 0 && count > 256 ? int64_t{-1}
                                       : MemoryFile::ReadAt(user, opened, buffer, count, position);
  };
  vx::Check(vx_redirect_files(&functions, &file));
  EXPECT_EQ(vx::Source::File("it").Describe(900).width, 16);
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
        const bool isRounded = is565 || order == VX_ORDER_BGR || i % 4 != 1;
        ASSERT_TRUE(isRounded || std::abs(before[i] - after[i]) <= 2) << "five bits fill six, byte " << i;
      }
      ASSERT_EQ(before[255 * 4 + 1] == 255, after[255 * 4 + 1] == 255);
    }
  }
  vx::LoadOptions options;
  options.color_order = VX_ORDER_565;
  const Bytes grey = GreyBitmap(10);  // to which that means nothing
  const vx::Bitmap bitmap = vx::Source::Memory(grey).Load(options);
  EXPECT_EQ(Levels(bitmap), LevelsFrom(10));
  EXPECT_EQ(bitmap.Row(kHeight - 1)[0], 10 + kHeight - 1);
  EXPECT_EQ(vx_bitmap_row(bitmap.Get(), kHeight), nullptr);
  EXPECT_EQ(vx_bitmap_row(bitmap.Get(), -1), nullptr);
}

TEST_F(Application, SortsChannelsOf32BitsThatAreWhole) {
  struct {
    const char* what;
    uint32_t headerSize;
    samples::Masks masks;
    uint32_t pixel;
    std::vector<uint8_t> shown;  ///< nothing: refused
  } const cases[] = {
      {"the usual", 40, {0xFF0000, 0xFF00, 0xFF, 0}, 0xEE112233, {0x11, 0x22, 0x33, 255}},
      {"the other way round", 40, {0xFF, 0xFF00, 0xFF0000, 0}, 0xEE112233, {0x33, 0x22, 0x11, 255}},
      {"ten bits, rounded", 40, {0x3FF00000, 0xFFC00, 0x3FF, 0}, 3 << 20 | 2 << 10 | 1023, {1, 0, 255, 255}},
      {"of a longer header", 56, {0xFF, 0xFF00, 0xFF0000, 0}, 0xEE112233, {0x33, 0x22, 0x11, 255}},
      {"of one that is too short", 48, {0xFF, 0xFF00, 0xFF0000, 0}, 0xEE112233, {}},
      {"a hole", 40, {0xF7, 0xFF00, 0xFF0000, 0}, 0x0000FF0F, {14, 255, 0, 255}},
      {"red in green", 40, {0x1FF, 0xFF00, 0xFF0000, 0}, 0x00000100, {128, 1, 0, 255}},
      {"no green", 40, {0xFF, 0, 0xFF0000, 0}, 0x00FFFFFF, {255, 0, 255, 255}},
      {"no colours", 40, {}, 0, {}},
      {"32 bits of alpha and blue", 124, {0, 0, 0xFFFFFFFF, 0xFFFFFFFF}, 0x80000000, {0, 0, 128, 128}},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    samples::ImageHeader header;
    header.size = each.headerSize;
    header.width = 1;
    header.height = 1;
    header.bits = 32;
    header.compression = samples::Compression::BitFields;
    header.masks = each.masks;
    Bytes pixels;
    samples::Append32(pixels, each.pixel);
    const Bytes masks = each.headerSize == 40 ? samples::Encode(each.masks) : Bytes{};
    const Bytes file = samples::BitmapFile(samples::Encode(header), masks, pixels);
    const vx::Source source = vx::Source::Memory(file);
    if (each.shown.empty()) {
      ExpectFailure(VX_BAD_FORMAT, "", [&] { (void)source.Load(); });
      continue;
    }
    const vx::Bitmap bitmap = source.Load();
    EXPECT_EQ(bitmap.Rgba(), each.shown);
    const bool isUsual = each.masks.red == 0xFF0000;
    EXPECT_EQ(bitmap.Row(0)[3], isUsual ? 0xEE : each.masks.alpha == 0 ? 0 : 128);
  }
}

TEST_F(Application, TakesPixelsAsTheyAre) {
  const std::vector<uint8_t> pixels = {1, 2,   3, 0, 4, 5,
                                       6, 255, 7, 8, 9, 255};  // alpha in the first row alone
  const vx::Bitmap bitmap = vx::Bitmap::FromRgba(1, 3, pixels.data());
  EXPECT_EQ(bitmap.Rgba(), pixels);
  EXPECT_EQ(bitmap.Describe().has_alpha, 1);
}

TEST_F(Application, KnowsItsPages) {
  const Bytes bitmap = GreyBitmap(0);
  const samples::Picture moon = samples::MoonBadge(16);
  const Bytes icon =
      samples::IconFile(samples::IconType::Icon, {samples::AlphaPage(moon), samples::PngPage(moon)});
  for (const int page : {-1, 0, 2}) {
    ExpectFailure(VX_BAD_PAGE, "", [&] { (void)vx::Source::Memory(bitmap).Describe(page); });
  }
  const vx::Source source = vx::Source::Memory(icon, "moon.ico");
  EXPECT_EQ(source.Describe(2).page_count, 2);
  EXPECT_STREQ(source.Describe(2).compression, "PNG");
  ExpectFailure(VX_BAD_PAGE, "moon.ico has no page 3: its pages are 1 to 2", [&] { (void)source.Load(3); });
  samples::Page unused = samples::AlphaPage(moon);  // whose fourth bytes are all 0
  for (std::size_t i = 40 + 3; i < 40 + 16 * 16 * 4; i += 4) unused.body[i] = 0;
  const Bytes plain = samples::IconFile(samples::IconType::Icon, {unused});
  EXPECT_EQ(vx::Source::Memory(plain).Load().Describe().has_alpha, 0);
  // The second page's directory entry may claim any depth: what is described is one that bitmaps have.
  for (const unsigned int depth : {0U, 3U, 255U}) {
    Bytes odd = icon;
    odd[6 + 16 + 6] = static_cast<uint8_t>(depth);
    EXPECT_EQ(vx::Source::Memory(odd).Describe(2).bits_per_pixel, 32);
    EXPECT_EQ(vx::Source::Memory(odd).Load(2).Rgba(), moon.Rgba());
  }
  Bytes damaged = icon;
  constexpr std::size_t kFirstBody = 6 + 2 * 16;
  damaged[kFirstBody] = 41;
  damaged[samples::IconFile(samples::IconType::Icon, {samples::AlphaPage(moon)}).size() + 16] = 0;
  const vx::Source twice = vx::Source::Memory(damaged, "moon.ico");
  ExpectFailure(VX_UNKNOWN_HEADER, "moon.ico, page 1: ", [&] { (void)twice.Load(1); });
  // Whatever is wrong with the last page:
  ExpectFailure(VX_BAD_PAGE, "no page 3", [&] { (void)twice.Load(3); });
  damaged = icon;
  damaged[damaged.size() - 20] ^= 1;  // in the stream's last checksum but one
  ExpectFailure(VX_BAD_FORMAT, "PNG stream is", [&] { (void)vx::Source::Memory(damaged).Load(2); });
}

TEST_F(Application, HoldsPicturesAgainstTheLimit) {
  const Bytes file = GreyBitmap(0);
  const vx::Source source = vx::Source::Memory(file);
  vx_set_memory_limit(vx_memory_in_use() + kHeight * 8 - 1);
  ExpectFailure(VX_NO_MEMORY, "needs 64 bytes", [&] { (void)source.Load(); });
  vx_set_memory_limit(0);
  EXPECT_GT(FailuresForWantOfMemory([&] { (void)source.Load(); }), 2);
}

TEST_F(Application, RowsThatAreMissingAreBlankNotCopies) {
  Bytes file = GreyBitmap(100);
  file.resize(file.size() - 3 * 8 - 5);  // the last stored rows are the top ones
  const vx::Source source = vx::Source::Memory(file, "cut.bmp");
  ExpectFailure(VX_READ_ERROR, "cut.bmp: the file ends at byte " + std::to_string(file.size()),
                [&] { (void)source.Load(); });
  vx::LoadOptions options;
  options.allow_truncated = 1;
  for (const unsigned int flags : {0U, unsigned{VX_LOAD_AS_FILTER}}) {
    options.flags = flags;
    const vx::Bitmap cut = source.Load(options);
    EXPECT_EQ(Levels(cut), (std::vector<int>{0, 0, 0, 103, 104, 105, 106, 107}));
    EXPECT_EQ(cut.Describe().rows_present, 4);
  }

  file.resize(file.size() + 3 * 8 - 3);  // only the top row is short, which is never an error
  const std::vector<uint8_t> top = vx::Source::Memory(file).Load().Rgba();
  EXPECT_EQ(std::vector<int>({top[0], top[1 * 4], top[5 * 4]}), (std::vector<int>{0, 0, 0}));
  file.resize(file.size() - 1);  // nor is padding of the row before it
  EXPECT_EQ(vx::Source::Memory(file).Load().Describe().rows_present, 7);
}

TEST_F(Application, RefusesOptionsOutOfTheirRange) {
  const Bytes file = GreyBitmap(0);
  const vx::Source source = vx::Source::Memory(file);
  const auto expect = [&](int status, auto&& change) {
    vx::LoadOptions options;
    change(options);
    ExpectFailure(status, "", [&] { (void)source.Load(options); });
  };
  expect(VX_BAD_PARAMETER, [](auto& o) { o.read_buffer_size = 3; });
  expect(VX_BAD_PARAMETER, [](auto& o) { o.read_buffer_size = -2; });
  expect(VX_BAD_PARAMETER, [](auto& o) { o.color_order = VX_ORDER_RGB; });
  expect(VX_BAD_PARAMETER, [](auto& o) { o.alpha = VX_ALPHA_FORCE + 1; });
  expect(VX_BAD_PARAMETER, [](auto& o) { o.flags = VX_LOAD_TO_SRGB << 1; });
  expect(VX_BAD_PARAMETER, [](auto& o) { o.band_first = 1; });  // and no rows
  vx_raw raw = {VX_FORMAT_RAW, 4, 4, 16, 0, 0, nullptr, 0, 0, 0, 0, 0};
  const auto expectRaw = [&](int status, auto&& change) {
    vx_raw changed = raw;
    change(changed);
    expect(status, [&](auto& o) { o.raw = &changed; });
  };
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.format = VX_FORMAT_BMP; });
  expectRaw(VX_BAD_DIMENSIONS, [](auto& r) { r.height = 0; });
  expectRaw(VX_BAD_DIMENSIONS, [](auto& r) { r.width = 1 << 28; });
  expectRaw(VX_BAD_DIMENSIONS, [](auto& r) { r.height = 1 << 28; });
  expectRaw(VX_BAD_BPP, [](auto& r) { r.bits_per_pixel = 2; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.orientation = 2; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.offset = 0x80000000; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.palette_count = 1; });
  const uint8_t palette[4 * 257] = {};
  expectRaw(VX_BAD_PARAMETER, [&](auto& r) { r.palette_count = 257, r.palette = palette; });
  expectRaw(VX_BAD_PARAMETER, [](auto& r) { r.has_masks = 1, r.bits_per_pixel = 32; });
  EXPECT_EQ(vx_load(nullptr, nullptr, nullptr), VX_BAD_PARAMETER);
  EXPECT_EQ(vx_describe(source.Get(), 1, nullptr), VX_BAD_PARAMETER);
  EXPECT_EQ(vx_open_memory(nullptr, 1, nullptr, nullptr), VX_BAD_PARAMETER);
  vx_source* left = source.Get();
  EXPECT_EQ(vx_open_memory(&raw, UINT32_MAX, nullptr, &left), VX_BAD_PARAMETER);
  left = source.Get();
  EXPECT_EQ(vx_open_file("/nonesuch/a.bmp", &left), VX_OPEN_ERROR);
  EXPECT_EQ(left, nullptr);
}

TEST_F(Application, ReadsHeaderlessPixelsWhereAndAsItIsTold) {
  Bytes file(70000);
  file.push_back(1);
  const uint8_t palette[] = {1, 2, 3, 0, 10, 20, 30, 0};  // blue first
  const vx_raw raw = {VX_FORMAT_RAW, 1, 1, 8, 0, 70000, palette, 2, 0, 0, 0, 0};
  vx::LoadOptions options;
  options.raw = &raw;
  EXPECT_EQ(vx::Source::Memory(file).Load(options).Rgba(), (std::vector<uint8_t>{30, 20, 10, 255}));

  file.resize(16 + 5, 7);  // two rows and a bit
  const vx_raw cut = {VX_FORMAT_RAW, 8, 4, 8, 0, 0, nullptr, 0, 0, 0, 0, 0};
  options.raw = &cut;
  options.allow_truncated = 1;
  EXPECT_EQ(vx::Source::Memory(file).Load(options).Describe().rows_present, 2);
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
      {"just behind the end", VX_READ_ERROR, 10, 0x77, 9999, "would start at byte 1143"},
      {"width", VX_BAD_DIMENSIONS, 21, 0x80, 9999, "-2147483642 x 8 pixels"},
      {"longest side", VX_BAD_DIMENSIONS, 21, 0x10, 9999, "268435462 x 8 pixels; a side can have 1 to"},
      {"short header", VX_BAD_FORMAT, 14, 11, 9999, "says it is 11 bytes long; the shortest has 12"},
      {"core header", VX_BAD_DIMENSIONS, 14, 12, 9999, "its header says 6 x 0 pixels"},
      {"signature", VX_BAD_FORMAT, 0, 0x5A, 9999, "begins with the bytes 5A 4D"},
      {"array", VX_BAD_FORMAT, 1, 'A', 9999, "the image header at byte 28"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.what);
    Bytes file = good;
    file[each.at] = each.value;
    file.resize(std::min(file.size(), each.size));
    ExpectFailure(each.status, std::string("a.bmp: "),
                  [&] { (void)vx::Source::Memory(file, "a.bmp").Load(); });
    EXPECT_NE(std::string(vx_error_detail()).find(each.words), std::string::npos) << vx_error_detail();
  }
  const auto load = [] { (void)vx::Source::Memory(Bytes{}, std::string(600, 'a') + "end.bmp").Load(); };
  ExpectFailure(VX_READ_ERROR, "...aaa", load);
  ExpectFailure(VX_READ_ERROR, "aend.bmp: the file is empty", load);
}

TEST_F(Application, HasWordsForNumbersItDoesNotKnow) {
  EXPECT_STREQ(vx_status_name(99), "unknown status");
  EXPECT_STREQ(vx_status_text(99), "This number is no status of this library.");
  EXPECT_STREQ(vx_status_name(VX_LAST_PAGE), "STATUS_LAST_PAGE");
  EXPECT_STREQ(vx_format_name(99), "unknown");
  vx_format_limits limits = {1, 2};
  EXPECT_EQ(vx_format_describe(99, &limits), VX_NOT_SUPPORTED);
  EXPECT_TRUE(limits.depths == 0 && limits.largest_side == 0);
}

}  // namespace
