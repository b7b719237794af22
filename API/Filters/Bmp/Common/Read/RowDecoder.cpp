// The row decoder: one read buffer, one row buffer, one row at a time into the callback. It neither
// opens nor closes the file and holds no more than one row.
#include "Read/RowDecoder.h"

#include <algorithm>

#include "Kernel.h"
#include "Read/BitFields.h"
#include "Read/IconMask.h"
#include "Read/ReadBuffer.h"
#include "Read/RunLength.h"
#include "format/Geometry.h"
#include "format/Rules.h"

namespace bmp {
namespace {

constexpr int kBytesPerPixel = 4;  // room for a row of any depth

/// Stored rows to deliver: from `first` up to but not including `end`.
struct Band {
  int first = 0;
  int end = 0;

  [[nodiscard]] bool IsEmpty() const { return first >= end; }
  [[nodiscard]] bool IsLast(int row) const { return row == end - 1; }
};

/// What the steps of one call share.
struct Decoding {
  _LOADDISPATCH& dispatch;
  int height;  // stored rows
  int stride;
  bool hasMask;  // an icon mask follows the rows
  uint8_t* row;
  ReadBuffer input;
  Band band{};
  unsigned int flags = ROW_FLAGS_BASE;
};

/// The band that the caller asks for, unclamped: keeping it inside the image is the caller's part.
Band RequestedBand(const _LOADDISPATCH& dispatch, int height) {
  if (dispatch.BandEnabled == 0) return {.first = 0, .end = height};
  const bool bottomUp = dispatch.Bitmap->Orientation == ORIENT_BOTTOM_UP;
  const int first = bottomUp ? WrapSubtract(height, WrapAdd(dispatch.BandTopRow, dispatch.BandRowCount))
                             : dispatch.BandFirstRow;
  return {.first = first, .end = WrapAdd(first, dispatch.BandRowCount)};
}

int Deliver(Decoding& decoding, int row) {
  const _LOADDISPATCH& dispatch = decoding.dispatch;
  if (decoding.hasMask && row == WrapSubtract(decoding.height, 1)) {
    if (const int status = ReadIconMask(*dispatch.Bitmap, decoding.input); status != STATUS_OK) return status;
  }
  const unsigned int flags =
      decoding.flags | (row == 0 ? ROW_FLAG_FIRST : 0U) | (decoding.band.IsLast(row) ? ROW_FLAG_LAST : 0U);
  return dispatch.RowCallback(dispatch.FileInfo, dispatch.Bitmap, decoding.row, flags,
                              WrapSubtract(row, decoding.band.first), 1, dispatch.UserData);
}

/// Builds and delivers every row of the band. `build` makes row n of the row buffer.
template <class BuildRow>
int DeliverRows(Decoding& decoding, BuildRow build) {
  for (int row = decoding.band.first; row < decoding.band.end; ++row) {
    if (const int status = build(row); status != STATUS_OK) return status;
    if (const int status = Deliver(decoding, row); status != STATUS_OK) return status;
  }
  return STATUS_OK;
}

template <class DecodeRow>
int DeliverRunLengthRows(Decoding& decoding, DecodeRow decodeRow) {
  RunLengthState state;
  decoding.band = {.first = 0, .end = decoding.height};
  return DeliverRows(decoding, [&](int) {
    decodeRow(decoding.input, state, decoding.row, decoding.stride);
    return STATUS_OK;
  });
}

/// Whether a row may end early: the last one, or any where the caller accepts files that do.
bool MayEndEarly(const Decoding& decoding, int row) {
  return decoding.band.IsLast(row) || (decoding.dispatch.LoadOptions->Flags & LOAD_ALLOW_TRUNCATED) != 0;
}

/// Where a row ends early, the rest of the row buffer keeps the row before it.
int ReadPlainRow(Decoding& decoding, int row) {
  const bool isWhole = ReadBuffered(decoding.input, decoding.row, decoding.stride) == decoding.stride;
  return isWhole || MayEndEarly(decoding, row) ? STATUS_OK : STATUS_READ_ERROR;
}

int DeliverPlainRows(Decoding& decoding, bool convert) {
  const _LOADDISPATCH& dispatch = decoding.dispatch;
  decoding.flags |= ROW_FLAG_UNCOMPRESSED;
  decoding.band = RequestedBand(dispatch, decoding.height);
  if (decoding.band.first != 0) {
    VX_RedirectedSeek(decoding.input.file, WrapMultiply(decoding.band.first, decoding.stride),
                      VX_SEEK_CURRENT);
  }
  if (decoding.band.IsEmpty()) return STATUS_OK;
  if (!convert) return DeliverRows(decoding, [&](int row) { return ReadPlainRow(decoding, row); });

  const BitFieldConverter converter(
      {.red = dispatch.RedMask, .green = dispatch.GreenMask, .blue = dispatch.BlueMask});
  return DeliverRows(decoding, [&](int row) {
    const int status = ReadPlainRow(decoding, row);
    if (status == STATUS_OK) converter.ConvertRow(decoding.row, decoding.stride);
    return status;
  });
}

}  // namespace

int DecodeRows(_LOADDISPATCH& dispatch, HANDLE file, const StoredRows& stored) {
  if (stored.width < 0 || stored.width > kLongestSide) return STATUS_NO_MEMORY;
  const auto rowSize = static_cast<uint32_t>(stored.width * kBytesPerPixel);
  const int readSize = std::clamp(dispatch.ReadBufferSize, 0, INT32_MAX - 1);

  const Buffer row(rowSize);
  if (!row) return STATUS_NO_MEMORY;
  const Buffer readBuffer(static_cast<uint32_t>(readSize));
  if (!readBuffer) return STATUS_NO_MEMORY;
  VX_MemorySet(row.Get(), 0, rowSize);

  Decoding decoding{.dispatch = dispatch,
                    .height = stored.height,
                    .stride = WrappedStride(stored.bitsPerPixel, stored.width),
                    .hasMask = stored.hasIconMask,
                    .row = row.Get(),
                    .input = ReadBuffer(file, readBuffer.Get(), readSize)};
  switch (CodingOf(stored.bitsPerPixel, stored.compression)) {
    case RowCoding::kPlain: return DeliverPlainRows(decoding, stored.needsConversion);
    case RowCoding::kRle8: return DeliverRunLengthRows(decoding, DecodeRle8Row);
    case RowCoding::kRle4: return DeliverRunLengthRows(decoding, DecodeRle4Row);
    case RowCoding::kUnknown: break;
  }
  return STATUS_BAD_FORMAT;
}

}  // namespace bmp
