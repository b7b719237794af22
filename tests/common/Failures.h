// Failures of the application interface: one that is expected, and all that lack of memory can bring about.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vx/image.hpp>

/// @return the status of what a call throws, or VX_OK
template <class Call>
int StatusOf(const Call& call) try {
  call();
  return VX_OK;
} catch (const vx::Error& error) {
  return error.status();
}

/// Expects a call to fail with that status, and with these words in its detail.
template <class Call>
void ExpectFailure(int status, const std::string& words, const Call& call) try {
  call();
  ADD_FAILURE() << "it worked, instead of: " << words;
} catch (const vx::Error& error) {
  EXPECT_EQ(error.status(), status) << error.what();
  EXPECT_NE(error.detail().find(words), std::string::npos) << error.what() << ", instead of: " << words;
}

/// Expects the thread's last failure to have that reason and that number, and no other.
inline void ExpectReason(vx_reason reason, int64_t first = 0) {
  vx_error_info info;
  vx_last_error(&info);
  EXPECT_TRUE(info.reason == reason && info.first == first && info.second == 0)
      << vx_reason_name(info.reason) << ", " << info.first << ", " << info.second;
}

/// Calls with little memory, and more each time, until it works: it must fail for want of memory and leave
/// none in use.
/// @return how many times it failed, each followed by `afterwards`
template <class Call>
int FailuresForWantOfMemory(
    const Call& call, const std::function<void()>& afterwards = [] {}) {
  const uint64_t inUse = vx_memory_in_use();
  for (uint64_t room = 1, failures = 0;; room += 7 + room / 16, ++failures) {
    vx_set_memory_limit(inUse + room);
    const int status = StatusOf(call);
    vx_set_memory_limit(0);
    EXPECT_EQ(vx_memory_in_use(), inUse) << "limit of " << room;
    if (status == VX_OK) return static_cast<int>(failures);
    EXPECT_EQ(status, VX_NO_MEMORY) << vx_error_detail();
    if (testing::Test::HasFailure()) return 0;
    afterwards();
  }
}
