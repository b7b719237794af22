// Building icon and cursor files. PNG streams come from libpng: a peer, not part of what is tested here.
#include "samples/Icons.h"

#include <png.h>

#include <stdexcept>
#include <utility>

#include "samples/Headers.h"
#include "samples/Rows.h"

namespace samples {
namespace {

constexpr uint32_t kDirectorySize = 6;
constexpr uint32_t kEntrySize = 16;

/// The stored height counts the rows of the mask as well.
Bytes PageHeader(const Picture& picture, int bits) {
  ImageHeader header;
  header.width = picture.Width();
  header.height = picture.Height() * 2;
  header.bits = bits;
  header.dpi = 0;
  return Encode(header);
}

Bytes Body(const Picture& picture, int bits, const Bytes& palette, const Bytes& rows) {
  Bytes body = PageHeader(picture, bits);
  Append(body, palette);
  Append(body, rows);
  Append(body, AndMask(picture));
  return body;
}

Picture WithAlphaOf(Picture picture, const Picture& alpha) {
  for (size_t i = 0; i < picture.Pixels().size(); ++i) picture.Pixels()[i].alpha = alpha.Pixels()[i].alpha;
  return picture;
}

Bytes EncodePng(const Picture& picture) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  image.width = static_cast<png_uint_32>(picture.Width());
  image.height = static_cast<png_uint_32>(picture.Height());
  image.format = PNG_FORMAT_RGBA;
  const std::vector<uint8_t> rgba = picture.Rgba();
  Bytes png(PNG_IMAGE_PNG_SIZE_MAX(image));
  png_alloc_size_t size = png.size();
  if (png_image_write_to_memory(&image, png.data(), &size, 0, rgba.data(), 0, nullptr) == 0) {
    throw std::runtime_error(image.message);
  }
  png.resize(size);
  return png;
}

}  // namespace

Page IndexedPage(const Picture& picture, int bits) {
  const Picture hard = WithHardEdges(picture);
  const Indexed indexed = Reduce(hard, 1 << bits, bits == 4 ? 12 : 0);
  const size_t colors = size_t{1} << bits;
  return {bits,
          bits < 8 ? static_cast<int>(colors) : 0,
          0,
          0,
          Body(hard, bits, EncodePalette(indexed.palette, colors, 4), IndexRows(indexed, bits)),
          WithAlphaOf(ToPicture(indexed), hard)};
}

Page TrueColorPage(const Picture& picture) {
  const Picture hard = WithHardEdges(picture);
  return {24, 0, 0, 0, Body(hard, 24, {}, Rows24(hard)), hard};
}

Page AlphaPage(const Picture& picture) {
  return {32, 0, 0, 0, Body(picture, 32, {}, Rows32(picture, true)), picture};
}

Page PngPage(const Picture& picture) {
  return {32, 0, 0, 0, EncodePng(picture), picture};
}

Page WithHotSpot(Page page, int x, int y) {
  page.hotX = x;
  page.hotY = y;
  return page;
}

Bytes IconFile(IconType type, const std::vector<Page>& pages) {
  Bytes file;
  Append16(file, 0);
  Append16(file, static_cast<uint32_t>(type));
  Append16(file, static_cast<uint32_t>(pages.size()));
  uint32_t bodyAt = kDirectorySize + kEntrySize * static_cast<uint32_t>(pages.size());
  for (const Page& page : pages) {
    Append8(file, static_cast<uint32_t>(page.picture.Width()));  // 256 becomes 0, as it should
    Append8(file, static_cast<uint32_t>(page.picture.Height()));
    Append8(file, static_cast<uint32_t>(page.colors));
    Append8(file, 0);
    Append16(file, type == IconType::Cursor ? static_cast<uint32_t>(page.hotX) : 1U);
    Append16(file, static_cast<uint32_t>(type == IconType::Cursor ? page.hotY : page.bits));
    Append32(file, Size32(page.body));
    Append32(file, bodyAt);
    bodyAt += Size32(page.body);
  }
  for (const Page& page : pages) Append(file, page.body);
  return file;
}

}  // namespace samples
