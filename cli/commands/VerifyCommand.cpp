// vxbmp verify: what is wrong with files, and what of that matters.
#include <fmt/format.h>
#include <vx/verify.h>

#include <array>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "commands/Command.h"
#include "commands/Verdicts.h"
#include "failures/Report.h"
#include "finding/FileFinder.h"
#include "finding/NameList.h"
#include "streams/Input.h"
#include "streams/Output.h"
#include "words/Text.h"

namespace cli {
namespace {

struct VerifyArguments {
  std::vector<std::string> files;
  std::string filesFrom;
  bool recursive = false;
  std::string purpose;
  bool strict = false;
  bool verbose = false;
  bool quiet = false;
  bool json = false;
};

constexpr std::array<std::string_view, 4> kPurposes = {"", "favicon", "windows-icon", "cursor"};

int ParsePurpose(const std::string& purpose) {
  for (size_t i = 0; i < kPurposes.size(); ++i) {
    if (kPurposes[i] == purpose) return static_cast<int>(i);
  }
  throw UsageError(fmt::format("--as {}: favicon, windows-icon or cursor is needed", Printable(purpose)));
}

/// What printing throws must not pass through the library: it waits here.
struct FindingWalk {
  const std::string& file;
  Verdicts& verdicts;
  FindingCounts counts{};
  std::exception_ptr failure{};

  static int Take(void* user, const vx_finding* finding) {
    auto& walk = *static_cast<FindingWalk*>(user);
    try {
      walk.counts.Add(finding->severity);
      walk.verdicts.Add(walk.file, *finding);
      return 0;
    } catch (...) {
      walk.failure = std::current_exception();
      return 1;
    }
  }
};

class Verification {
 public:
  explicit Verification(const VerifyArguments& arguments)
      : arguments_(arguments),
        purpose_(ParsePurpose(arguments.purpose)),
        verdicts_(arguments.json ? NewVerdictLines() : NewVerdictList(arguments.verbose, arguments.quiet)) {}

  ExitCode Run() {
    FileFinder finder({.isRecursive = arguments_.recursive}, [](const FileList&) { return true; });
    bool readsStream = false;
    const auto find = [&](const std::string& word) {
      if (word == kStandardStream) {
        readsStream = true;
      } else {
        finder.Find(word);
      }
    };
    for (const std::string& word : arguments_.files) find(word);
    if (!arguments_.filesFrom.empty()) ReadNames(arguments_.filesFrom, find);
    for (const FileError& failure : finder.Failures()) Fail(failure);
    if (finder.Files().Size() == 0 && !readsStream && finder.Failures().empty()) {
      ReportMessage(arguments_.recursive ? "no pictures were found"
                                         : "no pictures were found; -r looks into the folders below, too");
    }
    for (size_t i = 0; i < finder.Files().Size(); ++i) Verify(finder.Files().PathOf(i));
    if (readsStream) Verify(std::string(kStandardStream));
    return exitCode_;
  }

 private:
  void Verify(const std::string& path) try {
    Input input(path.c_str());
    const std::string name = InputName(path.c_str());
    FindingWalk walk{name, *verdicts_};
    const int status = vx_verify(input.Source().Get(), purpose_, FindingWalk::Take, &walk);
    if (walk.failure) std::rethrow_exception(walk.failure);
    vx::Check(status);
    verdicts_->End(name, walk.counts);
    if ((arguments_.strict ? walk.counts.All() : walk.counts.Errors()) > 0) exitCode_ = kExitFailed;
  } catch (const vx::Error& error) {
    const std::string name = InputName(path.c_str());
    verdicts_->Fail(name, error);
    ReportFailure(error, {.file = name});
    exitCode_ = kExitFailed;
  } catch (const FileError& error) {
    Fail(error);
  }

  void Fail(const FileError& error) {
    ReportMessage(error.what());
    exitCode_ = kExitFailed;
  }

  const VerifyArguments& arguments_;
  int purpose_;
  std::unique_ptr<Verdicts> verdicts_;
  ExitCode exitCode_ = kExitOk;
};

ExitCode Run(const VerifyArguments& arguments) {
  if (arguments.files.empty() && arguments.filesFrom.empty())
    throw UsageError("FILE is required, or --files-from");
  try {
    return Verification(arguments).Run();
  } catch (const FileError& error) {
    ReportMessage(error.what());
    return kExitFailed;
  }
}

}  // namespace

Action DeclareVerify(Arguments& command) {
  auto arguments = std::make_shared<VerifyArguments>();
  command.Add(
      {.name = "FILE", .help = "files, folders, or patterns such as 'icons/**/*.ico'; - is\nstandard input"},
      arguments->files);
  command.Add(
      {.name = "--files-from",
       .help = "take the names in FILE, too, a line each or with a 0 behind\neach; - is standard input",
       .value = "FILE"},
      arguments->filesFrom);
  command.Add({.name = "-r,--recursive", .help = "search folders with all that is below them"},
              arguments->recursive);
  command.Add({.name = "--as",
               .help = "find what is missing for that use, too",
               .value = "favicon|windows-icon|cursor"},
              arguments->purpose);
  command.Add({.name = "--strict", .help = "end with 1 for warnings and notes, too"}, arguments->strict);
  command.Add({.name = "-v,--verbose", .help = "say what to do about each finding"}, arguments->verbose);
  command.Add({.name = "-q,--quiet", .help = "say nothing of files without findings"}, arguments->quiet);
  command.Add({.name = "--json", .help = "print one JSON object a line for every finding, and every file"},
              arguments->json);
  return [arguments] { return Run(*arguments); };
}

}  // namespace cli
