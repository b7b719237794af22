#include "words/Table.h"

#include <algorithm>

#include "words/Text.h"

namespace cli {

void Table::Keep(const TableRow& row) {
  widths_.resize(std::max(widths_.size(), row.size()));
  for (size_t i = 0; i < row.size(); ++i) {
    widths_[i] = std::max(widths_[i], DisplayWidth(row[i]));
    cells_.append(row[i]).push_back('\0');
  }
  cellCounts_.push_back(static_cast<char>(row.size()));
}

std::string Table::TakeLines() {
  constexpr size_t kGap = 2;
  std::string text;
  size_t at = 0;
  for (const char count : cellCounts_) {
    for (char i = 0; i < count; ++i) {
      const std::string cell = cells_.substr(at, cells_.find('\0', at) - at);
      at += cell.size() + 1;
      text += i + 1 < count ? PadRight(cell, widths_[static_cast<size_t>(i)] + kGap) : cell + "\n";
    }
  }
  cells_.clear();
  cellCounts_.clear();
  return text;
}

std::string Table::Add(const TableRow& row) {
  hasRows_ = true;
  Keep(row);
  return cellCounts_.size() < kRowsKept ? std::string() : TakeLines();
}

std::string Table::Finish() {
  return hasRows_ ? TakeLines() : std::string();
}

}  // namespace cli
