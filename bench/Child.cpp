#include "Child.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

extern "C" char** environ;  // NOLINT(readability-redundant-declaration)

namespace bench {
namespace {

/// @return -1 where it cannot be started
pid_t Start(std::vector<std::string> command, posix_spawn_file_actions_t& actions) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (std::string& argument : command) arguments.push_back(argument.data());
  arguments.push_back(nullptr);
  pid_t process = -1;
  const int failure = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return failure == 0 ? process : -1;
}

}  // namespace

ChildResult RunChild(const std::vector<std::string>& command) {
  std::vector<std::string> measured = {BENCH_RUN, "600"};
  measured.insert(measured.end(), command.begin(), command.end());
  ChildResult result;
  const std::string answer = Conversation(measured).Ask("");
  char* next = nullptr;
  const long status = std::strtol(answer.c_str(), &next, 10);
  if (next == answer.c_str()) return {};
  result.isDone = status == 0;
  result.seconds = std::strtod(next, &next);
  result.peakBytes = 1024.0 * std::strtod(next, &next);
  return result;
}

Conversation::Conversation(const std::vector<std::string>& command) {
  int requests[2];
  int answers[2];
  if (pipe2(requests, O_CLOEXEC) != 0 || pipe2(answers, O_CLOEXEC) != 0) return;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, requests[0], STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, answers[1], STDOUT_FILENO);
  process_ = Start(command, actions);
  close(requests[0]);
  close(answers[1]);
  to_ = requests[1];
  from_ = answers[0];
}

Conversation::~Conversation() {
  close(to_);  // which ends it
  close(from_);
  if (process_ >= 0) waitpid(process_, nullptr, 0);
}

std::string Conversation::Ask(const std::string& request) {
  const std::string line = request + "\n";
  if (write(to_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) return "";
  std::string answer;
  char byte = 0;
  while (read(from_, &byte, 1) == 1 && byte != '\n') answer += byte;
  return answer;
}

}  // namespace bench
