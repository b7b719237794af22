// The list of all samples.
#include "samples/Samples.h"

#include <iterator>
#include <utility>

#include "samples/Families.h"

namespace samples {

const char* OutcomeName(Outcome outcome) {
  switch (outcome) {
    case Outcome::Loads: return "loads";
    case Outcome::LoadsDamaged: return "loads-damaged";
    case Outcome::NeedsAllowTruncated: return "needs-allow-truncated";
    case Outcome::Refused: return "refused";
  }
  return "";
}

std::string PaletteFileName(const Sample& sample) {
  return sample.name + ".pal";
}

Sample MakeSample(std::string name, std::string title, std::vector<uint8_t> bytes, const Picture& expected) {
  Sample sample;
  sample.name = std::move(name);
  sample.title = std::move(title);
  sample.bytes = std::move(bytes);
  sample.width = expected.Width();
  sample.height = expected.Height();
  sample.rgba = expected.Rgba();
  return sample;
}

std::vector<Sample> All() {
  std::vector<Sample> all;
  for (auto family : {BitmapSamples, BeyondSamples, CodedSamples, ColorSamples, IconSamples, OddIconSamples,
                      AnimationSamples, RawSamples, DamagedSamples, FindingSamples}) {
    std::vector<Sample> some = family();
    all.insert(all.end(), std::make_move_iterator(some.begin()), std::make_move_iterator(some.end()));
  }
  return all;
}

}  // namespace samples
