// Real files, good, doubtful and bad, against a table that says what must become of each and why.
// The folder is named by VXFBMP_CORPUS; without one the tests are skipped.
#include <gtest/gtest.h>
#include <png.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>

#include "Loading.h"

namespace {

namespace fs = std::filesystem;
using loading::Bytes;

/// One line of the table.
struct Verdict {
  std::string file;
  int page = 1;
  std::string outcome;  // "right": as a reference picture; "loads": without one; else a status's name
  std::string reason;
};

std::vector<std::string> SplitAtTabs(const std::string& line) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, '\t');) fields.push_back(field);
  return fields;
}

template <class Take>
void ForEachLine(const fs::path& table, Take take) {
  std::ifstream stream(table);
  ASSERT_TRUE(stream) << table;
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line[0] != '#') take(SplitAtTabs(line));
  }
}

std::vector<Verdict> Verdicts() {
  std::vector<Verdict> verdicts;
  ForEachLine(VX_CORPUS_TABLE, [&](const std::vector<std::string>& fields) {
    ASSERT_EQ(fields.size(), 4U) << fields[0];
    verdicts.push_back({fields[0], std::stoi(fields[1]), fields[2], fields[3]});
  });
  return verdicts;
}

/// A picture as another library reads it.
struct Reference {
  int width = 0;
  int height = 0;
  Bytes rgba;
};

/// Reads a PNG's samples as they are: no gamma, no colour profile.
Reference ReadPng(const fs::path& path) {
  FILE* file = std::fopen(path.c_str(), "rb");
  EXPECT_NE(file, nullptr) << path;
  png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  png_infop info = png_create_info_struct(png);
  png_init_io(png, file);
  png_set_add_alpha(png, 0xFF, PNG_FILLER_AFTER);
  png_read_png(png, info, PNG_TRANSFORM_EXPAND | PNG_TRANSFORM_GRAY_TO_RGB | PNG_TRANSFORM_STRIP_16, nullptr);

  Reference reference{static_cast<int>(png_get_image_width(png, info)),
                      static_cast<int>(png_get_image_height(png, info)),
                      {}};
  png_bytepp rows = png_get_rows(png, info);
  for (int y = 0; y < reference.height; ++y) {
    reference.rgba.insert(reference.rgba.end(), rows[y],
                          rows[y] + 4 * static_cast<ptrdiff_t>(reference.width));
  }
  png_destroy_read_struct(&png, &info, nullptr);
  std::fclose(file);
  return reference;
}

class Corpus : public testing::Test {
 protected:
  void SetUp() override {
    const char* folder = std::getenv("VXFBMP_CORPUS");
    if (folder == nullptr || *folder == '\0') GTEST_SKIP() << "VXFBMP_CORPUS names no folder of real files";
    folder_ = folder;
    ForEachLine(folder_ / "bmpsuite/reference.tsv", [this](const std::vector<std::string>& fields) {
      std::istringstream names(fields.size() > 1 ? fields[1] : "");
      auto& pictures = references_["bmpsuite/" + fields[0]];
      for (std::string name; names >> name;) pictures.push_back(folder_ / "bmpsuite/reference" / name);
    });
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
    const auto pictures = references_.find(file);
    if (pictures == references_.end() || pictures->second.empty()) return "there is no reference";
    std::string mismatch;
    for (const auto& path : pictures->second) {
      const Reference reference = ReadPng(path);
      mismatch = loading::FirstDifference(outcome, reference.width, reference.height, reference.rgba);
      if (mismatch.empty()) break;
      mismatch = path.filename().string() + ": " + mismatch;
    }
    return mismatch;
  }

  fs::path folder_;
  std::map<std::string, std::vector<fs::path>> references_;
};

TEST_F(Corpus, EveryFileEndsAsTheTableSays) {
  for (const Verdict& verdict : Verdicts()) {
    SCOPED_TRACE(verdict.file + ", page " + std::to_string(verdict.page) + ": " + verdict.reason);
    const auto outcome = loading::LoadPage(loading::ReadFile(folder_ / verdict.file), verdict.page);
    const bool shouldLoad = verdict.outcome == "right" || verdict.outcome == "loads";
    EXPECT_STREQ(vx_status_name(outcome.status), shouldLoad ? "STATUS_OK" : verdict.outcome.c_str())
        << outcome.detail;
    if (verdict.outcome == "right") {
      EXPECT_EQ(Mismatch(verdict.file, outcome), "");
    }
    // a file that has come to match its reference should say so
    if (verdict.outcome == "loads" && outcome.status == VX_OK) {
      EXPECT_NE(Mismatch(verdict.file, outcome), "");
    }
  }
}

TEST_F(Corpus, EveryPageHasItsLine) {
  std::map<std::string, int> lines;
  for (const Verdict& verdict : Verdicts()) ++lines[verdict.file];
  for (const std::string& file : Files()) {
    const int pages = std::max(loading::PageCount(loading::ReadFile(folder_ / file)), 1);
    EXPECT_EQ(lines[file], pages) << file;
  }
}

TEST_F(Corpus, EveryPrefixOfEverySmallFile) {
  vx_set_memory_limit(16U << 20);
  for (const std::string& file : Files()) {
    const Bytes bytes = loading::ReadFile(folder_ / file);
    if (bytes.size() >= 10 * 1024) continue;
    SCOPED_TRACE(file);
    for (size_t size = 0; size < bytes.size() && !HasFailure(); ++size) {
      loading::ExpectDefinedOutcomes(Bytes(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(size)), 2);
    }
  }
  vx_set_memory_limit(0);
}

}  // namespace
