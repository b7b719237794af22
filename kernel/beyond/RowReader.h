// What the library reads beside the filter: rows of one image, in the order in which the file has them.
#pragma once

#include "beyond/BitmapFile.h"

namespace vxkrn {

/// What a bitmap must be to hold the rows.
struct RowShape {
  int bitsPerPixel = 0;  ///< 1, 4, 8, 16, 24 or 32
  bool hasAlpha = false;
};

class RowReader {
 public:
  RowReader() = default;
  virtual ~RowReader() = default;
  RowReader(const RowReader&) = delete;
  RowReader& operator=(const RowReader&) = delete;

  [[nodiscard]] virtual RowShape Shape() const noexcept = 0;
  /// Whether the first row that comes is the picture's top one.
  [[nodiscard]] virtual bool IsTopDown() const noexcept = 0;
  /// Decodes the next row into `row`, which has room for its pixels and is 0. May throw std::bad_alloc.
  /// @return STATUS_OK; STATUS_READ_ERROR where the data ends before the row does, with what is there in it
  /// and without a detail; any other failure with its detail set
  [[nodiscard]] virtual int Next(uint8_t* row) = 0;
  /// Passes over `rows` rows. @return as Next
  [[nodiscard]] virtual int Skip(int rows) = 0;
  /// The colours of rows of up to 8 bits, 256 of them; null: those of the bitmap's colour table.
  [[nodiscard]] virtual const RGBQUAD* Palette() const noexcept { return nullptr; }
  /// Where the data ends that Next found too short; kEndOfFile where nothing else ends it.
  [[nodiscard]] virtual uint64_t DataEnd() const noexcept { return kEndOfFile; }
  static constexpr uint64_t kEndOfFile = UINT64_MAX;
};

/// Makes the reader for an image that is not the filter's. May throw std::bad_alloc.
/// @return STATUS_OK, or a failure with its detail set that does not name the file
[[nodiscard]] int MakeRowReader(vx_source& source, const BitmapImage& image,
                                memory::Owned<RowReader>* reader);

}  // namespace vxkrn
