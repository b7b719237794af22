// What is drawn: colours and transparency, sizes, and what is left behind.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>
#include <vxkrn.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>
#include <vx/image.hpp>

#include "../common/Failures.h"

namespace {

using Rgba = std::vector<uint8_t>;

vx::Bitmap Picture(int width, int height, const Rgba& pixel) {
  Rgba pixels;
  for (int i = 0; i < width * height; ++i) pixels.insert(pixels.end(), pixel.begin(), pixel.end());
  return vx::Bitmap::FromRgba(width, height, pixels.data());
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

vx::DrawOptions In(int columns, int rows, int mode = VX_DRAW_SYMBOLS, bool enlarge = false) {
  vx::DrawOptions options;
  options.columns = columns;
  options.rows = rows;
  options.mode = mode;
  options.enlarge = enlarge ? 1 : 0;
  return options;
}

const Rgba kRed = {250, 20, 30, 255};
constexpr const char* kRedText = "2;250;20;30";

TEST(Drawing, WithoutTheLibraryIsRefusedInWords) {
  const vx::Bitmap picture = Picture(1, 1, kRed);
  (void)picture.Save(vx::SaveOptions());  // the filter is loaded, and from here on nothing else can be
  rlimit files = {};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &files), 0);
  const rlimit none = {0, files.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  char* text = nullptr;
  std::size_t size = 1;
  const int status = vx_bitmap_draw(picture.Get(), nullptr, &text, &size);
  EXPECT_EQ(setrlimit(RLIMIT_NOFILE, &files), 0);
  EXPECT_EQ(status, VX_NO_DISPLAY_LIBRARY);
  EXPECT_NE(std::string(vx_error_detail()).find("VXDIS.so"), std::string::npos) << vx_error_detail();
  ExpectReason(VX_REASON_NO_DISPLAY);
}

TEST(Drawing, WithALibraryOfThatNameThatCannotDrawIsRefused) {
  const auto draw = [] {
    (void)LoadLibrary(VX_BAD_DISPLAY);
    ExpectFailure(VX_NOT_SUPPORTED, "does not work",
                  [] { (void)Picture(1, 1, kRed).Draw(vx::DrawOptions()); });
    ExpectReason(VX_REASON_BAD_DISPLAY);
    _exit(testing::Test::HasFailure() ? 1 : 0);
  };
  EXPECT_EXIT(draw(), testing::ExitedWithCode(0), "");  // in another process, because it stays loaded
}

class DisplayTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!VX_DISPLAY_IS_BUILT) GTEST_SKIP() << "the display library is not built";
    setenv("TERM", "xterm-256color", 1);
    setenv("COLORTERM", "truecolor", 1);
  }
};

TEST_F(DisplayTest, KernelFindsTheLibraryWhileItIsLoaded) {
  _DISDISPATCH dispatch{};
  EXPECT_EQ(VX_GetDisDispatch(&dispatch), STATUS_BAD_PARAMETER);
  dispatch.StructSize = sizeof dispatch;
  EXPECT_EQ(VX_GetDisDispatch(&dispatch), STATUS_NO_DISPLAY_LIBRARY);
  HANDLE library = LoadLibrary("VXDIS.so");
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(VX_GetDisDispatch(&dispatch), STATUS_OK);
  EXPECT_NE(dispatch.Draw, nullptr);
  EXPECT_EQ(FreeLibrary(library), 1);
  EXPECT_EQ(VX_GetDisDispatch(&dispatch), STATUS_OK);  // somebody else may be using what was handed out
}

TEST_F(DisplayTest, ManyDrawAtOnce) {
  std::atomic<int> drawn = 0;
  std::array<std::jthread, 4> threads;
  for (std::jthread& thread : threads) {
    thread = std::jthread([&] {
      for (int times = 0; times < 20; ++times) {
        drawn += Picture(8, 8, kRed).Draw(In(80, 24)).find(kRedText) != std::string::npos ? 1 : 0;
      }
    });
  }
  for (std::jthread& thread : threads) thread.join();
  EXPECT_EQ(drawn, 4 * 20);
}

TEST_F(DisplayTest, TerminalsWithoutColoursGetNone) {
  setenv("TERM", "dumb", 1);
  EXPECT_EQ(Picture(8, 8, kRed).Draw(In(80, 24)).find('\x1B'), std::string::npos);
}

TEST_F(DisplayTest, ColoursAndNothingWhereNothingIs) {
  const std::string red = Picture(8, 8, kRed).Draw(In(80, 24));
  EXPECT_NE(red.find(kRedText), std::string::npos) << red;
  EXPECT_EQ(Count(red, "\n"), 4U) << red;  // characters are twice as high as wide
  const std::string hidden = Picture(8, 8, {250, 20, 30, 0}).Draw(In(80, 24));
  EXPECT_EQ(hidden.find("250"), std::string::npos) << hidden;
}

TEST_F(DisplayTest, RowsRunFromTheTop) {
  Rgba pixels;
  for (int i = 0; i < 64; ++i) pixels.insert(pixels.end(), {uint8_t(i < 32 ? 250 : 10), 20, 30, 255});
  const std::string text = vx::Bitmap::FromRgba(8, 8, pixels.data()).Draw(In(80, 24));
  EXPECT_LT(text.find("2;250;20;30"), text.find("2;10;20;30")) << text;
}

TEST_F(DisplayTest, FitsAndFills) {
  EXPECT_EQ(Count(Picture(400, 400, kRed).Draw(In(80, 24)), "\n"), 24U);
  EXPECT_EQ(Count(Picture(4, 4, kRed).Draw(In(80, 24, VX_DRAW_SYMBOLS, true)), "\n"), 24U);
  EXPECT_EQ(Count(Picture(9000, 2, kRed).Draw(In(60, 24)), "\n"), 1U);
  EXPECT_NE(Picture(9000, 20, kRed).Draw(In(60, 24)).find(kRedText), std::string::npos);  // means of 3 x 3
  EXPECT_LE(Count(Picture(2, 2, kRed).Draw(In(1 << 30, 1 << 30, VX_DRAW_SYMBOLS, true)), "\n"), 512U);
}

TEST_F(DisplayTest, PixelsStayAsManyAsTheyAre) {
  const vx::Bitmap picture = Picture(13, 10, kRed);
  EXPECT_NE(picture.Draw(In(80, 24, VX_DRAW_KITTY)).find("s=16,v=16,c=2,r=1"), std::string::npos);
  EXPECT_NE(picture.Draw(In(80, 24, VX_DRAW_SIXEL)).find("\"1;1;16;18"), std::string::npos);  // whole sixels
  EXPECT_NE(picture.Draw(In(80, 24, VX_DRAW_SIXEL, true)).find("\"1;1;496;384"), std::string::npos);
}

TEST_F(DisplayTest, RefusesWhatMakesNoSense) {
  const vx::Bitmap picture = Picture(1, 1, kRed);
  for (const vx::DrawOptions& options : {In(0, 24), In(80, -1), In(80, 24, 9)}) {
    char* text = nullptr;
    std::size_t size = 1;
    EXPECT_EQ(vx_bitmap_draw(picture.Get(), &options, &text, &size), VX_BAD_PARAMETER);
    EXPECT_EQ(std::string(vx_error_detail()).rfind("there is no ", 0), 0U) << vx_error_detail();
    EXPECT_EQ(size, 0U);
  }
}

TEST_F(DisplayTest, LeavesNothingBehind) {
  for (int i = 0; i < 3; ++i) (void)Picture(20, 20, kRed).Draw(In(80, 24));
  EXPECT_EQ(vx_memory_in_use(), 0U);
  const vx::Bitmap picture = Picture(100, 100, kRed);
  vx_set_memory_limit(vx_memory_in_use() + 1000);
  EXPECT_THROW((void)picture.Draw(In(80, 24)), vx::Error);
  EXPECT_NE(std::string(vx_error_detail()).find("memory limit"), std::string::npos) << vx_error_detail();
  vx_set_memory_limit(0);
}

}  // namespace
