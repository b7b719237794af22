// Finds images in bitmap files. An array is a list of file headers, each with a place where the next one is.
#include "beyond/BitmapFile.h"

#include <algorithm>
#include <string_view>

#include "base/Errors.h"
#include "beyond/EmbeddedStream.h"
#include "beyond/IconPage.h"
#include "beyond/Os2Icon.h"
#include "beyond/RunOnReader.h"
#include "bitmap/Bitmap.h"
#include "files/OpenFile.h"
#include "format/Rules.h"

namespace vxkrn {
namespace {

using bmp::BitmapLayout;
using bmp::Decoder;

bool IsSide(int side) noexcept {
  return side >= 1 && side <= kLongestSide;
}

/// Reads the header at `offset`. @return false where the file ends before the length of it is told
bool ReadLayout(const vx_source& source, uint64_t offset, bool hasFileHeader, uint32_t dataOffset,
                BitmapLayout* layout) noexcept {
  bmp::LayoutBytes bytes{};
  if (source.Peek(bytes.data(), bytes.size(), offset) < sizeof(uint32_t)) return false;
  *layout = bmp::LayOut(bytes, offset, hasFileHeader, dataOffset);
  return true;
}

/// Headers without a file header before them must have every field right: any file could begin so.
bool IsBareHeader(const vx_source& source, BitmapLayout* layout) noexcept {
  const auto start = source.BlockAt<bmp::kLeastLongHeader>(0);
  const bmp::View<bmp::kLeastLongHeader> view(start);
  const uint32_t size = bmp::LoadU32(view, bmp::info_at::kSize);
  if (!bmp::IsHeaderSize(size)) return false;
  const auto planes =
      bmp::LoadU16(view, size == bmp::kCoreHeaderSize ? bmp::core_at::kPlanes : bmp::info_at::kPlanes);
  if (planes != 1 || !ReadLayout(source, 0, false, 0, layout)) return false;
  return IsSide(layout->width) && IsSide(layout->height) && DecoderOf(*layout) != Decoder::kNone;
}

/// Programs that put V5 headers on clipboards repeat the masks behind them, others do not.
void PassRepeatedMasks(const vx_source& source, BitmapLayout* layout) noexcept {
  if (layout->headerSize < bmp::kMasks3HeaderSize || !layout->HasFields()) return;
  const auto behind = bmp::DecodeMasks(source.BlockAt<bmp::kMasksSize>(layout->pixelOffset));
  if (behind == layout->masks.color) layout->pixelOffset += bmp::kMasksSize;
}

/// The elements of an array, from one header to the next.
class ArrayWalk {
 public:
  explicit ArrayWalk(const vx_source& source) noexcept : source_(source) {}

  /// Moves to the next element. @return whether there is one
  bool Next() noexcept {
    if (isFirst_) {
      isFirst_ = false;
    } else if (next_ <= at_) {  // the last one says 0; one that led back would never end
      return false;
    } else {
      at_ = next_;
    }
    const auto header = source_.BlockAt<bmp::kArrayHeaderSize>(at_);
    const bmp::View<bmp::kArrayHeaderSize> view(header);
    next_ = bmp::LoadU32(view, bmp::array_at::kNext);
    return bmp::LoadU16(view, bmp::array_at::kSignature) == bmp::kArraySignature;
  }
  /// Where the element's file header stands.
  [[nodiscard]] uint64_t FileHeader() const noexcept { return uint64_t{at_} + bmp::kArrayHeaderSize; }

 private:
  const vx_source& source_;
  uint32_t at_ = 0;
  uint32_t next_ = 0;
  bool isFirst_ = true;
};

/// The file header of image `page` of an array; `count` is the number of images.
bool FindInArray(const vx_source& source, int page, uint64_t* fileHeader, int* count) noexcept {
  bool isFound = false;
  *count = 0;
  for (ArrayWalk walk(source); walk.Next();) {
    if (++*count != page) continue;
    *fileHeader = walk.FileHeader();
    isFound = true;
  }
  return isFound;
}

int FailForHeader(const BitmapLayout& layout, int64_t size) noexcept {
  return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_HEADER_CUT, layout.headerOffset, layout.headerSize).At(size),
              "the image header at byte ", layout.headerOffset, " says it is ", layout.headerSize,
              " bytes long, but the file ends at byte ", size);
}

int FailForCutMasks(const BitmapLayout& layout, int64_t size) noexcept {
  const uint64_t begin = layout.headerOffset + layout.headerSize;
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_ENDS_EARLY, begin).At(size), "the file ends at byte ", size,
              ", inside its colour masks, which begin at byte ", begin);
}

int FailForOs2Icon(uint64_t fileHeader) noexcept {
  return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_PAGE_DAMAGED).At(fileHeader),
              "the OS/2 icon or pointer at byte ", fileHeader, " is not complete or not usable");
}

/// Where the filter looks for the end of the colour table.
uint64_t FiltersTableEnd(const BitmapLayout& layout) noexcept {
  if (layout.depth < 1 || layout.depth > 8) return 0;
  const bool isCounted = layout.headerSize == bmp::kInfoHeaderSize;
  const uint32_t count = isCounted ? layout.paletteDeclared : bmp::PaletteSize(layout.depth);
  return layout.paletteOffset + uint64_t{count} * layout.paletteEntrySize;
}

bool IsFilters(const BitmapImage& image) noexcept {
  const BitmapLayout& layout = image.layout;
  const uint64_t end =
      layout.pixelOffset +
      PictureBytes(std::max(layout.width, 0), std::max(layout.height, 0), std::max(layout.depth, 0));
  const bool isWithinReach = !IsPlain(layout, image.decoder) || end <= kLastPosition;
  return image.decoder == Decoder::kFilter && layout.hasFileHeader && image.page == 1 &&
         !layout.isOffsetMended && FiltersTableEnd(layout) <= layout.pixelOffset && isWithinReach;
}

std::string_view CodingName(const BitmapLayout& layout) noexcept {
  switch (layout.compression) {
    case bmp::kUncompressed: return "uncompressed pixels";
    case bmp::kCompressionRle8: return "RLE8";
    case bmp::kCompressionRle4: return "RLE4";
    case bmp::kCompressionBitFields:
      return layout.family == bmp::HeaderFamily::kOs2 ? "Huffman coding" : "bit fields";
    case bmp::kCompressionRle24:
      return layout.family == bmp::HeaderFamily::kOs2 ? "RLE24" : "an embedded JPEG";
    case bmp::kCompressionPng: return "an embedded PNG";
    case bmp::kCompressionAlphaFields: return "alpha bit fields";
    default: return {};
  }
}

int FailForCoding(const BitmapLayout& layout) noexcept {
  const std::string_view name = CodingName(layout);
  const vx_reason reason = name.empty() ? VX_REASON_UNSUPPORTED_CODING : VX_REASON_CODING_NOT_AT_DEPTH;
  const Cause cause =
      Cause(STATUS_BAD_FORMAT, reason, layout.compression, layout.depth).At(layout.headerOffset);
  if (layout.compression == bmp::kUncompressed) {
    return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_BAD_DEPTH, layout.depth).At(layout.headerOffset),
                "the image header at byte ", layout.headerOffset, " (", layout.headerSize, " bytes) says ",
                layout.depth, " bits per pixel; bitmap files have 1, 2, 4, 8, 16, 24, 32 or 64");
  }
  return Fail(cause, "the image header at byte ", layout.headerOffset, " (", layout.headerSize,
              " bytes) says ", layout.depth, " bits per pixel in coding ", layout.compression,
              name.empty() ? "" : ", ", name,
              name.empty() ? ", which is not known" : ", which is not at that depth");
}

bool HasChannels(const BitmapLayout& layout) noexcept {
  const bmp::ColorMasks& masks = layout.masks.color;
  const uint32_t whole = layout.depth == 16 ? 0xFFFF : UINT32_MAX;
  return ((masks.red | masks.green | masks.blue) & whole) != 0;
}

int FailForMasks(const BitmapLayout& layout) noexcept {
  return Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_BAD_MASKS, layout.depth).At(layout.headerOffset),
              "the image header at byte ", layout.headerOffset, " (", layout.headerSize, " bytes) says ",
              layout.depth, " bits per pixel in bit fields, but no mask has a bit of them");
}

int FormatOf(const BitmapImage& image) noexcept {
  const BitmapLayout& layout = image.layout;
  if (image.icon) {
    return image.icon->kind == IconPart::Kind::kOs2Pointer ? VX_FORMAT_OS2_POINTER : VX_FORMAT_OS2_ICON;
  }
  if (!layout.hasFileHeader) return VX_FORMAT_DIB;
  if (layout.family == bmp::HeaderFamily::kCore) return FMT_OS2;
  if (layout.headerSize != bmp::kInfoHeaderSize) return FMT_OS2_2;
  return bmp::IsRunLengthCompression(layout.compression) && !layout.HasFields() ? FMT_BMP_RLE : FMT_BMP;
}

std::string_view CompressionWord(Decoder decoder, const BitmapLayout& layout) noexcept {
  switch (decoder) {
    case Decoder::kFields: return layout.masks.alpha != 0 ? "alpha bit fields" : "bit fields";
    case Decoder::kRle24: return "RLE24";
    case Decoder::kHuffman: return "Huffman 1D";
    case Decoder::kJpeg: return "JPEG";
    case Decoder::kPng: return "embedded PNG";
    default:
      return bmp::IsRunLengthCompression(layout.compression) && !layout.HasFields() ? "Run Length" : "";
  }
}

/// By the table, and by what the data says that no header does.
int ChooseDecoder(const vx_source& source, BitmapImage* image) noexcept {
  bmp::BitmapLayout* layout = &image->layout;
  image->decoder = bmp::DecoderOf(*layout);
  if (image->decoder == Decoder::kPng || image->decoder == Decoder::kJpeg) {
    const int status = TakeStreamsWord(source, image->decoder, layout);
    if (status != STATUS_OK) return status;
  }
  const bool isRunLength = image->decoder == Decoder::kFilter && !IsPlain(*layout, image->decoder);
  if (isRunLength && RunsOn(source, *layout)) image->decoder = Decoder::kRunOn;
  image->isFilters = IsFilters(*image);
  return STATUS_OK;
}

/// Checks what is laid out, and decides who decodes it.
int Finish(const vx_source& source, BitmapImage* image, std::optional<BitmapImage>* found) noexcept {
  const BitmapLayout& layout = image->layout;
  const bool isKnownLength =
      layout.headerSize == bmp::kCoreHeaderSize || layout.headerSize >= bmp::kLeastLongHeader;
  if (!isKnownLength) return STATUS_OK;
  const int64_t size = source.Size();
  if (size >= 0 && layout.headerOffset + layout.headerSize > static_cast<uint64_t>(size)) {
    return FailForHeader(layout, size);
  }
  if (size >= 0 && layout.HasFields() && layout.paletteOffset > static_cast<uint64_t>(size)) {
    return FailForCutMasks(layout, size);
  }
  const int status = ChooseDecoder(source, image);
  if (status == STATUS_OK) *found = *image;
  return status;
}

}  // namespace

int FindBitmapAt(const vx_source& source, uint64_t fileHeader, int page, int pageCount,
                 std::optional<BitmapImage>* found) noexcept {
  found->reset();
  BitmapImage image;
  image.page = page;
  image.pageCount = pageCount;
  const auto file = bmp::DecodeFileHeader(source.BlockAt<bmp::kFileHeaderSize>(fileHeader));
  if (page > pageCount) return STATUS_OK;
  if (IsOs2IconSignature(file.signature)) {
    if (!FindOs2Icon(source, fileHeader, &image)) return FailForOs2Icon(fileHeader);
    *found = image;
    return STATUS_OK;
  }
  const bool isThere =
      file.signature == bmp::kBitmapSignature &&
      ReadLayout(source, fileHeader + bmp::kFileHeaderSize, true, file.dataOffset, &image.layout);
  return isThere ? Finish(source, &image, found) : int{STATUS_OK};
}

int FindBitmap(const vx_source& source, int page, std::optional<BitmapImage>* found) noexcept {
  found->reset();
  const auto signature = bmp::LoadU16(bmp::View<2>(source.BlockAt<2>(0)), 0);
  if (signature == bmp::kIconSignature) return FindIconPage(source, page, found);
  if (signature == bmp::kArraySignature) {
    uint64_t fileHeader = 0;
    int count = 0;
    const bool isThere = FindInArray(source, page, &fileHeader, &count);
    return isThere ? FindBitmapAt(source, fileHeader, page, count, found) : int{STATUS_OK};
  }
  if (signature == bmp::kBitmapSignature || IsOs2IconSignature(signature)) {
    return FindBitmapAt(source, 0, page, 1, found);
  }
  BitmapImage image;
  if (page != 1 || !IsBareHeader(source, &image.layout)) return STATUS_OK;
  PassRepeatedMasks(source, &image.layout);
  return Finish(source, &image, found);
}

memory::Vector<uint64_t> FileHeadersOfArray(const vx_source& source) {
  memory::Vector<uint64_t> headers;
  for (ArrayWalk walk(source); walk.Next();) headers.push_back(walk.FileHeader());
  return headers;
}

int ReadPalette(const vx_source& source, const BitmapLayout& layout, RGBQUAD (&palette)[256]) noexcept {
  std::fill(std::begin(palette), std::end(palette), RGBQUAD{});
  uint8_t bytes[256 * 4];
  const uint32_t size = layout.paletteEntrySize;
  const uint32_t count = std::min<uint32_t>(layout.paletteCount, 256);
  if (source.Peek(bytes, count * size, layout.paletteOffset) < count * size) {
    return Fail(Cause(STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR).At(layout.paletteOffset),
                "its colour table cannot be read");
  }
  for (uint32_t i = 0; i < count; ++i) {
    palette[i] = {bytes[i * size], bytes[i * size + 1], bytes[i * size + 2], 0};
  }
  return STATUS_OK;
}

void DescribeBitmap(const BitmapImage& image, IMAGEINFO* info) noexcept {
  const BitmapLayout& layout = image.layout;
  *info = IMAGEINFO{};
  info->StructSize = sizeof *info;
  info->Format = FormatOf(image);
  info->Width = layout.width;
  info->Height = layout.height;
  info->BitsPerPixel = layout.depth;
  info->Orientation = layout.isTopDown ? ORIENT_TOP_DOWN : ORIENT_BOTTOM_UP;
  info->ColorOrder = bmp::ImpliedColorOrder(layout.depth, layout.masks.color == bmp::kMasks565);
  info->XResolution = bmp::DotsPerInch(layout.xPixelsPerMetre);
  info->YResolution = bmp::DotsPerInch(layout.yPixelsPerMetre);
  info->PageNumber = image.page;
  info->TotalPages = image.pageCount;
  info->DataSize = bmp::PackedDataSize(layout.depth, layout.width, layout.height);
  const std::string_view word = CompressionWord(image.decoder, layout);
  std::copy(word.begin(), word.end(), std::begin(info->Compression));
}

int CheckBitmap(const BitmapImage& image) noexcept {
  const BitmapLayout& layout = image.layout;
  if (!IsSide(layout.width) || !IsSide(layout.height)) {
    return Fail(
        Cause(STATUS_BAD_DIMENSIONS, VX_REASON_BAD_SIZE, layout.width, layout.height).At(layout.headerOffset),
        "its header says ", layout.width, " x ", layout.height, " pixels; a side can have 1 to ",
        kLongestSide);
  }
  if (image.decoder == Decoder::kNone) return FailForCoding(layout);
  return image.decoder == Decoder::kFields && !HasChannels(layout) ? FailForMasks(layout) : int{STATUS_OK};
}

int RowsThere(const vx_source& source, const BitmapLayout& layout) noexcept {
  const int64_t size = source.Size();
  if (size < 0) return layout.height;
  const uint64_t there =
      static_cast<uint64_t>(size) - std::min(static_cast<uint64_t>(size), layout.pixelOffset);
  const uint64_t stride = layout.StoredStride();
  const auto pixels = static_cast<uint64_t>(PixelBytes(layout.width, layout.depth));
  // the padding of the last row may be missing
  const uint64_t rows = there / stride + (there % stride >= pixels ? 1 : 0);
  return static_cast<int>(std::min(rows, static_cast<uint64_t>(layout.height)));
}

}  // namespace vxkrn
