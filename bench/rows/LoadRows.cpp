// Pictures from memory to memory, at every depth. The bound copies the rows, the top one first, or decodes
// their codes by a tight loop.
#include <fcntl.h>
#include <unistd.h>

#include <cstring>
#include <optional>

#include "TightLoops.h"
#include "rows/Rows.h"
#include "rows/Work.h"

namespace bench {
namespace {

struct Case {
  const char* name;
  Sample (*make)(int side);
  int bitsPerPixel;
  int tolerance;  ///< 5 and 6 bits become 8 by rounding here, by shifting there
  bool isCoded;
};

constexpr Case kCases[] = {
    {"load: 1 bit", [](int side) { return Indexed(side, 1); }, 1, 0, false},
    {"load: 4 bits", [](int side) { return Indexed(side, 4); }, 4, 0, false},
    {"load: 8 bits", [](int side) { return Indexed(side, 8); }, 8, 0, false},
    {"load: 16 bits, 5-5-5", [](int side) { return HighColor(side, false); }, 16, 8, false},
    {"load: 16 bits, 5-6-5", [](int side) { return HighColor(side, true); }, 16, 8, false},
    {"load: 24 bits", [](int side) { return TrueColor(side, 24, Look::Photograph); }, 24, 0, false},
    {"load: 32 bits", [](int side) { return TrueColor(side, 32, Look::Photograph); }, 32, 0, false},
    {"load: RLE8", [](int side) { return RunLength(side, 8, 32); }, 8, 0, true},
    {"load: RLE4", [](int side) { return RunLength(side, 4, 32); }, 4, 0, true},
};

uint8_t* g_nextRow = nullptr;

void KeepRow(const uint8_t* row, int stride) {
  g_nextRow -= stride;
  std::memcpy(g_nextRow, row, static_cast<size_t>(stride));
}

struct Work {
  Sample sample;
  Bytes block;
  size_t stride;
  int file = -1;
  std::optional<vx::Bitmap> bitmap;

  Work() = default;
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() {
    if (file >= 0) close(file);
  }

  bool CopyRows() {
    const uint8_t* const rows = sample.file.data() + (sample.file.size() - block.size());
    for (size_t at = 0; at < block.size(); at += stride) {
      std::memcpy(block.data() + at, rows + (block.size() - stride - at), stride);
    }
    Use(block.data());
    return true;
  }
  bool Decode(const Case& c) {
    lseek(file, 54 + (4 << c.bitsPerPixel), SEEK_SET);
    g_nextRow = block.data() + block.size();
    (c.bitsPerPixel == 8 ? DecodeRle8 : DecodeRle4)(file, static_cast<int>(stride), sample.height, KeepRow);
    return true;
  }
  bool Ours() {
    bitmap.reset();
    bitmap.emplace(vx::Source::Memory(sample.file).Load());
    return true;
  }
};

Contender BoundOf(const Case& c, const Options& options, const std::shared_ptr<Work>& work) {
  if (!c.isCoded) return {Kind::Bound, "copy of the rows", [work] { return work->CopyRows(); }};
  const std::string path = options.folder + "/codes";
  CopyAndWrite(path, work->sample.file.data(), work->sample.file.size());
  work->file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  return {Kind::Tight, "tight loop", [work, &c] { return work->Decode(c); }};
}

Row MakeRow(const Case& c, const Options& options, const Peers& peers) {
  const auto work = std::make_shared<Work>();
  work->sample = c.make(options.side);
  work->stride = (static_cast<size_t>(options.side) * static_cast<size_t>(c.bitsPerPixel) + 31) / 32 * 4;
  work->block.resize(work->stride * static_cast<size_t>(options.side));
  Row row{"", "pixel", PixelsOf(work->sample), 0, 1.0, {BoundOf(c, options, work)}};
  row.contenders.push_back(
      {Kind::Ours, "vx_load", [work] { return work->Ours(); },
       [work, &c] { return CompareTo(work->sample, work->bitmap->Rgba(), c.tolerance); }});
  for (const auto& peer : peers) {
    row.contenders.push_back(PeerContender(
        peer, [work, peer] { return peer->Load(work->sample.file); },
        [work, peer, &c] { return CompareTo(work->sample, peer->Pixels(), c.tolerance); }));
  }
  return row;
}

}  // namespace

void AddLoadRows(const Peers& peers, std::vector<RowMaker>& rows) {
  for (const Case& c : kCases) {
    rows.push_back({c.name, [&c, &peers](const Options& options) { return MakeRow(c, options, peers); }});
  }
}

}  // namespace bench
