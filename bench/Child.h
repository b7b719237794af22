// Other processes: commands that run to their end, and one that answers line by line.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

/// What a command came to.
struct ChildResult {
  bool isDone = false;  ///< it ended with 0
  double seconds = 0;   ///< processor time, its own and the system's for it
  double peakBytes = 0;
};

/// Runs a command; what it prints is dropped.
ChildResult RunChild(const std::vector<std::string>& command);

/// A process that answers a line for a line.
class Conversation {
 public:
  explicit Conversation(const std::vector<std::string>& command);
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;
  ~Conversation();
  /// @return the answer, without its end; "" once the process is gone
  std::string Ask(const std::string& request);

 private:
  pid_t process_ = -1;
  int to_ = -1;
  int from_ = -1;
};

}  // namespace bench
