#include "Contest.h"

#include <time.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string_view>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#else
#define CALLGRIND_START_INSTRUMENTATION
#define CALLGRIND_STOP_INSTRUMENTATION
#define CALLGRIND_ZERO_STATS
#define CALLGRIND_DUMP_STATS_AT(label) static_cast<void>(label)
#endif

namespace bench {
namespace {

constexpr const char* kKindNames[] = {"bound", "tight", "ours", "peer"};

/// Of all threads of the process, in its own code and in the system's.
double ProcessorSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

struct Score {
  Finding finding;
  double best = 0;
  double spent = 0;
  int rounds = 0;
};

double Time(Contender& contender, bool& isDone) {
  if (contender.before) contender.before();
  const double start = ProcessorSeconds();
  isDone = contender.work();
  const double here = ProcessorSeconds() - start;
  return contender.secondsElsewhere ? contender.secondsElsewhere() : here;
}

/// The first round, whose result is looked at.
Score Begin(Contender& contender) {
  Score score;
  try {
    bool isDone = false;
    score.best = score.spent = Time(contender, isDone);
    score.rounds = 1;
    if (!isDone) {
      score.finding.fault = "does not do it";
    } else if (contender.look) {
      score.finding = contender.look();
    }
  } catch (const std::exception& failure) {
    score.finding.fault = std::string("fails: ") + failure.what();
  }
  return score;
}

void GoOn(Contender& contender, Score& score) {
  bool isDone = false;
  const double seconds = Time(contender, isDone);
  score.best = std::min(score.best, seconds);
  score.spent += seconds;
  ++score.rounds;
}

/// Two rounds at least of whatever takes long, three of what does not.
bool HasTurn(const Score& score, const Options& options) {
  if (!score.finding.fault.empty() || score.rounds >= options.rounds) return false;
  return score.spent < options.seconds || score.rounds < (score.best > options.seconds ? 2 : 3);
}

void Count(const Row& row, Contender& contender) {
  if (contender.secondsElsewhere) return;  // callgrind does not see it
  if (contender.before) contender.before();
  const std::string label = row.name + "|" + contender.name;
  CALLGRIND_START_INSTRUMENTATION;
  CALLGRIND_ZERO_STATS;
  const bool isDone = contender.work();
  if (isDone) CALLGRIND_DUMP_STATS_AT(label.c_str());
  CALLGRIND_STOP_INSTRUMENTATION;
}

std::string Quoted(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return quoted + '"';
}

void Print(const Row& row, const Contender& contender, const Score& score) {
  const Finding& finding = score.finding;
  std::printf(R"({"row": %s, "kind": "%s", "name": %s, )", Quoted(row.name).c_str(),
              kKindNames[static_cast<int>(contender.kind)], Quoted(contender.name).c_str());
  std::printf(R"("seconds": %.9f, "rounds": %d, "fault": %s, )", score.best, score.rounds,
              Quoted(finding.fault).c_str());
  std::printf("\"bytes\": %.0f, \"error\": %.3f, \"peak\": %.0f}\n", finding.bytes, finding.error,
              finding.peakBytes);
}

bool RunRow(Row row, const Options& options) {
  std::printf(R"({"row": %s, "unit": "%s", "items": %.0f, "of_bound": %.3f, "of_peer": %.3f})"
              "\n",
              Quoted(row.name).c_str(), row.unit, row.items, row.ofBound, row.ofPeer);
  std::vector<Score> scores;
  scores.reserve(row.contenders.size());
  for (Contender& contender : row.contenders) scores.push_back(Begin(contender));
  bool goesOn = true;
  while (goesOn && !options.isCounting) {
    goesOn = false;
    for (size_t i = 0; i < scores.size(); ++i) {
      if (!HasTurn(scores[i], options)) continue;
      GoOn(row.contenders[i], scores[i]);
      goesOn = true;
    }
  }
  bool areOursRight = true;
  for (size_t i = 0; i < scores.size(); ++i) {
    const bool isRight = scores[i].finding.fault.empty();
    if (options.isCounting && isRight) Count(row, row.contenders[i]);
    Print(row, row.contenders[i], scores[i]);
    if (row.contenders[i].kind == Kind::Ours) areOursRight = areOursRight && isRight;
  }
  std::fflush(stdout);
  return areOursRight;
}

int NumberOf(const char* text) {
  return static_cast<int>(std::strtol(text, nullptr, 10));
}

struct Argument {
  std::string_view name;
  std::function<void(Options&, const char*)> take;
};

const Argument kArguments[] = {
    {"--side", [](Options& o, const char* v) { o.side = NumberOf(v); }},
    {"--pages", [](Options& o, const char* v) { o.pages = NumberOf(v); }},
    {"--files", [](Options& o, const char* v) { o.files = NumberOf(v); }},
    {"--huge", [](Options& o, const char* v) { o.hugeSide = NumberOf(v); }},
    {"--seconds", [](Options& o, const char* v) { o.seconds = std::strtod(v, nullptr); }},
    {"--rounds", [](Options& o, const char* v) { o.rounds = NumberOf(v); }},
    {"--counting", [](Options& o, const char* v) { o.isCounting = *v == '1'; }},
    {"--peers", [](Options& o, const char* v) { o.hasPeers = *v == '1'; }},
    {"--only", [](Options& o, const char* v) { o.only = v; }},
    {"--folder", [](Options& o, const char* v) { o.folder = v; }},
    {"--make-icon", [](Options& o, const char* v) { o.icon = v; }},
    {"--make-picture", [](Options& o, const char* v) { o.picture = v; }},
    {"--large-folder", [](Options& o, const char* v) { o.largeFolder = v; }},
};

}  // namespace

bool ReadOptions(int count, char** arguments, Options& options) {
  for (int i = 1; i + 1 < count; i += 2) {
    const auto* const found = std::find_if(std::begin(kArguments), std::end(kArguments),
                                           [&](const Argument& each) { return each.name == arguments[i]; });
    if (found == std::end(kArguments)) {
      std::fprintf(stderr, "%s: there is no option %s\n", arguments[0], arguments[i]);
      return false;
    }
    found->take(options, arguments[i + 1]);
  }
  return true;
}

bool Run(const std::vector<RowMaker>& rows, const Options& options) {
  bool areOursRight = true;
  for (const RowMaker& row : rows) {
    if (row.name.find(options.only) == std::string::npos) continue;
    std::fprintf(stderr, "%s\n", row.name.c_str());
    Row made = row.make(options);
    made.name = row.name;
    areOursRight = RunRow(std::move(made), options) && areOursRight;
  }
  return areOursRight;
}

}  // namespace bench
