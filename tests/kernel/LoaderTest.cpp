// Finding the filter: what is tried, in which order, and what is said when it fails. And failures that no
// file brings about.
#include "filter/FilterLoader.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "app/Explain.h"
#include "base/Errors.h"
#include "convert/SavePlan.h"
#include "vx/vx.h"

namespace {

std::string DetailFor(const std::string& searchPath) {
  vxkrn::Filter filter;
  EXPECT_EQ(vxkrn::FindFilter(searchPath.c_str(), &filter), VX_NO_FILTER);
  EXPECT_EQ(filter.load, nullptr);
  return vxkrn::Detail().CString();
}

TEST(FilterLoader, SaysWhereItLooked) {
  const std::string detail = DetailFor("/nonesuch/a.so::" + testing::TempDir());
  for (const char* place : {"/nonesuch/a.so", "/vxfbmp.so.18", "/filters/vxfbmp.so.18"}) {
    EXPECT_NE(detail.find(place), std::string::npos) << place << " in " << detail;
  }
  EXPECT_EQ(detail.find(", ,"), std::string::npos) << "an empty part is no place: " << detail;
  EXPECT_EQ(vx_error_reason(), VX_REASON_NO_FILTER);
}

TEST(FilterLoader, NamesTheEntryPointThatIsMissing) {
  EXPECT_NE(DetailFor("/nonesuch:" VX_HALF_FILTER).find("fltLoad"), std::string::npos);
  EXPECT_EQ(vx_error_reason(), VX_REASON_BAD_FILTER);
}

TEST(FilterLoader, TakesANameWithoutAFolderForAFileHere) {
  const std::filesystem::path here = std::filesystem::current_path();
  const std::string name =
      "vx-half-filter-" + std::to_string(getpid()) + ".so";  // which no search path finds
  std::filesystem::current_path(testing::TempDir());
  std::filesystem::copy_file(VX_HALF_FILTER, name);
  EXPECT_NE(DetailFor(name).find("fltLoad"), std::string::npos);
  std::filesystem::remove(name);
  std::filesystem::current_path(here);
}

TEST(FilterLoader, TakesNoOtherWhenTheFirstIsBroken) {
  const std::string detail = DetailFor("/proc/self/cmdline:" VX_HALF_FILTER);
  EXPECT_NE(detail.find("cannot be loaded"), std::string::npos) << detail;
  EXPECT_EQ(vx_error_reason(), VX_REASON_BAD_FILTER);
}

TEST(Errors, AreCutWhereTheirRoomEndsAndForgottenByTheNextCall) {
  constexpr std::size_t kRoom = 2048;  // with the end of the string
  vxkrn::Fail({VX_NO_FILTER, VX_REASON_NO_FILTER}, std::string(5000, 'x'));
  vxkrn::Detail() << "more";
  EXPECT_EQ(std::string(vxkrn::Detail().CString()), std::string(kRoom - 1, 'x'));
  vxkrn::BeginCall();
  EXPECT_STREQ(vxkrn::Detail().CString(), "");
}

TEST(Errors, ThatNoFileOfATestBringsAboutHaveTheirReasonsToo) {
  constexpr int64_t kNeeded = 1000;
  EXPECT_EQ(vxkrn::FailForMemory("it", kNeeded), VX_NO_MEMORY);
  EXPECT_EQ(vxkrn::Failure().reason, VX_REASON_OUT_OF_MEMORY) << "the limit has room for it";
  EXPECT_EQ(vxkrn::Failure().first, kNeeded);

  vx_bitmap large;  // of which nobody looks at a pixel
  large.record.Width = large.record.Height = 40000;
  large.record.BitsPerPixel = 24;
  vxkrn::SavePlan plan = {};
  EXPECT_EQ(vxkrn::PlanSave(large, nullptr, &plan), VX_BAD_DIMENSIONS);
  EXPECT_EQ(vxkrn::Failure().reason, VX_REASON_FILE_TOO_LARGE);
  EXPECT_EQ(vxkrn::Failure().first, int64_t{3} * 40000 * 40000);

  constexpr int kUnheardOf = -12345;
  vxkrn::BeginCall();
  EXPECT_EQ(vxkrn::Explain(kUnheardOf, *vxkrn::NewSource("a.bmp"), 2, {}), kUnheardOf);
  const vx_error_info& info = vxkrn::Failure();
  EXPECT_TRUE(info.reason == VX_REASON_FILTER_GAVE_UP && info.first == kUnheardOf && info.page == 2);
}

TEST(Libraries, LoadAndUnload) {
  EXPECT_EQ(LoadLibrary(nullptr), nullptr);
  EXPECT_EQ(LoadLibrary(""), nullptr);  // would be the program itself
  EXPECT_EQ(LoadLibrary("/nonesuch/b.so"), nullptr);
  HANDLE library = LoadLibrary(VX_HALF_FILTER);
  ASSERT_NE(library, nullptr);
  EXPECT_EQ(FreeLibrary(library), 1);
  EXPECT_EQ(FreeLibrary(nullptr), 0);
}

}  // namespace
