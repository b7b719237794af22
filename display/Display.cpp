// The display library's face: how large a picture is drawn. What its pixels are and how a terminal takes them
// is not known here.
#include <algorithm>
#include <cmath>
#include <new>

#include "Pixels.h"
#include "Terminal.h"

extern "C" __attribute__((visibility("default"))) int disGetDispatch(_DISDISPATCH* dispatch);

namespace vxdis {
namespace {

// Of a terminal that does not tell.
constexpr int kCellWidth = 8;
constexpr int kCellHeight = 16;

/// Pixels that a cell stands for where the picture is drawn in its own size.
struct CellSize {
  double width;
  double height;
};

struct Layout {
  Cells cells;
  bool isOwnSize;
};

int Limit(double cells, int most) {
  return static_cast<int>(std::clamp(std::round(cells), 1.0, static_cast<double>(most)));
}

Layout Arrange(const _BITMAPHANDLE& bitmap, CellSize cell, const DISPLAYOPTIONS& options) {
  const double columns = std::max(bitmap.Width / cell.width, 1e-3);
  const double rows = std::max(bitmap.Height / cell.height, 1e-3);
  const double room = std::min(options.Columns / columns, options.Rows / rows);
  if (room >= 1 && options.Enlarge == 0) {
    return {{Limit(std::ceil(columns), options.Columns), Limit(std::ceil(rows), options.Rows)}, true};
  }
  return {{Limit(columns * room, options.Columns), Limit(rows * room, options.Rows)}, false};
}

bool IsSensible(const DISPLAYOPTIONS& options) {
  return options.StructSize == sizeof options && options.Columns >= 1 && options.Rows >= 1 &&
         options.Mode >= DISPLAY_AUTO && options.Mode <= DISPLAY_KITTY;
}

/// The options with a size for cells, and with no more of them than can be drawn.
DISPLAYOPTIONS Completed(DISPLAYOPTIONS options) {
  const auto isSide = [](int pixels) { return pixels >= 1 && pixels <= kMostPixels / 16; };
  if (!isSide(options.CellWidth) || !isSide(options.CellHeight)) {
    options.CellWidth = kCellWidth;
    options.CellHeight = kCellHeight;
  }
  // A character is made from 8 x 8 pixels, whatever its size.
  options.Columns = std::min(options.Columns, kMostPixels / std::max(options.CellWidth, 8));
  options.Rows = std::min(options.Rows, kMostPixels / std::max(options.CellHeight, 8));
  return options;
}

int DrawPixels(const Terminal& terminal, const _BITMAPHANDLE& bitmap, const Pixels& pixels,
               const DISPLAYOPTIONS& options, char** text, unsigned int* size) {
  const int cellWidth = options.CellWidth;
  const int cellHeight = options.CellHeight;
  // A character is a column of pixels wide, and as high as its proportions say.
  const CellSize cell = terminal.ShowsPixels()
                            ? CellSize{static_cast<double>(cellWidth), static_cast<double>(cellHeight)}
                            : CellSize{1.0, static_cast<double>(cellHeight) / cellWidth};
  const Layout layout = Arrange(bitmap, cell, options);
  if (!terminal.ShowsPixels() || !layout.isOwnSize) {
    return terminal.Draw(pixels, layout.cells, cellWidth, cellHeight, text, size);
  }
  // In its own size a picture is not stretched to whole cells.
  Pixels padded;
  const int height = terminal.HeightOf(layout.cells.rows, cellHeight);
  const int status = Pad(pixels, layout.cells.columns * cellWidth, height, &padded);
  return status == STATUS_OK ? terminal.Draw(padded, layout.cells, cellWidth, cellHeight, text, size)
                             : status;
}

int Draw(_BITMAPHANDLE* bitmap, const DISPLAYOPTIONS* options, char** text, unsigned int* size) {
  if (bitmap == nullptr || options == nullptr || text == nullptr || size == nullptr || bitmap->Width < 1 ||
      bitmap->Height < 1 || !IsSensible(*options)) {
    return STATUS_BAD_PARAMETER;
  }
  try {
    Pixels pixels;
    const int status = TakePixels(bitmap, &pixels);
    if (status != STATUS_OK) return status;
    return DrawPixels(Terminal(options->Mode), *bitmap, pixels, Completed(*options), text, size);
  } catch (const std::bad_alloc&) {
    return STATUS_NO_MEMORY;
  }
}

}  // namespace
}  // namespace vxdis

int disGetDispatch(_DISDISPATCH* dispatch) {
  if (dispatch == nullptr || dispatch->StructSize != sizeof *dispatch) return STATUS_BAD_PARAMETER;
  dispatch->Draw = vxdis::Draw;
  return STATUS_OK;
}
