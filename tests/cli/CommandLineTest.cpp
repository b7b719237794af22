// vxbmp from the outside: what it prints, what it leaves behind, and its exit code.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <png.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>

#include "Shell.h"
#include "samples/Samples.h"

namespace {

using Names = std::vector<std::string>;

const samples::Sample& SampleNamed(const std::string& name) {
  static const std::vector<samples::Sample> all = samples::All();
  return *std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.name == name; });
}

class CommandLineTest : public testing::Test {
 protected:
  void Provide(const std::string& name) { shell.Write(name, SampleNamed(name).bytes); }

  Shell shell;
};

std::vector<uint8_t> DecodePng(const std::string& bytes) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  if (png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()) == 0) return {};
  image.format = PNG_FORMAT_RGBA;
  std::vector<uint8_t> rgba(PNG_IMAGE_SIZE(image));
  if (png_image_finish_read(&image, nullptr, rgba.data(), 0, nullptr) == 0) return {};
  return rgba;
}

std::vector<nlohmann::json> ParseLines(const std::string& text) {
  std::vector<nlohmann::json> objects;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) objects.push_back(nlohmann::json::parse(line));
  return objects;
}

bool Mentions(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

TEST_F(CommandLineTest, ConvertsEverySampleToItsPicture) {
  for (const samples::Sample& sample : samples::All()) {
    SCOPED_TRACE(sample.name);
    shell.Write(sample.name, sample.bytes);
    if (!sample.palette.empty()) shell.Write(samples::PaletteFileName(sample), sample.palette);
    const Outcome outcome = shell.Run("vxbmp convert " + sample.name + " out.png " + sample.raw);
    const bool loads =
        sample.outcome == samples::Outcome::Loads || sample.outcome == samples::Outcome::LoadsDamaged;
    EXPECT_EQ(outcome.code, loads ? 0 : 1) << outcome.err;
    EXPECT_EQ(outcome.err.empty(), loads) << outcome.err;
    if (!sample.rgba.empty()) {
      EXPECT_TRUE(DecodePng(shell.Read("out.png")) == sample.rgba);
    }
  }
}

TEST_F(CommandLineTest, ConvertsToEveryFormatAndBack) {
  // By name, by word, and what is said of it; the last is what comes back.
  struct Way {
    const char* arguments;
    const char* kind;
    const char* said;
    bool isLossless;
  };
  constexpr Way kWays[] = {
      {"out.bmp", "Windows bitmap", "transparency is lost", false},
      {"out.bmp --to rle --bits 8", "Windows bitmap, run-length coded", "transparency is lost", false},
      {"out.x --to os2", "OS/2 1.x bitmap", "transparency is lost", false},
      {"out.x --to os2v2 --bits 4 --dither none", "OS/2 2.x or long-header bitmap", "transparency is lost",
       false},
      {"out.x --to bmp --565", "Windows bitmap", "transparency is lost", false},
      {"out.ICO", "icon", "--to png-icon", false},
      {"out.cur --bits 8 --palette fixed", "cursor", "edges became hard", false},
      {"out.ico --to png-icon", "icon with PNG or 256-pixel pages", "", true},
      {"out.png", "PNG", "", true},
      {"out.png --bits 24", "PNG", "--bits 32", false}};
  const samples::Sample& sample = SampleNamed("icon-32bit.ico");
  shell.Write("in.ico", sample.bytes);
  for (const Way& way : kWays) {
    SCOPED_TRACE(way.arguments);
    const std::string out = std::string(way.arguments).substr(0, std::string(way.arguments).find(' '));
    const Outcome outcome = shell.Run(std::string("vxbmp convert in.ico ") + way.arguments);
    EXPECT_EQ(outcome.code, 0) << outcome.err;
    EXPECT_EQ(outcome.err.empty(), *way.said == '\0') << outcome.err;
    EXPECT_TRUE(Mentions(outcome.err, way.said)) << outcome.err;
    const Outcome info = shell.Run("vxbmp info --json " + out);
    EXPECT_TRUE(Mentions(info.out, std::string("\"") + way.kind + "\"")) << info.out << info.err;
    ASSERT_EQ(shell.Run("vxbmp convert " + out + " again.png").code, 0);
    EXPECT_EQ(DecodePng(shell.Read("again.png")) == sample.rgba, way.isLossless);
  }
}

TEST_F(CommandLineTest, RefusesWhatAFormatCannotHoldBeforeAnythingIsWritten) {
  Provide("win-24bit.bmp");
  shell.Write("wide.raw", std::vector<uint8_t>(300));
  const Names before = shell.Names();
  const std::pair<const char*, const char*> usages[] = {
      {"out.ico --bits 32", "1, 4, 8, 24"}, {"out.bmp --to rle --bits 16", "1, 4, 8, 24"},
      {"out.bmp --bits 2", "16, 24, 32"},   {"out.ico --565", "--565"},
      {"out.bmp --bits 8 --565", "--565"},  {"out.gif", "--to"},
      {"out.bmp --to gif", "os2v2"},        {"out.bmp --dither some", "diffuse"},
      {"out.bmp --palette web", "--raw"},   {"out.bmp --palette auto --palette fixed", "once"}};
  for (const auto& [arguments, word] : usages) {
    const Outcome outcome = shell.Run(std::string("vxbmp convert win-24bit.bmp ") + arguments);
    EXPECT_EQ(outcome.code, 2) << arguments;
    EXPECT_TRUE(Mentions(outcome.err, word)) << outcome.err;
  }
  const Outcome large = shell.Run("vxbmp convert wide.raw out.ico --raw 256x1x8");
  EXPECT_EQ(large.code, 1);
  EXPECT_TRUE(Mentions(large.err, "hint: --to png-icon")) << large.err;
  EXPECT_EQ(shell.Names(), before);
}

TEST_F(CommandLineTest, InfoListsWhatItCanAndNamesTheRest) {
  Provide("icon-sizes.ico");
  Provide("win-rle8.bmp");
  Provide("bad-text.bmp");
  const Outcome outcome = shell.Run("vxbmp info win-rle8.bmp missing.bmp bad-text.bmp icon-sizes.ico");
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 1 + 1 + 4);
  EXPECT_TRUE(Mentions(outcome.err, "vxbmp: missing.bmp"));
  EXPECT_TRUE(Mentions(outcome.err, "vxbmp: bad-text.bmp"));
  EXPECT_TRUE(Mentions(outcome.err, "(STATUS_BAD_FORMAT, -9)"));
}

TEST_F(CommandLineTest, JsonIsOneObjectALine) {
  Provide("icon-sizes.ico");
  Provide("bad-header-13.bmp");
  const Outcome outcome = shell.Run("vxbmp info --json bad-header-13.bmp icon-sizes.ico");
  EXPECT_EQ(outcome.code, 1);
  const std::vector<nlohmann::json> objects = ParseLines(outcome.out);
  ASSERT_EQ(objects.size(), 5U);
  EXPECT_EQ(objects[0]["error"], "STATUS_FAILURE");
  EXPECT_EQ(objects[0]["status"], 0);
  EXPECT_EQ(objects[4]["page"], 4);
  EXPECT_EQ(objects[4]["pages"], 4);
  EXPECT_EQ(objects[4]["width"], 48);
  EXPECT_EQ(objects[4]["bits_per_pixel"], 32);
  EXPECT_EQ(objects[4]["orientation"], "bottom-up");
}

TEST_F(CommandLineTest, NamesOfFilesCannotCommandTheTerminal) {
  const std::string name = "red\x1b[31m \xff\nb\xe2\x80\xae.bmp";
  shell.Write(name, SampleNamed("win-1bit.bmp").bytes);
  const Outcome table = shell.Run("vxbmp info " + Quoted(name));
  EXPECT_TRUE(Mentions(table.out, "red\\x1B[31m \\xFF\\x0Ab\\xE2\\x80\\xAE.bmp")) << table.out;
  const Outcome missing = shell.Run("vxbmp info " + Quoted("no" + name));
  EXPECT_EQ(missing.code, 1);
  EXPECT_EQ(missing.err.find_first_of("\x1b\xff"), std::string::npos) << missing.err;
}

TEST_F(CommandLineTest, JsonKeepsEveryNameApart) {
  // The last is too long for a message, which begins in the middle of a character.
  std::string longest;
  for (int i = 0; i < 126; ++i) longest += "\xe2\x82\xac/";
  const Names names = {"\xff.bmp",         "\xfe.bmp", "\\xFF.bmp",  "\x1b\n\"'\\.bmp",
                       "\xe2\x82\xac.bmp", "\xe2\x82", "a" + longest};
  std::string command = "vxbmp info --json";
  for (const std::string& name : names) {
    if (name.size() < 20) shell.Write(name, SampleNamed("win-1bit.bmp").bytes);
    command += " " + Quoted(name);
  }
  Names read;
  for (const nlohmann::json& line : ParseLines(shell.Run(command).out)) {
    std::string name = line["file"];
    if (line.contains("file_bytes")) {
      const std::string digits = line["file_bytes"];
      name.clear();
      for (size_t i = 0; i < digits.size(); i += 2) {
        name += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
      }
    }
    read.push_back(name);
  }
  EXPECT_EQ(read, names);
}

TEST_F(CommandLineTest, ReadsAndWritesPipes) {
  Provide("icon-sizes.ico");
  ASSERT_EQ(shell.Run("vxbmp convert icon-sizes.ico file.png --page 3").code, 0);
  const char* const ways[] = {
      "cat icon-sizes.ico | vxbmp convert - - --page 3 | cat > way.png",
      "vxbmp convert - way.png --page 3 < icon-sizes.ico",
      "mkfifo in; cat icon-sizes.ico > in & vxbmp convert in way.png --page 3; rm in",
      "mkfifo out; cat out > way.png & vxbmp convert icon-sizes.ico out --page 3; wait; rm out"};
  for (const char* way : ways) {
    SCOPED_TRACE(way);
    const Outcome outcome = shell.Run(way);
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(shell.Read("way.png"), shell.Read("file.png"));
    shell.Run("rm way.png");
  }
}

TEST_F(CommandLineTest, FailureLeavesTheOldFileAndNothingElse) {
  Provide("win-24bit.bmp");
  Provide("bad-rows-cut.bmp");
  shell.Write("old.png", std::string("old"));
  const Names before = shell.Names();
  for (const char* command :
       {"vxbmp convert bad-rows-cut.bmp old.png", "vxbmp convert missing.bmp old.png",
        "vxbmp convert win-24bit.bmp old.png --page 2", "vxbmp convert win-24bit.bmp old.png --band 40:9",
        "vxbmp convert win-24bit.bmp old.png --memory-limit 1K",
        "ulimit -f 1; vxbmp convert win-24bit.bmp old.png",
        "vxbmp convert win-24bit.bmp no-such-folder/new.png"}) {
    SCOPED_TRACE(command);
    const Outcome outcome = shell.Run(command);
    EXPECT_EQ(outcome.code, 1);
    EXPECT_TRUE(outcome.err.starts_with("vxbmp: ")) << outcome.err;
    EXPECT_EQ(shell.Read("old.png"), "old");
    EXPECT_EQ(shell.Names(), before);
  }
}

TEST_F(CommandLineTest, HintsAtWhatHelps) {
  Provide("bad-rows-cut.bmp");
  Provide("win-24bit.bmp");
  const Outcome cut = shell.Run("vxbmp convert bad-rows-cut.bmp out.png");
  EXPECT_TRUE(Mentions(cut.err, "hint: --allow-truncated")) << cut.err;
  EXPECT_EQ(shell.Run("vxbmp convert bad-rows-cut.bmp out.png --allow-truncated").code, 0);
  const Outcome memory = shell.Run("vxbmp --memory-limit 2K convert win-24bit.bmp out.png");
  EXPECT_TRUE(Mentions(memory.err, "hint: --memory-limit")) << memory.err;
  EXPECT_EQ(shell.Run("vxbmp --memory-limit 1M convert win-24bit.bmp out.png").code, 0);
}

TEST_F(CommandLineTest, BandIsThoseRowsOfThePicture) {
  Provide("win-24bit.bmp");
  const samples::Sample& sample = SampleNamed("win-24bit.bmp");
  ASSERT_EQ(shell.Run("vxbmp convert win-24bit.bmp band.png --band 5:7").code, 0);
  const auto rowBytes = static_cast<std::ptrdiff_t>(sample.width) * 4;
  const std::vector<uint8_t> expected(sample.rgba.begin() + 5 * rowBytes,
                                      sample.rgba.begin() + 12 * rowBytes);
  EXPECT_TRUE(DecodePng(shell.Read("band.png")) == expected);
}

TEST_F(CommandLineTest, PaletteMayBeTriplets) {
  // One row of the indices 0, 1, 255 and 2, and 256 colours, red first.
  shell.Write("four.raw", std::vector<uint8_t>{0, 1, 255, 2});
  std::vector<uint8_t> palette(768);
  const std::vector<uint8_t> expected{10, 20, 30, 255, 1, 2, 3, 255, 200, 100, 50, 255, 7, 8, 9, 255};
  for (const auto& [entry, pixel] : {std::pair{0, 0}, {1, 1}, {255, 2}, {2, 3}}) {
    std::copy_n(expected.begin() + pixel * 4, 3, palette.begin() + entry * 3);
  }
  shell.Write("palette.act", palette);
  ASSERT_EQ(shell.Run("vxbmp convert four.raw out.png --raw 4x1x8 --palette palette.act").code, 0);
  EXPECT_TRUE(DecodePng(shell.Read("out.png")) == expected);
  shell.Write("palette.act", std::vector<uint8_t>(7));
  EXPECT_EQ(shell.Run("vxbmp convert four.raw out.png --raw 4x1x8 --palette palette.act").code, 1);
}

TEST_F(CommandLineTest, WrongUsageIsExitCode2) {
  Provide("win-1bit.bmp");
  const char* const commands[] = {"",
                                  "frobnicate",
                                  "info",
                                  "info --page 0 win-1bit.bmp",
                                  "convert win-1bit.bmp",
                                  "convert win-1bit.bmp out.png --band 5",
                                  "convert win-1bit.bmp out.png --band 0:0",
                                  "convert win-1bit.bmp out.png --offset 3",
                                  "convert win-1bit.bmp out.png --raw 4x4",
                                  "convert win-1bit.bmp out.png --raw 4x4x8:lzw",
                                  "convert win-1bit.bmp out.png --raw 4x4x8 --masks 1,2,4",
                                  "convert win-1bit.bmp out.png --raw 4x4x16 --masks 1,2,0x10000",
                                  "convert win-1bit.bmp out.png --raw 4x4x8 --page 2",
                                  "--memory-limit much info win-1bit.bmp",
                                  "--memory-limit 99999999999G info win-1bit.bmp"};
  for (const char* command : commands) {
    SCOPED_TRACE(command);
    const Outcome outcome = shell.Run(std::string("vxbmp ") + command);
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(outcome.out, "");
    EXPECT_TRUE(Mentions(outcome.err, "--help")) << outcome.err;
  }
  EXPECT_EQ(shell.Names(), Names{"win-1bit.bmp"});
}

TEST_F(CommandLineTest, HelpAndVersionAreNoErrors) {
  for (const char* command :
       {"vxbmp --help", "vxbmp --version", "vxbmp info --help", "vxbmp convert --help"}) {
    const Outcome outcome = shell.Run(command);
    EXPECT_EQ(outcome.code, 0) << command;
    EXPECT_EQ(outcome.err, "") << command;
    EXPECT_TRUE(Mentions(outcome.out, "vxbmp")) << command;
  }
}

TEST_F(CommandLineTest, BrokenStreamsAreExitCode1) {
  Provide("win-1bit.bmp");
  for (const char* command : {"vxbmp info win-1bit.bmp > /dev/full", "vxbmp --help > /dev/full",
                              "vxbmp convert win-1bit.bmp - > /dev/full", "vxbmp info win-1bit.bmp >&-",
                              "vxbmp convert win-1bit.bmp - >&-", "vxbmp convert - out.png <&-"}) {
    const Outcome outcome = shell.Run(command);
    EXPECT_EQ(outcome.code, 1) << command;
    EXPECT_TRUE(Mentions(outcome.err, "vxbmp: standard ")) << command << outcome.err;
  }
  EXPECT_EQ(shell.Run("vxbmp info missing.bmp 2>&-").code, 1);

  // A reader that has gone is no news to anyone.
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  close(ends[0]);
  const Outcome outcome = shell.Run("vxbmp info win-1bit.bmp >&" + std::to_string(ends[1]));
  close(ends[1]);
  EXPECT_EQ(outcome.code, 1);
  EXPECT_EQ(outcome.err, "");
}

TEST_F(CommandLineTest, NeverWritesAPictureToATerminal) {
  Provide("win-1bit.bmp");
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) GTEST_SKIP() << "no terminals here";
  const std::string name = ptsname(terminal);
  for (const std::string& command :
       {"vxbmp convert win-1bit.bmp " + name, "vxbmp convert win-1bit.bmp - > " + name}) {
    const Outcome outcome = shell.Run(command);
    EXPECT_EQ(outcome.code, 2) << command;
    EXPECT_TRUE(Mentions(outcome.err, "terminal")) << outcome.err;
  }
  close(terminal);
}

TEST_F(CommandLineTest, NeverReplacesItsInput) {
  Provide("win-1bit.bmp");
  const std::string before = shell.Read("win-1bit.bmp");
  shell.Run("ln -s win-1bit.bmp link; ln win-1bit.bmp hard; ln -s . here");
  for (const char* out : {"win-1bit.bmp", "link", "hard", "here/win-1bit.bmp"}) {
    EXPECT_EQ(shell.Run(std::string("vxbmp convert win-1bit.bmp ") + out).code, 2) << out;
  }
  EXPECT_EQ(shell.Read("win-1bit.bmp"), before);
}

TEST_F(CommandLineTest, EndlessStreamsEnd) {
  for (const char* command : {"info /dev/zero", "convert /dev/zero o.png", "view - < /dev/zero",
                              "pages /dev/zero", "icon /dev/zero -o o.ico"}) {
    // More than a pipe's worth would be over the limit, and be told so.
    const Outcome zeros = shell.Run(std::string("vxbmp --memory-limit 256K ") + command);
    EXPECT_TRUE(Mentions(zeros.err, "icon") && !Mentions(zeros.err, "memory")) << zeros.err;
  }
  const Outcome text = shell.Run("yes | vxbmp info -");
  EXPECT_TRUE(Mentions(text.err, "begins with the bytes 79 0A")) << text.err;
  const Outcome bitmap = shell.Run("(printf BM; cat /dev/zero) | vxbmp info - --memory-limit 1MiB");
  EXPECT_TRUE(Mentions(bitmap.err, "standard input: it goes on after 1048")) << bitmap.err;
  EXPECT_TRUE(Mentions(bitmap.err, "hint: --memory-limit")) << bitmap.err;
}

TEST_F(CommandLineTest, NumbersAreDecimalAndValuesAreNotEmpty) {
  Provide("icon-sizes.ico");
  EXPECT_EQ(shell.Run("vxbmp convert icon-sizes.ico out.png --page 04").code, 0);
  EXPECT_TRUE(Mentions(shell.Run("vxbmp info icon-sizes.ico --page 010").err, "no page 10"));
  for (const char* arguments :
       {"--page 4x", "--page 0x1", "--page ''", "--band ''", "--band 0:1x", "--memory-limit ''", "--raw ''",
        "--raw 4x4x8 --offset 0x10", "--raw 4x4x16 --masks ''", "--raw 4x4x8:rle4", "--raw 4x4x4:rle8",
        "--raw 4x4x24:bitfields", "--raw 4x4x16 --palette icon-sizes.ico"}) {
    EXPECT_EQ(shell.Run(std::string("vxbmp convert icon-sizes.ico out.png ") + arguments).code, 2)
        << arguments;
  }
}

TEST_F(CommandLineTest, ViewDrawsAPageOrSaysWhatIsMissing) {
  Provide("icon-sizes.ico");
  Provide("bad-rows-cut.bmp");
  const Outcome first = shell.Run("vxbmp view icon-sizes.ico --as kitty");
  if (VX_DISPLAY_IS_BUILT) {
    EXPECT_TRUE(Mentions(first.out, "s=16,v=16")) << first.err;
    EXPECT_TRUE(Mentions(shell.Run("vxbmp view - --page 3 --as kitty < icon-sizes.ico").out, "s=32,v=32"));
    const Outcome fitted = shell.Run("vxbmp view icon-sizes.ico --as symbols --size 40x10");
    EXPECT_EQ(std::count(fitted.out.begin(), fitted.out.end(), '\n'), 10);
    EXPECT_EQ(shell.Run("vxbmp view bad-rows-cut.bmp --allow-truncated").code, 0);
  } else {
    EXPECT_EQ(first.code, 1);
    EXPECT_TRUE(Mentions(first.err, "VXDIS.so")) << first.err;
  }
  EXPECT_TRUE(Mentions(shell.Run("vxbmp view bad-rows-cut.bmp").err, "--allow-truncated"));
  for (const char* arguments : {"--size 40", "--size 0x4", "--as paint", "--page 0"}) {
    EXPECT_EQ(shell.Run(std::string("vxbmp view icon-sizes.ico ") + arguments).code, 2) << arguments;
  }
}

}  // namespace
