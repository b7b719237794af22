// Any number of loads may run at once: the same files in many threads give the same pictures.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include <thread>

#include "Loading.h"

namespace {

/// Loads without looking at the library's memory, which other threads are using.
loading::Bytes FirstRow(const samples::Sample& sample) {
  vx_source* source = nullptr;
  vx_bitmap* bitmap = nullptr;
  loading::Bytes row(4 * static_cast<size_t>(sample.width));
  EXPECT_EQ(vx_open_memory(sample.bytes.data(), sample.bytes.size(), nullptr, &source), VX_OK);
  EXPECT_EQ(vx_load(source, nullptr, &bitmap), VX_OK) << sample.name << vx_error_detail();
  EXPECT_EQ(vx_bitmap_read_rgba(bitmap, 0, row.data()), VX_OK);
  vx_bitmap_free(bitmap);
  vx_close(source);
  return row;
}

TEST(Concurrency, LoadsOfAllKindsAtOnce) {
  const auto all = samples::All();
  const auto work = [&all](size_t start) {
    for (size_t i = 0; i < 2 * all.size(); ++i) {
      const auto& sample = all[(start + i) % all.size()];
      if (sample.outcome != samples::Outcome::Loads || !sample.raw.empty() || sample.rgba.empty()) continue;
      const auto row = FirstRow(sample);
      EXPECT_TRUE(std::equal(row.begin(), row.end(), sample.rgba.begin())) << sample.name;
    }
  };
  std::vector<std::thread> threads;
  for (size_t t = 0; t < 8; ++t) threads.emplace_back(work, t * 5);
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(vx_memory_in_use(), 0U);
}

}  // namespace
