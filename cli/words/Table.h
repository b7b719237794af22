// Text in columns.
#pragma once

#include <string>
#include <vector>

namespace cli {

using TableRow = std::vector<std::string>;

/// Rows that become lines, the columns as wide as their widest cell on a terminal. Of a table that is long
/// the widths settle as it goes, so that it need not be kept whole.
class Table {
 public:
  explicit Table(const TableRow& titles) { Keep(titles); }

  /// Takes a row in. @return lines that are finished, mostly none
  std::string Add(const TableRow& row);
  /// @return the rest of the lines; none at all where there was no row
  std::string Finish();

 private:
  static constexpr size_t kRowsKept = 4096;

  void Keep(const TableRow& row);
  std::string TakeLines();

  std::vector<size_t> widths_;
  std::string cells_;       // of the rows that are kept, each ended by a zero byte
  std::string cellCounts_;  // of the same rows, a character each
  bool hasRows_ = false;
};

}  // namespace cli
