// Pages of icons and cursors, and the files made of them.
#pragma once

#include <vector>

#include "samples/Bytes.h"
#include "samples/Indexed.h"
#include "samples/Picture.h"

namespace samples {

enum class IconType : uint32_t { Icon = 1, Cursor = 2 };

/// One page: what its directory entry says of it, its body, and the picture it must load as.
struct Page {
  int bits = 0;
  int colors = 0;  ///< of the palette; 0 for 256 and more
  int hotX = 0;    ///< cursors: the pixel that points
  int hotY = 0;
  Bytes body;
  Picture picture;
};

/// 1, 4 or 8 bits with an AND mask.
Page IndexedPage(const Picture& picture, int bits);
/// 24 bits with an AND mask.
Page TrueColorPage(const Picture& picture);
/// 32 bits: alpha in the fourth byte, and an AND mask for readers that do not look there.
Page AlphaPage(const Picture& picture);
/// A whole PNG stream.
Page PngPage(const Picture& picture);

/// @return the page with its hot spot at (x, y).
Page WithHotSpot(Page page, int x, int y);

/// @return the file: directory, entries, bodies in the same order.
Bytes IconFile(IconType type, const std::vector<Page>& pages);

}  // namespace samples
