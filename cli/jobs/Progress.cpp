#include "jobs/Progress.h"

#include <fmt/format.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "failures/Report.h"

namespace cli {
namespace {

constexpr std::chrono::milliseconds kBetweenBars(100);
constexpr std::chrono::seconds kBetweenLines(10);
constexpr size_t kUsualColumns = 80;

/// Whether a line can be written over.
bool TakesBars() {
  const char* terminal = std::getenv("TERM");
  return isatty(STDERR_FILENO) != 0 && terminal != nullptr && std::string_view(terminal) != "dumb";
}

size_t Columns() {
  winsize size{};
  return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsualColumns;
}

}  // namespace

Progress::Progress(bool isQuiet) : isQuiet_(isQuiet), isBar_(TakesBars()) {}

void Progress::Show(const Counts& counts) {
  const Clock::time_point now = Clock::now();
  const bool isDue = isBar_ ? now - last_ >= kBetweenBars : now - last_ >= kBetweenLines;
  if (isQuiet_ || !isDue) return;
  last_ = now;
  if (!isBar_) return ReportMessage(ProgressText(counts, Seconds()));
  std::fputs(("\r\033[K" + BarText(counts, Seconds(), Columns())).c_str(), stderr);
  isShown_ = true;
}

void Progress::Clear() {
  if (isShown_) std::fputs("\r\033[K", stderr);
  isShown_ = false;
}

double Progress::Seconds() const {
  return std::chrono::duration<double>(Clock::now() - begin_).count();
}

std::string BarText(const Counts& counts, double seconds, size_t columns) {
  constexpr size_t kLeast = 10;  // a shorter bar tells nothing
  constexpr size_t kMost = 40;
  const std::string text = ProgressText(counts, seconds);
  const size_t taken =
      text.size() + 5;  // brackets, two spaces, and the last column, which some terminals wrap
  if (columns < taken + kLeast) return text.substr(0, columns - std::min<size_t>(columns, 1));
  const size_t width = std::min(columns - taken, kMost);
  const size_t filled = counts.total == 0 ? width : width * counts.done / counts.total;
  std::string bar(filled, '=');
  if (filled < width) bar += '>';
  bar.resize(width, ' ');
  return fmt::format("[{}]  {}", bar, text);
}

std::string ProgressText(const Counts& counts, double seconds) {
  std::string text = fmt::format("{} of {} {}", counts.done, counts.total, counts.unit);
  const size_t worked = counts.done - counts.skipped;
  if (const std::string rate = Rate(worked, seconds); !rate.empty()) {
    const double left =
        seconds * static_cast<double>(counts.total - counts.done) / static_cast<double>(worked);
    text += fmt::format(", {}, {} left", rate, Duration(left));
  }
  if (counts.failed > 0) text += fmt::format(", {} failed", counts.failed);
  return text;
}

std::string Duration(double seconds) {
  constexpr uint64_t kMinute = 60;
  constexpr uint64_t kHour = 3600;
  const auto whole = static_cast<uint64_t>(std::ceil(seconds));
  if (whole < kMinute) return fmt::format("{} s", whole);
  if (whole < kHour) return fmt::format("{} min {} s", whole / kMinute, whole % kMinute);
  return fmt::format("{} h {} min", whole / kHour, whole % kHour / kMinute);
}

std::string Rate(size_t number, double seconds) {
  if (number == 0 || seconds <= 0) return "";
  const double rate = static_cast<double>(number) / seconds;
  constexpr double kSlow = 10;
  return rate < kSlow ? fmt::format("{:.1f} a second", rate) : fmt::format("{:.0f} a second", rate);
}

}  // namespace cli
