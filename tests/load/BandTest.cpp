// A band is the same rows as in the whole picture, whatever the file's kind, order of rows or coding.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include <algorithm>
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

TEST(Bands, OutsideThePictureAreRefused) {
  const auto sample = samples::All().front();
  const int height = loading::LoadPage(sample.bytes).height;
  for (const auto& [first, count] :
       {std::pair(-1, 2), {0, height + 1}, {height, 1}, {1, -1}, {INT32_MAX, INT32_MAX}, {INT32_MIN, 1}}) {
    EXPECT_EQ(loading::Load(sample.bytes, Band(first, count)).status, VX_BAD_PARAMETER)
        << first << ", " << count;
  }
}

/// A bitmap of 3 GiB that nobody has to store: 24 bits, every row filled with its own number.
class EndlessBitmap {
 public:
  static constexpr int kSide = 32768;
  static constexpr uint64_t kStride = 3 * uint64_t{kSide};

  static void* Open(void* user, const char* /*name*/, int /*flags*/) { return user; }
  static int64_t Size(void* /*user*/, void* /*file*/) { return int64_t{kHeaderSize + kStride * kSide}; }
  static int Close(void* /*user*/, void* /*file*/) { return 0; }
  static int64_t ReadAt(void* /*user*/, void* /*file*/, void* buffer, uint32_t count, uint64_t position) {
    constexpr uint8_t kHeader[kHeaderSize] = {'B',         'M', 0, 0,    0,  0, 0, 0, 0, 0,
                                              kHeaderSize, 0,   0, 0,    40, 0, 0, 0, 0, 0x80,
                                              0,           0,   0, 0x80, 0,  0, 1, 0, 24};
    auto* bytes = static_cast<uint8_t*>(buffer);
    uint32_t done = 0;
    for (; done < count && position < kHeaderSize; ++done, ++position) bytes[done] = kHeader[position];
    while (done < count) {
      const uint64_t row = (position - kHeaderSize) / kStride;
      const uint64_t left = kHeaderSize + (row + 1) * kStride - position;
      const auto run = static_cast<uint32_t>(std::min<uint64_t>(count - done, left));
      std::memset(bytes + done, static_cast<int>(row & 0xFF), run);
      done += run;
      position += run;
    }
    return count;
  }

 private:
  static constexpr uint32_t kHeaderSize = 54;
};

TEST(Bands, LieWhereTheyShouldBeyondTwoGigabytes) {
  const vx_file_functions functions{
      EndlessBitmap::Open, EndlessBitmap::ReadAt, nullptr, EndlessBitmap::Size, nullptr,
      EndlessBitmap::Close};
  int anything = 0;
  ASSERT_EQ(vx_redirect_files(&functions, &anything), VX_OK);
  for (const int fromBottom : {300, EndlessBitmap::kSide - 300}) {
    const auto band = Band(EndlessBitmap::kSide - 1 - fromBottom, 1);
    const vx::Bitmap bitmap = vx::Source::File("endless").Load(band);
    EXPECT_EQ(bitmap.Row(0)[0], static_cast<uint8_t>(fromBottom));
  }
  vx_redirect_files(nullptr, nullptr);
}

}  // namespace
