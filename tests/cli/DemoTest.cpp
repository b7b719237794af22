// The demo page: every file of the folders is on it, with its picture or with the reason there is none.
#include <gtest/gtest.h>

#include <set>

#include "Shell.h"
#include "samples/Samples.h"

namespace {

size_t CountOf(const std::string& text, const std::string& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

TEST(DemoTest, ShowsEveryFile) {
  const Shell shell;
  const std::vector<samples::Sample> all = samples::All();
  std::filesystem::create_directory(shell.Path("in"));
  std::string list;
  size_t troubled = 0;
  for (const samples::Sample& sample : all) {
    shell.Write("in/" + sample.name, sample.bytes);
    if (!sample.palette.empty()) shell.Write("in/" + samples::PaletteFileName(sample), sample.palette);
    list += sample.name + '\t' + sample.title + "\t\t" + sample.raw + '\n';
    const bool loads =
        sample.outcome == samples::Outcome::Loads || sample.outcome == samples::Outcome::LoadsDamaged;
    troubled += loads ? 0 : 1;
  }
  shell.Write("in/samples.tsv", list);
  shell.Write("in/<b>&.bmp", std::string("not a picture"));
  shell.Write("in/notes.txt", std::string("not meant for the page"));

  const Outcome outcome = shell.Run("vxdemo in -o out");
  ASSERT_EQ(outcome.code, 0) << outcome.err;
  const std::string page = shell.Read("out/index.html");
  EXPECT_EQ(CountOf(page, "<article"), all.size() + 1);
  EXPECT_EQ(CountOf(page, "<p class=\"note"), troubled + 1);
  EXPECT_EQ(CountOf(page, "--allow-truncated"), 2U);
  for (const samples::Sample& sample : all) EXPECT_EQ(CountOf(page, ">" + sample.name + "<"), 1U);
  EXPECT_EQ(CountOf(page, "<h3>&lt;b&gt;&amp;.bmp</h3>"), 1U);

  std::set<std::string> pictures;
  for (const auto& entry : std::filesystem::directory_iterator(shell.Path("out/pictures"))) {
    pictures.insert("src=\"pictures/" + entry.path().filename().string() + "\"");
  }
  EXPECT_GT(pictures.size(), all.size() - troubled);
  for (const std::string& picture : pictures) EXPECT_EQ(CountOf(page, picture), 1U) << picture;
}

}  // namespace
