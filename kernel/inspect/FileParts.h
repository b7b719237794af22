// The parts of a whole file, whatever its kind. Throws std::bad_alloc.
#pragma once

#include "beyond/BitmapFile.h"
#include "files/Source.h"
#include "inspect/Structure.h"

namespace vxkrn {

/// Where an image of a file stands.
struct ImagePlace {
  uint64_t base = 0;    ///< where in the whole file the source begins that its offsets count from
  uint64_t offset = 0;  ///< of what is told as unknown, from there
  int page = 0;         ///< 0 where the file has one image, and no directory
  bool isFirst = true;  ///< no page before has the same bytes
};

/// Is told of every image while the parts are found, in the order of the pages. May throw.
class ImageTaker {
 public:
  ImageTaker() = default;
  ImageTaker(const ImageTaker&) = delete;
  ImageTaker& operator=(const ImageTaker&) = delete;
  virtual ~ImageTaker() = default;

  /// A PNG file has no header.
  virtual void Take(vx_source& source, const ImagePlace& place, const BitmapImage& image) = 0;
  /// No reader finds an image there; this thread's failure says why, if that is known.
  virtual void TakeUnknown(vx_source& source, const ImagePlace& place) = 0;
};

/// Finds the parts. @param taker may be null @return STATUS_OK, or STATUS_BAD_FORMAT with its detail set for
/// what begins like no picture
[[nodiscard]] int FindParts(vx_source& source, memory::Vector<vx_part>* parts, ImageTaker* taker = nullptr);

/// Adds what no part claims, says which share bytes or are cut off, and puts all into the order of the file.
void SettleParts(uint64_t fileSize, memory::Vector<vx_part>* parts);

}  // namespace vxkrn
