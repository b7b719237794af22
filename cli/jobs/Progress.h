// How far many tasks have come: a bar on a terminal, a line now and then elsewhere, on standard error.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace cli {

struct Counts {
  const char* unit = "files";
  size_t total = 0;
  size_t done = 0;     ///< skipped and failed ones, too
  size_t skipped = 0;  ///< which take no time and say nothing of how long the others will
  size_t failed = 0;
};

/// Not safe to be used by several threads at once.
class Progress {
 public:
  explicit Progress(bool isQuiet);

  /// Shows how far things are, unless it was shown a moment ago.
  void Show(const Counts& counts);
  /// Takes the bar away, before something else is printed and in the end.
  void Clear();

  [[nodiscard]] double Seconds() const;

 private:
  using Clock = std::chrono::steady_clock;

  bool isQuiet_;
  bool isBar_;
  bool isShown_ = false;
  Clock::time_point begin_ = Clock::now();
  Clock::time_point last_ = begin_;
};

/// "[=====>    ]  512 of 1000 files, 83 a second, 6 s left, 1 failed" @param columns of the terminal
std::string BarText(const Counts& counts, double seconds, size_t columns);
/// The same without the bar.
std::string ProgressText(const Counts& counts, double seconds);
/// "8 s", "3 min 20 s", "2 h 5 min"
std::string Duration(double seconds);
/// How many of them in a second, "" where there is nothing to tell it from.
std::string Rate(size_t number, double seconds);

}  // namespace cli
