// Images of files as the library understands them: bitmap files, of one image or an array of them, with or
// without a file header, and pages of icons. Finds where everything lies and who decodes it; reads no pixels.
#pragma once

#include <optional>

#include "base/Memory.h"
#include "beyond/IconPart.h"
#include "files/Source.h"
#include "format/Decoders.h"

namespace vxkrn {

/// One image of a file.
struct BitmapImage {
  bmp::BitmapLayout layout;
  bmp::Decoder decoder = bmp::Decoder::kNone;
  bool isFilters = false;  ///< the filter finds and shows it as it is meant, by itself
  int page = 1;
  int pageCount = 1;
  std::optional<IconPart> icon;  ///< of icons, cursors and pointers
};

/// Finds image `page` of a source that begins like a bitmap, icon or cursor file. Nothing is found in other
/// sources, in those that end before the header's length does, and where there is no such page: the filter
/// then has its say.
/// @return STATUS_OK, or a failure with its detail set that does not name the file
[[nodiscard]] int FindBitmap(const vx_source& source, int page, std::optional<BitmapImage>* found) noexcept;

/// Where the file headers of an array stand, one an image; of a source that begins like none that is empty.
/// Throws std::bad_alloc.
[[nodiscard]] memory::Vector<uint64_t> FileHeadersOfArray(const vx_source& source);

/// Finds the image, `page` of `pageCount`, whose file header is known. @return as FindBitmap
[[nodiscard]] int FindBitmapAt(const vx_source& source, uint64_t fileHeader, int page, int pageCount,
                               std::optional<BitmapImage>* found) noexcept;

/// The colours of an image of up to 8 bits, black behind the last one. @return STATUS_OK, or
/// STATUS_READ_ERROR with its detail set where the file ends inside the table
[[nodiscard]] int ReadPalette(const vx_source& source, const bmp::BitmapLayout& layout,
                              RGBQUAD (&palette)[256]) noexcept;

/// What a description says of the image.
void DescribeBitmap(const BitmapImage& image, IMAGEINFO* info) noexcept;

/// Refuses an image that nobody decodes, or that no bitmap can hold. @return STATUS_OK, or a failure with its
/// detail set that does not name the file
[[nodiscard]] int CheckBitmap(const BitmapImage& image) noexcept;

/// Rows of plainly stored pixels that the file has, whole ones, in stored order; the height where that cannot
/// be told.
[[nodiscard]] int RowsThere(const vx_source& source, const bmp::BitmapLayout& layout) noexcept;

/// Whether the pixels are stored row by row, each of the same length.
[[nodiscard]] constexpr bool IsPlain(const bmp::BitmapLayout& layout, bmp::Decoder decoder) noexcept {
  const bool isFilters = decoder == bmp::Decoder::kFilter;
  return (isFilters && !bmp::IsRunLengthCompression(layout.compression)) ||
         decoder == bmp::Decoder::kFields || decoder == bmp::Decoder::kTwoBits ||
         decoder == bmp::Decoder::kWide;
}

}  // namespace vxkrn
