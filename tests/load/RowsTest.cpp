// Rows that come one by one are those of the picture that is loaded whole, in whatever order they are asked
// for, and everything that is told of it is the same.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <random>
#include <set>

#include "../common/Failures.h"
#include "../common/Folder.h"
#include "Loading.h"

namespace {

using loading::Bytes;

/// A picture as it is told of, and its rows.
struct Told {
  int status = VX_OK;
  std::string words;  // of a failure
  std::vector<int> facts;
  Bytes palette, profile, rgba, native;

  bool operator==(const Told&) const = default;
};

void TellOf(const vx::Bitmap& picture, Told& told) {
  const vx_bitmap_info i = picture.Describe();
  told.facts = {i.width, i.height, i.bits_per_pixel, i.bytes_per_line, i.color_order,
                i.x_dpi, i.y_dpi,  i.palette_count,  i.has_alpha,      i.has_region,
                i.hot_x, i.hot_y,  i.rows_present,   i.color_space};
  for (const vx_remark& remark : vx::Remarks()) {
    told.facts.insert(told.facts.end(), {remark.code, remark.page, static_cast<int>(remark.first),
                                         static_cast<int>(remark.second)});
  }
  if (i.palette_count > 0) told.palette.assign(picture.Palette().begin(), picture.Palette().end());
  told.profile.assign(picture.Profile().begin(), picture.Profile().end());
  told.rgba.resize(4 * static_cast<size_t>(i.width) * static_cast<size_t>(i.height));
  // What pads a row is nobody's.
  told.native.resize((static_cast<size_t>(i.width) * static_cast<size_t>(i.bits_per_pixel) + 7) / 8 *
                     static_cast<size_t>(i.height));
}

void TakeRow(const vx::Bitmap& picture, int row, Told& told) {
  const auto height = told.facts[1];
  picture.ReadRgba(row, told.rgba.data() + static_cast<ptrdiff_t>(told.rgba.size()) / height * row);
  const auto bytes = told.native.size() / static_cast<size_t>(height);
  std::copy_n(picture.Row(row).begin(), bytes, told.native.begin() + static_cast<ptrdiff_t>(bytes) * row);
}

enum class Way { kWhole, kDownwards, kUpwards, kAnyHow };

std::vector<int> OrderOf(Way way, int height) {
  std::vector<int> rows(static_cast<size_t>(height));
  std::iota(rows.begin(), rows.end(), 0);
  if (way == Way::kUpwards) std::reverse(rows.begin(), rows.end());
  if (way == Way::kAnyHow) std::shuffle(rows.begin(), rows.end(), std::minstd_rand(1));
  return rows;
}

Told Load(std::span<const uint8_t> file, vx::LoadOptions options, Way way) {
  Told told;
  const uint64_t before = vx_memory_in_use();
  if (way != Way::kWhole) options.flags |= VX_LOAD_ROW_BY_ROW;
  try {
    const vx::Source source = vx::Source::Memory(file);
    const vx::Bitmap picture = source.Load(options);
    TellOf(picture, told);
    for (const int row : OrderOf(way, told.facts[1])) TakeRow(picture, row, told);
  } catch (const vx::Error& error) {
    told = Told();
    told.status = error.status();
    told.words = error.detail();
  }
  EXPECT_EQ(vx_memory_in_use(), before);
  return told;
}

/// Read buffers are so small that every row or two is a piece of its own.
std::vector<vx::LoadOptions> Ways(int height) {
  std::vector<vx::LoadOptions> all(8);
  for (vx::LoadOptions& options : all) options.read_buffer_size = 6;
  all[1].band_first = height / 3;
  all[1].band_count = height - height / 3;
  all[2].flags = VX_LOAD_AS_FILTER;
  all[3].alpha = VX_ALPHA_AUTO;
  all[3].color_order = VX_ORDER_565;
  all[4].alpha = VX_ALPHA_FORCE;
  all[4].color_order = VX_ORDER_BGR;
  all[5].flags = VX_LOAD_TO_SRGB;
  all[6].allow_truncated = 1;
  all[7].read_buffer_size = 0;
  return all;
}

void ExpectRowsOfWhole(std::span<const uint8_t> file, int height) {
  int which = 0;
  for (const vx::LoadOptions& options : Ways(height)) {
    SCOPED_TRACE("options " + std::to_string(which++));
    const Told whole = Load(file, options, Way::kWhole);
    for (const Way way : {Way::kDownwards, Way::kUpwards, Way::kAnyHow}) {
      const Told rows = Load(file, options, way);
      EXPECT_EQ(rows.status, whole.status) << rows.words;
      EXPECT_EQ(rows.words, whole.words);
      EXPECT_EQ(rows.facts, whole.facts);
      EXPECT_TRUE(rows == whole) << static_cast<int>(way);
    }
  }
}

TEST(RowByRow, IsWhatIsLoadedWhole) {
  for (const samples::Sample& sample : samples::All()) {
    if (!sample.raw.empty()) continue;
    SCOPED_TRACE(sample.name);
    ExpectRowsOfWhole(sample.bytes, sample.height);
    if (sample.outcome != samples::Outcome::Loads) continue;
    const vx::Buffer png = vx::Source::Memory(sample.bytes).Load().EncodePng();
    ExpectRowsOfWhole(png.Bytes(), sample.height);
  }
}

struct Taken {
  Bytes pixels;
  int rows = 0;
  int enough = INT32_MAX;
};

int Take(void* user, const vx_bitmap* picture, int row, const uint8_t* pixels) {
  auto& taken = *static_cast<Taken*>(user);
  EXPECT_EQ(row, taken.rows++);
  vx_bitmap_info info;
  EXPECT_EQ(vx_bitmap_describe(picture, &info), VX_OK);
  taken.pixels.insert(taken.pixels.end(), pixels, pixels + ptrdiff_t{4} * info.width);
  return taken.rows < taken.enough ? 1 : 0;
}

TEST(ReadRows, HandsThemOverFromTheTopUntilThatIsEnough) {
  for (const samples::Sample& sample : samples::All()) {
    if (sample.outcome != samples::Outcome::Loads || !sample.raw.empty() || sample.rgba.empty()) continue;
    SCOPED_TRACE(sample.name);
    const vx::Source source = vx::Source::Memory(sample.bytes);
    Taken all;
    ASSERT_EQ(vx_read_rows(source.Get(), nullptr, Take, &all), VX_OK) << vx_error_detail();
    EXPECT_EQ(all.pixels, sample.rgba);
    Taken one;
    one.enough = 1;
    ASSERT_EQ(vx_read_rows(source.Get(), nullptr, Take, &one), VX_OK);
    EXPECT_EQ(one.rows, 1);
  }
}

TEST(ReadRows, HandsThemOverAsTheyAreStored) {
  const auto compare = [](void* user, const vx_bitmap* /*picture*/, int row, const uint8_t* pixels) {
    const auto& whole = *static_cast<const vx::Bitmap*>(user);
    EXPECT_EQ(std::memcmp(pixels, whole.Row(row).data(), whole.Row(row).size()), 0) << row;
    return 1;
  };
  vx::LoadOptions options;
  options.flags = VX_LOAD_NATIVE_ROWS;
  for (const samples::Sample& sample : samples::All()) {
    if (sample.outcome != samples::Outcome::Loads || !sample.raw.empty() || sample.width < 8) continue;
    SCOPED_TRACE(sample.name);
    const vx::Source source = vx::Source::Memory(sample.bytes);
    vx::Bitmap whole = source.Load();
    EXPECT_EQ(vx_read_rows(source.Get(), &options, compare, &whole), VX_OK) << vx_error_detail();
  }
}

class LargeRows : public testing::Test {
 protected:
  static constexpr int kSide = 2048;

  /// A picture of 12 MiB that compresses well, in a file that is read row by row in 3 MiB of memory.
  static vx::Buffer FileOf(vx_format format, int depth = 24) {
    Bytes rgba(size_t{4} * kSide * kSide, 255);
    for (size_t i = 0; i < rgba.size(); ++i) {
      if (i % 4 != 3) rgba[i] = static_cast<uint8_t>(i >> 13);
    }
    return vx::Bitmap::FromRgba(kSide, kSide, rgba.data()).Save(vx::SaveOptions(format, depth));
  }
  /// The file is what the whole picture becomes. With more memory PNG is compressed in another way.
  static void ExpectSaved(const std::string& path, const vx::Bitmap& whole, const vx::SaveOptions& options) {
    const vx::Buffer expected = whole.Save(options);
    EXPECT_TRUE(options.format == VX_FORMAT_PNG
                    ? vx::Source::File(path).Load().Rgba() ==
                          vx::Source::Memory(expected.Bytes()).Load().Rgba()
                    : ReadFile(path) == std::string(expected.Bytes().begin(), expected.Bytes().end()));
  }
  template <class Call>
  static void InLittleMemory(const Call& call) {
    vx_set_memory_limit(vx_memory_in_use() + (size_t{3} << 20));
    const int status = call();
    vx_set_memory_limit(0);
    EXPECT_EQ(status, VX_OK) << vx_error_detail();
  }

  Folder folder_;
};

TEST_F(LargeRows, AreReadInMemoryForAFew) {
  for (const vx_format format : {VX_FORMAT_BMP, VX_FORMAT_PNG}) {
    const vx::Buffer file = FileOf(format);
    const vx::Source source = vx::Source::Memory(file.Bytes());
    Taken all;
    InLittleMemory([&] { return vx_read_rows(source.Get(), nullptr, Take, &all); });
    EXPECT_EQ(all.rows, kSide);
  }
}

/// Whatever order they come in and are written in.
TEST_F(LargeRows, AreSavedInMemoryForAFew) {
  const std::string path = folder_ / "large";
  for (const vx_format from : {VX_FORMAT_BMP, VX_FORMAT_PNG}) {
    const vx::Buffer file = FileOf(from);
    const vx::Source source = vx::Source::Memory(file.Bytes());
    vx::LoadOptions how;
    how.flags = VX_LOAD_ROW_BY_ROW;
    const vx::Bitmap picture = source.Load(how);
    for (const auto& [format, depth] : {std::pair(VX_FORMAT_PNG, 24),
                                        {VX_FORMAT_BMP, 24},
                                        {VX_FORMAT_BMP, 32},
                                        {VX_FORMAT_BMP, 16},
                                        {VX_FORMAT_OS2, 24},
                                        {VX_FORMAT_OS2_2, 8}}) {
      SCOPED_TRACE(testing::Message() << from << " to " << format << " of " << depth);
      const vx::SaveOptions options(format, depth);
      InLittleMemory([&] { return vx_save_file(picture.Get(), path.c_str(), &options); });
      ExpectSaved(path, source.Load(), options);
    }
  }
}

vx_rows RowsOf(int width, int height, int depth, const uint8_t* palette = nullptr, int count = 0) {
  return {width, height, depth, VX_ORDER_BGR, palette, count, 0, 0, 0, 0};
}

/// What the rows of a picture are like when an application gives them.
vx_rows RowsLike(const vx::Bitmap& picture, bool mayRepeat) {
  const vx_bitmap_info i = picture.Describe();
  return {i.width,         i.height,    i.bits_per_pixel, i.color_order, vx_bitmap_palette(picture.Get()),
          i.palette_count, i.has_alpha, i.x_dpi,          i.y_dpi,       mayRepeat ? 1 : 0};
}

/// Gives the rows of a picture, and sees to it that they are asked for as was agreed.
struct Giver {
  const vx::Bitmap& picture;
  bool mayRepeat = false;
  int next = 0;

  void operator()(int row, uint8_t* pixels) {
    EXPECT_TRUE(row == next || (mayRepeat && row == 0)) << row << " instead of " << next;
    next = row + 1;
    const vx_bitmap_info info = picture.Describe();
    const int bytes = (info.width * info.bits_per_pixel + 7) / 8;
    std::copy_n(picture.Row(row).begin(), bytes, pixels);
  }
};

/// The formats and depths that keep no row, of rows that can be asked for again and of others.
TEST_F(LargeRows, ThatAreGivenAreSavedInMemoryForAFew) {
  const std::string path = folder_ / "given";
  const vx::Buffer file = FileOf(VX_FORMAT_PNG);
  const vx::Source source = vx::Source::Memory(file.Bytes());
  const vx::Bitmap whole = source.Load();
  for (const auto& [format, depth, repeats] : {std::tuple(VX_FORMAT_PNG, 24, false),
                                               {VX_FORMAT_BMP, 24, false},
                                               {VX_FORMAT_BMP, 32, false},
                                               {VX_FORMAT_BMP, 16, true},
                                               {VX_FORMAT_OS2, 24, false},
                                               {VX_FORMAT_OS2_2, 8, true}}) {
    SCOPED_TRACE(testing::Message() << format << " of " << depth);
    const vx::SaveOptions options(format, depth);
    const bool mayRepeat = repeats;
    InLittleMemory([&] {
      return StatusOf([&] { SaveRows(RowsLike(whole, mayRepeat), Giver{whole, mayRepeat}, path, options); });
    });
    ExpectSaved(path, whole, options);
  }
}

TEST_F(LargeRows, ThatAreNotGivenLeaveTheOldFile) {
  const std::string path = folder_ / "old";
  WriteFile(path, "old");
  const vx_rows rows = RowsOf(3, 500, 24);
  for (const vx_format format : {VX_FORMAT_BMP, VX_FORMAT_PNG, VX_FORMAT_BMP_RLE}) {
    const vx::SaveOptions options(format);
    const auto giveHalf = [](void* /*user*/, int row, uint8_t* /*pixels*/) { return row < 250 ? 1 : 0; };
    EXPECT_EQ(vx_save_rows(&rows, giveHalf, nullptr, path.c_str(), &options), VX_READ_ERROR);
    EXPECT_STREQ(vx_error_detail(), "row 250 of 500 was not given");
    vx_error_info info;
    vx_last_error(&info);
    EXPECT_NE(info.is_of_rows, 0);
    const auto throwHalf = [](int row, uint8_t* /*pixels*/) {
      if (row == 250) throw std::out_of_range("mine");
    };
    EXPECT_THROW(vx::SaveRows(rows, throwHalf, path, options), std::out_of_range);
    EXPECT_EQ(ReadFile(path), "old");
  }
}

TEST_F(LargeRows, ThatAreDescribedWrongAreRefused) {
  const uint8_t palette[12] = {};
  const struct {
    vx_rows rows;
    int status;
  } kCases[] = {
      {RowsOf(0, 1, 24), VX_BAD_DIMENSIONS},
      {RowsOf(1, 1 << 28, 24), VX_BAD_DIMENSIONS},
      {RowsOf(1, 1, 0), VX_BAD_BPP},
      {RowsOf(1, 1, 2), VX_BAD_BPP},
      {RowsOf(1, 1, 8, nullptr, 2), VX_BAD_PARAMETER},
      {RowsOf(1, 1, 8, palette, 0), VX_BAD_PARAMETER},
      {RowsOf(1, 1, 1, palette, 3), VX_BAD_PARAMETER},
      {RowsOf(1, 1, 4, palette, 3), VX_OK},
  };
  for (const auto& each : kCases) {
    const auto give = [](int /*row*/, uint8_t* /*pixels*/) {};
    EXPECT_EQ(StatusOf([&] { vx::SaveRows(each.rows, give, folder_ / "new", vx::SaveOptions()); }),
              each.status);
  }
}

TEST_F(LargeRows, ThatAreDamagedLeaveTheOldFile) {
  const std::string path = folder_ / "old";
  WriteFile(path, "old");
  vx::SaveOptions options;
  vx::LoadOptions how;
  how.flags = VX_LOAD_ROW_BY_ROW;
  const vx::Buffer file = FileOf(VX_FORMAT_PNG);
  for (const size_t at : {file.Bytes().size() / 2, file.Bytes().size() - 20}) {
    Bytes damaged(file.Bytes().begin(), file.Bytes().end());
    damaged[at] ^= 0xFF;
    const vx::Source source = vx::Source::Memory(damaged);
    const int status = StatusOf([&] { (void)source.Load(); });
    const std::string words = vx_error_detail();
    ExpectFailure(status, words, [&] {
      const vx::Bitmap picture = source.Load(how);
      for (int row = 0; row < kSide; ++row) (void)picture.Row(row);
    });
    ExpectFailure(status, words, [&] { source.Load(how).Save(path, options); });
    vx_error_info info;
    vx_last_error(&info);
    EXPECT_NE(info.is_of_rows, 0);
    ExpectFailure(VX_OPEN_WRITE_ERROR, "gone", [&] { source.Load(how).Save(folder_ / "gone/new", options); });
    vx_last_error(&info);
    EXPECT_EQ(info.is_of_rows, 0);
    EXPECT_EQ(ReadFile(path), "old");
  }
}

/// The file, or the status of the failure in its place.
Bytes Saved(const vx::Source& source, unsigned int loadFlags, const vx_save_options& options) {
  vx::LoadOptions how;
  how.flags = loadFlags;
  uint8_t* bytes = nullptr;
  size_t size = 0;
  const vx::Bitmap picture = source.Load(how);
  const int status = vx_save_memory(picture.Get(), &options, &bytes, &size);
  Bytes file(bytes, bytes + size);
  if (status != VX_OK) file.assign(1, static_cast<uint8_t>(status));
  vx_free(bytes);
  return file;
}

/// Every format at every depth, and what else decides who writes rows in which order.
std::vector<vx::SaveOptions> WaysToSave() {
  std::vector<vx::SaveOptions> all;
  for (const vx_format format :
       {VX_FORMAT_PNG, VX_FORMAT_BMP, VX_FORMAT_BMP_RLE, VX_FORMAT_OS2, VX_FORMAT_OS2_2, VX_FORMAT_ICO}) {
    for (const int depth : {0, 1, 4, 8, 16, 24, 32}) all.emplace_back(format, depth);
  }
  const auto bitmapOf = [&](int depth) -> vx::SaveOptions& { return all.emplace_back(VX_FORMAT_BMP, depth); };
  for (const int depth : {1, 4, 8}) bitmapOf(depth).dither = VX_DITHER_NONE;
  for (const int depth : {1, 4, 8}) bitmapOf(depth).palette = VX_PALETTE_FIXED;
  bitmapOf(16).use_565 = 1;
  bitmapOf(16).masks = VX_MASKS_4444;
  bitmapOf(32).drop_alpha = 1;
  return all;
}

TEST(RowByRow, IsSavedAsWhatIsLoadedWhole) {
  for (const samples::Sample& sample : samples::All()) {
    if (sample.outcome != samples::Outcome::Loads || !sample.raw.empty()) continue;
    const vx::Source source = vx::Source::Memory(sample.bytes);
    const vx::Buffer png = source.Load().EncodePng();
    const vx::Source stream = vx::Source::Memory(png.Bytes());
    for (const vx::SaveOptions& options : WaysToSave()) {
      SCOPED_TRACE(sample.name + " as " + std::to_string(options.format) + " of " +
                   std::to_string(options.bits_per_pixel));
      EXPECT_EQ(Saved(source, VX_LOAD_ROW_BY_ROW, options), Saved(source, 0, options));
      EXPECT_EQ(Saved(stream, VX_LOAD_ROW_BY_ROW, options), Saved(stream, 0, options));
    }
  }
}

/// Native rows of a picture that has neither region nor profile are all there is to it.
TEST(GivenRows, AreSavedAsTheirPictureIs) {
  const Folder folder;
  const std::string path = folder / "given";
  std::set<std::array<int, 3>> kinds;  // one picture of each: every file is stored on the disk
  for (const samples::Sample& sample : samples::All()) {
    if (sample.outcome != samples::Outcome::Loads || !sample.raw.empty()) continue;
    const vx::Bitmap picture = vx::Source::Memory(sample.bytes).Load();
    const vx_bitmap_info info = picture.Describe();
    if (info.has_region != 0 || info.color_space != VX_COLOR_SPACE_NONE) continue;
    if (!kinds.insert({info.bits_per_pixel, info.color_order, info.has_alpha}).second) continue;
    for (const vx::SaveOptions& options : WaysToSave()) {
      for (const bool mayRepeat : {false, true}) {
        SCOPED_TRACE(sample.name + " as " + std::to_string(options.format) + " of " +
                     std::to_string(options.bits_per_pixel));
        Bytes expected;
        const int status = StatusOf([&] {
          const vx::Buffer file = picture.Save(options);
          expected.assign(file.Bytes().begin(), file.Bytes().end());
        });
        EXPECT_EQ(StatusOf([&] {
                    SaveRows(RowsLike(picture, mayRepeat), Giver{picture, mayRepeat}, path, options);
                  }),
                  status);
        if (status != VX_OK) continue;
        EXPECT_EQ(loading::ReadFile(path), expected);
      }
    }
  }
}

/// The file that is written over is the one that the rows are read from. It is larger than what is read at
/// once.
TEST(RowByRow, IsSavedInPlaceOfItsOwnFile) {
  constexpr int kSide = 1600;
  const std::string path = testing::TempDir() + "rows-in-place.bmp";
  Bytes rgba(size_t{4} * kSide * kSide, 255);
  for (size_t i = 0; i < rgba.size(); ++i) {
    if (i % 4 != 3) rgba[i] = static_cast<uint8_t>(i * i >> 7);
  }
  vx::SaveOptions options;
  options.format = VX_FORMAT_BMP;
  options.bits_per_pixel = 24;
  vx::Bitmap::FromRgba(kSide, kSide, rgba.data()).Save(path, options);
  {
    const vx::Source source = vx::Source::File(path);
    vx::LoadOptions how;
    how.flags = VX_LOAD_ROW_BY_ROW;
    const vx::Bitmap picture = source.Load(how);
    options.bits_per_pixel = 32;
    options.in_place = 1;
    ASSERT_EQ(vx_save_file(picture.Get(), path.c_str(), &options), VX_OK) << vx_error_detail();
  }
  EXPECT_TRUE(vx::Source::File(path).Load().Rgba() == rgba);
  std::filesystem::remove(path);
}

}  // namespace
