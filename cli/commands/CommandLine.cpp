#include "commands/CommandLine.h"

#include <fmt/format.h>
#include <vx/vx.h>

#include <algorithm>
#include <cstdio>
#include <optional>

#include "commands/Command.h"
#include "failures/Report.h"
#include "streams/Output.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {
namespace {

/// What people get who only want to know what this is: the commonest jobs.
constexpr const char* kGreeting =
    R"(vxbmp reads and writes Windows and OS/2 bitmaps, icons and cursors. The commonest jobs:

  vxbmp info photo.bmp                            what is in a file, or in many
  vxbmp view photo.bmp                            see it here
  vxbmp convert photo.bmp photo.png               turn it into another kind of file
  vxbmp batch folder -r --to png --dir new        the same of a whole folder
  vxbmp icon logo.png -o favicon.ico              make an icon of a picture

vxbmp --help lists all commands, vxbmp COMMAND --help says more about one.
)";

ExitCode ExplainUsage(const std::string& problem, const std::string& path) {
  ReportMessage(fmt::format("{}\nTry: vxbmp {}{}--help", problem, path, path.empty() ? "" : " "));
  return kExitUsage;
}

}  // namespace

CommandLine::CommandLine()
    : parser_({.name = "vxbmp",
               .summary = "Reads and writes Windows and OS/2 bitmaps, icons and cursors.",
               .details = "vxbmp COMMAND --help says more about a command and gives examples."}) {
  Arguments& top = parser_.Top();
  top.AddVersion({.name = "--version", .help = "print the version and exit"},
                 fmt::format("vxbmp {}", vx_version()));
  top.Add({.name = "--memory-limit",
           .help = "memory that pictures may take, such as 512M or 4G; 1G unless given.\n"
                   "Bytes, or with K, M, G or T (KB, KiB and so on: 1024 each)",
           .value = "SIZE"},
          memoryLimit_);
  for (const Command& command : AllCommands()) {
    Arguments& arguments = top.AddCommand({.name = command.name,
                                           .summary = command.summary,
                                           .details = command.details,
                                           .essentials = command.essentials});
    arguments.SetAction(command.declare(arguments));
  }
}

ExitCode CommandLine::Run(int argc, char** argv) try {
  const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
  if (!words.empty() && words.front() == "help") return Help(words);
  if (const std::optional<std::string> text = parser_.Parse(argc, argv)) {
    PrintToStandardOutput(*text);
    return kExitOk;
  }
  return Act();
} catch (const CommandMissing&) {
  std::fputs(kGreeting, stderr);
  return kExitUsage;
} catch (const UsageError& error) {
  return ExplainUsage(error.what(), parser_.Used().Path());
}

ExitCode CommandLine::Help(const std::vector<std::string>& words) {
  if (words.size() > 2) throw UsageError("help is about one command at a time");
  PrintToStandardOutput(parser_.HelpOf(words.size() < 2 ? "" : words[1]));
  return kExitOk;
}

ExitCode CommandLine::Act() const {
  ApplyMemoryLimit();
  return parser_.Used().GetAction()();
}

void CommandLine::ApplyMemoryLimit() const {
  if (memoryLimit_.empty()) return;
  const std::optional<uint64_t> bytes = ParseByteCount(memoryLimit_);
  if (!bytes || *bytes == 0) {
    throw UsageError(fmt::format("--memory-limit {}: a number of bytes is needed, such as 512M or 4G",
                                 Printable(memoryLimit_)));
  }
  vx_set_memory_limit(*bytes);
}

}  // namespace cli
