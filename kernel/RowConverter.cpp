// Decides how the rows of a picture get their depth, then does it. The order of the decisions is the order of
// what is lost: nothing, nothing but the palette's order, as little as can be.
#include "RowConverter.h"

#include <algorithm>
#include <cstring>

#include "Quantize.h"

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

RowConverter::RowConverter(const _BITMAPHANDLE& bitmap, const RowTarget& target)
    : rows_(bitmap), target_(target), copies_(IsAsWanted(bitmap, target)) {
  if (target.bitsPerPixel > 8) return;
  indices_.resize(static_cast<std::size_t>(bitmap.Width));
  ChooseIndices();
}

void RowConverter::ChooseIndices() {
  target_.reservesTransparent = target_.reservesTransparent && HasTransparentPixel(rows_);
  if (!target_.usesFixedPalette && !target_.reservesTransparent && TakeOwnPalette()) return;

  const Pixels which = target_.reservesTransparent ? Pixels::kOpaque : Pixels::kAll;
  const std::size_t room = (std::size_t{1} << target_.bitsPerPixel) - (target_.reservesTransparent ? 1 : 0);
  bool isExact = false;
  if (target_.usesFixedPalette) {
    palette_ = FixedPalette(target_.bitsPerPixel);
    palette_.resize(room);
  } else {
    palette_ = DistinctColors(rows_, which, room);
    isExact = palette_.size() <= room;
    if (!isExact) palette_ = ChoosePalette(rows_, which, room);
  }
  if (palette_.empty()) palette_.push_back(0);  // nothing is opaque
  transparentEntry_ = target_.reservesTransparent ? static_cast<int>(palette_.size()) : -1;
  mapper_.emplace(palette_, rows_.Bitmap().Width, target_.diffuses && !isExact, transparentEntry_);
  if (transparentEntry_ >= 0) palette_.push_back(0);
}

/// Keeps palette and indices as they are where no index is beyond the depth wanted.
bool RowConverter::TakeOwnPalette() {
  const _BITMAPHANDLE& bitmap = rows_.Bitmap();
  if (bitmap.BitsPerPixel > 8 || bitmap.Palette == nullptr) return false;
  if (bitmap.BitsPerPixel > target_.bitsPerPixel) {
    for (int row = 0; row < bitmap.Height; ++row) {
      UnpackIndices(StoredRow(bitmap, row), bitmap.BitsPerPixel, indices_);
      if (*std::max_element(indices_.begin(), indices_.end()) >> target_.bitsPerPixel != 0) return false;
    }
  }
  palette_.resize(static_cast<std::size_t>(std::min(bitmap.ColorCount, 1 << target_.bitsPerPixel)));
  std::transform(bitmap.Palette, bitmap.Palette + palette_.size(), palette_.begin(),
                 [](const RGBQUAD& entry) { return ColorOf(entry); });
  return true;
}

void RowConverter::Convert(int storedRow, std::uint8_t* converted) {
  const _BITMAPHANDLE& bitmap = rows_.Bitmap();
  if (copies_) {
    std::memcpy(converted, StoredRow(bitmap, storedRow),
                static_cast<std::size_t>(PixelBytes(bitmap.Width, bitmap.BitsPerPixel)));
  } else if (target_.bitsPerPixel <= 8) {
    ConvertToIndices(storedRow, converted);
  } else {
    PackColors(rows_.Read(storedRow), converted);
  }
}

void RowConverter::PackColors(std::span<const Rgba> pixels, std::uint8_t* converted) const {
  switch (target_.bitsPerPixel) {
    case 16: Pack16(pixels, target_.is565, converted); break;
    case 24: Pack24(pixels, converted); break;
    default: Pack32(pixels, HasAlpha(rows_.Bitmap()), converted); break;
  }
}

void RowConverter::ConvertToIndices(int storedRow, std::uint8_t* converted) {
  if (mapper_) {
    mapper_->Map(storedRow, rows_.Read(storedRow), indices_.data());
  } else {
    UnpackIndices(StoredRow(rows_.Bitmap(), storedRow), rows_.Bitmap().BitsPerPixel, indices_);
  }
  PackIndices(indices_, target_.bitsPerPixel, converted);
}

namespace {

/// Whether a pixel of 16 bits shows this colour.
bool Is16(Rgba color, bool is565) {
  return ColorOf(ColorOfPixel16(Pixel16(color, is565), is565)) == ColorOf(color);
}

bool AllAre16(ColorRows& rows, bool is565) {
  for (int row = 0; row < rows.Bitmap().Height; ++row) {
    const std::span<const Rgba> pixels = rows.Read(row);
    if (!std::all_of(pixels.begin(), pixels.end(), [&](Rgba color) { return Is16(color, is565); })) {
      return false;
    }
  }
  return true;
}

bool FixedPaletteHolds(ColorRows& rows, Pixels which, int bitsPerPixel, std::size_t room) {
  std::vector<Color> fixed = FixedPalette(bitsPerPixel);
  fixed.resize(room);
  std::sort(fixed.begin(), fixed.end());
  const std::vector<Color> own = DistinctColors(rows, which, room);
  return std::includes(fixed.begin(), fixed.end(), own.begin(), own.end());
}

}  // namespace

bool KeepsColors(const _BITMAPHANDLE& bitmap, const RowTarget& target) {
  if (target.bitsPerPixel >= 24 || (target.bitsPerPixel == 16 && IsAsWanted(bitmap, target))) return true;
  ColorRows rows(bitmap);
  if (target.bitsPerPixel == 16) return AllAre16(rows, target.is565);
  const bool reserves = target.reservesTransparent && HasTransparentPixel(rows);
  const Pixels which = reserves ? Pixels::kOpaque : Pixels::kAll;
  const std::size_t room = (std::size_t{1} << target.bitsPerPixel) - (reserves ? 1 : 0);
  if (target.usesFixedPalette) return FixedPaletteHolds(rows, which, target.bitsPerPixel, room);
  if (!reserves && bitmap.BitsPerPixel <= target.bitsPerPixel) return true;
  return DistinctColors(rows, which, room).size() <= room;
}

}  // namespace vxkrn
