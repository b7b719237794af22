// Tests that want every counted block back derive from this.
#pragma once

#include <gtest/gtest.h>

#include "Memory.h"

class Leaks : public testing::Test {
 protected:
  void TearDown() override {
    vxkrn::memory::SetLimit(vxkrn::memory::kDefaultLimit);
    for (const auto& live : vxkrn::memory::LiveByTag()) {
      ADD_FAILURE() << live.blocks << " blocks, " << live.bytes << " bytes of " << live.tag.file << ":"
                    << live.tag.line;
    }
    EXPECT_EQ(vxkrn::memory::InUse(), 0U);
  }
};
