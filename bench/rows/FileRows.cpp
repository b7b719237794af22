// Many small files, of which one wants to know how large their pictures are.
#include <filesystem>

#include "TightLoops.h"
#include "rows/Rows.h"
#include "rows/Work.h"

namespace bench {
namespace {

constexpr int kSide = 16;

using Paths = std::vector<std::string>;

std::shared_ptr<const Paths> MakeFiles(const Options& options) {
  const std::string folder = options.folder + "/files/";
  std::filesystem::create_directories(folder);
  const Sample sample = TrueColor(kSide, 24, Look::Photograph);
  Paths paths;
  for (int i = 0; i < options.files; ++i) {
    paths.push_back(folder + std::to_string(i) + ".bmp");
    CopyAndWrite(paths.back(), sample.file.data(), sample.file.size());
  }
  return std::make_shared<const Paths>(std::move(paths));
}

bool IsDescribed(const std::string& path) {
  const vx_info info = vx::Source::File(path).Describe();
  return info.width == kSide && info.height == kSide;
}

bool IsIdentified(Peer& peer, const std::string& path) {
  int width = 0;
  int height = 0;
  return peer.Identify(path, width, height) && width == kSide && height == kSide;
}

template <class Work>
std::function<bool()> OnAll(const std::shared_ptr<const Paths>& paths, Work work) {
  return [=] {
    for (const std::string& path : *paths) {
      if (!work(path)) return false;
    }
    return true;
  };
}

Row MakeRow(const Options& options, const Peers& peers) {
  const auto paths = MakeFiles(options);
  Row row{"",
          "file",
          static_cast<double>(options.files),
          1 / 1.3,
          1.0,
          {{Kind::Bound, "open, read, close", OnAll(paths, Peek)},
           {Kind::Ours, "vx_open_file, vx_describe", OnAll(paths, IsDescribed)}}};
  for (const auto& peer : peers) {
    row.contenders.push_back(PeerContender(
        peer, OnAll(paths, [peer](const std::string& path) { return IsIdentified(*peer, path); }), {}));
  }
  return row;
}

}  // namespace

void AddFileRows(const Peers& peers, std::vector<RowMaker>& rows) {
  rows.push_back({"identify files", [&peers](const Options& options) { return MakeRow(options, peers); }});
}

}  // namespace bench
