// vxbmp pages and vxbmp icon from the outside.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Shell.h"
#include "samples/Samples.h"

namespace {

class PagesTest : public testing::Test {
 protected:
  void SetUp() override {
    Provide("icon-sizes.ico");    // 16x16@4, 24x24@8, 32x32@24, 48x48@32
    Provide("cursor-sizes.cur");  // 33x33@4, 48x48@32
    Provide("win-24bit.bmp");     // 61x48
    ASSERT_EQ(shell_.Run("vxbmp convert icon-sizes.ico soft.png --page 4").code, 0);
  }

  void Provide(const std::string& name) {
    static const auto all = samples::All();
    const auto sample =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
    shell_.Write(name, sample->bytes);
  }

  void Expect(int code, const std::string& command, const std::string& said = "") {
    const Outcome outcome = shell_.Run("vxbmp " + command);
    EXPECT_EQ(outcome.code, code) << command << ": " << outcome.err;
    EXPECT_NE(outcome.err.find(said), std::string::npos) << command << ": " << outcome.err;
    if (said.empty()) {
      EXPECT_EQ(outcome.err, "") << command;
    }
  }

  /// "16x16@4 24x24@8 ...", PNG pages with a P behind, and the bytes that belong to none.
  std::string Listed(const std::string& file) {
    std::istringstream lines(shell_.Run("vxbmp pages --json " + file).out);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
      const auto page = nlohmann::json::parse(line);
      if (page.contains("unreferenced_bytes"))
        return text + std::to_string(page["unreferenced_bytes"].get<int>());
      text += std::to_string(page["width"].get<int>()) + "x" + std::to_string(page["height"].get<int>()) +
              "@" + std::to_string(page["bits_per_pixel"].get<int>()) + (page["form"] == "PNG" ? "P " : " ");
    }
    return text;
  }

  Shell shell_;
};

TEST_F(PagesTest, EditsShowInTheList) {
  EXPECT_EQ(Listed("icon-sizes.ico"), "16x16@4 24x24@8 32x32@24 48x48@32 0");
  Expect(0, "pages add icon-sizes.ico soft.png win-24bit.bmp");
  Expect(0, "pages insert icon-sizes.ico win-24bit.bmp --at 1 --bits 8");
  EXPECT_EQ(Listed("icon-sizes.ico"), "61x48@8 16x16@4 24x24@8 32x32@24 48x48@32 48x48@32P 61x48@24 0");
  Expect(0, "pages replace icon-sizes.ico soft.png --page 2 --png");
  Expect(0, "pages delete icon-sizes.ico --page 1,24x24,-1,5");
  EXPECT_TRUE(Listed("icon-sizes.ico").starts_with("48x48@32P 32x32@24 ")) << Listed("icon-sizes.ico");
  EXPECT_FALSE(Listed("icon-sizes.ico").ends_with(" 0"));
  Expect(0, "pages compact icon-sizes.ico");
  EXPECT_EQ(Listed("icon-sizes.ico"), "48x48@32P 32x32@24 48x48@32P 0");
}

TEST_F(PagesTest, CursorsHaveHotSpotsThatStay) {
  Expect(0, "pages hotspot cursor-sizes.cur 5,7 --page -1");
  Expect(0, "pages replace cursor-sizes.cur soft.png --page 2", "soft edges");
  const Outcome list = shell_.Run("vxbmp pages cursor-sizes.cur");
  EXPECT_NE(list.out.find("5,7"), std::string::npos) << list.out;
  Expect(1, "pages hotspot icon-sizes.ico 5,7 --page 1", "only cursors");
  Expect(1, "pages add cursor-sizes.cur soft.png --png", "cursor file");
}

TEST_F(PagesTest, ExtractsAndRefusesToOverwriteItself) {
  Expect(0, "pages extract icon-sizes.ico --page 2-3 -o p{page}-{size}-{bits}.bmp", "transparency is lost");
  Expect(0, "pages extract icon-sizes.ico --page 48x48");
  const std::vector<std::string> names = shell_.Names();
  for (const char* name : {"p2-24x24-8.bmp", "p3-32x32-24.bmp", "icon-sizes-4.png"}) {
    EXPECT_TRUE(std::find(names.begin(), names.end(), name) != names.end()) << name;
  }
  EXPECT_EQ(shell_.Read("icon-sizes-4.png"), shell_.Read("soft.png"));
  Expect(2, "pages extract icon-sizes.ico -o same.png", "{page}");
}

TEST_F(PagesTest, WhatCannotBeMeantChangesNothing) {
  const std::string before = shell_.Read("icon-sizes.ico");
  shell_.Write("text.txt", std::string("no picture"));
  Expect(1, "pages delete icon-sizes.ico --page 1-", "all its pages");
  Expect(1, "pages delete icon-sizes.ico --page 5", "no page 5");
  Expect(1, "pages delete icon-sizes.ico --page 32x32@8", "no page 32x32@8");
  Expect(1, "pages add icon-sizes.ico soft.png text.txt", "text.txt");
  Expect(1, "pages add win-24bit.bmp soft.png", "no icon");
  Expect(1, "pages insert icon-sizes.ico soft.png --at 9", "1 to 5");
  Expect(1, "pages add missing.ico soft.png", "No such file");
  Expect(2, "pages delete icon-sizes.ico --page 3-1", "a page is");
  Expect(2, "pages delete icon-sizes.ico --page x", "a page is");
  Expect(2, "pages replace icon-sizes.ico soft.png --page 1-2", "one is needed");
  Expect(2, "pages add icon-sizes.ico soft.png --bits 32", "--bits");
  Expect(2, "pages compact icon-sizes.ico soft.png", "too many");
  Expect(2, "pages", "needed");
  Expect(2, "pages ad icon-sizes.ico soft.png", "commands of pages are extract, add");
  Expect(2, "pages delete icon-sizes.ico --page 1 --page 2", "only once\nTry: vxbmp pages delete");
  EXPECT_EQ(shell_.Read("icon-sizes.ico"), before);
}

TEST_F(PagesTest, IconsAreMadeOfWhatThereIs) {
  Expect(0, "icon win-24bit.bmp -o a.ico");
  EXPECT_EQ(Listed("a.ico"), "16x16@8 24x24@24 32x32@24 48x48@24 0")
      << "with margins, and no larger than the picture";
  Expect(0, "icon icon-sizes.ico -o a.ico --sizes 256,32,16,16 --png-from 255");
  EXPECT_EQ(Listed("a.ico"), "16x16@4 32x32@24 256x256@32P 0") << "what has the size stays as it is";
  Expect(2, "icon soft.png -o a.ico --sizes 16,257", "1 to 256");
  Expect(2, "icon soft.png -o soft.png", "ends with .ico");
  Expect(1, "icon soft.png missing.png -o a.ico", "missing.png");
  EXPECT_EQ(Listed("a.ico"), "16x16@4 32x32@24 256x256@32P 0");
}

}  // namespace
