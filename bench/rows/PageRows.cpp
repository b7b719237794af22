// Icons of very many pages: every page described; one page replaced, inserted, deleted, by a copy of the file
// and in place. The bounds read each page's header, and copy the file.
#include <fcntl.h>
#include <unistd.h>

#include <array>

#include "TightLoops.h"
#include "rows/Rows.h"
#include "rows/Work.h"

namespace bench {
namespace {

bool ReadHeaders(const std::string& path, int pages) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  Bytes directory(static_cast<size_t>(6 + 16 * pages));
  bool isWhole = read(file, directory.data(), directory.size()) == static_cast<ssize_t>(directory.size());
  std::array<uint8_t, 40> header{};
  for (size_t at = 6; at < directory.size(); at += 16) {
    const uint8_t* offset = &directory[at + 12];
    const off_t start = offset[0] | offset[1] << 8 | offset[2] << 16 | offset[3] << 24;
    isWhole =
        pread(file, header.data(), header.size(), start) == static_cast<ssize_t>(header.size()) && isWhole;
  }
  close(file);
  return isWhole;
}

bool DescribePages(const std::string& path, int pages) {
  const vx::Source source = vx::Source::File(path);
  for (int page = 1; page <= pages; ++page) {
    if (source.Describe(page).width != 16) return false;
  }
  return true;
}

Row MakeListRow(const Options& options, const Peers& peers) {
  const int pages = options.pages;
  const std::string path = options.folder + "/listed.ico";
  const Bytes icon = Icon(pages);
  CopyAndWrite(path, icon.data(), icon.size());
  Row row{"",
          "page",
          static_cast<double>(pages),
          0,
          1.0,
          {{Kind::Bound, "read each header", [=] { return ReadHeaders(path, pages); }},
           {Kind::Ours, "vx_describe", [=] { return DescribePages(path, pages); }}}};
  for (const auto& peer : peers) {
    row.contenders.push_back(PeerContender(peer, [=] { return peer->ListPages(path) == pages; }, {}));
  }
  return row;
}

enum class Change { Replace, Insert, Delete };

struct Case {
  const char* name;
  Change change;
  unsigned flags;
  double ofBound;
};

constexpr Case kCases[] = {
    {"pages: replace one", Change::Replace, 0, 1 / 1.5},
    {"pages: insert one", Change::Insert, 0, 1 / 1.5},
    {"pages: delete one", Change::Delete, 0, 1 / 1.5},
    {"pages: replace one in place", Change::Replace, VX_EDIT_IN_PLACE, 1 / 3.0},
    {"pages: insert one in place", Change::Insert, VX_EDIT_IN_PLACE, 1 / 3.0},
    {"pages: delete one in place", Change::Delete, VX_EDIT_IN_PLACE, 1 / 3.0},
};

int PagesAfter(const Case& c, int pages) {
  return pages + (c.change == Change::Insert ? 1 : c.change == Change::Delete ? -1 : 0);
}

bool EditOne(const Case& c, const std::string& path, int page, const vx::Bitmap& bitmap) {
  vx::Edit edit(path, c.flags);
  if (c.change == Change::Replace) edit.Replace(page, bitmap);
  if (c.change == Change::Insert) edit.Insert(page, bitmap);
  if (c.change == Change::Delete) edit.Delete(page);
  edit.Commit();
  return true;
}

Row MakeEditRow(const Case& c, const Options& options) {
  const int pages = options.pages * 2;
  const std::string original = options.folder + "/original.ico";
  const std::string edited = options.folder + "/edited.ico";
  const Bytes icon = Icon(pages);
  CopyAndWrite(original, icon.data(), icon.size());
  const auto bitmap = std::make_shared<vx::Bitmap>(vx::Source::File(original).Load(2));
  const auto look = [=, &c] {
    Finding finding;
    const int now = vx::Source::File(edited).DescribeDirectory().page_count;
    if (now != PagesAfter(c, pages)) finding.fault = "leaves " + std::to_string(now) + " pages";
    return finding;
  };
  return {"",
          "page",
          static_cast<double>(pages),
          c.ofBound,
          0,
          {{Kind::Bound, "copy of the file",
            [=] {
              CopyFile(original, options.folder + "/copy.ico");
              return true;
            }},
           {Kind::Ours, "vx_edit", [=, &c] { return EditOne(c, edited, pages / 2, *bitmap); }, look,
            [=] { CopyFile(original, edited); }}}};
}

}  // namespace

void AddPageRows(const Peers& peers, std::vector<RowMaker>& rows) {
  rows.push_back({"pages: list", [&peers](const Options& options) { return MakeListRow(options, peers); }});
  for (const Case& c : kCases) {
    rows.push_back({c.name, [&c](const Options& options) { return MakeEditRow(c, options); }});
  }
}

}  // namespace bench
