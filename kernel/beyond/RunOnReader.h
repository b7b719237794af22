// RLE8 and RLE4 of writers that end no row with a code: a row ends where it is full, and codes run on into
// the next.
#pragma once

#include "beyond/CodedReader.h"

namespace vxkrn {

/// Whether codes run on at the end of the first row. Only then most readers begin the next row by themselves;
/// where a code ends the rows, what reaches past one is cut off.
[[nodiscard]] bool RunsOn(const vx_source& source, const bmp::BitmapLayout& layout) noexcept;

class RunOnReader final : public CodedReader {
 public:
  RunOnReader(const vx_source& source, const bmp::BitmapLayout& layout) noexcept
      : CodedReader(layout), depth_(layout.depth), bytes_(source, layout.pixelOffset) {}
  [[nodiscard]] RowShape Shape() const noexcept override { return {depth_, false}; }
  [[nodiscard]] uint64_t DataEnd() const noexcept override { return bytes_.Position(); }

 private:
  /// What is left of the code that was read last.
  struct Pixels {
    int count = 0;
    bool isLiteral = false;
    int value = 0;          ///< the byte that a run repeats, or a literal's last
    bool isSecond = false;  ///< of RLE4: the next index is the low half of the byte
    int padding = 0;        ///< bytes behind a literal
  };
  enum class Step : uint8_t { kOn, kRowEnds, kDataEnds };

  int DecodeRow(uint8_t* row) override;
  bool Put(uint8_t* row) noexcept;
  Step ReadCode() noexcept;
  Step Follow(int code) noexcept;

  int depth_;
  ByteReader bytes_;
  Pixels pixels_;
  int x_ = 0;
  int rowsToSkip_ = 0;      // that a delta jumped over
  bool isAtStart_ = false;  // the row before was full: a code that ends it may still come
  bool isFinished_ = false;
};

}  // namespace vxkrn
