// Runs a command for at most so many seconds of processor time and says what it came to: its status, its
// processor time, the most memory it had. A process begins with the peak of the one that started it, so that
// has to be a small one: this.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace {

[[noreturn]] void Become(rlim_t seconds, char** command) {
  const rlimit time{seconds, seconds};
  setrlimit(RLIMIT_CPU, &time);
  rlimit stack{};
  getrlimit(RLIMIT_STACK, &stack);
  stack.rlim_cur = stack.rlim_max;  // of which a part is for arguments
  setrlimit(RLIMIT_STACK, &stack);
  const int nowhere = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(nowhere, stream);
  execvp(command[0], command);
  _exit(127);
}

double SecondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  const pid_t process = fork();
  if (process == 0) Become(std::strtoul(argv[1], nullptr, 10), argv + 2);
  int status = 0;
  rusage usage{};
  if (process < 0 || wait4(process, &status, 0, &usage) < 0) return 1;
  const int exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  std::printf("%d %.6f %ld\n", exitStatus, SecondsOf(usage.ru_utime) + SecondsOf(usage.ru_stime),
              usage.ru_maxrss);
  return 0;
}
