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

/// Why the picture is not the one that libpng reads; "" when it is.
std::string MismatchWith(const loading::Outcome& outcome, const fs::path& path) {
  png_image png{};
  png.version = PNG_IMAGE_VERSION;
  EXPECT_NE(png_image_begin_read_from_file(&png, path.c_str()), 0) << path << png.message;
  png.format = PNG_FORMAT_RGBA;
  Bytes rgba(PNG_IMAGE_SIZE(png));
  EXPECT_NE(png_image_finish_read(&png, nullptr, rgba.data(), 0, nullptr), 0) << path << png.message;
  return loading::FirstDifference(outcome, static_cast<int>(png.width), static_cast<int>(png.height), rgba);
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

  [[nodiscard]] std::vector<std::string> Files() const {
    std::vector<std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
      const auto extension = entry.path().extension();
      if (extension == ".bmp" || extension == ".ico" || extension == ".cur") {
        files.push_back(fs::relative(entry.path(), folder_).string());
      }
    }
    return files;
  }

  /// Why the picture is none of the file's references; "" when it is one.
  [[nodiscard]] std::string Mismatch(const std::string& file, const loading::Outcome& outcome) const {
    std::string mismatch = "there is no reference";
    const auto pictures = references_.find(file);
    for (const auto& path : pictures != references_.end() ? pictures->second : std::vector<fs::path>{}) {
      mismatch = MismatchWith(outcome, path);
      if (mismatch.empty()) break;
      mismatch.insert(0, path.filename().string() + ": ");
    }
    return mismatch;
  }

  fs::path folder_;
  std::map<std::string, std::vector<fs::path>> references_;
};

/// A line of the table is a file, a page, its outcome ("right": as a reference picture; "loads": without one;
/// else a status's name), and the reason.
TEST_F(Corpus, EveryFileEndsAsTheTableSays) {
  std::map<std::string, int> pages;
  for (const Fields& fields : Lines(VX_CORPUS_TABLE)) {
    ASSERT_EQ(fields.size(), 4U) << fields[0];
    const auto& [file, page, expected] = std::tie(fields[0], fields[1], fields[2]);
    SCOPED_TRACE(testing::Message() << file << ", page " << page << ": " << fields[3]);
    ++pages[file];
    const auto outcome = loading::LoadPage(loading::ReadFile(folder_ / file), std::stoi(page));
    const bool shouldLoad = expected == "right" || expected == "loads";
    EXPECT_STREQ(vx_status_name(outcome.status), shouldLoad ? "STATUS_OK" : expected.c_str())
        << outcome.detail;
    // a file that has come to match its reference should say so
    if (shouldLoad && outcome.status == VX_OK) {
      EXPECT_EQ(Mismatch(file, outcome).empty(), expected == "right") << Mismatch(file, outcome);
    }
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
