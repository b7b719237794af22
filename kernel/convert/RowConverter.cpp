// Decides how the rows of a picture get their depth, then does it. The ways are tried in the order of what
// they lose: nothing, the palette's order alone, as little as possible.
#include "convert/RowConverter.h"

#include <algorithm>
#include <cstring>

#include "convert/Quantize.h"

namespace vxkrn {
namespace {

std::vector<Color> FixedPalette(int bitsPerPixel) {
  RGBQUAD entries[256];
  VX_GetFixedPalette(entries, bitsPerPixel);
  std::vector<Color> palette(std::size_t{1} << bitsPerPixel);
  std::transform(entries, entries + palette.size(), palette.begin(),
                 [](const RGBQUAD& entry) { return ColorOf(entry); });
  return palette;
}

/// Palette entries for the colours of pixels.
std::size_t RoomFor(int bitsPerPixel, bool reservesTransparent) {
  return (std::size_t{1} << bitsPerPixel) - (reservesTransparent ? 1 : 0);
}

bool IsAsWanted(const _BITMAPHANDLE& bitmap, const RowTarget& target) {
  if (bitmap.BitsPerPixel != target.bitsPerPixel) return false;
  switch (target.bitsPerPixel) {
    case 16: return (bitmap.ColorOrder == ORDER_565) == target.is565;
    case 24: return true;
    case 32: return HasAlpha(bitmap);
    default: return false;
  }
}

}  // namespace

RowConverter::RowConverter(LazyCensus& census, const RowTarget& target)
    : rows_(census.Bitmap()), target_(target), copies_(IsAsWanted(census.Bitmap(), target)) {
  if (target.bitsPerPixel > 8) return;
  ChooseIndices(census);
  if (copies_) return;
  indices_.resize(static_cast<std::size_t>(rows_.Bitmap().Width));
}

void RowConverter::ChooseIndices(LazyCensus& census) {
  target_.reservesTransparent = target_.reservesTransparent && census.HasTransparent();
  if (!target_.usesFixedPalette && !target_.reservesTransparent && TakeOwnPalette(census)) return;

  const Pixels which = target_.reservesTransparent ? Pixels::kOpaque : Pixels::kAll;
  const std::size_t room = RoomFor(target_.bitsPerPixel, target_.reservesTransparent);
  bool isExact = false;
  if (target_.usesFixedPalette) {
    palette_ = FixedPalette(target_.bitsPerPixel);
    palette_.resize(room);
  } else {
    palette_ = census.Get().Shown(target_.reservesTransparent);
    isExact = palette_.size() <= room;
    if (!isExact) palette_ = ChoosePalette(rows_, which, room);
  }
  if (palette_.empty()) palette_.push_back(0);  // nothing is opaque
  transparentEntry_ = target_.reservesTransparent ? static_cast<int>(palette_.size()) : -1;
  mapper_.emplace(palette_, rows_.Bitmap().Width, target_.diffuses && !isExact, transparentEntry_);
  if (transparentEntry_ >= 0) palette_.push_back(0);
}

/// Keeps palette and indices as they are where no index is beyond the depth wanted.
bool RowConverter::TakeOwnPalette(LazyCensus& census) {
  const _BITMAPHANDLE& bitmap = rows_.Bitmap();
  if (bitmap.BitsPerPixel > 8 || bitmap.Palette == nullptr) return false;
  const bool mayHaveHighIndices = bitmap.BitsPerPixel > target_.bitsPerPixel;
  if (mayHaveHighIndices && census.Get().highestIndex >> target_.bitsPerPixel != 0) return false;
  palette_.resize(static_cast<std::size_t>(std::min(bitmap.ColorCount, 1 << target_.bitsPerPixel)));
  std::transform(bitmap.Palette, bitmap.Palette + palette_.size(), palette_.begin(),
                 [](const RGBQUAD& entry) { return ColorOf(entry); });
  copies_ = bitmap.BitsPerPixel == target_.bitsPerPixel;
  return true;
}

/// The row as it is, but for the bits behind its last pixel: pictures may have anything there.
void RowConverter::Copy(int storedRow, uint8_t* converted) const {
  const _BITMAPHANDLE& bitmap = rows_.Bitmap();
  const int64_t bytes = PixelBytes(bitmap.Width, bitmap.BitsPerPixel);
  std::memcpy(converted, StoredRow(bitmap, storedRow), static_cast<std::size_t>(bytes));
  const int64_t spare = 8 * bytes - int64_t{bitmap.Width} * bitmap.BitsPerPixel;
  converted[bytes - 1] &= static_cast<uint8_t>(0xFFU << spare);
}

void RowConverter::Convert(int storedRow, uint8_t* converted) {
  if (copies_) {
    Copy(storedRow, converted);
  } else if (target_.bitsPerPixel <= 8) {
    ConvertToIndices(storedRow, converted);
  } else {
    PackColors(rows_.Read(storedRow), converted);
  }
}

void RowConverter::PackColors(std::span<const Rgba> pixels, uint8_t* converted) const {
  switch (target_.bitsPerPixel) {
    case 16: Pack16(pixels, target_.is565, converted); break;
    case 24: Pack24(pixels, converted); break;
    default: Pack32(pixels, HasAlpha(rows_.Bitmap()), converted); break;
  }
}

void RowConverter::ConvertToIndices(int storedRow, uint8_t* converted) {
  if (mapper_) {
    mapper_->Map(storedRow, rows_.Read(storedRow), indices_.data());
  } else {
    UnpackIndices(StoredRow(rows_.Bitmap(), storedRow), rows_.Bitmap().BitsPerPixel, indices_);
  }
  PackIndices(indices_, target_.bitsPerPixel, converted);
}

bool KeepsColors(LazyCensus& census, const RowTarget& target) {
  const _BITMAPHANDLE& bitmap = census.Bitmap();
  const int depth = target.bitsPerPixel;
  if (depth >= 24 || (depth == 16 && IsAsWanted(bitmap, target))) return true;
  if (depth == 16) return target.is565 ? census.Get().fits565 : census.Get().fits555;
  const bool reserves = target.reservesTransparent && census.HasTransparent();
  if (!target.usesFixedPalette && !reserves && bitmap.BitsPerPixel <= depth) return true;
  const std::size_t room = RoomFor(depth, reserves);
  const std::vector<Color>& shown = census.Get().Shown(reserves);
  if (!target.usesFixedPalette) return shown.size() <= room;
  std::vector<Color> fixed = FixedPalette(depth);
  fixed.resize(room);
  std::sort(fixed.begin(), fixed.end());
  return std::includes(fixed.begin(), fixed.end(), shown.begin(), shown.end());
}

}  // namespace vxkrn
