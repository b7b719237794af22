// The families of samples that make up All(), and what they share.
#pragma once

#include <vector>

#include "samples/Picture.h"
#include "samples/Samples.h"

namespace samples {

std::vector<Sample> BitmapSamples();
/// What the library reads beside the filter.
std::vector<Sample> BeyondSamples();
std::vector<Sample> ColorSamples();
std::vector<Sample> CodedSamples();
std::vector<Sample> IconSamples();
std::vector<Sample> AnimationSamples();
std::vector<Sample> OddIconSamples();
std::vector<Sample> RawSamples();
std::vector<Sample> DamagedSamples();
/// What a check of files must find.
std::vector<Sample> FindingSamples();

/// @return a good sample that loads as `expected`.
Sample MakeSample(std::string name, std::string title, std::vector<uint8_t> bytes, const Picture& expected);

}  // namespace samples
