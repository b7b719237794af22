#include "Write/RowWriter.h"

#include <algorithm>

#include "Write/IconMasks.h"
#include "Write/RunLengthEncoder.h"
#include "format/Geometry.h"

namespace bmp {
namespace {

uint32_t KernelRowSize(const _BITMAPHANDLE& image) {
  return static_cast<uint32_t>(image.BytesPerLine);
}

uint32_t FileRowSize(const _BITMAPHANDLE& image) {
  return RowSize(image.BitsPerPixel, image.Width);
}

bool WriteZeros(HANDLE file, uint32_t count) {
  constexpr Block<32> kZeros{};  // a row of the widest icon's mask
  while (count > 0) {
    const uint32_t part = std::min(count, static_cast<uint32_t>(kZeros.size()));
    if (!WriteExactly(file, kZeros.data(), part)) return false;
    count -= part;
  }
  return true;
}

}  // namespace

int RowWriter::Prepare() {
  const uint32_t have = KernelRowSize(conversion_.Image());
  const uint32_t want = FileRowSize(conversion_.Image());
  if (form_ != RowForm::kPlain || have == want) return STATUS_OK;
  return strideBuffer_.AllocateZeroed(std::max(have, want)) ? STATUS_OK : STATUS_NO_MEMORY;
}

/// Calls writeOne with every stored row of the bitmap, from the bottom of the picture up, until one fails.
template <class WriteOne>
int RowWriter::InFileOrder(const WriteOne& writeOne) const {
  const bool isBottomUp = bitmap_.Orientation == ORIENT_BOTTOM_UP;
  for (int fromBottom = 0; fromBottom < bitmap_.Height; ++fromBottom) {
    const int status = writeOne(isBottomUp ? fromBottom : bitmap_.Height - 1 - fromBottom);
    if (status != STATUS_OK) return status;
  }
  return STATUS_OK;
}

bool RowWriter::WritePlainRow(HANDLE file) const {
  const uint32_t have = KernelRowSize(conversion_.Image());
  if (!strideBuffer_) return WriteExactly(file, conversion_.RowBuffer(), have);
  VX_MemoryCopy(strideBuffer_.Get(), conversion_.RowBuffer(), have);
  return WriteExactly(file, strideBuffer_.Get(), FileRowSize(conversion_.Image()));
}

int RowWriter::WriteRow(HANDLE file) const {
  const int width = conversion_.Image().Width;
  switch (form_) {
    case RowForm::kRle8: return WriteRle8Row(file, conversion_.RowBuffer(), width);
    case RowForm::kRle4: return WriteRle4Row(file, conversion_.RowBuffer(), width);
    case RowForm::kPlain: break;
  }
  return WritePlainRow(file) ? STATUS_OK : STATUS_WRITE_ERROR;
}

int RowWriter::WriteColorRows(HANDLE file) {
  return InFileOrder([&](int row) {
    const int status = conversion_.FetchRow(row);
    return status == STATUS_OK ? WriteRow(file) : status;
  });
}

int RowWriter::WriteMaskRows(HANDLE file, _BITMAPHANDLE* mask) {
  const uint32_t have = KernelRowSize(*mask);
  const uint32_t want = RowSize(1, bitmap_.Width);
  uint8_t* const bytes = conversion_.RowBuffer();
  return InFileOrder([&](int row) {
    VX_GetBitmapRow(mask, bytes, row, have);
    Invert(bytes, have);
    const uint32_t taken = std::min(have, want);
    return WriteExactly(file, bytes, taken) && WriteZeros(file, want - taken) ? STATUS_OK
                                                                              : STATUS_WRITE_ERROR;
  });
}

}  // namespace bmp
