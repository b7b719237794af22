#include "commands/BatchArguments.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <thread>

#include "failures/Errors.h"
#include "words/Numbers.h"
#include "words/Text.h"

namespace cli {

Shard ParseShard(const std::string& shard) {
  if (shard.empty()) return {};
  const size_t slash = std::min(shard.find('/'), shard.size());
  const std::optional<int> part = ParseInt(std::string_view(shard).substr(0, slash), 1);
  const std::optional<int> parts =
      ParseInt(std::string_view(shard).substr(std::min(slash + 1, shard.size())), 1);
  if (part && parts && *part <= *parts) {
    return {static_cast<uint64_t>(*part) - 1, static_cast<uint64_t>(*parts)};
  }
  throw UsageError(
      fmt::format("--shard {}: I/N is needed, such as 1/4 for the first of four parts", Printable(shard)));
}

size_t ParseThreads(const std::string& threads) {
  constexpr int kMostThreads = 1024;
  if (threads.empty()) return std::max(std::thread::hardware_concurrency(), 1U);
  const std::optional<int> number = ParseInt(threads, 1);
  if (number && *number <= kMostThreads) return static_cast<size_t>(*number);
  throw UsageError(
      fmt::format("-j {}: a whole number from 1 to {} is needed", Printable(threads), kMostThreads));
}

namespace {

void DeclareFiles(Arguments& command, BatchArguments& arguments) {
  command.Add({.name = "IN", .help = "files, folders, or patterns such as 'icons/**/*.ico'"}, arguments.in);
  command.Add(
      {.name = "--files-from",
       .help = "take the names in FILE, too, a line each or with a 0 behind\neach; - is standard input",
       .value = "FILE"},
      arguments.filesFrom);
  command.Add({.name = "-r,--recursive", .help = "search folders with all that is below them"},
              arguments.recursive);
  command.Add({.name = "--dir",
               .help = "folder for the new files, made where it is not there",
               .value = "FOLDER",
               .isRequired = true},
              arguments.dir);
  command.Add({.name = "--name",
               .help = "what they are called there; {dir}/{stem}.{ext} unless given, and\n"
                       "{dir}/{stem}-{page}.{ext} with --page all",
               .value = "PATTERN"},
              arguments.name);
}

void DeclareWork(Arguments& command, BatchArguments& arguments) {
  command.Add({.name = "-j,--jobs",
               .help = "files done at once; unless given, as many as there are processors",
               .value = "N"},
              arguments.threads);
  command.Add({.name = "-k,--keep-going", .help = "do not stop at the first file that fails"},
              arguments.keepGoing);
  command.Add({.name = "--resume", .help = "leave out what is there and as new as its file"},
              arguments.resume);
  command.Add({.name = "--no-clobber", .help = "leave out what is there"}, arguments.noClobber);
  command.Add(
      {.name = "--shard", .help = "do part I of N, which other machines or jobs may share", .value = "I/N"},
      arguments.shard);
  command.Add({.name = "-n,--dry-run", .help = "list what would be written, and write nothing"},
              arguments.dryRun);
  command.Add({.name = "--json", .help = "print one JSON object a picture, for scripts"}, arguments.json);
  command.Add({.name = "-q,--quiet", .help = "say nothing but what fails"}, arguments.quiet);
  command.Add(
      {.name = "-v,--verbose", .help = "say everything of every file, however often it has been said"},
      arguments.verbose);
}

}  // namespace

void DeclareBatchArguments(Arguments& command, BatchArguments& arguments) {
  DeclareFiles(command, arguments);
  arguments.save.Declare(command, SaveArguments::Into::kManyFiles);
  DeclareWork(command, arguments);
  arguments.page.Declare(command, OnePage::Then::kSavedEach);
  arguments.raw.Declare(command);
  command.Exclude("--raw", "--page");
}

}  // namespace cli
