// The filter looks at page after page until one is of the newer kind, and fails over one that is not there.
// It is then shown the file with such pages mended (MendedIcon), and looks again. What comes of all that is
// told here without doing it again for every page.
#include "beyond/IconKind.h"

#include "beyond/IconFile.h"
#include "format/IconDirectory.h"

namespace vxkrn {
namespace {

bool IsLarge(const bmp::ImageHeader& header) noexcept {
  return header.width == bmp::kLargeIcon || header.height == bmp::kLargeIcon;
}

struct Look {
  bool looksNewer = false;  ///< bytes that are missing taken as 0
  bool isNewer = false;     ///< by the filter's rule
  bool isThere = true;      ///< as much as the rule needs
  bool isMendable = true;   ///< as much as mending needs
};

/// The rule looks into bitmaps only where the entry leaves a side open.
Look LookAt(const vx_source& source, int page) noexcept {
  bmp::Block<bmp::kEntrySize> bytes{};
  const bool hasEntry = source.Peek(bytes.data(), bytes.size(), bmp::EntryOffset(page)) > 0;
  const ICONDIRENTRY entry = bmp::DecodeEntry(bytes);
  const bool isOpen = entry.Width == 0 || entry.Height == 0;
  bmp::Block<bmp::kInfoHeaderSize> start{};
  const uint32_t wanted = isOpen ? bmp::kInfoHeaderSize : bmp::kPngSignatureSize;
  const uint32_t got = source.Peek(start.data(), wanted, entry.ImageOffset);
  const bool isPng = bmp::IsOneOfPngSignatures(bmp::Slice<bmp::kPngSignatureSize>(start, 0));
  Look look;
  look.looksNewer = isPng || (isOpen && IsLarge(bmp::DecodeInfoHeader(start)));
  look.isMendable = hasEntry && got == wanted;
  look.isThere = look.isMendable || (hasEntry && isPng);
  look.isNewer = look.isThere && look.looksNewer;
  return look;
}

const IconPages& PagesOf(vx_source& source, int count) noexcept {
  IconPages& pages = source.iconPages;
  if (pages.areKnown) return pages;
  pages.areKnown = true;
  for (int page = 1; page <= count && pages.newer == 0; ++page) {
    const Look look = LookAt(source, page);
    pages.lookNewer = pages.lookNewer || look.looksNewer;
    if (!look.isThere && pages.outOfReach == 0) pages.outOfReach = page;
    const bool counts = pages.outOfReach == 0 || look.isMendable;
    if (look.isNewer && counts) pages.newer = page;
  }
  return pages;
}

}  // namespace

int FormatOfIconFile(vx_source& source) noexcept {
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
  if (directory.Type == bmp::kCursorType) return FMT_CUR;
  return PagesOf(source, directory.Count).lookNewer ? FMT_VISTA_ICO : FMT_ICO;
}

int FindFiltersFormat(vx_source& source, const BitmapImage& image, int* format) {
  const IconPart& part = *image.icon;
  *format = FMT_CUR;
  if (part.kind == IconPart::Kind::kCursor) return STATUS_OK;
  const IconPages& pages = PagesOf(source, image.pageCount);
  int last = image.pageCount;  // page whose kind counts
  if (pages.outOfReach != 0) {
    const Backend view = source.View();
    IconDirectory directory;
    const int status = IconReader(view, source.Name()).ReadStart(&directory);
    if (status != STATUS_OK) return status;
    // A body in the directory is shown with the entries before it alone.
    if (part.bodyOffset < directory.Bytes()) last = image.page;
  }
  const auto header = bmp::DecodeInfoHeader(source.BlockAt<bmp::kInfoHeaderSize>(part.bodyOffset));
  const bool isNewer = IsLarge(header) || (pages.newer != 0 && pages.newer <= last);
  *format = isNewer ? FMT_VISTA_ICO : FMT_ICO;
  return STATUS_OK;
}

}  // namespace vxkrn
