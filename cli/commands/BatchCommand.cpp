// vxbmp batch: many files, each as convert would do it, on all processors.
#include <fmt/format.h>
#include <sys/stat.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "arguments/PageSelection.h"
#include "arguments/RawArguments.h"
#include "arguments/SaveArguments.h"
#include "commands/BatchArguments.h"
#include "commands/Command.h"
#include "failures/Report.h"
#include "finding/FileFinder.h"
#include "finding/NameList.h"
#include "finding/OutputCheck.h"
#include "finding/OutputNames.h"
#include "jobs/BatchReport.h"
#include "jobs/Conversion.h"
#include "jobs/Interruption.h"
#include "jobs/Workers.h"
#include "streams/Input.h"
#include "streams/NewFile.h"
#include "streams/Output.h"
#include "words/Text.h"

namespace cli {
namespace {

/// Failures that every other file would share.
bool ConcernsAll(const vx_error_info& error) {
  switch (error.reason) {
    case VX_REASON_DISK_FULL: return error.first == ENOSPC || error.first == EDQUOT;
    case VX_REASON_NO_FILTER:
    case VX_REASON_BAD_FILTER: return true;
    default: return false;
  }
}

/// Whether memory was short only because others had some.
bool FitsAlone(const vx_error_info& error) {
  return error.reason == VX_REASON_OVER_MEMORY_LIMIT && error.first <= error.second;
}

/// Whether a file was written after another was changed, going by the times that both have.
bool IsUpToDate(const std::string& out, const std::string& in) {
  struct stat newer {};
  struct stat older {};
  if (stat(out.c_str(), &newer) != 0 || stat(in.c_str(), &older) != 0) return false;
  return std::pair(newer.st_mtim.tv_sec, newer.st_mtim.tv_nsec) >=
         std::pair(older.st_mtim.tv_sec, older.st_mtim.tv_nsec);
}

class Batch {
 public:
  explicit Batch(const BatchArguments& arguments)
      : arguments_(arguments),
        shard_(ParseShard(arguments.shard)),
        threads_(ParseThreads(arguments.threads)),
        raw_(arguments.raw.Describe()),
        conversion_(Describe()),
        names_(arguments.name, EndingFor(conversion_.save.format), arguments.page.MeansAll()),
        finder_({.isRecursive = arguments.recursive, .takesAll = raw_ != nullptr, .leftOut = arguments.dir},
                [this](const FileList& files) { return IsInShard(files); }) {
    if (names_.NamesPages() && raw_) {
      throw UsageError("--raw: headerless data has no pages, so --name cannot have {page}");
    }
    if (names_.NamesPages() && arguments_.page.WasGiven() && !arguments_.page.MeansAll()) {
      throw UsageError("--name with {page} takes all pages, so --page cannot name one");
    }
  }

  ExitCode Run() {
    FindFiles();
    CheckOutputs(finder_, names_, arguments_.dir);
    if (!arguments_.dryRun) MakeFolder(arguments_.dir);
    report_.emplace(finder_.Files().Size(), BatchReport::Options{.isJson = arguments_.json,
                                                                 .isQuiet = arguments_.quiet,
                                                                 .isDry = arguments_.dryRun,
                                                                 .isVerbose = arguments_.verbose});
    const Interruption interruption;
    Work();
    return Finish();
  }

 private:
  struct File {
    std::string path;
    std::optional<Input> input{};  // opened once it is needed
  };

  [[nodiscard]] Conversion Describe() const {
    Conversion conversion;
    conversion.save = arguments_.save.Describe(arguments_.dir, arguments_.raw.Palette().ForOutput());
    conversion.save.drop_alpha = arguments_.page.DropsAlpha() ? 1 : 0;
    conversion.load = arguments_.page.Options();
    conversion.missing = arguments_.page.Missing();
    if (raw_) conversion.load.raw = &raw_->Get();
    return conversion;
  }

  /// By what becomes of a file: two that would become one are in one part, where that is noticed, and files
  /// that come or go between the parts change nothing for the others.
  [[nodiscard]] bool IsInShard(const FileList& files) const {
    return shard_.parts == 1 || HashOf(names_.For(files, files.Size() - 1)) % shard_.parts == shard_.part;
  }

  void FindFiles() {
    const auto find = [this](const std::string& word) {
      if (word == kStandardStream) {
        throw UsageError("batch reads files; for standard input there is vxbmp convert");
      }
      finder_.Find(word);
    };
    for (const std::string& word : arguments_.in) find(word);
    if (!arguments_.filesFrom.empty()) ReadNames(arguments_.filesFrom, find);
    for (const FileError& failure : finder_.Failures()) ReportMessage(failure.what());
    if (!finder_.Failures().empty() && !arguments_.keepGoing) {
      throw FileError(VX_OPEN_ERROR, arguments_.dir,
                      "nothing was written; --keep-going does without those folders");
    }
    if (finder_.Files().Size() == 0 && shard_.parts == 1 && !arguments_.quiet) {
      ReportMessage(arguments_.recursive ? "no pictures were found"
                                         : "no pictures were found; -r looks into the folders below, too");
    }
  }

  void Work() {
    constexpr std::chrono::milliseconds kGlance(100);
    Workers workers(finder_.Files().Size(), arguments_.dryRun ? 1 : threads_,
                    [this](size_t file) { return Do(file); });
    while (!workers.WaitFor(kGlance)) {
      if (Interruption::Signal() != 0) workers.Stop();
      report_->ShowProgress();
    }
  }

  ExitCode Finish() {
    const int signal = Interruption::Signal();
    using End = BatchReport::End;
    report_->Summarize(signal != 0 ? End::kInterrupted : isStopped_ ? End::kFailed : End::kDone);
    if (signal != 0) EndBy(signal);
    return report_->HasFailures() || !finder_.Failures().empty() ? kExitFailed : kExitOk;
  }

  [[nodiscard]] bool MustStop() const { return isStopped_ || Interruption::Signal() != 0; }

  /// A file with all pages that are wanted. @return whether to go on
  bool Do(size_t index) {
    File file{.path = finder_.Files().PathOf(index)};
    bool isSkipped = true;
    const auto doPage = [&](int page) {
      const Fate fate = DoPage(file, index, page);
      isSkipped = isSkipped && (fate == Fate::kUpToDate || fate == Fate::kExists);
    };
    if (names_.NamesPages()) {
      const int pages = CountPagesOf(file, isSkipped);
      for (int page = 1; page <= pages && !MustStop(); ++page) doPage(page);
    } else {
      doPage(0);
    }
    report_->EndFile(isSkipped);
    return !MustStop();
  }

  /// @return 0 where that cannot be told, which is a failure
  int CountPagesOf(File& file, bool& isSkipped) {
    int pages = 0;
    BatchResult result{.file = file.path};
    TryTo(result, [&] { pages = CountPages(Opened(file).Source()); });
    if (pages > 0) return pages;
    isSkipped = false;
    Add(result);
    return 0;
  }

  Input& Opened(File& file) {
    if (!file.input) file.input.emplace(file.path.c_str(), raw_ ? Content::Headerless : Content::Picture);
    return *file.input;
  }

  Fate DoPage(File& file, size_t index, int page) {
    BatchResult result{.file = file.path,
                       .output = Within(arguments_.dir, names_.For(finder_.Files(), index, page))};
    result.page = page;
    if (arguments_.resume && IsUpToDate(result.output, file.path)) {
      result.fate = Fate::kUpToDate;
    } else if (arguments_.noClobber && Exists(result.output)) {
      result.fate = Fate::kExists;
    } else if (arguments_.dryRun) {
      result.fate = Fate::kPlanned;
    } else {
      BatchResult first = result;
      turns_.Shared([&] { Convert(file, page, first); });
      if (first.fate == Fate::kFailed && FitsAlone(first.error)) {
        turns_.Alone([&] { Convert(file, page, result); });
      } else {
        result = std::move(first);
      }
    }
    Add(result);
    return result.fate;
  }

  void Convert(File& file, int page, BatchResult& result) {
    TryTo(result, [&] {
      // The plan knew nothing of files that were made since, or of pages beyond the first.
      if (IsAmong(finder_.Ids(), result.output)) {
        throw FileError(VX_OPEN_WRITE_ERROR, result.output, "one of the files to read; it stays as it is");
      }
      Conversion conversion = conversion_;
      Input& input = Opened(file);
      if (page > 0) {
        conversion.load.page = page;
      } else if (!raw_) {
        arguments_.page.ChooseFrom(input.Source(), conversion.load);
        conversion.page = &arguments_.page;
      }
      MakeFolder(std::filesystem::path(result.output).parent_path());
      Converted converted = ConvertPicture(input, file.path, result.output, conversion);
      result.remarks = std::move(converted.remarks);
      if (converted.failure) result.Fail(*converted.failure);
    });
  }

  /// Acts, keeps what is said of it, and what fails.
  template <class Act>
  void TryTo(BatchResult& result, const Act& act) {
    Hearing hearing;
    try {
      act();
    } catch (const vx::Error& error) {
      ReportInputFailure(error, result.file, conversion_);
      result.Fail(error);
    } catch (const FileError& error) {
      ReportMessage(error.what());
      result.Fail(error);
    }
    result.messages = std::move(hearing.messages);
    result.hints = std::move(hearing.hints);
  }

  void Add(const BatchResult& result) {
    if (result.fate == Fate::kFailed && (!arguments_.keepGoing || ConcernsAll(result.error)))
      isStopped_ = true;
    report_->Add(result);
  }

  const BatchArguments& arguments_;
  const Shard shard_;
  const size_t threads_;
  const std::unique_ptr<RawDescription> raw_;
  const Conversion conversion_;
  const OutputNames names_;
  FileFinder finder_;
  std::optional<BatchReport> report_;
  MemoryTurns turns_;
  std::atomic<bool> isStopped_ = false;
};

ExitCode Run(const BatchArguments& arguments) {
  if (arguments.in.empty() && arguments.filesFrom.empty())
    throw UsageError("IN is required, or --files-from");
  try {
    return Batch(arguments).Run();
  } catch (const FileError& error) {
    ReportMessage(error.what());
    return kExitFailed;
  }
}

}  // namespace

Action DeclareBatch(Arguments& command) {
  auto arguments = std::make_shared<BatchArguments>();
  DeclareBatchArguments(command, *arguments);
  return [arguments] { return Run(*arguments); };
}

}  // namespace cli
