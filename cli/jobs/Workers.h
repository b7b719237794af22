// Many tasks on a few threads. Knows nothing of what they do.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace cli {

class Workers {
 public:
  /// Does a task. @return whether to go on: false stops all
  using Task = std::function<bool(size_t)>;

  /// Begins tasks 0 to count - 1, in this order. The first exception of one stops all.
  /// @throws std::system_error where not even one thread can be had
  Workers(size_t count, size_t threads, Task task);
  /// Stops, and waits for the tasks in hand.
  ~Workers();
  Workers(const Workers&) = delete;
  Workers& operator=(const Workers&) = delete;

  /// No further tasks are begun.
  void Stop() { isStopped_ = true; }
  /// @return whether all have ended; false after that time. @throws what a task threw, once all have
  bool WaitFor(std::chrono::milliseconds time);

 private:
  void Work();

  const size_t count_;
  const Task task_;
  std::atomic<size_t> next_ = 0;
  std::atomic<bool> isStopped_ = false;
  std::mutex mutex_;  // of what follows
  std::condition_variable changed_;
  size_t working_ = 0;
  std::exception_ptr failure_;
  std::vector<std::thread> threads_;
};

/// Who asks for it gets all the memory there is for a while: what he does is not done beside anything else.
class MemoryTurns {
 public:
  /// Does it beside others.
  template <class Act>
  auto Shared(const Act& act) {
    const Turn turn(*this, false);
    return act();
  }
  /// Waits until the others are through, and does it then; they wait meanwhile.
  template <class Act>
  auto Alone(const Act& act) {
    const Turn turn(*this, true);
    return act();
  }

 private:
  class Turn {
   public:
    Turn(MemoryTurns& turns, bool isAlone) : turns_(turns), isAlone_(isAlone) { turns.Begin(isAlone); }
    ~Turn() { turns_.End(isAlone_); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    MemoryTurns& turns_;
    bool isAlone_;
  };

  void Begin(bool isAlone);
  void End(bool isAlone);

  std::mutex mutex_;
  std::condition_variable changed_;
  size_t sharing_ = 0;
  size_t waiting_ = 0;  // for a turn alone
  bool isAlone_ = false;
};

}  // namespace cli
