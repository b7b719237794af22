// vxbmp: puts the process in order, hands over to the command line, and turns what went wrong into an exit
// code.
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <csignal>
#include <exception>
#include <new>

#include "commands/CommandLine.h"
#include "failures/Report.h"

namespace {

/// A file opened later must not get the number of a standard stream that was closed. So each closed one gets
/// a descriptor that is open the wrong way round: using it fails, as using a closed stream does.
void OccupyClosedStreams() {
  constexpr std::array<int, 3> kWrongWayRound{O_WRONLY, O_RDONLY, O_RDONLY};
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    // The lowest free number is taken, which is this stream's.
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", kWrongWayRound[static_cast<size_t>(stream)]);
  }
}

cli::ExitCode Run(int argc, char** argv) {
  try {
    return cli::CommandLine().Run(argc, argv);
  } catch (const cli::OutputClosed&) {
    // Nothing to report: whoever closed the pipe knows.
  } catch (const std::bad_alloc&) {
    cli::ReportMessage("memory ran out");
  } catch (const std::exception& error) {
    cli::ReportMessage(error.what());
  }
  return cli::kExitFailed;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    OccupyClosedStreams();
    // With these signals ignored the write fails instead, which leaves time to clean up.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::setlocale(LC_CTYPE, "C.UTF-8");
    return Run(argc, argv);
  } catch (...) {
    return cli::kExitFailed;  // nothing is left to tell it with
  }
}
