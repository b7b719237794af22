// vx_best_page: which of the pages people mean. Looks at headers only, and at each page once.
#include <algorithm>

#include "app/Describe.h"
#include "app/Frames.h"
#include "base/Errors.h"
#include "beyond/BitmapFile.h"

namespace vxkrn {
namespace {

/// Arrays are walked from their beginning for every image.
constexpr int kMostArrayImages = 1024;

struct Candidate {
  int page = 0;  ///< 0: none
  int width = 0;
  int depth = 0;
};

/// Whether a page is nearer to what is wanted than one before it.
constexpr bool IsBetter(const Candidate& one, const Candidate& other, int wanted) {
  if (other.page == 0) return true;
  if (one.width == other.width) return one.depth > other.depth;
  const bool isOneWide = wanted != 0 && one.width >= wanted;
  const bool isOtherWide = wanted != 0 && other.width >= wanted;
  if (isOneWide != isOtherWide) return isOneWide;
  return isOneWide ? one.width < other.width : one.width > other.width;
}

static_assert(IsBetter({2, 48, 8}, {1, 32, 32}, 0) && IsBetter({2, 48, 8}, {1, 64, 32}, 40) &&
              IsBetter({2, 32, 8}, {1, 16, 32}, 40) && !IsBetter({2, 32, 8}, {1, 32, 8}, 32));

int FailForPages(const vx_source& source, int count) noexcept {
  return Fail({STATUS_BAD_PAGE, VX_REASON_PAGE_DAMAGED}, source.Name(), ": none of its ", count,
              " pages can be loaded");
}

/// Whether loading the image would come to its rows. Its last one may be missing.
bool IsUsable(const vx_source& source, const BitmapImage& image) noexcept {
  const bmp::BitmapLayout& layout = image.layout;
  const bool isPng = image.icon && image.icon->isPng;
  const auto isSide = [](int side) { return side >= 1 && side <= kLongestSide; };
  if (!isSide(layout.width) || !isSide(layout.height)) return false;
  if (isPng) return image.icon->isWholePng;
  if (image.decoder == bmp::Decoder::kNone) return false;
  const int there = IsPlain(layout, image.decoder) ? RowsThere(source, layout) : layout.height;
  return there > 0 && there >= layout.height - 1;
}

/// Of each frame the first page counts, as it does for whoever loads the frame.
int FindBestFrame(vx_source& source, int wanted, Candidate* best) {
  Animation animation;
  int status = FindAnimation(source, &animation);
  if (status != STATUS_OK) return status;
  const auto count = static_cast<int>(animation.frames.size());
  for (int page = 1; page <= count; ++page) {
    status = WithFrameOf(source, animation, page, [&](vx_source& frame) {
      std::optional<BitmapImage> image;
      const int found = FindBitmap(frame, 1, &image);
      if (found != STATUS_OK || !image || !IsUsable(frame, *image)) return int{STATUS_OK};
      const Candidate candidate{page, image->layout.width, image->layout.depth};
      if (IsBetter(candidate, *best, wanted)) *best = candidate;
      return int{STATUS_OK};
    });
    if (status != STATUS_OK) return status;
  }
  return best->page != 0 ? int{STATUS_OK} : FailForPages(source, count);
}

/// Files of a single image that the filter finds by itself, and PNG files, have page 1 alone.
int FindBest(vx_source& source, int wanted, Candidate* best) {
  int count = 1;
  for (int page = 1; page <= count; ++page) {
    std::optional<BitmapImage> image;
    const int status = FindBitmap(source, page, &image);
    if (status == STATUS_OK && image) {
      count = image->icon && image->icon->HasDirectory() ? image->pageCount
                                                         : std::min(image->pageCount, kMostArrayImages);
    } else if (page == 1) {
      const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
      if (bmp::IsValidDirectory(directory)) count = directory.Count;
    }
    if (status != STATUS_OK || !image || !IsUsable(source, *image)) continue;
    const Candidate found{page, image->layout.width, image->layout.depth};
    if (IsBetter(found, *best, wanted)) *best = found;
  }
  if (best->page != 0) return STATUS_OK;
  IMAGEINFO info;
  if (count == 1) {
    best->page = 1;
    return Identify(source, 1, false, &info);
  }
  return FailForPages(source, count);
}

}  // namespace
}  // namespace vxkrn

int vx_best_page(vx_source* source, int width, int* page) {
  return vxkrn::Guarded([&]() -> int {
    if (page != nullptr) *page = 0;
    if (source == nullptr || page == nullptr || width < 0) {
      return vxkrn::FailForArgument(
          "the source, a width of 0 or more and the place for the page must be given");
    }
    vxkrn::Candidate best;
    const int status = vxkrn::IsAnimation(*source) ? vxkrn::FindBestFrame(*source, width, &best)
                                                   : vxkrn::FindBest(*source, width, &best);
    if (status == STATUS_OK) *page = best.page;
    return status;
  });
}
