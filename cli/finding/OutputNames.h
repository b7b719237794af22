// What the new files are called: a pattern that is filled in from the names of the old ones.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "finding/FileList.h"

namespace cli {

class OutputNames {
 public:
  /// @param pattern "" for {dir}/{stem}.{ext}, or {dir}/{stem}-{page}.{ext} where all pages are taken
  /// @param ending what {ext} stands for @throws UsageError where it makes no sense
  OutputNames(const std::string& pattern, std::string_view ending, bool takesAllPages);

  /// Whether it has {page}: then every page becomes a file of its own.
  [[nodiscard]] bool NamesPages() const { return namesPages_; }

  /// @return the name of what becomes of a file, below the folder for the new files.
  /// @param page 0: {page} stays as it is @throws UsageError where it would lie elsewhere
  [[nodiscard]] std::string For(const FileList& files, size_t file, int page = 0) const;

 private:
  enum class What { kText, kDir, kPath, kStem, kFile, kPage, kExt };
  struct Piece {
    What what;
    std::string text{};
  };

  void Parse(std::string_view pattern);
  void AddPlace(std::string_view name);
  void RefuseUnlessPagesStandApart() const;
  [[nodiscard]] std::string Fill(const Piece& piece, const FileList& files, size_t file, int page) const;

  std::string pattern_;
  std::string ending_;
  std::vector<Piece> pieces_;
  bool namesPages_ = false;
};

/// Whether the name of a file has a place for the number of a page: %p, or {page} as in patterns.
bool HasPagePlace(std::string_view out);

/// @return `out` with the page's number in that place or, where there is none, behind the stem and a dash.
std::string NameOfPage(const std::string& out, int page);

/// @return a number that depends on the name alone, the same on every machine.
uint64_t HashOf(std::string_view name);

}  // namespace cli
