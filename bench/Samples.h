// The pictures and files that are measured with, each the same on every machine, and what they look like.
#pragma once

#include <cstdint>
#include <string>

#include "Contest.h"

namespace bench {

/// A file and what it shows: red, green, blue, 255 from the top.
struct Sample {
  Bytes file;
  Bytes rgba;
  int width = 0;
  int height = 0;
};

enum class Look { Photograph, Screenshot };

/// Rows of a picture, as far from the top as one likes, without the picture.
class Scene {
 public:
  Scene(Look look, int width);
  /// 4 x width bytes: red, green, blue, 255.
  void Row(int y, uint8_t* rgba);

 private:
  void Photograph(int y, uint8_t* rgba);
  void Screenshot(int y, uint8_t* rgba) const;

  Look look_;
  int width_;
  Bytes lattice_;
};

/// Bitmap files of side x side pixels. Their fourth bytes, where there are some, are 255.
Sample TrueColor(int side, int bitsPerPixel, Look look);
/// 1, 4 or 8 bits, a drawing.
Sample Indexed(int side, int bitsPerPixel);
/// 16 bits: 5-5-5, or 5-6-5 by masks.
Sample HighColor(int side, bool has565);
/// 4 or 8 bits in run-length codes of 1 to longestRun pixels, half of the longer ones literals.
Sample RunLength(int side, int bitsPerPixel, int longestRun);

/// An icon file of so many pages of 16 x 16 x 4, no two alike.
Bytes Icon(int pages);
/// A bitmap file of 24 bits, written row by row: too large for memory, perhaps.
void WriteHuge(const std::string& path, int side);

/// @return "" where both show the same, within `tolerance` a channel, whatever their alpha
std::string Difference(const Bytes& rgba, const Sample& sample, int tolerance);
/// The mean squared difference of a channel.
double MeanSquaredError(const Bytes& rgba, const Sample& sample);

}  // namespace bench
