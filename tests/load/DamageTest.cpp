// Nothing that is done to a file may crash, leak or leave anything without a status: every prefix of
// every small file, and random edits of all.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include <random>

#include "Loading.h"

namespace {

constexpr size_t kSmall = 10 * 1024;

/// Most of a damaged file's claims are about size; this keeps a picture of billions from taking hours.
class Damage : public testing::Test {
 protected:
  void SetUp() override { vx_set_memory_limit(16U << 20); }
  void TearDown() override { vx_set_memory_limit(0); }
};

TEST_F(Damage, EveryPrefixOfEverySmallSample) {
  for (const auto& sample : samples::All()) {
    if (sample.bytes.size() >= kSmall) continue;
    SCOPED_TRACE(sample.name);
    for (size_t size = 0; size < sample.bytes.size(); ++size) {
      // a copy of its own length, so that reading past its end is seen
      const loading::Bytes prefix(sample.bytes.begin(), sample.bytes.begin() + static_cast<ptrdiff_t>(size));
      loading::ExpectDefinedOutcomes(prefix);
      if (HasFailure()) FAIL() << "at " << size << " bytes";
    }
  }
}

/// Numbers that headers get wrong: signs, limits, powers.
constexpr uint32_t kHostileWords[] = {0,          1,          2,          0x7FFFFFFF, 0x80000000, 0xFFFFFFFF,
                                      0xFFFFFFFE, 0x10000000, 0x40000000, 0x00010000, 256,        0x20000001};

TEST_F(Damage, RandomEdits) {
  std::mt19937 random(20);
  const auto upTo = [&](size_t n) { return random() % n; };
  for (const auto& sample : samples::All()) {
    SCOPED_TRACE(sample.name);
    for (int round = 0; round < 150; ++round) {
      auto bytes = sample.bytes;
      // headers and directories are where edits matter most
      const size_t reach = round % 3 == 0 ? bytes.size() : std::min<size_t>(bytes.size(), 70);
      for (size_t edits = 1 + upTo(4); edits > 0; --edits)
        bytes[upTo(reach)] = static_cast<uint8_t>(random());
      if (round % 2 == 0 && reach > 4) {
        const uint32_t word = kHostileWords[upTo(std::size(kHostileWords))];
        const size_t at = upTo(reach - 4);
        for (size_t i = 0; i < 4; ++i) bytes[at + i] = static_cast<uint8_t>(word >> 8 * i);
      }
      loading::ExpectDefinedOutcomes(bytes, 2);
      if (HasFailure()) FAIL() << "round " << round;
    }
  }
}

}  // namespace
