// The terminal: what it takes, and pixels as text for it. The one place that knows the library that does
// this.
#pragma once

#include "Pixels.h"

namespace vxdis {

/// How many character cells a picture takes.
struct Cells {
  int columns;
  int rows;
};

class Terminal {
 public:
  /// Asks the environment what the terminal takes. @param mode DISPLAY_...
  explicit Terminal(int mode);
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Whether it shows pixels, and not characters that look like some.
  [[nodiscard]] bool ShowsPixels() const noexcept;

  /// How many pixels high so many rows of cells are drawn: theirs, or a few more where it takes pixels in
  /// bands.
  [[nodiscard]] int HeightOf(int rows, int cellHeight) const noexcept;

  /// Draws the pixels over so many cells of so many pixels. *text is memory of the kernel's, the caller's
  /// then.
  /// @return STATUS_OK or STATUS_NO_MEMORY
  [[nodiscard]] int Draw(const Pixels& pixels, Cells cells, int cellWidth, int cellHeight, char** text,
                         unsigned int* size) const;

 private:
  struct Capabilities;
  Capabilities* capabilities_;
};

}  // namespace vxdis
