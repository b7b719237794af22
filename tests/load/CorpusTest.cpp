// Real files, good, doubtful and bad, against a table that says what must become of each and why.
// The folder is named by VXFBMP_CORPUS; without one the tests are skipped.
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <tuple>

#include "Loading.h"

namespace {

namespace fs = std::filesystem;
using loading::Bytes;

using Fields = std::vector<std::string>;  // of a line, between tabs

std::vector<Fields> Lines(const fs::path& table) {
  std::vector<Fields> lines;
  std::ifstream stream(table);
  EXPECT_TRUE(stream) << table;
  for (std::string line; std::getline(stream, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream rest(line);
    lines.emplace_back();
    for (std::string field; std::getline(rest, field, '\t');) lines.back().push_back(field);
  }
  return lines;
}

/// How far any channel of a pixel that can be seen is from the picture that libpng reads; 256 for other
/// sizes.
int DistanceFrom(const loading::Outcome& outcome, const fs::path& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_file(&png, path.c_str()), 0) << path << png.message;
  png.format = PNG_FORMAT_RGBA;
  png.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;  // the references of 16 bits are not linear
  Bytes rgba(PNG_IMAGE_SIZE(png));
  EXPECT_NE(png_image_finish_read(&png, nullptr, rgba.data(), 0, nullptr), 0) << path << png.message;
  if (rgba.size() != outcome.rgba.size() || outcome.width != static_cast<int>(png.width)) return 256;
  int distance = 0;
  for (size_t i = 0; i < rgba.size(); ++i) {
    const bool isHidden = rgba[i | 3] == 0 && outcome.rgba[i | 3] == 0;
    if (!isHidden) distance = std::max(distance, std::abs(rgba[i] - outcome.rgba[i]));
  }
  return distance;
}

class Corpus : public testing::Test {
 protected:
  void SetUp() override {
    const char* folder = std::getenv("VXFBMP_CORPUS");
    if (folder == nullptr || *folder == '\0') GTEST_SKIP() << "VXFBMP_CORPUS names no folder of real files";
    folder_ = folder;
    for (const Fields& fields : Lines(folder_ / "bmpsuite/reference.tsv")) {
      std::istringstream names(fields.size() > 1 ? fields[1] : "");
      auto& pictures = references_["bmpsuite/" + fields[0]];
      for (std::string name; names >> name;) pictures.push_back(folder_ / "bmpsuite/reference" / name);
    }
  }

  /// All of them, by the names that the table has: relative to the folder, or to the one of files met in the
  /// wild beside it.
  [[nodiscard]] std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const fs::path& root : {folder_, folder_ / "../wild"}) {
      if (!fs::exists(root)) continue;
      for (const auto& entry : fs::recursive_directory_iterator(root)) {
        const auto extension = entry.path().extension();
        if (extension == ".bmp" || extension == ".ico" || extension == ".cur" || extension == ".dib") {
          files.push_back(entry.path().lexically_relative(folder_).string());
        }
      }
    }
    return files;
  }

  /// "right" as one of its reference pictures, "near" by 1 in some channel, or "loads".
  [[nodiscard]] std::string Verdict(const std::string& file, const loading::Outcome& outcome) const {
    if (outcome.status != VX_OK) return vx_status_name(outcome.status);
    int distance = 256;
    const auto pictures = references_.find(file);
    for (const auto& path : pictures != references_.end() ? pictures->second : std::vector<fs::path>{}) {
      distance = std::min(distance, DistanceFrom(outcome, path));
    }
    return distance == 0 ? "right" : distance == 1 ? "near" : "loads";
  }

  fs::path folder_;
  std::map<std::string, std::vector<fs::path>> references_;
};

/// A line of the table is a file, a page, the verdict, what is remarked or the reason why it is refused, and
/// why that is so.
TEST_F(Corpus, EveryFileEndsAsTheTableSays) {
  std::map<std::string, int> pages;
  for (const Fields& fields : Lines(VX_CORPUS_TABLE)) {
    ASSERT_EQ(fields.size(), 5U) << fields[0];
    const auto& [file, page, verdict, remarks] = std::tie(fields[0], fields[1], fields[2], fields[3]);
    ++pages[file];
    if (!fs::exists(folder_ / file)) continue;  // the files met in the wild are not everywhere
    SCOPED_TRACE(testing::Message() << file << ", page " << page << ": " << fields[4]);
    const auto outcome = loading::LoadPage(loading::ReadFile(folder_ / file), std::stoi(page));
    if (outcome.remarks == "no-jpeg") continue;  // where the library was built without libjpeg
    EXPECT_EQ(Verdict(file, outcome), verdict) << outcome.detail;
    EXPECT_EQ(outcome.remarks, remarks) << outcome.detail;
  }
  for (const std::string& file : Files()) {
    const auto outcome = loading::LoadPage(loading::ReadFile(folder_ / file));
    EXPECT_EQ(pages[file], std::max(outcome.info.page_count, 1)) << file << ": a line for each page";
  }
}

TEST_F(Corpus, EveryPrefixOfEverySmallFile) {
  for (const std::string& file : Files()) {
    SCOPED_TRACE(file);
    loading::ExpectDefinedPrefixes(loading::ReadFile(folder_ / file), 2);
  }
}

}  // namespace
