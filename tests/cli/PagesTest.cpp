// vxbmp pages and vxbmp icon from the outside.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Shell.h"
#include "samples/Headers.h"
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

  /// "16x16@4 24x24@8 ...", PNG pages with a P behind, "bad" pages, and the bytes that belong to none.
  std::string Listed(const std::string& file) {
    std::istringstream lines(shell_.Run("vxbmp pages --json " + file).out);
    std::string text;
    for (std::string line; std::getline(lines, line);) {
      const auto page = nlohmann::json::parse(line);
      if (page.contains("unreferenced_bytes"))
        return text + std::to_string(page["unreferenced_bytes"].get<int>());
      EXPECT_EQ(page["form"] == "bad", page.contains("message")) << line;
      if (page["form"] == "bad") {
        text += "bad ";
        continue;
      }
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

void Put32(std::string& file, size_t at, uint32_t value) {
  for (size_t i = 0; i < 4; ++i) file[at + i] = static_cast<char>(value >> 8 * i);
}

TEST_F(PagesTest, ABadPageIsNoMatterOfTheOthers) {
  // What becomes of page 2: its entry at byte 22 has its size at byte 30 and its offset at byte 34; its body,
  // which is at byte 366, may be another one at the end.
  const std::string good = shell_.Read("icon-sizes.ico");
  const auto size = static_cast<uint32_t>(good.size());
  const std::string png = shell_.Read("soft.png");
  struct Damage {
    const char* name;
    uint32_t bytes;
    uint32_t offset;
    std::string body;
  };
  const Damage kDamages[] = {{"past the end", 1736, size + 1000, ""},
                             {"at the end of what a file can have", 1736, 0xFFFFFFFF, ""},
                             {"of whose header 4 bytes are there", 1736, size - 4, ""},
                             {"of whose header 20 bytes are there", 1736, size - 20, ""},
                             {"of no bytes, at the beginning", 0, 0, ""},
                             {"in the directory", 20000, 10, ""},
                             {"garbage", 1736, size, std::string(1736, '\xA5')},
                             {"a PNG stream that is cut off", 5000, size, png.substr(0, 100)},
                             {"a PNG stream of no bytes", 0, size, png},
                             {"a PNG stream cut off in its headers", 30, size, png.substr(0, 30)}};
  for (const Damage& damage : kDamages) {
    SCOPED_TRACE(damage.name);
    std::string bad = good + damage.body;
    bad[22] = bad[23] = '\0';  // a side of 256 pixels, so that its header is looked at for others
    Put32(bad, 30, damage.bytes);
    Put32(bad, 34, damage.offset);
    const auto restore = [&] { shell_.Write("bad.ico", bad); };
    restore();
    EXPECT_TRUE(Listed("bad.ico").starts_with("16x16@4 bad 32x32@24 48x48@32 ")) << Listed("bad.ico");
    const Outcome info = shell_.Run("vxbmp info bad.ico");
    EXPECT_EQ(info.code, 1);
    EXPECT_NE(info.out.find("2/4   bad"), std::string::npos) << info.out;
    EXPECT_TRUE(info.err.starts_with("vxbmp: bad.ico, page 2: ")) << info.err;
    Expect(1, "pages extract bad.ico -o out{page}.png", "bad.ico, page 2: ");
    EXPECT_EQ(shell_.Run("mv out4.png last.png && rm out1.png out3.png").code, 0);
    EXPECT_EQ(shell_.Read("last.png"), png);
    Expect(0, "icon bad.ico -o new.ico --sizes 32", "page 2 is left out");
    Expect(0, "pages compact bad.ico");
    Expect(0, "pages add bad.ico soft.png");
    EXPECT_TRUE(Listed("bad.ico").starts_with("16x16@4 bad 32x32@24 48x48@32 48x48@32P "));
    restore();
    Expect(0, "pages delete bad.ico --page 2");
    EXPECT_TRUE(Listed("bad.ico").starts_with("16x16@4 32x32@24 48x48@32 ")) << Listed("bad.ico");
    restore();
    Expect(0, "pages replace bad.ico soft.png --page 2");
    Expect(0, "pages bad.ico");
    restore();
  }
  Expect(1, "pages bad.ico", "bad.ico, page 2: ");
  const std::string json = shell_.Run("vxbmp info --json bad.ico").out;
  EXPECT_EQ(std::count(json.begin(), json.end(), '\n'), 4) << json;
  Expect(0, "pages delete bad.ico --page 1,3-4");
  Expect(1, "icon bad.ico -o none.ico", "bad.ico: ");
  std::string cursor = shell_.Read("cursor-sizes.cur");
  Put32(cursor, 18, 0x7FFFFFFF);
  shell_.Write("bad.cur", cursor);
  Expect(1, "pages bad.cur", "bad.cur, page 1: ");
  Expect(0, "pages add bad.cur win-24bit.bmp --bits 8");
  EXPECT_TRUE(Listed("bad.cur").starts_with("bad 48x48@32 61x48@8 ")) << Listed("bad.cur");
  shell_.Write("cut.ico", good.substr(0, 40));
  for (const char* command :
       {"pages cut.ico", "info cut.ico", "pages delete cut.ico --page 1", "icon cut.ico -o a.ico",
        "pages extract cut.ico", "convert cut.ico a.png", "pages compact cut.ico"}) {
    Expect(1, command, "the file ends at byte 40, in the middle of the directory of its 4 pages");
  }
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

TEST_F(PagesTest, DescriptorsAreDestinationsEverywhere) {
  Expect(0, "icon soft.png -o a.ico --sizes 16");
  const std::string icon = shell_.Read("a.ico");
  const std::string picture = shell_.Read("soft.png");
  Expect(0, "convert a.ico a.png");
  const std::string page = shell_.Read("a.png");
  const std::pair<std::string, std::string> cases[] = {
      {"vxbmp icon soft.png --sizes 16 -o - > out", icon},
      {"vxbmp icon soft.png --sizes 16 -o - | cat > out", icon},
      {"vxbmp icon soft.png --sizes 16 -o /dev/fd/3 3> out", icon},
      {"{ printf head; vxbmp icon soft.png --sizes 16 -o /dev/stdout; printf tail; } > out",
       "head" + icon + "tail"},
      {"printf head > out; vxbmp convert soft.png /proc/self/fd/1 --to png >> out", "head" + picture},
      {"vxbmp convert soft.png /dev/fd/3 --to png 3>&1 | cat > out", picture},  // as bash names pipes
      {"vxbmp convert soft.png /dev/stderr --to png 2> out", picture},
      {"vxbmp pages extract a.ico --page 1 -o /dev/stdout > out", page},
      {"cp a.ico out; vxbmp pages add /dev/fd/3 soft.png 3<> out; vxbmp pages delete out --page 2; "
       "vxbmp pages compact out",
       icon}};
  for (const auto& [command, expected] : cases) {
    shell_.Run("rm -f out");
    EXPECT_EQ(shell_.Run(command).err, "") << command;
    EXPECT_TRUE(shell_.Read("out") == expected) << command;
  }
}

TEST_F(PagesTest, IconsOfLargePicturesTakeLittleMemory) {
  // One run-length code, and a side that overflows the tables of resizers.
  samples::ImageHeader header;
  header.width = 1 << 27;
  header.height = 1;
  header.bits = 8;
  header.compression = samples::Compression::Rle8;
  shell_.Write("wide.bmp", samples::BitmapFile(samples::Encode(header),
                                               samples::EncodePalette({{255, 0, 0, 255}}, 256, 4), {0, 1}));
  Expect(0, "icon wide.bmp -o a.ico --sizes 16");
  EXPECT_EQ(Listed("a.ico"), "16x16@1 0");

  // One picture at a time, and none that is not needed.
  shell_.Run("head -c 196608 /dev/zero | vxbmp convert --raw 256x256x24 - b.bmp");
  shell_.Run("head -c 49152 /dev/zero | vxbmp convert --raw 128x128x24 - s.bmp");
  Expect(0, "icon b.bmp s.bmp b.bmp b.bmp s.bmp - -o a.ico --sizes 16 --memory-limit 240K < s.bmp");
  Expect(1, "icon b.bmp -o a.ico --sizes 16 --memory-limit 300K", "needs 262144 bytes");
  Expect(1, "icon b.bmp -o a.ico --memory-limit 120K", "b.bmp: the picture needs 196608 bytes");
}

}  // namespace
