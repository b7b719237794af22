// The shapes of the letters, and putting them into a picture.
#include "samples/Lettering.h"

#include <algorithm>
#include <array>

namespace samples {
namespace {

constexpr int kDotsWide = 3;
constexpr int kDotsHigh = 5;
constexpr int kAdvance = 4;

struct Glyph {
  char character;
  std::array<uint8_t, kDotsHigh> rows;  // three dots a row, the leftmost in bit 2
};

constexpr Glyph kGlyphs[] = {
    {'0', {7, 5, 5, 5, 7}}, {'1', {2, 6, 2, 2, 7}}, {'2', {7, 1, 7, 4, 7}}, {'3', {7, 1, 7, 1, 7}},
    {'4', {5, 5, 7, 1, 1}}, {'5', {7, 4, 7, 1, 7}}, {'6', {7, 4, 7, 5, 7}}, {'7', {7, 1, 1, 2, 2}},
    {'8', {7, 5, 7, 5, 7}}, {'9', {7, 5, 7, 1, 7}}, {'A', {2, 5, 7, 5, 5}}, {'B', {6, 5, 6, 5, 6}},
    {'C', {3, 4, 4, 4, 3}}, {'D', {6, 5, 5, 5, 6}}, {'E', {7, 4, 6, 4, 7}}, {'F', {7, 4, 6, 4, 4}},
    {'G', {3, 4, 5, 5, 3}}, {'H', {5, 5, 7, 5, 5}}, {'I', {7, 2, 2, 2, 7}}, {'L', {4, 4, 4, 4, 7}},
    {'M', {5, 7, 7, 5, 5}}, {'N', {6, 5, 5, 5, 5}}, {'O', {2, 5, 5, 5, 2}}, {'P', {6, 5, 6, 4, 4}},
    {'R', {6, 5, 6, 5, 5}}, {'S', {3, 4, 2, 1, 6}}, {'T', {7, 2, 2, 2, 2}}, {'U', {5, 5, 5, 5, 7}},
    {'V', {5, 5, 5, 5, 2}}, {'W', {5, 5, 7, 7, 5}}, {'X', {5, 5, 2, 5, 5}}, {'/', {1, 1, 2, 4, 4}},
    {'-', {0, 0, 7, 0, 0}}, {'+', {0, 2, 7, 2, 0}},
};

void FillSquare(Picture& picture, int left, int top, int size, Color color) {
  for (int y = std::max(top, 0); y < std::min(top + size, picture.Height()); ++y) {
    for (int x = std::max(left, 0); x < std::min(left + size, picture.Width()); ++x) picture.At(x, y) = color;
  }
}

}  // namespace

void Write(Picture& picture, int left, int top, int scale, Color color, std::string_view text) {
  for (const char character : text) {
    const auto* glyph = std::find_if(std::begin(kGlyphs), std::end(kGlyphs),
                                     [&](const Glyph& each) { return each.character == character; });
    for (int dot = 0; glyph != std::end(kGlyphs) && dot < kDotsWide * kDotsHigh; ++dot) {
      const int column = dot % kDotsWide;
      const int row = dot / kDotsWide;
      const bool inked = ((glyph->rows[static_cast<size_t>(row)] >> (kDotsWide - 1 - column)) & 1) != 0;
      if (inked) FillSquare(picture, left + column * scale, top + row * scale, scale, color);
    }
    left += kAdvance * scale;
  }
}

}  // namespace samples
