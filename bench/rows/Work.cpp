#include "rows/Work.h"

#include <filesystem>
#include <utility>

namespace bench {

Contender PeerContender(const std::shared_ptr<Peer>& peer, std::function<bool()> work,
                        std::function<Finding()> look) {
  Contender contender{Kind::Peer, peer->Name(), std::move(work), std::move(look)};
  if (peer->TakeSecondsElsewhere() >= 0) {
    contender.before = [peer] { peer->TakeSecondsElsewhere(); };
    contender.secondsElsewhere = [peer] { return peer->TakeSecondsElsewhere(); };
  }
  return contender;
}

Finding CompareTo(const Sample& sample, const Bytes& rgba, int tolerance) {
  Finding finding;
  finding.fault = Difference(rgba, sample, tolerance);
  return finding;
}

Finding CompareFile(const Sample& sample, const std::string& path, int bitsPerPixel, bool isCoded) {
  Finding finding;
  try {
    const vx::Source source = vx::Source::File(path);
    const vx::Bitmap bitmap = source.Load();
    const int bits = bitmap.Describe().bits_per_pixel;
    finding = CompareTo(sample, bitmap.Rgba());
    if (bitsPerPixel != 0 && bits != bitsPerPixel) finding.fault = "writes " + std::to_string(bits) + " bits";
    if (isCoded && source.Describe().compression[0] == 0) finding.fault = "writes no codes";
    finding.bytes = static_cast<double>(std::filesystem::file_size(path));
  } catch (const vx::Error& failure) {
    finding.fault = std::string("writes what cannot be read: ") + failure.what();
  }
  return finding;
}

double PixelsOf(const Sample& sample) {
  return static_cast<double>(sample.width) * sample.height;
}

}  // namespace bench
