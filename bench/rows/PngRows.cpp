// A bitmap of 24 bits in memory to a PNG file: decoding, encoding, writing. Bytes count as much as time.
#include "TightLoops.h"
#include "rows/Rows.h"
#include "rows/Work.h"

namespace bench {
namespace {

bool LibpngByItself(const Sample& sample, const std::string& path) {
  const size_t stride = (static_cast<size_t>(sample.width) * 3 + 3) / 4 * 4;
  const uint8_t* const end = sample.file.data() + sample.file.size();
  WritePng(path, sample.width, sample.height,
           [=](int y) { return end - static_cast<size_t>(y + 1) * stride; });
  return true;
}

Row MakeRow(Look look, const Options& options, const Peers& peers) {
  const auto sample = std::make_shared<const Sample>(TrueColor(options.side / 2, 24, look));
  const std::string path = options.folder + "/png-";
  const auto compare = [=](const std::string& written) {
    return [=] { return CompareFile(*sample, written); };
  };
  Row row{"",
          "pixel",
          PixelsOf(*sample),
          2.5,
          0,
          {{Kind::Bound, "libpng by itself", [=] { return LibpngByItself(*sample, path + "bound"); },
            compare(path + "bound")},
           {Kind::Ours, "vx_load, vx_save_file",
            [=] {
              vx::Source::Memory(sample->file).Load().Save(path + "ours", vx::SaveOptions(VX_FORMAT_PNG));
              return true;
            },
            compare(path + "ours")}}};
  for (const auto& peer : peers) {
    const std::string its = path + peer->Name();
    row.contenders.push_back(PeerContender(
        peer, [=] { return peer->Load(sample->file) && peer->Save(its, Form::Png); }, compare(its)));
  }
  return row;
}

}  // namespace

void AddPngRows(const Peers& peers, std::vector<RowMaker>& rows) {
  rows.push_back({"BMP to PNG: a photograph",
                  [&peers](const Options& options) { return MakeRow(Look::Photograph, options, peers); }});
  rows.push_back({"BMP to PNG: a screenshot",
                  [&peers](const Options& options) { return MakeRow(Look::Screenshot, options, peers); }});
}

}  // namespace bench
