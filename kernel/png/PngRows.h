// A PNG stream that is read: what stands before its pixels, then row after row. Holds no picture.
#pragma once

#include "base/Errors.h"
#include "bitmap/Bitmap.h"
#include "png/Png.h"
#include "png/PngSession.h"

namespace vxkrn {

class PngRows {
 public:
  /// @param wantsColors whether ReadHeader will be asked what the stream says of its colours
  PngRows(const PngInput& input, bool wantsColors) noexcept;
  PngRows(const PngRows&) = delete;
  PngRows& operator=(const PngRows&) = delete;

  // Each returns STATUS_OK, or a failure with its detail set.

  /// Reads up to the pixels. `colors` may be null.
  [[nodiscard]] int ReadHeader(PngDescription* description, ColorSpace* colors);
  /// Whether rows come in several passes, so that none is whole before the last.
  [[nodiscard]] bool IsInterlaced() const noexcept;
  /// Gives a record the palette of its 2^depth colours; what the stream does not name is black.
  [[nodiscard]] int AttachPalette(_BITMAPHANDLE* bitmap) const;
  /// Gets ready for rows of the record's width and depth.
  [[nodiscard]] int Begin(const _BITMAPHANDLE& bitmap);
  /// Reads the next row of a stream that is not interlaced.
  [[nodiscard]] int ReadRow(uint8_t* row);
  /// Reads what is behind the last row.
  [[nodiscard]] int End();
  /// Reads all rows, in however many passes, and what is behind them. Instead of Begin, ReadRow and End.
  [[nodiscard]] int ReadPicture(const _BITMAPHANDLE& bitmap);
  /// The same of a stream that may end early, if a row of it is whole. @param rowsThere how many are
  [[nodiscard]] int ReadParts(const _BITMAPHANDLE& bitmap, int* rowsThere);

 private:
  struct Stream {
    PngInput input;
    bool isBegun = false;
    bool hasEnded = false;  // before libpng had all it wanted
  };
  static void ReadStream(png_structp png, png_bytep destination, std::size_t count);
  static void BeginStep(PngSession& session, void* self);
  static void ReadPictureStep(PngSession& session, void* self);

  int Run(PngSession::Step step, void* argument);
  void Widen(uint8_t* row) const noexcept;
  void WidenAll(const _BITMAPHANDLE& bitmap) const noexcept;

  Stream stream_;
  PngSession session_;
  const _BITMAPHANDLE* bitmap_ = nullptr;  // while a picture is read
  int width_ = 0;
  int depth_ = 0;         // of the rows that are wanted
  int bytesPerLine_ = 0;  // room for each
  int packedDepth_ = 0;   // of indices as they come
  int passes_ = 1;
  int rowsDone_ = 0;
};

}  // namespace vxkrn
