// What is measured: a row is a piece of work, its contenders are those who do it. One after the other does
// it, round after round, so that whatever else the machine does meets them all alike. Results go to standard
// output, a JSON object a line; bench.py makes tables of them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace bench {

using Bytes = std::vector<uint8_t>;

/// How much is done, and what is left out.
struct Options {
  int side = 4096;          ///< pixels of a side of the pictures
  int pages = 10000;        ///< pages of the icons; those that are edited have twice as many
  int files = 10000;        ///< files to identify
  int hugeSide = 16384;     ///< pixels of a side of the picture that `convert` turns into others
  double seconds = 1.5;     ///< of processor time that a contender gets in a row, from the third round on
  int rounds = 15;          ///< no more than so many
  bool isCounting = false;  ///< one round each, for callgrind, which counts its instructions
  bool hasPeers = true;
  std::string only;               ///< rows whose names contain it
  std::string folder = ".";       ///< for small files, in memory if possible
  std::string largeFolder = ".";  ///< for large files
  std::string icon;               ///< only makes an icon file of so many pages, of this name
  std::string picture;            ///< only makes a bitmap file of that huge side, of this name
};

enum class Kind { Bound, Tight, Ours, Peer };

/// What came of the work, as far as it is not time.
struct Finding {
  std::string fault;     ///< why its time does not count, such as "reads another picture"; "" as a rule
  double bytes = 0;      ///< length of the file that was made
  double error = 0;      ///< mean squared difference of a channel
  double peakBytes = 0;  ///< most memory that the process had
};

struct Contender {
  Kind kind;
  std::string name;
  /// What is timed. @return false where it cannot be done
  std::function<bool()> work;
  /// Looks at what came of the first round.
  std::function<Finding()> look = {};
  /// Makes ready for a round.
  std::function<void()> before = {};
  /// Processor time of the round where another process did the work; it counts instead of this one's.
  std::function<double()> secondsElsewhere = {};
};

struct Row {
  std::string name;
  const char* unit;  ///< one item
  double items;
  double ofBound;  ///< the goal: how much of the speed of the bound is wanted; 0: none
  double ofPeer;   ///< how much of the speed of the fastest peer; 0: none
  std::vector<Contender> contenders;
};

/// Rows are made one by one, when their turn comes, for their pictures are large.
struct RowMaker {
  std::string name;
  std::function<Row(const Options&)> make;
};

/// @return false after saying what is wrong with them
[[nodiscard]] bool ReadOptions(int count, char** arguments, Options& options);

/// Measures the rows that options wish. @return whether all of ours did what they should
[[nodiscard]] bool Run(const std::vector<RowMaker>& rows, const Options& options);

/// Keeps the work on `value` from being left out.
inline void Use(const void* value) {
  asm volatile("" : : "r"(value) : "memory");
}

}  // namespace bench
