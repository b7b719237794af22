// Ctrl-C and its relatives, asked for in time rather than suffered.
#pragma once

#include <array>
#include <csignal>

namespace cli {

/// While it lives, the first of these signals is only noted, so that work in hand can be finished; a second
/// one ends the process at once. Signals that are ignored stay so. One at a time.
class Interruption {
 public:
  Interruption();
  ~Interruption();
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  /// @return the signal that came, 0 for none.
  static int Signal();

 private:
  static constexpr std::array kSignals = {SIGINT, SIGTERM, SIGHUP};
  std::array<struct sigaction, kSignals.size()> before_{};
};

/// Ends the process as the signal would have, so that whoever started it knows.
[[noreturn]] void EndBy(int signal);

}  // namespace cli
