// Every sample loads as the picture that it was made from, or fails the way it was damaged to.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include "Loading.h"

namespace {

using loading::FirstDifference;
using samples::Outcome;
using samples::Sample;

/// Files with headers; how headerless data is described is the command line's to test.
std::vector<Sample> Files() {
  std::vector<Sample> all = samples::All();
  std::erase_if(all, [](const Sample& sample) { return !sample.raw.empty(); });
  return all;
}

TEST(Samples, LoadAsTheirPicture) {
  for (const Sample& sample : Files()) {
    for (const bool tolerant : {false, true}) {
      SCOPED_TRACE(sample.name + (tolerant ? ", tolerantly" : ""));
      const auto outcome = loading::LoadPage(sample.bytes, 1, tolerant);
      const bool isDamaged =
          sample.outcome == Outcome::Refused || sample.outcome == Outcome::NeedsAllowTruncated;
      EXPECT_EQ(outcome.status == VX_OK, tolerant ? sample.outcome != Outcome::Refused : !isDamaged)
          << outcome.detail;
      if (outcome.status != VX_OK || sample.rgba.empty()) continue;
      EXPECT_EQ(FirstDifference(outcome, sample.width, sample.height, sample.rgba), "");
      EXPECT_EQ(std::pair(outcome.info.width, outcome.info.height), std::pair(sample.width, sample.height));
    }
  }
}

/// Whatever the size of the read buffer, the same picture; one byte more than needed would show here.
TEST(Samples, LoadAlikeThroughBuffersOfAnyEvenSize) {
  for (const Sample& sample : Files()) {
    SCOPED_TRACE(sample.name);
    const auto whole = loading::LoadPage(sample.bytes, 1, true);
    for (const int size : {2, 6, 30, 64, 1000}) {
      vx::LoadOptions options;
      options.allow_truncated = 1;
      options.read_buffer_size = size;
      const auto outcome = loading::Load(sample.bytes, options);
      EXPECT_EQ(outcome.status, whole.status) << size;
      EXPECT_EQ(FirstDifference(outcome, whole.width, whole.height, whole.rgba), "") << size;
    }
  }
}

}  // namespace
