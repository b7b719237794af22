// The allocator: products that overflow and the limit.
#include "base/Errors.h"
#include "base/Memory.h"

#include <cstring>

#include "Leaks.h"
#include "base/Contract.h"
#include "base/GlobalMemory.h"
#include "vx/vx.h"

namespace {

class Memory : public Leaks {};

TEST_F(Memory, RefusesProductsThatNoBlockCanHave) {
  vx_set_memory_limit(UINT64_MAX);
  EXPECT_EQ(VX_LocalAlloc(0xFFFFFFFF, 0xFFFFFFFF, 1, "a"), nullptr);
  EXPECT_EQ(VX_LocalAllocInit(0xFFFFFFFF, 0x80000001, 1, "a"), nullptr);
}

TEST_F(Memory, NothingIsStillABlockAndInitMeansZero) {
  void* nothing = VX_LocalAlloc(0, 216, 1, "a");
  EXPECT_NE(nothing, nullptr);
  VX_LocalFree(nothing, 1, "a");
  void* used = VX_LocalAlloc(3, 1000, 1, "a");  // so that there is memory that is not 0
  std::memset(used, 0xA5, 3000);
  VX_LocalFree(used, 1, "a");
  auto* bytes = static_cast<unsigned char*>(VX_LocalAllocInit(3, 1000, 2, "a"));
  ASSERT_NE(bytes, nullptr);
  EXPECT_EQ(bytes[0], 0);
  EXPECT_EQ(std::memcmp(bytes, bytes + 1, 2999), 0);
  VX_LocalFree(bytes, 2, "a");
  VX_LocalFree(nullptr, 3, nullptr);
}

TEST_F(Memory, TheLimitIsExactAndZeroRestoresTheDefault) {
  vx_set_memory_limit(1000);
  void* most = VX_LocalAlloc(999, 1, 1, "a");
  ASSERT_NE(most, nullptr);
  EXPECT_EQ(VX_LocalAlloc(2, 1, 2, "a"), nullptr);
  EXPECT_EQ(vxkrn::memory::LastRefusal(), 2U);
  vxkrn::BeginCall();
  EXPECT_EQ(vxkrn::memory::LastRefusal(), 0U);
  EXPECT_TRUE(vxkrn::memory::Fits(1));
  EXPECT_FALSE(vxkrn::memory::Fits(2));
  void* last = VX_LocalAlloc(1, 1, 1, "b");
  EXPECT_NE(last, nullptr);
  EXPECT_EQ(vxkrn::memory::LiveByTag().size(), 2U) << "of two files";
  EXPECT_EQ(vx_memory_in_use(), 1000U);
  vx_set_memory_limit(10);
  EXPECT_EQ(VX_LocalAlloc(0, 1, 4, "a"), nullptr) << "over a lowered limit";
  VX_LocalFree(most, 1, "a");
  VX_LocalFree(last, 3, "a");
  vx_set_memory_limit(0);
  EXPECT_EQ(vx_memory_limit(), uint64_t{1} << 30);
}

TEST_F(Memory, GlobalHandlesAreKnownUntilTheyAreFreedAndNeverAgain) {
  const auto make = [] { return vxkrn::MakeGlobal(vxkrn::memory::MakeBytes(4, {"a", 1})); };
  void* first = make();
  EXPECT_EQ(VX_ResourceAdd(3, first, 1, "a"), STATUS_OK);
  EXPECT_NE(WinGlobalLock(first), nullptr);
  EXPECT_EQ(WinGlobalUnlock(first), STATUS_OK);
  EXPECT_EQ(WinGlobalUnlock(first), STATUS_BAD_PARAMETER) << "no lock is left";
  void* second = make();
  EXPECT_EQ(VX_OsFreeHandle(first, 1, "a"), STATUS_OK);
  void* third = make();
  EXPECT_TRUE(third != first && third != second);
  EXPECT_EQ(VX_ResourceAdd(3, first, 1, "a"), STATUS_BAD_PARAMETER);
  EXPECT_EQ(WinGlobalLock(first), nullptr);
  EXPECT_EQ(WinGlobalUnlock(first), STATUS_BAD_PARAMETER);
  for (void* handle : {second, third}) EXPECT_EQ(VX_OsFreeHandle(handle, 1, "a"), STATUS_OK);
  EXPECT_EQ(VX_OsFreeHandle(first, 1, "a"), STATUS_BAD_PARAMETER);
}

}  // namespace
