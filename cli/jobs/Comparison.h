// Two pictures beside each other: what they show, and how they are stored.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>
#include <vx/image.hpp>

#include "words/Numbers.h"

namespace cli {

/// How the pixels differ that both have: of pictures that differ in size those at the top left. Pixels that
/// cannot be seen in either do not differ, whatever their colours.
struct PixelDifference {
  uint64_t compared = 0;
  uint64_t differing = 0;
  uint64_t hidden = 0;  ///< that cannot be seen and have other colours
  int firstX = -1;      ///< of the first that differs, from the top left
  int firstY = -1;
  Rgba first{};  ///< what it is there
  Rgba other{};
  Rgba most{};                     ///< the largest difference of red, green, blue, alpha
  std::array<uint64_t, 4> sums{};  ///< of all differences

  [[nodiscard]] double MeanOf(size_t channel) const;
};

PixelDifference ComparePixels(const vx::Bitmap& picture, const vx::Bitmap& other);

/// What is known of one of the pictures.
struct PictureSide {
  vx_info page;
  vx_storage_info storage;
  vx_bitmap_info bitmap;
  const vx::Bitmap& picture;
};

/// Something about how pictures are stored that is not the same.
struct StoredDifference {
  std::string key;   ///< for programs, such as "bits_per_pixel"
  std::string name;  ///< for people, such as "bits a pixel"
  std::string value;
  std::string other;
};

std::vector<StoredDifference> CompareStored(const PictureSide& side, const PictureSide& other);

/// A picture of where they differ: those pixels in red, on the first picture in pale grey. As wide and as
/// high as the larger one. @throws vx::Error
vx::Bitmap DrawDifference(const vx::Bitmap& picture, const vx::Bitmap& other);

}  // namespace cli
