#include "jobs/Interruption.h"

#include <atomic>
#include <cstdlib>

namespace cli {
namespace {

std::atomic<int> noted = 0;  // needs no lock, so a handler may write it

void Note(int signal) {
  noted = signal;
}

}  // namespace

Interruption::Interruption() {
  noted = 0;
  struct sigaction action {};
  action.sa_handler = Note;
  // Calls of the system that are under way go on.
  action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
  for (size_t i = 0; i < kSignals.size(); ++i) {
    sigaction(kSignals[i], nullptr, &before_[i]);
    if (before_[i].sa_handler != SIG_IGN) sigaction(kSignals[i], &action, nullptr);
  }
}

Interruption::~Interruption() {
  for (size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before_[i], nullptr);
}

int Interruption::Signal() {
  return noted;
}

void EndBy(int signal) {
  std::signal(signal, SIG_DFL);
  std::raise(signal);
  constexpr int kByConvention = 128;  // and the signal's number, where it was blocked
  std::exit(kByConvention + signal);
}

}  // namespace cli
