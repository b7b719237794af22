// Distances are counted row by row, three rows of the table at a time.
#include "words/Nearest.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

namespace cli {
namespace {

constexpr size_t kLongestWord = 64;  // nobody mistypes more

size_t Distance(std::string_view one, std::string_view other) {
  std::vector<size_t> before(other.size() + 1);
  std::vector<size_t> last(other.size() + 1);
  std::vector<size_t> row(other.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= one.size(); ++i) {
    row[0] = i;
    for (size_t j = 1; j <= other.size(); ++j) {
      const size_t replaced = last[j - 1] + (one[i - 1] == other[j - 1] ? 0 : 1);
      row[j] = std::min({replaced, last[j] + 1, row[j - 1] + 1});
      const bool isExchanged = i > 1 && j > 1 && one[i - 1] == other[j - 2] && one[i - 2] == other[j - 1];
      if (isExchanged) row[j] = std::min(row[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(row);
  }
  return last.back();
}

}  // namespace

std::string_view NearestTo(std::string_view word, std::span<const std::string_view> candidates) {
  if (word.size() > kLongestWord) return "";
  std::string_view nearest;
  size_t least = std::max<size_t>(word.size() / 3, 1) + 1;
  for (const std::string_view candidate : candidates) {
    const size_t distance = Distance(word, candidate);
    if (distance >= least || distance >= word.size()) continue;
    least = distance;
    nearest = candidate;
  }
  return nearest;
}

std::string DidYouMean(std::string_view word, std::span<const std::string_view> candidates) {
  const std::string_view nearest = NearestTo(word, candidates);
  return nearest.empty() ? "" : fmt::format("; did you mean {}?", nearest);
}

}  // namespace cli
