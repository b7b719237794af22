// Animated cursors whose sizes and counts lie: the frames that are there are found, and the lie is remarked.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include <algorithm>
#include <vector>

#include "Loading.h"

namespace {

using Bytes = std::vector<uint8_t>;

Bytes Animated() {
  return loading::SampleNamed("animated.ani").bytes;
}

size_t Find(const Bytes& file, std::string_view name, int which = 0) {
  auto at = file.begin();
  for (;; ++at) {
    at = std::search(at, file.end(), name.begin(), name.end());
    if (which-- == 0) return static_cast<size_t>(at - file.begin());
  }
}

struct Lie {
  const char* name;
  const char* chunk;
  int which;
  size_t at;  // from the chunk's first byte
  uint32_t says;
};

TEST(Animation, WhatIsThereIsBelievedAndTheLieRemarked) {
  const Bytes good = Animated();
  const Lie lies[] = {{"nothing", "RIFF", 0, 0, 0x46464952},
                      {"the file ends at once", "RIFF", 0, 4, 0},
                      {"the file goes on for ever", "RIFF", 0, 4, 0xFFFFFFFF},
                      {"a header of 2^32-1 bytes", "anih", 0, 4, 0xFFFFFFFF},
                      {"a header without bytes", "anih", 0, 4, 0},
                      {"no frames", "anih", 0, 12, 0},
                      {"frames without number", "anih", 0, 12, 0xFFFFFFFF},
                      {"too many steps", "anih", 0, 16, 0x40000000},
                      {"a frame without bytes", "icon", 0, 4, 0},
                      {"a frame that has the next one in it", "icon", 0, 4, 0xFFFFFFFE},
                      {"a last frame that never ends", "icon", 1, 4, 0xFFFFFFFF},
                      {"a list without frames", "fram", 0, static_cast<size_t>(-4), 4},
                      {"a list that never ends", "fram", 0, static_cast<size_t>(-4), 0xFFFFFFFF},
                      {"rates that never end", "rate", 0, 4, 0xFFFFFFFF}};
  for (const Lie& lie : lies) {
    SCOPED_TRACE(lie.name);
    Bytes file = good;
    const size_t at = Find(file, lie.chunk, lie.which) + lie.at;
    for (size_t i = 0; i < 4; ++i) file[at + i] = static_cast<uint8_t>(lie.says >> 8 * i);
    const vx::Source source = vx::Source::Memory(file);
    EXPECT_EQ(source.Describe(2).page_count, 2);
    EXPECT_EQ(source.Load(2).Rgba(), vx::Source::Memory(good).Load(2).Rgba());
    (void)source.Load(1);
    int count = 0;
    const vx_remark* remarks = vx_remarks(&count);
    ASSERT_EQ(count, file == good ? 0 : 1);
    if (count > 0) {
      EXPECT_EQ(remarks[0].code, VX_REMARK_CHUNK_SIZE);
      EXPECT_EQ(remarks[0].first, static_cast<int64_t>(at));
      EXPECT_EQ(remarks[0].second, static_cast<int64_t>(lie.says));
    }
  }
}

TEST(Animation, FramesKeepTheirHotSpotsAndTheFilterRefusesThem) {
  const Bytes file = Animated();
  const vx::Source source = vx::Source::Memory(file);
  const vx_bitmap_info info = source.Load(2).Describe();
  EXPECT_EQ(std::pair(info.hot_x, info.hot_y), std::pair(1, 2));
  vx::LoadOptions options;
  options.flags = VX_LOAD_AS_FILTER;
  EXPECT_THROW((void)source.Load(options), vx::Error);
}

TEST(Animation, FailuresNameThePage) {
  Bytes file = Animated();
  const size_t body = Find(file, "icon", 1) + 8 + 22;
  file[body] = 13;  // the length of the image header
  const auto outcome = loading::LoadPage(file, 2, false);
  EXPECT_NE(outcome.status, VX_OK);
  vx_error_info failure;
  vx_last_error(&failure);
  EXPECT_EQ(failure.page, 2);
}

TEST(Animation, StepsThatNameNoFrameShowNone) {
  Bytes file = Animated();
  file[Find(file, "seq ") + 8] = 2;
  const std::vector<vx_animation_step> steps = vx::Source::Memory(file).AnimationSteps(0, 3);
  EXPECT_EQ(steps[0].frame, 0);
  EXPECT_EQ(steps[1].frame, 1);
  EXPECT_EQ(steps[2].jiffies, 20U);
}

}  // namespace
