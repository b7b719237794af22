// The sample files this project makes for itself: every variant the reader knows, and some damaged ones.
// They are built byte by byte from computed pictures, sharing nothing with the filter, so that a test may
// take the picture that comes with each file as the truth.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace samples {

/// What a reader is expected to make of a sample.
enum class Outcome {
  Loads,                ///< a good file
  LoadsDamaged,         ///< damaged, yet it loads without being asked to tolerate anything
  NeedsAllowTruncated,  ///< fails, unless truncated files are allowed
  Refused               ///< fails always
};

/// @return a word for lists: "loads", "loads-damaged", "needs-allow-truncated" or "refused".
const char* OutcomeName(Outcome outcome);

struct Sample {
  std::string name;                  ///< file name
  std::string title;                 ///< a sentence for people
  std::vector<uint8_t> bytes;        ///< the file
  Outcome outcome = Outcome::Loads;  ///< of loading page 1
  int width = 0;                     ///< pixels of page 1; 0 where `rgba` is empty
  int height = 0;                    ///< pixels of page 1; 0 where `rgba` is empty
  /// The picture page 1 must load as: top row first, 4 bytes a pixel, red, green, blue, alpha; empty where
  /// no picture comes out, or where what comes out of damage is not worth fixing.
  std::vector<uint8_t> rgba;
  std::string raw;               ///< headerless samples: the arguments that describe them to vxbmp convert
  std::vector<uint8_t> palette;  ///< headerless samples: contents of the file that `raw` names as palette
};

/// @return all samples, in the order in which people like to see them; names are unique.
std::vector<Sample> All();

/// @return the name of the file beside a headerless sample that holds its palette.
std::string PaletteFileName(const Sample& sample);

}  // namespace samples
