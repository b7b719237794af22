#include "jobs/BatchReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "failures/Report.h"
#include "streams/Output.h"
#include "words/Json.h"
#include "words/Text.h"

namespace cli {
namespace {

constexpr size_t kTimesSaid = 3;   // the same of other files; then it is counted
constexpr size_t kFilesNamed = 3;  // of a group; each has had a line of its own

struct FateWords {
  const char* json;
  const char* summary;  ///< goes on from a number
};

/// In the order of Fate.
constexpr FateWords kFateWords[] = {{"written", "written"},
                                    {"planned", "would be written"},
                                    {"up-to-date", "up to date already"},
                                    {"exists", "left as they were"},
                                    {"failed", "failed"}};

const FateWords& WordsOf(Fate fate) {
  return kFateWords[static_cast<size_t>(fate)];
}

/// What failures have in common: the reason, or the status where the library knows of no reason.
std::string GroupOf(const vx_error_info& error) {
  return error.reason == VX_REASON_NONE ? vx_status_name(error.status) : vx_reason_name(error.reason);
}

/// What a message says whatever the file: without its name in front, and N for every number.
std::string WordsWithoutFile(std::string_view message, const BatchResult& result) {
  for (const std::string& name : {Printable(result.file), Printable(result.output)}) {
    if (message.starts_with(name)) message.remove_prefix(name.size());
  }
  message.remove_prefix(std::min(message.find_first_not_of(", :"), message.size()));
  std::string words;
  for (const char c : message) {
    const bool isDigit = c >= '0' && c <= '9';
    if (isDigit && words.ends_with('N')) continue;
    words += isDigit ? 'N' : c;
  }
  return words;
}

std::string JsonOf(const BatchResult& result) {
  JsonLine line;
  line.Add("schema", 1);
  line.AddFile(result.file);
  if (result.page > 0) line.Add("page", result.page);
  if (!result.output.empty()) line.AddFile(result.output, "output");
  line.Add("result", WordsOf(result.fate).json);
  std::vector<std::string> remarks;
  for (const int remark : result.remarks) remarks.emplace_back(vx_remark_name(remark));
  line.Add("remarks", remarks);
  line.Add("messages", result.messages);
  if (result.fate == Fate::kFailed) {
    line.Add("reason", vx_reason_name(result.error.reason));
    line.AddFailure(result.error.status, result.problem);
  }
  return line.Text();
}

}  // namespace

void BatchResult::Fail(const vx::Error& failure) {
  fate = Fate::kFailed;
  error = failure.info();
  problem = ProblemOf(failure);
}

void BatchResult::Fail(const FileError& failure) {
  fate = Fate::kFailed;
  error = {failure.status(), VX_REASON_NONE, 0, 0, -1, 0, 0};
  problem = failure.what();
}

BatchReport::BatchReport(size_t files, const Options& options)
    : options_(options), progress_(options.isQuiet || options.isDry) {
  counts_.total = files;
}

void BatchReport::Add(const BatchResult& result) {
  const std::lock_guard lock(mutex_);
  ++number_[static_cast<size_t>(result.fate)];
  if (result.fate == Fate::kFailed) {
    ++counts_.failed;
    Group& group = groups_[GroupOf(result.error)];
    ++group.number;
    if (group.files.size() < kFilesNamed) group.files.push_back(result.file);
    group.advice = result.hints.empty() ? AdviceOn(result.error.reason) : result.hints.front();
  }
  const bool says = options_.isJson || result.fate == Fate::kPlanned || !result.messages.empty();
  if (!says) return;
  progress_.Clear();
  Print(result);
}

void BatchReport::Print(const BatchResult& result) {
  if (options_.isJson) {
    PrintToStandardOutput(JsonOf(result));
  } else if (result.fate == Fate::kPlanned) {
    PrintToStandardOutput(fmt::format("{} -> {}\n", Printable(result.file), Printable(result.output)));
  }
  const bool hasFailed = result.fate == Fate::kFailed;
  for (size_t i = 0; i < result.messages.size(); ++i) {
    if (hasFailed && i + 1 == result.messages.size()) {
      ReportMessage(result.messages[i]);
    } else if (!options_.isQuiet) {
      Remark(result, result.messages[i]);
    }
  }
}

void BatchReport::Remark(const BatchResult& result, const std::string& message) {
  if (++remarks_[WordsWithoutFile(message, result)] <= kTimesSaid || options_.isVerbose)
    ReportMessage(message);
}

void BatchReport::PrintRemarks() const {
  for (const auto& [words, times] : remarks_) {
    if (times <= kTimesSaid || options_.isVerbose) continue;
    std::fputs(fmt::format("  {} more: {}\n", times - kTimesSaid, words).c_str(), stderr);
  }
}

void BatchReport::EndFile(bool isSkipped) {
  const std::lock_guard lock(mutex_);
  ++counts_.done;
  if (isSkipped) ++counts_.skipped;
}

void BatchReport::ShowProgress() {
  const std::lock_guard lock(mutex_);
  progress_.Show(counts_);
}

/// "12 written, 3 failed"
std::string BatchReport::Sums() const {
  std::string sums;
  for (size_t fate = 0; fate < std::size(number_); ++fate) {
    const bool isTheUsual = static_cast<Fate>(fate) == (options_.isDry ? Fate::kPlanned : Fate::kWritten);
    if (number_[fate] == 0 && !isTheUsual) continue;
    sums += fmt::format("{}{} {}", sums.empty() ? "" : ", ", number_[fate], kFateWords[fate].summary);
  }
  return sums;
}

void BatchReport::Summarize(End end) {
  const std::lock_guard lock(mutex_);
  progress_.Clear();
  if (options_.isQuiet && end == End::kDone) return;
  const std::string far = fmt::format("{} of {} files done", counts_.done, counts_.total);
  if (end == End::kInterrupted) {
    ReportMessage(fmt::format("interrupted, {}; --resume goes on from here", far));
  } else if (end == End::kFailed) {
    ReportMessage(fmt::format(
        "stopped at a failure, {}; --keep-going does the others, and --resume goes on from here", far));
  }
  std::string sums = Sums();
  const size_t written = number_[static_cast<size_t>(Fate::kWritten)];
  if (written > 0) {
    sums += fmt::format(", in {:.1f} s ({})", progress_.Seconds(), Rate(written, progress_.Seconds()));
  }
  ReportMessage(sums);
  PrintRemarks();
  PrintGroups();
}

void BatchReport::PrintGroups() const {
  for (const auto& [reason, group] : groups_) {
    std::string names;
    for (const std::string& file : group.files) names += (names.empty() ? "" : ", ") + Printable(file);
    if (group.number > group.files.size()) names += ", ...";
    std::fputs(fmt::format("  {} {}: {}\n", group.number, reason, names).c_str(), stderr);
    if (!group.advice.empty()) std::fputs(fmt::format("    {}\n", group.advice).c_str(), stderr);
  }
}

}  // namespace cli
