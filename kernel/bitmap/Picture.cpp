// What applications do with a bitmap once it is loaded: describe it, look at rows, read them as colours.
#include "bitmap/Picture.h"

#include <algorithm>
#include <utility>

#include "base/Errors.h"
#include "base/Memory.h"
#include "bitmap/Region.h"

void vx_bitmap::ConvertOrder(int order) noexcept {
  if (record.BitsPerPixel != 16 || record.ColorOrder == order) return;
  for (int row = 0; row < record.Height; ++row) {
    vxkrn::ConvertRow16(vxkrn::StoredRow(record, row), record.Width, order);
  }
  record.ColorOrder = order;
}

void vx_bitmap::PutColors(int row, int first, std::span<const vxkrn::Rgba> pixels) noexcept {
  vxkrn::Pack32(pixels, true, vxkrn::StoredRow(record, row) + std::ptrdiff_t{4} * first);
  const bool isOpaque =
      std::all_of(pixels.begin(), pixels.end(), [](vxkrn::Rgba pixel) { return pixel.alpha == 255; });
  if (!isOpaque) record.Flags |= vxkrn::kBitmapHasAlpha;
}

int vxkrn::AllocatePixels(int width, int height, int bitsPerPixel, vx_bitmap* picture, FreshPixels fresh) {
  const uint64_t bytes = PictureBytes(width, height, bitsPerPixel);
  if (!memory::Fits(bytes)) return FailForMemory("the picture", bytes);
  _BITMAPHANDLE* record = &picture->record;
  int status = VX_InitBitmap(record, sizeof *record, width, height, bitsPerPixel);
  if (status == STATUS_OK) status = AllocateBitmap(record, fresh);
  picture->rowsPresent = height;
  return status == STATUS_NO_MEMORY ? FailForMemory("the picture", bytes) : status;
}

int vxkrn::CopyPixels(const _BITMAPHANDLE& from, _BITMAPHANDLE* copy) {
  const uint64_t bytes = PictureBytes(from.Width, from.Height, from.BitsPerPixel);
  int status = VX_InitBitmap(copy, sizeof *copy, from.Width, from.Height, from.BitsPerPixel);
  if (status == STATUS_OK) status = VX_AllocateBitmap(copy, BITMAP_ALLOCATE_PIXELS);
  if (status == STATUS_NO_MEMORY) return FailForMemory("a copy of the picture", bytes);
  if (status != STATUS_OK) return status;
  const auto rowBytes = static_cast<std::size_t>(from.BytesPerLine);
  for (int row = 0; row < from.Height; ++row)
    std::memcpy(StoredRow(*copy, row), ReadRow(from, row), rowBytes);
  return STATUS_OK;
}

int vxkrn::MakePicture(int width, int height, memory::Owned<vx_bitmap>* picture) {
  auto made = memory::Make<vx_bitmap>({"kernel/Picture", __LINE__});
  if (made == nullptr) return FailForMemory("a bitmap record", sizeof(vx_bitmap));
  const int status = AllocatePixels(width, height, 32, made.get());
  if (status != STATUS_OK) return status;
  made->record.Orientation = ORIENT_TOP_DOWN;
  *picture = std::move(made);
  return STATUS_OK;
}

namespace {

bool HasRow(const vx_bitmap* bitmap, int row) {
  return bitmap != nullptr && row >= 0 && row < bitmap->record.Height;
}

}  // namespace

int vx_bitmap_from_rgba(int width, int height, const uint8_t* rgba, vx_bitmap** bitmap) {
  return vxkrn::Guarded([&]() -> int {
    if (bitmap != nullptr) *bitmap = nullptr;
    if (rgba == nullptr || bitmap == nullptr) {
      return vxkrn::FailForArgument("the pixels and the place for the bitmap must be given");
    }
    const auto isSide = [](int side) { return side >= 1 && side <= bmp::kLongestSide; };
    if (!isSide(width) || !isSide(height)) {
      return vxkrn::Fail({VX_BAD_DIMENSIONS, VX_REASON_BAD_SIZE, width, height}, width, " x ", height,
                         " pixels; a side can have 1 to ", bmp::kLongestSide);
    }
    vxkrn::memory::Owned<vx_bitmap> made;
    const int status = vxkrn::MakePicture(width, height, &made);
    if (status != STATUS_OK) return status;
    const auto count = static_cast<std::size_t>(width);
    for (int row = 0; row < height; ++row, rgba += 4 * count) {
      made->PutColors(row, 0, {reinterpret_cast<const vxkrn::Rgba*>(rgba), count});
    }
    *bitmap = made.release();
    return VX_OK;
  });
}

int vx_bitmap_describe(const vx_bitmap* bitmap, vx_bitmap_info* info) {
  vxkrn::BeginCall();
  if (bitmap == nullptr || info == nullptr) {
    return vxkrn::FailForArgument("the bitmap and the record to fill must be given");
  }
  const _BITMAPHANDLE& record = bitmap->record;
  *info = {record.Width,
           record.Height,
           record.BitsPerPixel,
           record.BytesPerLine,
           record.ColorOrder,
           record.XResolution,
           record.YResolution,
           record.ColorCount,
           vxkrn::HasAlpha(record) ? 1 : 0,
           record.Region != nullptr ? 1 : 0,
           bitmap->hotSpot.x,
           bitmap->hotSpot.y,
           bitmap->rowsPresent,
           bitmap->colorSpace.kind};
  return VX_OK;
}

const uint8_t* vx_bitmap_row(const vx_bitmap* bitmap, int row) {
  if (!HasRow(bitmap, row)) return nullptr;
  if (bitmap->provider == nullptr) return vxkrn::StoredRow(bitmap->record, bitmap->Stored(row));
  const uint8_t* bytes = nullptr;
  (void)vxkrn::Guarded([&]() -> int {  // a failure leaves its detail and no row
    bytes = vxkrn::ReadRow(bitmap->record, bitmap->Stored(row));
    return VX_OK;
  });
  return bytes;
}

const uint8_t* vx_bitmap_palette(const vx_bitmap* bitmap) {
  return bitmap == nullptr || bitmap->record.Palette == nullptr ? nullptr : &bitmap->record.Palette->Blue;
}

const uint8_t* vx_bitmap_profile(const vx_bitmap* bitmap, size_t* size) {
  const bool hasProfile = bitmap != nullptr && bitmap->colorSpace.kind == VX_COLOR_SPACE_PROFILE;
  if (size != nullptr) *size = hasProfile ? bitmap->colorSpace.profileSize : 0;
  return hasProfile ? bitmap->colorSpace.profile.get() : nullptr;
}

const char* vx_bitmap_profile_name(const vx_bitmap* bitmap) {
  const bool hasName = bitmap != nullptr && bitmap->colorSpace.kind == VX_COLOR_SPACE_LINKED;
  return hasName ? reinterpret_cast<const char*>(bitmap->colorSpace.profile.get()) : nullptr;
}

int vx_bitmap_read_rgba(const vx_bitmap* bitmap, int row, uint8_t* rgba) {
  return vxkrn::Guarded([&]() -> int {
    if (!HasRow(bitmap, row) || rgba == nullptr) {
      return vxkrn::FailForArgument("row ", row, " was asked for; the bitmap has rows 0 to ",
                                    bitmap == nullptr ? -1 : bitmap->record.Height - 1);
    }
    vxkrn::ReadRgba(bitmap->record, bitmap->colors, bitmap->Stored(row), rgba);
    return VX_OK;
  });
}

int vx_bitmap_read_rgba_rows(const vx_bitmap* bitmap, int first, int count, uint8_t* rgba, size_t stride) {
  return vxkrn::Guarded([&]() -> int {
    if (bitmap == nullptr || rgba == nullptr) {
      return vxkrn::FailForArgument("the bitmap and the place for its rows must be given");
    }
    const _BITMAPHANDLE& record = bitmap->record;
    if (first < 0 || count < 0 || count > record.Height || first > record.Height - count) {
      return vxkrn::FailForArgument(count, " rows from row ", first, " on were asked for; the bitmap has ",
                                    record.Height);
    }
    if (stride / 4 < static_cast<std::size_t>(record.Width)) {
      return vxkrn::FailForArgument("stride is ", stride, "; a row takes 4 x ", record.Width, " bytes");
    }
    uint8_t* to = rgba;
    for (int row = first; row < first + count; ++row, to += stride) {
      vxkrn::ReadRgba(record, bitmap->colors, bitmap->Stored(row), to);
    }
    return VX_OK;
  });
}

void vx_bitmap_free(vx_bitmap* bitmap) {
  if (bitmap != nullptr) vxkrn::memory::Release{}(bitmap);
}
