#include "words/Table.h"

#include <algorithm>

#include "words/Text.h"

namespace cli {

std::string InColumns(const std::vector<TableRow>& rows) {
  std::vector<size_t> widths;
  for (const TableRow& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], DisplayWidth(row[i]));
  }
  constexpr size_t kGap = 2;
  std::string text;
  for (const TableRow& row : rows) {
    for (size_t i = 0; i + 1 < row.size(); ++i) text += PadRight(row[i], widths[i] + kGap);
    text.append(row.back()).append("\n");
  }
  return text;
}

}  // namespace cli
