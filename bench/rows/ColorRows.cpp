// Colours of a picture of 24 bits that is in memory already: as red, green, blue, alpha, and as 256 of its
// own.
#include <optional>

#include "TightLoops.h"
#include "rows/Rows.h"
#include "rows/Work.h"

namespace bench {
namespace {

struct Work {
  Sample sample;
  vx::Bitmap bitmap;
  Bytes rgba;
  std::optional<vx::Buffer> saved;

  /// As rows, for that is what everybody has: the file's are the other way round and padded.
  bool Shuffle() {
    const auto width = static_cast<size_t>(sample.width);
    for (int y = 0; y < sample.height; ++y) {
      ShuffleToRgba(vx_bitmap_row(bitmap.Get(), y), width, rgba.data() + static_cast<size_t>(y) * width * 4);
    }
    return true;
  }
  bool Read() {
    for (int y = 0; y < sample.height; ++y) {
      bitmap.ReadRgba(y, rgba.data() + static_cast<size_t>(y) * static_cast<size_t>(sample.width) * 4);
    }
    return true;
  }
  bool Reduce(int dither) {
    vx::SaveOptions options(VX_FORMAT_BMP, 8);
    options.dither = dither;
    saved.emplace(bitmap.Save(options));
    return true;
  }
};

std::shared_ptr<Work> MakeWork(int side) {
  Sample sample = TrueColor(side, 24, Look::Photograph);
  vx::Bitmap bitmap = vx::Source::Memory(sample.file).Load();
  const size_t size = sample.rgba.size();
  return std::make_shared<Work>(Work{std::move(sample), std::move(bitmap), Bytes(size), std::nullopt});
}

Row MakeRgbaRow(const Options& options, const Peers& peers) {
  const auto work = MakeWork(options.side);
  const auto compare = [work] { return CompareTo(work->sample, work->rgba); };
  Row row{"",
          "pixel",
          PixelsOf(work->sample),
          1 / 1.2,
          1.0,
          {{Kind::Bound, "vector shuffle", [work] { return work->Shuffle(); }, compare},
           {Kind::Ours, "vx_bitmap_read_rgba", [work] { return work->Read(); }, compare}}};
  for (const auto& peer : peers) {
    if (!peer->Load(work->sample.file)) continue;
    row.contenders.push_back(PeerContender(
        peer, [peer] { return peer->Expand(); }, [=] { return CompareTo(work->sample, peer->Pixels()); }));
  }
  return row;
}

/// The colours differ, so nothing is the same picture; the error says how far it is away.
Finding ErrorOf(const Sample& sample, const Bytes& rgba) {
  Finding finding;
  finding.error = MeanSquaredError(rgba, sample);
  if (finding.error < 0) finding.fault = "makes a picture of another size";
  return finding;
}

Row MakeReductionRow(bool diffuse, const Options& options, const Peers& peers) {
  const auto work = MakeWork(options.side / 2);
  const int dither = diffuse ? VX_DITHER_DIFFUSE : VX_DITHER_NONE;
  Row row{
      "",
      "pixel",
      PixelsOf(work->sample),
      0,
      1.0,
      {{Kind::Ours, "vx_save_memory", [=] { return work->Reduce(dither); },
        [work] { return ErrorOf(work->sample, vx::Source::Memory(work->saved->Bytes()).Load().Rgba()); }}}};
  for (const auto& peer : peers) {
    if (!peer->Load(work->sample.file)) continue;
    row.contenders.push_back(PeerContender(
        peer, [=] { return peer->Reduce(diffuse); }, [=] { return ErrorOf(work->sample, peer->Pixels()); }));
  }
  return row;
}

}  // namespace

void AddColorRows(const Peers& peers, std::vector<RowMaker>& rows) {
  rows.push_back({"RGBA of 24 bits", [&peers](const Options& o) { return MakeRgbaRow(o, peers); }});
  rows.push_back({"24 bits to 8", [&peers](const Options& o) { return MakeReductionRow(false, o, peers); }});
  rows.push_back(
      {"24 bits to 8, diffused", [&peers](const Options& o) { return MakeReductionRow(true, o, peers); }});
}

}  // namespace bench
