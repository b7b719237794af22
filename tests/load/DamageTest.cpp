// Nothing that is done to a file may crash, leak or leave anything without a status: every prefix of
// every small file, and random edits of all.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include "../common/Damage.h"
#include "Loading.h"

namespace {

TEST(Damage, EveryPrefixOfEverySmallSample) {
  for (const auto& sample : samples::All()) {
    SCOPED_TRACE(sample.name);
    loading::ExpectDefinedPrefixes(sample.bytes);
  }
}

TEST(Damage, RandomEdits) {
  vx_set_memory_limit(loading::kLittleMemory);
  std::mt19937 random(20);
  for (const auto& sample : samples::All()) {
    for (int round = 0; round < 150 && !testing::Test::HasFailure(); ++round) {
      SCOPED_TRACE(sample.name + ", round " + std::to_string(round));
      // headers and directories are where edits matter most
      const size_t reach = round % 3 == 0 ? sample.bytes.size() : 70;
      loading::ExpectDefinedOutcomes(Damaged(sample.bytes, reach, random), 2);
    }
  }
  vx_set_memory_limit(0);
}

}  // namespace
