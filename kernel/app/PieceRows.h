// Rows of a picture of which one piece is in memory: the one that a row was asked for last. Knows nothing of
// where pieces come from.
#pragma once

#include "bitmap/Picture.h"
#include "convert/ColorTransform.h"

namespace vxkrn {

class PieceRows : public RowProvider {
 public:
  const uint8_t* Read(int row) final;

 protected:
  /// @param file for messages @param readBufferSize bytes that are read at once: pieces take several times as
  /// many
  PieceRows(const char* file, int readBufferSize) noexcept
      : file_(file), pieceBytes_(int64_t{kReadsOfPiece} * readBufferSize) {}

  /// Loads `count` rows from row `first` on, from the top of the picture, into an empty one; or more, around
  /// them: then it says from which row on. May throw std::bad_alloc.
  /// @return STATUS_OK, or a failure with its detail set
  virtual int LoadPiece(int* first, int count, vx_bitmap* piece) = 0;

  /// Says what the picture of all rows is like: what `sample` is, that is loaded, but for its height. Takes
  /// the sample's palette. @return STATUS_OK, or a failure with its detail set
  [[nodiscard]] int Describe(vx_bitmap* sample, int height, vx_bitmap* picture);
  /// Finishes the description, once it is known what fourth bytes mean: in the colours and the order that
  /// were asked for. @return as Describe
  [[nodiscard]] int Settle(bool toSrgb, int order, vx_bitmap* picture);

 private:
  static constexpr int kReadsOfPiece = 16;  // so that what a load does beside its rows does not count

  int GoTo(int row);

  const char* file_;
  int64_t pieceBytes_;
  _BITMAPHANDLE all_ = {};  // what the picture is like; it owns nothing
  bool convertsColors_ = false;
  ColorTransform transform_;
  int order_ = VX_ORDER_FILE;
  memory::Owned<vx_bitmap> piece_;
  int pieceFirst_ = 0;  // from the top
};

}  // namespace vxkrn
