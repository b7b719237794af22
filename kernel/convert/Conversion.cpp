// The three callbacks that hand an image over row by row. What they keep between them stands behind the
// record of the converted image, where the filter does not look.
#include "convert/Conversion.h"

#include <algorithm>
#include <new>

#include "base/CallRecord.h"
#include "base/Errors.h"
#include "base/Memory.h"
#include "bitmap/RowProvider.h"
#include "convert/RowConverter.h"

namespace vxkrn {
namespace {

RowTarget TargetOf(int bitsPerPixel, bool is565, int convertArg1, int convertArg2) {
  return {.bitsPerPixel = bitsPerPixel,
          .is565 = bitsPerPixel == 16 && is565,
          .usesFixedPalette = convertArg1 == CONVERT_PALETTE_FIXED,
          .diffuses = convertArg2 != CONVERT_NEAREST};
}

/// One save: the record the filter is shown first, then what makes its rows.
struct Save : _BITMAPHANDLE {
  Save(LazyCensus& census, const RowTarget& target, int rows)
      : _BITMAPHANDLE(), source(&census.Bitmap()), converter(census, target), rowsPerCall(rows) {}

  /// @return STATUS_OK, or why no image of that width can be had
  int Prepare(const RowTarget& target);

  const _BITMAPHANDLE* source;
  RowConverter converter;
  int rowsPerCall;
  memory::Bytes rowBuffer;  ///< a row of the image is never shorter than one of its mask
  _SAVEFILESTRUCT file = {};
};

int Save::Prepare(const RowTarget& target) {
  const int status =
      VX_InitBitmap(this, sizeof(_BITMAPHANDLE), source->Width, source->Height, target.bitsPerPixel);
  if (status != STATUS_OK) return status;
  Orientation = source->Orientation;
  XResolution = source->XResolution;
  YResolution = source->YResolution;
  if (target.is565) ColorOrder = ORDER_565;

  const std::span<const Color> palette = converter.Palette();
  file.StructSize = sizeof file;
  file.ColorCount = ColorCount = static_cast<int>(palette.size());
  std::transform(palette.begin(), palette.end(), file.Palette, QuadOf);

  const auto bytes = static_cast<uint64_t>(BytesPerLine) * static_cast<uint64_t>(rowsPerCall);
  if (bytes > SIZE_MAX) return STATUS_NO_MEMORY;
  rowBuffer.reset(static_cast<uint8_t*>(
      memory::AllocateZeroed(static_cast<std::size_t>(bytes), {"kernel/Conversion", __LINE__})));
  return rowBuffer == nullptr ? STATUS_NO_MEMORY : STATUS_OK;
}

bool IsPicture(const _BITMAPHANDLE* bitmap) {
  return bitmap != nullptr && HasRows(*bitmap) && bitmap->Width > 0 && bitmap->Height > 0;
}

}  // namespace

LazyCensus& CensusOfCall(LazyCensus& own) noexcept {
  const FilterCall* context = ThisCall().filterCall;
  const bool isKnown =
      context != nullptr && context->census != nullptr && &context->census->Bitmap() == &own.Bitmap();
  return isKnown ? *context->census : own;
}

int BeginSave(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, int bitsPerPixel, unsigned int* flags,
              unsigned char** rowBuffer, int rowsPerCall, int convertArg1, int convertArg2,
              _SAVEFILESTRUCT** saveFile) {
  if (!IsPicture(bitmap) || converted == nullptr || flags == nullptr || rowBuffer == nullptr ||
      saveFile == nullptr || rowsPerCall < 1) {
    return STATUS_BAD_PARAMETER;
  }
  if (!IsDepth(bitsPerPixel)) return STATUS_BAD_BPP;
  const RowTarget target = TargetOf(bitsPerPixel, (*flags & SAVE_ORDER_565) != 0, convertArg1, convertArg2);
  try {
    LazyCensus own(*bitmap);
    memory::Owned<Save> save =
        memory::Make<Save>({"kernel/Conversion", __LINE__}, CensusOfCall(own), target, rowsPerCall);
    if (save == nullptr) return STATUS_NO_MEMORY;
    const int status = save->Prepare(target);
    if (status != STATUS_OK) return status;
    *rowBuffer = save->rowBuffer.get();
    *saveFile = &save->file;
    *converted = save.release();
    return STATUS_OK;
  } catch (const Failed& failed) {
    return failed.status;
  } catch (const std::bad_alloc&) {
    return FailForMemory("converting the picture", memory::LastRefusal());
  }
}

int GetSaveRow(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* converted, unsigned char* rowBuffer, int row,
               int rowCount, unsigned int /*flags*/, int /*convertArg1*/, int /*convertArg2*/,
               _SAVEFILESTRUCT* /*saveFile*/) {
  auto* save = static_cast<Save*>(converted);
  if (save == nullptr || bitmap != save->source || rowBuffer == nullptr || row < 0 || rowCount < 1 ||
      rowCount > save->rowsPerCall || row > bitmap->Height - rowCount) {
    return STATUS_BAD_PARAMETER;
  }
  try {
    for (int i = 0; i < rowCount; ++i, rowBuffer += save->BytesPerLine) {
      save->converter.Convert(row + i, rowBuffer);
    }
    return STATUS_OK;
  } catch (const Failed& failed) {
    return failed.status;
  } catch (const std::bad_alloc&) {
    return FailForMemory("converting a row", memory::LastRefusal());
  }
}

int EndSave(_BITMAPHANDLE* /*bitmap*/, _BITMAPHANDLE** converted, unsigned int* /*flags*/,
            unsigned char** rowBuffer, _SAVEFILESTRUCT** saveFile) {
  if (converted != nullptr && *converted != nullptr) {
    memory::Release{}(static_cast<Save*>(*converted));
    *converted = nullptr;
  }
  if (rowBuffer != nullptr) *rowBuffer = nullptr;
  if (saveFile != nullptr) *saveFile = nullptr;
  return STATUS_OK;
}

}  // namespace vxkrn
