// Any number of loads may run at once: the same files in many threads give the same pictures.
#include <gtest/gtest.h>

#include <samples/Samples.h>

#include <thread>
#include <vx/image.hpp>

namespace {

TEST(Concurrency, LoadsOfAllKindsAtOnce) {
  auto all = samples::All();
  std::erase_if(all, [](const samples::Sample& sample) {
    return sample.outcome != samples::Outcome::Loads || !sample.raw.empty() || sample.rgba.empty();
  });
  const auto work = [&all](size_t start) {
    for (size_t i = 0; i < 2 * all.size(); ++i) {
      const auto& sample = all[(start + i) % all.size()];
      EXPECT_EQ(vx::Source::Memory(sample.bytes).Load().Rgba(), sample.rgba) << sample.name;
    }
  };
  std::vector<std::thread> threads;
  for (size_t t = 0; t < 8; ++t) threads.emplace_back(work, t * 5);
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(vx_memory_in_use(), 0U);
}

}  // namespace
