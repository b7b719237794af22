// What becomes of many files, told while they are worked on and summed up in the end. Any thread may report.
#pragma once

#include <cstddef>
#include <map>
#include <mutex>
#include <string>
#include <vector>
#include <vx/image.hpp>

#include "failures/Errors.h"
#include "jobs/Progress.h"

namespace cli {

enum class Fate { kWritten, kPlanned, kUpToDate, kExists, kFailed };

/// What became of a picture.
struct BatchResult {
  std::string file;
  std::string output{};  ///< "" where there is no name for one
  int page = 0;          ///< 0 where pages are no matter
  Fate fate = Fate::kWritten;
  std::vector<int> remarks{};           ///< vx_remark_code
  std::vector<std::string> messages{};  ///< the last one says what failed
  std::vector<std::string> hints{};     ///< what helps
  vx_error_info error{};                ///< of a failure
  std::string problem{};

  void Fail(const vx::Error& failure);
  void Fail(const FileError& failure);
};

class BatchReport {
 public:
  struct Options {
    bool isJson = false;     ///< an object a picture on standard output
    bool isQuiet = false;    ///< nothing is said but what fails
    bool isDry = false;      ///< what would be written is listed
    bool isVerbose = false;  ///< what many files have in common is said of each
  };

  BatchReport(size_t files, const Options& options);

  /// @throws OutputClosed, FileError
  void Add(const BatchResult& result);
  /// All pictures of a file have been added.
  void EndFile(bool isSkipped);
  void ShowProgress();

  /// How the work ended.
  enum class End { kDone, kFailed, kInterrupted };
  /// Says what was done, what failed, and what helps.
  void Summarize(End end);

  [[nodiscard]] bool HasFailures() const { return number_[static_cast<size_t>(Fate::kFailed)] > 0; }

 private:
  struct Group {
    size_t number = 0;
    std::vector<std::string> files{};  ///< the first few
    std::string advice{};
  };

  void Print(const BatchResult& result);
  /// Says what is said of a picture that was written, unless the same was said of others often enough.
  void Remark(const BatchResult& result, const std::string& message);
  void PrintRemarks() const;
  void PrintGroups() const;
  [[nodiscard]] std::string Sums() const;

  const Options options_;
  std::mutex mutex_;  // of what follows
  Progress progress_;
  Counts counts_;
  size_t number_[5] = {};                  // of each Fate
  std::map<std::string, Group> groups_;    // failures by their reasons
  std::map<std::string, size_t> remarks_;  // how often each was made, by its words
};

}  // namespace cli
