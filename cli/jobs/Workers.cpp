#include "jobs/Workers.h"

#include <algorithm>
#include <system_error>
#include <utility>

namespace cli {

Workers::Workers(size_t count, size_t threads, Task task) : count_(count), task_(std::move(task)) {
  const std::lock_guard lock(mutex_);
  while (threads_.size() < std::min(count, threads)) {
    try {
      threads_.emplace_back([this] { Work(); });
      ++working_;
    } catch (const std::system_error&) {
      if (threads_.empty()) throw;
      break;  // fewer do it, too
    }
  }
}

Workers::~Workers() {
  Stop();
  for (std::thread& thread : threads_) thread.join();
}

void Workers::Work() {
  try {
    while (!isStopped_) {
      const size_t task = next_++;
      if (task >= count_) break;
      if (!task_(task)) Stop();
    }
  } catch (...) {
    Stop();
    const std::lock_guard lock(mutex_);
    if (!failure_) failure_ = std::current_exception();
  }
  const std::lock_guard lock(mutex_);
  if (--working_ == 0) changed_.notify_all();
}

bool Workers::WaitFor(std::chrono::milliseconds time) {
  std::unique_lock lock(mutex_);
  if (!changed_.wait_for(lock, time, [this] { return working_ == 0; })) return false;
  if (failure_) std::rethrow_exception(std::exchange(failure_, nullptr));
  return true;
}

void MemoryTurns::Begin(bool isAlone) {
  std::unique_lock lock(mutex_);
  if (isAlone) {
    ++waiting_;
    changed_.wait(lock, [this] { return sharing_ == 0 && !isAlone_; });
    --waiting_;
    isAlone_ = true;
  } else {
    changed_.wait(lock, [this] { return waiting_ == 0 && !isAlone_; });
    ++sharing_;
  }
}

void MemoryTurns::End(bool isAlone) {
  const std::lock_guard lock(mutex_);
  if (isAlone) {
    isAlone_ = false;
  } else {
    --sharing_;
  }
  changed_.notify_all();
}

}  // namespace cli
