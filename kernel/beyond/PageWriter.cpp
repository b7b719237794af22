// The filter makes room for a page of its own depths, and opens and closes directories in place better than
// could be done here again. So it is given a picture of one pixel first: it leaves the entry where it belongs
// and that picture at the end of the file, where the real body is then written over it. No body of 32 bits is
// shorter than that of one pixel of 24.
#include "beyond/PageWriter.h"

#include "beyond/FieldRows.h"
#include "beyond/IconFile.h"
#include "filter/FilterCalls.h"
#include "format/HeaderEncoding.h"

namespace vxkrn {
namespace {

constexpr int kStandInDepth = 24;

int MakeRoom(const Backend& backend, const char* name, const SAVEOPTIONS& where, int format) {
  vx_bitmap pixel;
  const int status = AllocatePixels(1, 1, kStandInDepth, &pixel);
  if (status != STATUS_OK) return NameFailure(status, name);
  SavePlan standIn = {};
  standIn.shown = pixel.record;
  standIn.outcome = {format, kStandInDepth, 0, VX_TRANSPARENCY_KEPT};
  standIn.rows = {.bitsPerPixel = kStandInDepth};
  return SavePicture(backend, name, where, &standIn);
}

bool MoveTo(HANDLE file, uint32_t position) {
  const auto start = static_cast<int>(position);
  return VX_RedirectedSeek(file, start, VX_SEEK_START) == start;
}

/// Planes and depth as most writers have them, so that old readers choose well; 0 is what the filter writes.
ICONDIRENTRY EntryOf(const SavePlan& plan, uint32_t size, uint32_t offset) {
  const bool isCursor = plan.outcome.format == FMT_CUR;
  return {.Width = bmp::EntrySide(plan.shown.Width),
          .Height = bmp::EntrySide(plan.shown.Height),
          .ColorCount = 0,
          .Reserved = 0,
          .Planes = isCursor ? plan.hotSpot.x : uint16_t{1},
          .BitCount = isCursor ? plan.hotSpot.y : static_cast<uint16_t>(plan.outcome.bits_per_pixel),
          .BytesInRes = size,
          .ImageOffset = offset};
}

/// Writes the body over the one that is there, and then the entry: until then the page is the stand-in.
bool FillRoom(HANDLE file, int page, const SavePlan& plan, FieldRows& rows) {
  bmp::Block<bmp::kEntrySize> bytes{};
  constexpr int kBytes = bmp::kEntrySize;
  const uint32_t slot = bmp::EntryOffset(page);
  if (!MoveTo(file, slot) || VX_RedirectedRead(file, bytes.data(), kBytes) != kBytes) return false;
  const uint32_t offset = bmp::DecodeEntry(bytes).ImageOffset;
  const _BITMAPHANDLE& bitmap = plan.shown;
  const int depth = plan.outcome.bits_per_pixel;
  const auto imageSize = static_cast<uint32_t>(PictureBytes(bitmap.Width, bitmap.Height, depth) +
                                               PictureBytes(bitmap.Width, bitmap.Height, 1));
  const bmp::NewHeader header = {.width = static_cast<uint32_t>(bitmap.Width),
                                 .height = 2 * static_cast<uint32_t>(bitmap.Height),
                                 .bitCount = static_cast<uint16_t>(depth),
                                 .imageSize = imageSize};
  bool isWritten = MoveTo(file, offset) && Put(file, bmp::EncodeHeader<bmp::kInfoHeaderSize>(header));
  for (int row = 0; row < rows.Count() && isWritten; ++row) isWritten = Put(file, rows.Pixels(row));
  for (int row = 0; row < rows.Count() && isWritten; ++row) isWritten = Put(file, rows.Mask(row));
  return isWritten && MoveTo(file, slot) &&
         Put(file, bmp::EncodeEntry(EntryOf(plan, bmp::kInfoHeaderSize + imageSize, offset)));
}

}  // namespace

int SavePage(const Backend& backend, const char* name, const SAVEOPTIONS& where, int page, SavePlan* plan) {
  if (plan->writer == bmp::Writer::kAlphaPage) {
    FieldRows rows(*plan);
    const int status = MakeRoom(backend, name, where, plan->outcome.format);
    if (status != STATUS_OK) return status;
    return WriteFile(backend, name, VX_OPEN_UPDATE,
                     [&](HANDLE file) { return FillRoom(file, page, *plan, rows); });
  }
  const int status = SavePicture(backend, name, where, plan);
  const bool pointsElsewhere = plan->hotSpot.x != 0 || plan->hotSpot.y != 0;
  if (status != STATUS_OK || plan->outcome.format != FMT_CUR || !pointsElsewhere) return status;
  return WriteHotSpot(backend, name, page, plan->hotSpot);  // the filter writes 0, 0
}

}  // namespace vxkrn
