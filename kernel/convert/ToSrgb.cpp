// Goes through a picture and has every colour converted. What the colours are is not known here.
#include "convert/ToSrgb.h"

#include "base/Errors.h"

namespace vxkrn {
namespace {

PixelBytesOrder OrderOf(int bitsPerPixel) noexcept {
  if (bitsPerPixel == 16) return PixelBytesOrder::kRgba;
  return bitsPerPixel == 24 ? PixelBytesOrder::kBgr : PixelBytesOrder::kBgra;
}

int ConvertRows16(const ColorTransform& transform, vx_bitmap* picture) noexcept {
  const _BITMAPHANDLE& record = picture->record;
  const auto width = static_cast<std::size_t>(record.Width);
  const memory::Bytes row = memory::MakeBytes(width * sizeof(Rgba), {"kernel/ToSrgb", __LINE__});
  if (row == nullptr) return FailForMemory("a row of colours", width * sizeof(Rgba));
  for (int stored = 0; stored < record.Height; ++stored) {
    ReadRgba(record, picture->colors, stored, row.get());
    transform.Apply(row.get(), static_cast<uint32_t>(width));
    Pack16({reinterpret_cast<const Rgba*>(row.get()), width}, record.ColorOrder == ORDER_565,
           StoredRow(record, stored));
  }
  return STATUS_OK;
}

}  // namespace

int PrepareForSrgb(const vx_bitmap& picture, ColorTransform* transform) noexcept {
  return transform->Prepare(picture.colorSpace, OrderOf(picture.record.BitsPerPixel));
}

int ConvertPixels(const ColorTransform& transform, vx_bitmap* picture) noexcept {
  const _BITMAPHANDLE& record = picture->record;
  if (record.BitsPerPixel <= 8) {
    transform.Apply(&record.Palette->Blue, static_cast<uint32_t>(record.ColorCount));
    return STATUS_OK;
  }
  if (record.BitsPerPixel == 16) return ConvertRows16(transform, picture);
  for (int row = 0; row < record.Height; ++row) {
    transform.Apply(StoredRow(record, row), static_cast<uint32_t>(record.Width));
  }
  return STATUS_OK;
}

int ConvertToSrgb(vx_bitmap* picture) noexcept {
  if (!picture->colorSpace.NeedsPlace()) return STATUS_OK;
  ColorTransform transform;
  int status = PrepareForSrgb(*picture, &transform);
  if (status == STATUS_OK) status = ConvertPixels(transform, picture);
  if (status == STATUS_OK) picture->colorSpace = {.kind = VX_COLOR_SPACE_SRGB};
  return status;
}

}  // namespace vxkrn
