// A band is the same rows as in the whole picture, whatever the file's kind, order of rows or coding.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include "Loading.h"

namespace {

loading::Outcome LoadBand(const samples::Sample& sample, int first, int count) {
  vx_load_options options = VX_LOAD_OPTIONS_DEFAULT;
  options.band_first = first;
  options.band_count = count;
  return loading::Load(sample.bytes, options);
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
      const auto band = LoadBand(sample, first, count);
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
    EXPECT_EQ(LoadBand(sample, first, count).status, VX_BAD_PARAMETER) << first << ", " << count;
  }
}

}  // namespace
