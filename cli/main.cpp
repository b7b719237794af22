// vxbmp: reads the command line, lets a command do its work, and turns what went wrong into an exit code.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>
#include <vx/vx.h>

#include <CLI/CLI.hpp>
#include <array>
#include <clocale>
#include <csignal>
#include <cstdint>
#include <exception>
#include <new>
#include <vector>

#include "Command.h"
#include "Output.h"
#include "Report.h"
#include "Text.h"

namespace {

using cli::Command;
using cli::ExitCode;

/// A file opened later must not get the number of a standard stream that was closed. What takes the place
/// of the stream fails as a closed one does: a descriptor that is open the wrong way round.
void OccupyClosedStreams() {
  constexpr std::array<int, 3> kWrongWayRound{O_WRONLY, O_RDONLY, O_RDONLY};
  for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
    // The lowest free number is taken, which is this stream's.
    if (fcntl(stream, F_GETFD) < 0) open("/dev/null", kWrongWayRound[static_cast<size_t>(stream)]);
  }
}

/// The parser and the commands it knows, with what each of them does.
class CommandLine {
 public:
  CommandLine() {
    app_.name("vxbmp");
    app_.require_subcommand(1);
    app_.fallthrough();
    app_.footer("vxbmp COMMAND --help says more about a command and gives examples.");
    app_.set_version_flag(
        "--version", [] { return fmt::format("vxbmp {}", vx_version()); }, "print the version and exit");
    app_.set_help_flag("-h,--help", "print this help and exit");
    app_.add_option("--memory-limit", memoryLimit_, "memory that pictures may take, 1G unless given")
        ->type_name("SIZE")
        ->transform(CLI::AsSizeValue(false).description(""));
    for (const Command& command : cli::AllCommands()) {
      CLI::App* sub = app_.add_subcommand(command.name, command.summary);
      sub->footer(command.details);
      actions_.push_back(command.declare(*sub));
    }
  }

  ExitCode Run(int argc, char** argv) {
    app_.parse(argc, argv);
    if (memoryLimit_ > 0) vx_set_memory_limit(memoryLimit_);
    for (size_t i = 0; i < actions_.size(); ++i) {
      if (app_.got_subcommand(cli::AllCommands()[i].name)) return actions_[i]();
    }
    return cli::kExitUsage;
  }

  /// What the parser threw: a request for help, or a mistake.
  ExitCode Explain(const CLI::ParseError& error) {
    if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success)) {
      std::ostringstream text;
      app_.exit(error, text, text);
      cli::PrintToStandardOutput(text.str());
      return cli::kExitOk;
    }
    return ExplainUsage(error.what());
  }

  ExitCode ExplainUsage(const char* problem) const {
    const auto used = app_.get_subcommands();
    const std::string command = used.empty() ? "" : used.front()->get_name() + " ";
    cli::ReportMessage(fmt::format("{}\nTry: vxbmp {}--help", problem, command));
    return cli::kExitUsage;
  }

 private:
  CLI::App app_{"Reads Windows and OS/2 bitmaps, icons and cursors."};
  uint64_t memoryLimit_ = 0;
  std::vector<cli::Action> actions_;
};

ExitCode ParseAndRun(int argc, char** argv) {
  CommandLine commandLine;
  try {
    return commandLine.Run(argc, argv);
  } catch (const CLI::ParseError& error) {
    return commandLine.Explain(error);
  } catch (const cli::UsageError& error) {
    return commandLine.ExplainUsage(error.what());
  }
}

ExitCode Run(int argc, char** argv) {
  try {
    return ParseAndRun(argc, argv);
  } catch (const cli::OutputClosed&) {
    return cli::kExitFailed;
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
    std::signal(SIGPIPE, SIG_IGN);
    std::setlocale(LC_CTYPE, "C.UTF-8");
    return Run(argc, argv);
  } catch (...) {
    return cli::kExitFailed;  // nothing is left to tell it with
  }
}
