// An entry is found by counting through the runs.
#include "beyond/EntryList.h"

#include <algorithm>

namespace vxkrn {

void EntryList::Assign(const std::vector<ICONDIRENTRY>& entries) {
  runs_.clear();
  count_ = static_cast<int>(entries.size());
  for (std::size_t first = 0; first < entries.size(); first += kLongestRun / 2) {
    const std::size_t end = std::min(entries.size(), first + kLongestRun / 2);
    runs_.emplace_back(entries.data() + first, entries.data() + end);
  }
}

/// The place of a page; the end of the last run for one behind the last.
EntryList::Place EntryList::Find(int page) const noexcept {
  auto index = static_cast<std::size_t>(page - 1);
  std::size_t run = 0;
  while (run + 1 < runs_.size() && index >= runs_[run].size()) index -= runs_[run++].size();
  return {run, index};
}

ICONDIRENTRY& EntryList::At(int page) noexcept {
  const Place place = Find(page);
  return runs_[place.run][place.index];
}

const ICONDIRENTRY& EntryList::At(int page) const noexcept {
  const Place place = Find(page);
  return runs_[place.run][place.index];
}

void EntryList::Insert(int page, const ICONDIRENTRY& entry) {
  if (runs_.empty()) runs_.emplace_back();
  const Place place = Find(page);
  Run& run = runs_[place.run];
  run.insert(run.begin() + static_cast<std::ptrdiff_t>(place.index), entry);
  ++count_;
  if (run.size() <= kLongestRun) return;
  const auto half = run.begin() + static_cast<std::ptrdiff_t>(run.size() / 2);
  Run second(half, run.end());
  run.erase(half, run.end());
  runs_.insert(runs_.begin() + static_cast<std::ptrdiff_t>(place.run) + 1, std::move(second));
}

void EntryList::Erase(int page) noexcept {
  const Place place = Find(page);
  Run& run = runs_[place.run];
  run.erase(run.begin() + static_cast<std::ptrdiff_t>(place.index));
  if (run.empty()) runs_.erase(runs_.begin() + static_cast<std::ptrdiff_t>(place.run));
  --count_;
}

}  // namespace vxkrn
