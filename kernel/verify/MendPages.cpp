// The file is put together from its pages in the order in which they lie: what a page lacks because the file
// ends is then still behind the end. Of a mask that is not whole the rows that are missing come from alpha,
// which says the same, or leave the picture opaque, as readers show it.
#include <algorithm>
#include <array>
#include <map>

#include "beyond/IconPage.h"
#include "bitmap/Bitmap.h"
#include "format/HeaderEncoding.h"
#include "verify/ImageView.h"
#include "verify/Mend.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;

/// A page as it is to be written.
struct BodyPlan {
  uint64_t begin = 0;
  uint64_t copied = 0;    ///< bytes from there on
  uint64_t size = 0;      ///< with what is added
  int maskRowsThere = 0;  ///< rows of the mask among those bytes
  bool isCompleted = false;
  bool isDoubled = false;  ///< its header gets the height that counts the mask
};

/// Whether the alpha of its pixels says what is hidden.
bool UsesAlpha(const vx_source& source, const BitmapLayout& layout) {
  memory::Vector<uint8_t> row(static_cast<std::size_t>(layout.StoredStride()));
  if (layout.depth != 32 || layout.HasFields()) return false;
  for (int y = 0; y < layout.height; ++y) {
    const uint64_t at = layout.pixelOffset + layout.StoredStride() * static_cast<uint64_t>(y);
    (void)source.Peek(row.data(), static_cast<uint32_t>(row.size()), at);
    for (std::size_t i = 3; i < row.size(); i += 4) {
      if (row[i] != 0) return true;
    }
  }
  return false;
}

/// Adds the rows of a mask from `first` on.
void AppendMask(const vx_source& source, const BitmapLayout& layout, int first, Content* content) {
  constexpr int kHalf = 128;
  const bool usesAlpha = UsesAlpha(source, layout);
  memory::Vector<uint8_t> row(static_cast<std::size_t>(layout.StoredStride()));
  const auto bytes = static_cast<std::size_t>(Stride(layout.width, 1));
  for (int y = first; y < layout.height; ++y) {
    const std::size_t to = content->size();
    content->resize(to + bytes);
    if (!usesAlpha) continue;
    const uint64_t at = layout.pixelOffset + layout.StoredStride() * static_cast<uint64_t>(y);
    (void)source.Peek(row.data(), static_cast<uint32_t>(row.size()), at);
    for (std::size_t x = 0; x < static_cast<std::size_t>(layout.width); ++x) {
      if (row[4 * x + 3] < kHalf) (*content)[to + x / 8] |= static_cast<uint8_t>(0x80 >> x % 8);
    }
  }
}

class PageRewriter {
 public:
  explicit PageRewriter(const vx_source& source) noexcept
      : source_(source), fileSize_(static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0))) {}

  bool Run(Content* content) {
    directory_ = bmp::DecodeDirectory(source_.BlockAt<bmp::kDirectorySize>(0));
    const uint64_t directoryEnd = bmp::DirectoryBytes(directory_.Count);
    if (!bmp::IsValidDirectory(directory_) || directoryEnd > fileSize_ || !PlanAll(directoryEnd))
      return false;
    const auto head = bmp::EncodeDirectory(directory_);
    content->assign(head.begin(), head.end());
    content->resize(static_cast<std::size_t>(directoryEnd));
    for (Page& page : pages_) WriteBody(&page, content);
    for (const Page& page : pages_) WriteEntry(page, content);
    return true;
  }

 private:
  struct Page {
    int number;
    ICONDIRENTRY entry;
    BodyPlan plan;
    uint64_t offset = 0;  ///< in the new file
  };

  [[nodiscard]] std::optional<BitmapImage> ImageOf(int page) const noexcept {
    std::optional<BitmapImage> image;
    return FindIconPage(source_, page, &image) == STATUS_OK ? image : std::nullopt;
  }

  /// @return false where the new file would be too long: pages may share bytes over and over
  bool PlanAll(uint64_t directoryEnd) {
    constexpr uint64_t kMostTimes = 16;
    const uint64_t most = std::min<uint64_t>(kMostTimes * fileSize_ + (1 << 20), UINT32_MAX);
    uint64_t size = directoryEnd;
    for (int number = 1; number <= directory_.Count; ++number) {
      Page page = {number, {}, {}};
      page.entry = bmp::DecodeEntry(source_.BlockAt<bmp::kEntrySize>(bmp::EntryOffset(number)));
      page.plan = PlanOf(page, ImageOf(number));
      size += page.plan.size;
      pages_.push_back(page);
      if (size > most || !memory::Fits(size)) return false;
    }
    std::stable_sort(pages_.begin(), pages_.end(), [](const Page& one, const Page& other) {
      return one.entry.ImageOffset < other.entry.ImageOffset;
    });
    return true;
  }

  [[nodiscard]] BodyPlan PlanOf(const Page& page, const std::optional<BitmapImage>& image) const {
    const uint64_t room = fileSize_ - std::min<uint64_t>(fileSize_, page.entry.ImageOffset);
    const uint64_t own = image ? image->icon->ownSize : 0;
    const uint64_t said = std::min(std::max<uint64_t>(page.entry.BytesInRes, own), room);
    BodyPlan plan = {.begin = page.entry.ImageOffset, .copied = said, .size = said};
    if (!image) return plan;
    if (image->icon->isPng) {
      if (image->icon->isWholePng) plan.copied = plan.size = own;
      return plan;
    }
    const BitmapLayout& layout = image->layout;
    const bool isWhole = CheckBitmap(*image) == STATUS_OK && IsPlain(layout, image->decoder) &&
                         RowsThere(source_, layout) == layout.height && layout.colour.profileSize == 0;
    if (!isWhole) return plan;
    const auto maskRow = static_cast<uint64_t>(Stride(layout.width, 1));
    const auto height = static_cast<uint64_t>(layout.height);
    const uint64_t colors = layout.pixelOffset - plan.begin + layout.StoredStride() * height;
    plan.maskRowsThere = image->icon->maskRowsThere;
    plan.copied = colors + maskRow * static_cast<uint64_t>(plan.maskRowsThere);
    plan.size = colors + maskRow * height;
    plan.isCompleted = true;
    plan.isDoubled = image->icon->isHeightNotDoubled;
    return plan;
  }

  void WriteBody(Page* page, Content* content) {
    const BodyPlan& plan = page->plan;
    if (plan.begin >= fileSize_) return;  // there is none
    const auto [known, isNew] =
        written_.try_emplace({plan.begin, plan.size, plan.isDoubled ? 1U : 0U}, content->size());
    page->offset = known->second;
    if (!isNew) return;
    const std::size_t to = content->size();
    content->resize(to +
                    static_cast<std::size_t>(plan.copied));  // of the last row the padding may be missing
    (void)source_.Peek(content->data() + to, static_cast<uint32_t>(plan.copied), plan.begin);
    if (!plan.isCompleted) return;
    const std::optional<BitmapImage> image = ImageOf(page->number);
    if (!image) return;
    AppendMask(source_, image->layout, plan.maskRowsThere, content);
    if (plan.isDoubled) DoubleHeight(image->layout, content->data() + to);
  }

  static void DoubleHeight(const BitmapLayout& layout, uint8_t* header) noexcept {
    const bool isCore = layout.headerSize == bmp::kCoreHeaderSize;
    const uint32_t at = isCore ? bmp::core_at::kHeight : bmp::info_at::kHeight;
    const int height = (layout.isTopDown ? -2 : 2) * layout.height;
    for (uint32_t i = 0; i < (isCore ? 2U : 4U); ++i) {
      header[at + i] = static_cast<uint8_t>(static_cast<uint32_t>(height) >> 8 * i);
    }
  }

  void WriteEntry(const Page& page, Content* content) const {
    ICONDIRENTRY entry = page.entry;
    if (page.plan.begin >= fileSize_) {  // still as far behind the end
      entry.ImageOffset = static_cast<uint32_t>(
          std::min<uint64_t>(content->size() + (page.plan.begin - fileSize_), UINT32_MAX));
    } else {
      entry.ImageOffset = static_cast<uint32_t>(page.offset);
      entry.BytesInRes = static_cast<uint32_t>(page.plan.size);
    }
    const auto bytes = bmp::EncodeEntry(entry);
    std::copy(bytes.begin(), bytes.end(), content->data() + bmp::EntryOffset(page.number));
  }

  using Key = std::array<uint64_t, 3>;
  using Written = std::map<Key, uint64_t, std::less<>, memory::Counted<std::pair<const Key, uint64_t>>>;

  const vx_source& source_;
  uint64_t fileSize_;
  ICONDIR directory_ = {};
  memory::Vector<Page> pages_;
  Written written_;
};

}  // namespace

bool MendPages(const vx_source& source, Content* content) {
  return PageRewriter(source).Run(content);
}

}  // namespace vxkrn
