// The row callback given what no good filter sends, and rows that end early.
#include "app/RowSink.h"

#include <climits>
#include <cstring>

#include "Leaks.h"

namespace {

using vxkrn::FlipRow;

class RowSinks : public Leaks {
 protected:
  static constexpr int kHeight = 6;
  static constexpr unsigned int kPlain = ROW_FLAGS_BASE | ROW_FLAG_UNCOMPRESSED;

  void TearDown() override {
    VX_FreeBitmap(&picture_.record);
    Leaks::TearDown();
  }
  void Prepare(int bandFirst, int bandCount, bool filterCutsBand) {
    plan_ = {};
    plan_.info.Width = 4;
    plan_.info.Height = kHeight;
    plan_.bandFirst = bandFirst;
    plan_.bandCount = bandCount;
    plan_.filterCutsBand = filterCutsBand;
    VX_FreeBitmap(&picture_.record);
    ASSERT_EQ(sink_.Allocate(8), STATUS_OK);
  }
  int Send(int rowNumber, int value, unsigned int flags, int orientation) {
    std::memset(row_, value, sizeof row_);
    target_.Orientation = orientation;
    picture_.record.Orientation = orientation;
    return vxkrn::RowSink::Callback(nullptr, &target_, row_, flags, rowNumber, 1, &sink_);
  }
  /// First pixels of the picture's rows, from the top.
  std::vector<int> Rows() const {
    std::vector<int> rows;
    rows.reserve(static_cast<std::size_t>(picture_.record.Height));
    for (int row = 0; row < picture_.record.Height; ++row) {
      rows.push_back(*vxkrn::StoredRow(picture_.record, picture_.Stored(row)));
    }
    return rows;
  }

  vxkrn::LoadPlan plan_ = {};
  vxkrn::FilterCall context_;
  vx_bitmap picture_;
  vxkrn::RowSink sink_{plan_, context_, &picture_};
  _BITMAPHANDLE target_ = {};
  unsigned char row_[4] = {};
};

TEST_F(RowSinks, PutEachRowInItsPlace) {
  for (const int orientation : {ORIENT_TOP_DOWN, ORIENT_BOTTOM_UP}) {
    // Stored row r carries the number, from 1, that its row has from the top.
    Prepare(0, kHeight, false);
    for (int r = 0; r < kHeight; ++r) Send(r, FlipRow(r, kHeight, orientation) + 1, kPlain, orientation);
    EXPECT_EQ(Rows(), (std::vector<int>{1, 2, 3, 4, 5, 6}));
    // A band cut here, because the filter sends all rows: asked to cut or not, run-length coded.
    for (const bool cuts : {false, true}) {
      Prepare(1, 3, cuts);
      for (int r = 0; r < kHeight; ++r)
        Send(r, FlipRow(r, kHeight, orientation) + 1, ROW_FLAGS_BASE, orientation);
      EXPECT_EQ(Rows(), (std::vector<int>{2, 3, 4}));
    }
    // A band cut by the filter.
    Prepare(1, 3, true);
    for (int r = 0; r < 3; ++r) Send(r, FlipRow(r, 3, orientation) + 2, kPlain, orientation);
    EXPECT_EQ(Rows(), (std::vector<int>{2, 3, 4}));
  }
}

// The memory is not cleared when rows are stored plainly; what nobody sends must not show what it held.
TEST_F(RowSinks, BlankWhatNeverComes) {
  for (const int missing : {0, 2, kHeight - 1}) {
    Prepare(0, kHeight, false);
    for (int r = 0; r < kHeight; ++r) std::memset(vxkrn::StoredRow(picture_.record, r), 0x77, 4);
    for (int r = 0; r < kHeight; ++r) {
      if (r != missing) Send(r, r + 1, kPlain, ORIENT_TOP_DOWN);
    }
    sink_.Finish();
    std::vector<int> expected = {1, 2, 3, 4, 5, 6};
    expected[static_cast<std::size_t>(missing)] = 0;
    EXPECT_EQ(Rows(), expected);
  }
}

TEST_F(RowSinks, RefuseRowsThatDoNotExist) {
  for (const int row : {-1, kHeight, INT_MAX, INT_MIN}) {
    Prepare(0, kHeight, false);
    EXPECT_EQ(Send(row, 1, kPlain, ORIENT_TOP_DOWN), STATUS_BAD_FORMAT) << row;
  }
  Prepare(1, 3, true);
  EXPECT_EQ(Send(3, 1, kPlain, ORIENT_BOTTOM_UP), STATUS_BAD_FORMAT) << "beyond the band";
}

TEST_F(RowSinks, RefuseAPageThatTurnedIntoPngOrBack) {
  Prepare(0, kHeight, false);
  context_.sawPng = true;
  EXPECT_EQ(Send(0, 1, ROW_FLAGS_BASE, ORIENT_TOP_DOWN), STATUS_BAD_FORMAT);
  vx_bitmap empty;
  vxkrn::RowSink sink(plan_, context_, &empty);
  plan_.isPng = true;
  for (const auto& [width, height] :
       {std::pair(3, kHeight), {4, kHeight + 1}}) {  // another size than was described
    context_.png = {width, height, 8, 96, 96, false};
    EXPECT_EQ(vxkrn::RowSink::Callback(nullptr, &target_, row_, ROW_FLAGS_BASE, 0, 1, &sink),
              STATUS_BAD_FORMAT);
    EXPECT_EQ(empty.record.Pixels, nullptr);
  }
}

TEST_F(RowSinks, LeaveNothingOfARowForTheNextToShow) {
  Prepare(0, kHeight, false);
  for (int r = 0; r < kHeight - 1; ++r) {
    Send(r, 9, kPlain, ORIENT_TOP_DOWN);
    EXPECT_EQ(row_[0], r < kHeight - 2 ? 9 : 0) << "only the last row may be short";
  }
  plan_.options.allow_truncated = 1;
  Send(0, 9, kPlain, ORIENT_TOP_DOWN);
  EXPECT_EQ(row_[0], 0);
}

}  // namespace
