// Tests that want every counted block back derive from this.
#pragma once

#include <gtest/gtest.h>

#include "base/Memory.h"
#include "bitmap/Bitmap.h"

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

/// Pixels for a record that has none.
inline void Allocate(_BITMAPHANDLE* bitmap, int width, int height, int bits) {
  ASSERT_EQ(VX_InitBitmap(bitmap, sizeof *bitmap, width, height, bits), STATUS_OK);
  ASSERT_EQ(VX_AllocateBitmap(bitmap, 1), STATUS_OK);
}
