// Takes the filter's rows and puts those that are wanted into the picture.
#pragma once

#include "app/LoadPlan.h"
#include "base/CallRecord.h"
#include "bitmap/Picture.h"

namespace vxkrn {

/// What the callback answers once no row is worth waiting for: no status of the contract's.
inline constexpr int kAllRowsTaken = -2000;

class RowSink {
 public:
  /// All three must outlive the sink.
  RowSink(const LoadPlan& plan, const FilterCall& context, vx_bitmap* picture) noexcept
      : plan_(plan), context_(context), picture_(picture) {}

  /// Gives the picture its pixels. @return STATUS_OK, or a failure with its detail set.
  [[nodiscard]] int Allocate(int bitsPerPixel);
  /// Blanks the rows of the picture that never came, once no more do.
  void Finish() noexcept;
  /// The 32-bit pixels, wanted or not, all of them or-ed together.
  [[nodiscard]] uint32_t PixelBits() const noexcept { return pixelBits_; }

  /// How many rows came.
  [[nodiscard]] int RowsTaken() const noexcept { return rowsTaken_; }

  /// ROWCALLBACK; userData is the sink.
  static int Callback(IMAGEINFO* info, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                      int rowNumber, int lineCount, void* userData);

 private:
  int Take(int orientation, unsigned char* row, bool isUncompressed, int rowNumber);
  [[nodiscard]] int CheckPng();
  void Put(int storedRow, const unsigned char* row) noexcept;
  void BlankUpTo(int storedRow) noexcept;
  [[nodiscard]] bool MayRunShortAfter(int rowNumber) const noexcept;

  const LoadPlan& plan_;
  const FilterCall& context_;
  vx_bitmap* picture_;
  std::size_t rowBytes_ = 0;
  bool isBlank_ = true;  // the picture's pixels were, before the first row came
  int rowsSet_ = 0;      // stored rows of the picture, from its first on, that hold what they should
  uint32_t pixelBits_ = 0;
  int rowsTaken_ = 0;
};

}  // namespace vxkrn
