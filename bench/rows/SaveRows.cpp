// Pictures in memory to files, as they are and in run-length codes. The bound copies and writes, after a
// tight encoder where there are codes.
#include "TightLoops.h"
#include "rows/Rows.h"
#include "rows/Work.h"

namespace bench {
namespace {

struct Case {
  const char* name;
  Sample (*make)(int side);
  int bitsPerPixel;
  const Coding* coding;  ///< null: none
};

constexpr Case kCases[] = {
    {"save: 24 bits", [](int side) { return TrueColor(side, 24, Look::Photograph); }, 24, nullptr},
    {"save: 8 bits", [](int side) { return Indexed(side, 8); }, 8, nullptr},
    {"save: 4 bits", [](int side) { return Indexed(side, 4); }, 4, nullptr},
    {"save: 1 bit", [](int side) { return Indexed(side, 1); }, 1, nullptr},
    {"save: RLE8, a drawing", [](int side) { return Indexed(side, 8); }, 8, &kRle8},
    {"save: RLE8, half noise", [](int side) { return RunLength(side, 8, 32); }, 8, &kRle8},
    {"save: RLE4, a drawing", [](int side) { return Indexed(side, 4); }, 4, &kRle4},
    {"save: RLE4, half noise", [](int side) { return RunLength(side, 4, 32); }, 4, &kRle4},
};

struct Work {
  Sample sample;
  vx::Bitmap bitmap;
  Bytes codes;

  bool EncodeAndWrite(const Coding& coding, const std::string& path) {
    codes.clear();
    const auto rowBytes = static_cast<size_t>(sample.width) / coding.pixelsPerByte;
    for (int y = sample.height - 1; y >= 0; --y) {
      AppendCodes(coding, vx_bitmap_row(bitmap.Get(), y), rowBytes, codes);
    }
    CopyAndWrite(path, codes.data(), codes.size());
    return true;
  }
};

Contender BoundOf(const Case& c, const std::string& path, const std::shared_ptr<Work>& work) {
  if (c.coding != nullptr) {
    return {Kind::Tight, "tight encoder", [=, &c] { return work->EncodeAndWrite(*c.coding, path); }};
  }
  return {Kind::Bound, "copy and write", [=] {
            CopyAndWrite(path, work->sample.file.data(), work->sample.file.size());
            return true;
          }};
}

Row MakeRow(const Case& c, const Options& options, const Peers& peers) {
  Sample sample = c.make(options.side);
  vx::Bitmap bitmap = vx::Source::Memory(sample.file).Load();
  const auto work = std::make_shared<Work>(Work{std::move(sample), std::move(bitmap), {}});
  const bool isCoded = c.coding != nullptr;
  const std::string path = options.folder + "/saved-";
  Row row{"",
          "pixel",
          PixelsOf(work->sample),
          isCoded ? 0.6 : 0.7,
          isCoded ? 3.0 : 1.0,
          {BoundOf(c, path + "bound", work)}};
  const vx::SaveOptions saving(isCoded ? VX_FORMAT_BMP_RLE : VX_FORMAT_BMP, c.bitsPerPixel);
  const std::string ours = path + "ours";
  row.contenders.push_back({Kind::Ours, "vx_save_file",
                            [=] {
                              work->bitmap.Save(ours, saving);
                              return true;
                            },
                            [=, &c] { return CompareFile(work->sample, ours, c.bitsPerPixel, isCoded); }});
  for (const auto& peer : peers) {
    if (!peer->Load(work->sample.file)) continue;
    const std::string its = path + peer->Name();
    row.contenders.push_back(PeerContender(
        peer, [=] { return peer->Save(its, isCoded ? Form::BmpRle : Form::Bmp); },
        [=, &c] { return CompareFile(work->sample, its, c.bitsPerPixel, isCoded); }));
  }
  return row;
}

}  // namespace

void AddSaveRows(const Peers& peers, std::vector<RowMaker>& rows) {
  for (const Case& c : kCases) {
    rows.push_back({c.name, [&c, &peers](const Options& options) { return MakeRow(c, options, peers); }});
  }
}

}  // namespace bench
