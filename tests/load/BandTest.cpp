// A band is the same rows as in the whole picture, whatever the file's kind, order of rows or coding.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "Loading.h"

namespace {

vx::LoadOptions Band(int first, int count) {
  vx::LoadOptions options;
  options.band_first = first;
  options.band_count = count;
  return options;
}

TEST(Bands, AreRowsOfTheWholePicture) {
  for (const auto& sample : samples::All()) {
    if (sample.outcome != samples::Outcome::Loads || !sample.raw.empty()) continue;
    const auto whole = loading::LoadPage(sample.bytes);
    ASSERT_EQ(whole.status, VX_OK) << sample.name;
    const auto rowSize = 4 * static_cast<ptrdiff_t>(whole.width);
    const int half = whole.height / 2;
    for (const auto& [first, count] :
         {std::pair(0, 1), {0, whole.height}, {half, whole.height - half}, {half / 2, half / 2 + 1}}) {
      const auto band = loading::Load(sample.bytes, Band(first, count));
      ASSERT_EQ(band.status, VX_OK) << sample.name << ": " << band.detail;
      const auto from = whole.rgba.begin() + first * rowSize;
      EXPECT_EQ(loading::FirstDifference(band, whole.width, count, {from, from + count * rowSize}), "")
          << sample.name << ", rows from " << first;
    }
  }
}

TEST(Bands, MayLackTheEndOfTheirLastRow) {
  for (auto sample : samples::All()) {
    const std::string& name = sample.name;
    if (name != "win-24bit.bmp" && name != "win-2bit.bmp" && name != "win-32bit-masks-10-10-10.bmp") continue;
    sample.bytes.resize(sample.bytes.size() - 3);
    for (const int count : {1, 2}) {
      const auto band = loading::Load(sample.bytes, Band(0, count));
      EXPECT_EQ(band.status, VX_OK) << name << ": " << band.detail;
      EXPECT_EQ(band.remarks, "rows-missing") << name;
    }
  }
}

TEST(Bands, OutsideThePictureAreRefused) {
  const auto sample = samples::All().front();
  const int height = loading::LoadPage(sample.bytes).height;
  for (const auto& [first, count] :
       {std::pair(-1, 2), {0, height + 1}, {height, 1}, {1, -1}, {INT32_MAX, INT32_MAX}, {INT32_MIN, 1}}) {
    EXPECT_EQ(loading::Load(sample.bytes, Band(first, count)).status, VX_BAD_PARAMETER)
        << first << ", " << count;
  }
}

/// A bitmap that nobody has to store: a square of 24 bits, every row filled with its own number.
class EndlessBitmap {
 public:
  explicit EndlessBitmap(int side)
      : stride_(3 * static_cast<uint64_t>(side)), size_(kHeaderSize + stride_ * stride_ / 3) {
    for (size_t i = 0; i < 4; ++i) {
      header_[18 + i] = header_[22 + i] = static_cast<uint8_t>(static_cast<unsigned>(side) >> 8 * i);
    }
  }

  static void* Open(void* user, const char* /*name*/, int /*flags*/) { return user; }
  static int64_t Size(void* /*user*/, void* file) {
    return static_cast<int64_t>(static_cast<EndlessBitmap*>(file)->size_);
  }
  static int Close(void* /*user*/, void* /*file*/) { return 0; }
  static int64_t ReadAt(void* /*user*/, void* file, void* buffer, uint32_t count, uint64_t position) {
    const auto& [header, stride, size] = *static_cast<EndlessBitmap*>(file);
    auto* bytes = static_cast<uint8_t*>(buffer);
    uint32_t done = 0;
    count = static_cast<uint32_t>(std::min<uint64_t>(count, size - std::min(size, position)));
    for (; done < count && position < kHeaderSize; ++done, ++position)
      bytes[done] = header[static_cast<size_t>(position)];
    while (done < count) {
      const uint64_t row = (position - kHeaderSize) / stride;
      const uint64_t left = kHeaderSize + (row + 1) * stride - position;
      const auto run = static_cast<uint32_t>(std::min<uint64_t>(count - done, left));
      std::memset(bytes + done, static_cast<int>(row & 0xFF), run);
      done += run;
      position += run;
    }
    return count;
  }

 private:
  static constexpr uint32_t kHeaderSize = 54;

  std::array<uint8_t, kHeaderSize> header_ = {'B', 'M', 0, 0, 0, 0, 0, 0, 0, 0, kHeaderSize, 0, 0, 0, 40,
                                              0,   0,   0, 0, 0, 0, 0, 0, 0, 0, 0,           1, 0, 24};
  uint64_t stride_;  // sides are multiples of 4
  uint64_t size_;
};

/// Files of 3, 5 and 17 GiB: the filter's reach ends at 2 for bands and at 4 for files.
TEST(Bands, LieWhereTheyShouldInFilesOfAnySize) {
  const vx_file_functions functions{
      EndlessBitmap::Open, EndlessBitmap::ReadAt, nullptr, EndlessBitmap::Size, nullptr,
      EndlessBitmap::Close};
  vx_set_memory_limit(4 << 20);
  for (const int side : {32768, 42000, 78000}) {
    SCOPED_TRACE(side);
    EndlessBitmap file(side);
    ASSERT_EQ(vx_redirect_files(&functions, &file), VX_OK);
    for (const int fromBottom : {0, 300, side / 2, side - 300, side - 1}) {
      const vx::Bitmap bitmap = vx::Source::File("endless").Load(Band(side - 1 - fromBottom, 1));
      EXPECT_EQ(bitmap.Row(0)[0], static_cast<uint8_t>(fromBottom));
      EXPECT_EQ(bitmap.Row(0)[3 * static_cast<size_t>(side) - 1], static_cast<uint8_t>(fromBottom));
    }
  }
  vx_set_memory_limit(0);
  vx_redirect_files(nullptr, nullptr);
}

}  // namespace
