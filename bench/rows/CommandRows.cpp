// Whole commands, from start to end, with the most memory they had: what a person waits for.
#include <memory>

#include "Child.h"
#include "TightLoops.h"
#include "rows/Rows.h"
#include "rows/Work.h"

namespace bench {
namespace {

Contender Command(Kind kind, const std::string& name, const std::vector<std::string>& command,
                  std::function<void()> before = {}) {
  const auto result = std::make_shared<ChildResult>();
  return {kind,
          name,
          [=] {
            *result = RunChild(command);
            return result->isDone;
          },
          [=] {
            Finding finding;
            finding.peakBytes = result->peakBytes;
            return finding;
          },
          std::move(before),
          [=] { return result->seconds; }};
}

void WriteIcon(const std::string& path, int pages) {
  const Bytes icon = Icon(pages);
  CopyAndWrite(path, icon.data(), icon.size());
}

Row MakeListRow(const Options& options) {
  const std::string path = options.folder + "/command.ico";
  WriteIcon(path, options.pages);
  Row row{"", "page", static_cast<double>(options.pages), 0, 1.0, {}};
  row.contenders.push_back(Command(Kind::Ours, "vxbmp pages", {BENCH_COMMAND, "pages", path}));
#ifdef BENCH_ICOTOOL
  if (options.hasPeers) row.contenders.push_back(Command(Kind::Peer, "icotool", {BENCH_ICOTOOL, "-l", path}));
#endif
  return row;
}

Row MakeDeleteRow(const Options& options) {
  const std::string path = options.folder + "/command.ico";
  const std::string halved = options.folder + "/halved.ico";
  WriteIcon(path, options.pages);
  const std::string half = "1-" + std::to_string(options.pages / 2);
  return {
      "",
      "page",
      static_cast<double>(options.pages),
      0,
      0,
      {Command(Kind::Ours, "vxbmp pages delete", {BENCH_COMMAND, "pages", "delete", halved, "--page", half},
               [=] { CopyFile(path, halved); })}};
}

Row MakeIconRow(const Options& options) {
  const std::string path = options.folder + "/command.ico";
  WriteIcon(path, options.pages);
  return {
      "",
      "page",
      static_cast<double>(options.pages),
      0,
      0,
      {Command(Kind::Ours, "vxbmp icon", {BENCH_COMMAND, "icon", "-o", options.folder + "/made.ico", path})}};
}

/// The large picture is made once for all rows.
Row MakeConvertRow(const Options& options, const std::string& from, const std::string& to) {
  const std::string folder = options.largeFolder + "/";
  const double side = options.hugeSide;
  if (from == "huge.bmp") WriteHuge(folder + from, options.hugeSide);
  Row row{"", "pixel", side * side, 0, 0, {}};
  row.contenders.push_back(
      Command(Kind::Ours, "vxbmp convert", {BENCH_COMMAND, "convert", folder + from, folder + to}));
  return row;
}

}  // namespace

void AddCommandRows(std::vector<RowMaker>& rows) {
  rows.push_back({"command: list pages", MakeListRow});
  rows.push_back({"command: delete half of the pages", MakeDeleteRow});
  rows.push_back({"command: icon from many pages", MakeIconRow});
  rows.push_back({"command: convert a huge BMP to BMP",
                  [](const Options& options) { return MakeConvertRow(options, "huge.bmp", "again.bmp"); }});
  rows.push_back({"command: convert a huge BMP to PNG",
                  [](const Options& options) { return MakeConvertRow(options, "huge.bmp", "huge.png"); }});
  rows.push_back({"command: convert a huge PNG to BMP",
                  [](const Options& options) { return MakeConvertRow(options, "huge.png", "again.bmp"); }});
}

}  // namespace bench
