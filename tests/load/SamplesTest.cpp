// Every sample loads as the picture that it was made from, or fails the way it was damaged to.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include "Loading.h"

namespace {

using loading::FirstDifference;
using loading::LoadPage;
using samples::Sample;

class Samples : public testing::TestWithParam<Sample> {};

TEST_P(Samples, LoadAsTheirPicture) {
  const Sample& sample = GetParam();
  const auto outcome = LoadPage(sample.bytes);
  const auto tolerant = LoadPage(sample.bytes, 1, true);
  switch (sample.outcome) {
    case samples::Outcome::Loads:
    case samples::Outcome::LoadsDamaged: ASSERT_EQ(outcome.status, VX_OK) << outcome.detail; break;
    case samples::Outcome::NeedsAllowTruncated:
      EXPECT_NE(outcome.status, VX_OK);
      ASSERT_EQ(tolerant.status, VX_OK) << tolerant.detail;
      break;
    case samples::Outcome::Refused:
      EXPECT_NE(outcome.status, VX_OK);
      EXPECT_NE(tolerant.status, VX_OK);
      return;
  }
  if (sample.rgba.empty()) return;
  EXPECT_EQ(FirstDifference(tolerant, sample.width, sample.height, sample.rgba), "");
  EXPECT_EQ(tolerant.info.width, sample.width);
  EXPECT_EQ(tolerant.info.height, sample.height);
  if (outcome.status == VX_OK) {
    EXPECT_EQ(FirstDifference(outcome, sample.width, sample.height, sample.rgba), "");
  }
}

/// Whatever the size of the read buffer, the same picture; one byte more than needed would show here.
TEST_P(Samples, LoadAlikeThroughBuffersOfAnyEvenSize) {
  const auto whole = LoadPage(GetParam().bytes, 1, true);
  for (const int size : {2, 4, 6, 16, 30, 64, 1000}) {
    vx_load_options options = VX_LOAD_OPTIONS_DEFAULT;
    options.allow_truncated = 1;
    options.read_buffer_size = size;
    const auto outcome = loading::Load(GetParam().bytes, options);
    ASSERT_EQ(outcome.status, whole.status) << size;
    ASSERT_EQ(FirstDifference(outcome, whole.width, whole.height, whole.rgba), "") << size;
  }
}

std::vector<Sample> FilesWithHeaders() {
  std::vector<Sample> files = samples::All();
  std::erase_if(files, [](const Sample& sample) { return !sample.raw.empty(); });
  return files;
}

std::string TestName(const testing::TestParamInfo<Sample>& info) {
  std::string name = info.param.name;
  for (char& c : name) {
    if (isalnum(static_cast<unsigned char>(c)) == 0) c = '_';
  }
  return name;
}

INSTANTIATE_TEST_SUITE_P(Every, Samples, testing::ValuesIn(FilesWithHeaders()), TestName);

}  // namespace
