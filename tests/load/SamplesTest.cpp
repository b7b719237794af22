// Every sample loads as the picture that it was made from, or fails the way it was damaged to.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include "Loading.h"

namespace {

using loading::FirstDifference;
using loading::LoadPage;
using samples::Sample;

/// Files with headers; how headerless data is described is the command line's to test.
const std::vector<Sample>& Files() {
  static const std::vector<Sample> files = [] {
    std::vector<Sample> all = samples::All();
    std::erase_if(all, [](const Sample& sample) { return !sample.raw.empty(); });
    return all;
  }();
  return files;
}

bool LoadsPlainly(const Sample& sample) {
  return sample.outcome == samples::Outcome::Loads || sample.outcome == samples::Outcome::LoadsDamaged;
}

TEST(Samples, LoadAsTheirPicture) {
  for (const Sample& sample : Files()) {
    SCOPED_TRACE(sample.name);
    const auto outcome = LoadPage(sample.bytes);
    EXPECT_EQ(outcome.status == VX_OK, LoadsPlainly(sample)) << outcome.detail;
    if (outcome.status != VX_OK || sample.rgba.empty()) continue;
    EXPECT_EQ(FirstDifference(outcome, sample.width, sample.height, sample.rgba), "");
    EXPECT_EQ(std::pair(outcome.info.width, outcome.info.height), std::pair(sample.width, sample.height));
  }
}

TEST(Samples, LoadTolerantlyUnlessRefused) {
  for (const Sample& sample : Files()) {
    SCOPED_TRACE(sample.name);
    const auto outcome = LoadPage(sample.bytes, 1, true);
    EXPECT_EQ(outcome.status == VX_OK, sample.outcome != samples::Outcome::Refused) << outcome.detail;
    if (outcome.status != VX_OK || sample.rgba.empty()) continue;
    EXPECT_EQ(FirstDifference(outcome, sample.width, sample.height, sample.rgba), "");
  }
}

/// Whatever the size of the read buffer, the same picture; one byte more than needed would show here.
TEST(Samples, LoadAlikeThroughBuffersOfAnyEvenSize) {
  for (const Sample& sample : Files()) {
    SCOPED_TRACE(sample.name);
    const auto whole = LoadPage(sample.bytes, 1, true);
    for (const int size : {2, 6, 30, 64, 1000}) {
      vx_load_options options = VX_LOAD_OPTIONS_DEFAULT;
      options.allow_truncated = 1;
      options.read_buffer_size = size;
      const auto outcome = loading::Load(sample.bytes, options);
      EXPECT_EQ(outcome.status, whole.status) << size;
      EXPECT_EQ(FirstDifference(outcome, whole.width, whole.height, whole.rgba), "") << size;
    }
  }
}

}  // namespace
