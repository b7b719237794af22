// Which files there are, whatever their names: links to one are one.
#pragma once

#include <sys/stat.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace cli {

class FileIds {
 public:
  void Add(const struct stat& status) { ids_.emplace_back(status.st_dev, status.st_ino); }
  /// To be called once all are added, before any is looked for.
  void Sort() { std::sort(ids_.begin(), ids_.end()); }
  [[nodiscard]] bool Has(const struct stat& status) const {
    return std::binary_search(ids_.begin(), ids_.end(), Id(status.st_dev, status.st_ino));
  }

 private:
  using Id = std::pair<dev_t, ino_t>;
  std::vector<Id> ids_;
};

}  // namespace cli
