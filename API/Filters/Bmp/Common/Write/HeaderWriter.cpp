// Everything that stands before the rows of a new file with one image. This file knows what is written for a
// header kind and in which order; format/ knows where each field lies.
#include "Write/HeaderWriter.h"

#include "format/SaveRules.h"

#include "Kernel.h"
#include "format/HeaderEncoding.h"

namespace bmp {
namespace {

constexpr uint32_t kMaskCount = 3;
constexpr uint32_t kTripleSize = 3;  // of a palette entry without its reserved byte

/// A new file's image: what was asked for, and the sizes that follow.
class NewImage {
 public:
  NewImage(const _BITMAPHANDLE& image, int bitsPerPixel, int kind)
      : image_(image), bitsPerPixel_(bitsPerPixel), kind_(kind) {}

  [[nodiscard]] bool IsIcon() const { return kind_ == SAVETYPE_ICO || kind_ == SAVETYPE_CUR; }
  [[nodiscard]] bool HasInfoHeader() const { return kind_ != SAVETYPE_OS2 && kind_ != SAVETYPE_OS2_2; }
  [[nodiscard]] bool HasTable() const {
    return bitsPerPixel_ == 1 || bitsPerPixel_ == 4 || bitsPerPixel_ == 8;
  }
  /// OS/2 headers have no way to say where the bits of a channel lie.
  [[nodiscard]] bool HasMasks() const { return HasInfoHeader() && image_.ColorOrder == ORDER_565; }

  [[nodiscard]] uint32_t TableEntries() const { return HasTable() ? PaletteSize(bitsPerPixel_) : 0; }

  [[nodiscard]] uint32_t ImageSize() const {
    const uint32_t maskRow = IsIcon() ? RowSize(1, image_.Width) : 0;
    return (RowSize(image_.BitsPerPixel, image_.Width) + maskRow) * static_cast<uint32_t>(image_.Height);
  }

  [[nodiscard]] uint32_t DataOffset() const {
    if (kind_ == SAVETYPE_OS2) return kFileHeaderSize + kCoreHeaderSize + kTripleSize * TableEntries();
    const uint32_t header = HasInfoHeader() ? kInfoHeaderSize : kLongHeaderSize;
    return kFileHeaderSize + header + ColorBytes();
  }

  [[nodiscard]] NewHeader Header() const {
    const bool hasResolution = !IsIcon();
    const auto height = static_cast<uint32_t>(image_.Height);
    return {.width = static_cast<uint32_t>(image_.Width),
            .height = IsIcon() ? 2 * height : height,
            .bitCount = static_cast<uint16_t>(bitsPerPixel_),
            .compression = CompressionOf(),
            .imageSize = ImageSize(),
            .xPixelsPerMetre = hasResolution ? PixelsPerMetre(image_.XResolution) : 0,
            .yPixelsPerMetre = hasResolution ? PixelsPerMetre(image_.YResolution) : 0};
  }

  /// A cursor's hot spot stands where an icon has planes and bit count: 0 in both.
  [[nodiscard]] ICONDIRENTRY Entry() const {
    return {.Width = EntrySide(image_.Width),
            .Height = EntrySide(image_.Height),
            .ColorCount = EntryColorCount(image_.BitsPerPixel),
            .Reserved = 0,
            .Planes = 0,
            .BitCount = 0,
            .BytesInRes = kInfoHeaderSize + ColorBytes() + ImageSize(),
            .ImageOffset = EntryOffset(2)};
  }

 private:
  /// Bytes of the masks or of the colour table; no image has both.
  [[nodiscard]] uint32_t ColorBytes() const {
    constexpr auto kEntryBytes = static_cast<uint32_t>(sizeof(RGBQUAD));
    return kEntryBytes * (HasTable() || !HasMasks() ? TableEntries() : kMaskCount);
  }

  [[nodiscard]] uint32_t CompressionOf() const {
    if (HasMasks()) return kCompressionBitFields;
    if (kind_ != SAVETYPE_BMP_RLE) return kUncompressed;
    return bitsPerPixel_ == 8 ? kCompressionRle8 : kCompressionRle4;
  }

  const _BITMAPHANDLE& image_;
  int bitsPerPixel_;
  int kind_;
};

bool WriteFileStart(HANDLE file, const NewImage& image, int kind) {
  if (!image.IsIcon()) {
    const uint32_t offset = image.DataOffset();
    return WriteBlock(file, EncodeFileHeader(offset + image.ImageSize(), offset));
  }
  const uint16_t type = kind == SAVETYPE_CUR ? kCursorType : kIconType;
  return WriteBlock(file, EncodeDirectory({.Reserved = 0, .Type = type, .Count = 1})) &&
         WriteBlock(file, EncodeEntry(image.Entry()));
}

bool WriteImageHeader(HANDLE file, const NewImage& image, int kind) {
  const NewHeader header = image.Header();
  switch (kind) {
    case SAVETYPE_OS2: return WriteBlock(file, EncodeCoreHeader(header));
    case SAVETYPE_OS2_2: return WriteBlock(file, EncodeHeader<kLongHeaderSize>(header));
    default: return WriteBlock(file, EncodeHeader<kInfoHeaderSize>(header));
  }
}

bool WriteTriples(HANDLE file, const RGBQUAD* palette, uint32_t count) {
  for (uint32_t i = 0; i < count; ++i) {
    const RGBQUAD& color = palette[i];
    if (!WriteBlock<kTripleSize>(file, {color.Blue, color.Green, color.Red})) return false;
  }
  return true;
}

bool WriteColors(HANDLE file, const NewImage& image, const RGBQUAD* palette, int kind) {
  if (image.HasMasks() && !WriteBlock(file, EncodeMasks(kMasks565))) return false;
  if (!image.HasTable()) return true;
  const uint32_t count = image.TableEntries();
  if (kind == SAVETYPE_OS2) return WriteTriples(file, palette, count);
  return WriteExactly(file, palette, count * static_cast<uint32_t>(sizeof(RGBQUAD)));
}

}  // namespace

int WriteHeaders(HANDLE file, const _BITMAPHANDLE& image, int bitsPerPixel, int kind,
                 const _SAVEFILESTRUCT& saveFile) {
  const NewImage written(image, bitsPerPixel, kind);
  const bool isWhole = WriteFileStart(file, written, kind) && WriteImageHeader(file, written, kind) &&
                       WriteColors(file, written, saveFile.Palette, kind);
  return isWhole ? STATUS_OK : STATUS_WRITE_ERROR;
}

}  // namespace bmp
