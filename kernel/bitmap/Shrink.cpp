// Pictures made smaller by a whole factor, a piece of a row at a time: neither a whole row nor the picture is
// ever copied. What becomes of them is not known here.
#include <algorithm>
#include <array>
#include <cmath>

#include "base/Errors.h"
#include "bitmap/Picture.h"

namespace vxkrn {
namespace {

/// Levels are a coding of light that suits the eye; means are means of light.
class Light {
 public:
  Light() noexcept {
    for (std::size_t level = 0; level < 256; ++level) {
      light_[level] = Of(static_cast<double>(level));
      first_[level] = level == 0 ? 0 : Of(static_cast<double>(level) - 0.5);
    }
  }

  /// 0 to 65535.
  [[nodiscard]] uint32_t operator[](uint8_t level) const noexcept { return light_[level]; }
  /// The nearest level.
  [[nodiscard]] uint8_t LevelOf(double light) const noexcept {
    const auto* above = std::upper_bound(first_.begin(), first_.end(), light);
    return static_cast<uint8_t>(above - first_.begin() - 1);
  }

 private:
  /// The curve of sRGB.
  static uint32_t Of(double level) noexcept {
    const double coded = level / 255;
    const double light = coded <= 0.04045 ? coded / 12.92 : std::pow((coded + 0.055) / 1.055, 2.4);
    return static_cast<uint32_t>(std::lround(light * 65535));
  }

  std::array<uint32_t, 256> light_{};
  std::array<uint32_t, 256> first_{};  ///< the least light that is nearest to the level
};

/// What a block of pixels adds up to, colours weighted by alpha. Exact for every block that is no larger than
/// 2^29 pixels, and never out of range.
struct Sum {
  double red, green, blue, alpha;

  void Add(std::span<const Rgba> pixels, const Light& light) noexcept {
    uint64_t r = 0;
    uint64_t g = 0;
    uint64_t b = 0;
    uint64_t a = 0;
    for (const Rgba pixel : pixels) {
      r += uint64_t{light[pixel.red]} * pixel.alpha;
      g += uint64_t{light[pixel.green]} * pixel.alpha;
      b += uint64_t{light[pixel.blue]} * pixel.alpha;
      a += pixel.alpha;
    }
    red += static_cast<double>(r);
    green += static_cast<double>(g);
    blue += static_cast<double>(b);
    alpha += static_cast<double>(a);
  }
  [[nodiscard]] Rgba Mean(double count, const Light& light) const noexcept {
    const double weight = std::max(alpha, 1.0);
    return {light.LevelOf(red / weight), light.LevelOf(green / weight), light.LevelOf(blue / weight),
            static_cast<uint8_t>(std::lround(alpha / count))};
  }
};

constexpr int kPiece = 1024;  // pixels read at once, a multiple of 8

/// Hands `use` a row's pixels, and where each of their pieces begins.
template <class Use>
void ForEachPiece(const vx_bitmap& picture, int row, const Use& use) noexcept {
  std::array<Rgba, kPiece> piece;
  const int width = picture.record.Width;
  for (int first = 0; first < width; first += kPiece) {
    const int count = std::min(kPiece, width - first);
    ReadRgba(picture.record, picture.colors, picture.Stored(row), first, count, &piece[0].red);
    use(first, std::span<const Rgba>(piece).first(static_cast<std::size_t>(count)));
  }
}

void Copy(const vx_bitmap& picture, vx_bitmap* copy) noexcept {
  for (int row = 0; row < picture.record.Height; ++row) {
    ForEachPiece(picture, row,
                 [&](int first, std::span<const Rgba> pixels) { copy->PutColors(row, first, pixels); });
  }
}

/// Adds a piece of a row to the blocks that it lies in.
void Add(std::span<const Rgba> pixels, int first, std::size_t factor, const Light& light,
         std::span<Sum> blocks) noexcept {
  for (auto x = static_cast<std::size_t>(first); !pixels.empty();) {
    const std::size_t count = std::min(pixels.size(), factor - x % factor);
    blocks[x / factor].Add(pixels.first(count), light);
    pixels = pixels.subspan(count);
    x += count;
  }
}

/// Throws std::bad_alloc.
void TakeMeans(const vx_bitmap& picture, int factor, vx_bitmap* smaller) {
  const Light light;
  memory::Vector<Sum> blocks(static_cast<std::size_t>(smaller->record.Width));
  for (int row = 0; row < smaller->record.Height; ++row) {
    const int top = row * factor;
    const int rows = std::min(factor, picture.record.Height - top);
    std::fill(blocks.begin(), blocks.end(), Sum{});
    for (int i = 0; i < rows; ++i) {
      ForEachPiece(picture, top + i, [&](int first, std::span<const Rgba> pixels) {
        Add(pixels, first, static_cast<std::size_t>(factor), light, blocks);
      });
    }
    for (int column = 0; column < smaller->record.Width; ++column) {
      const int columns = std::min(factor, picture.record.Width - column * factor);
      const Rgba mean = blocks[static_cast<std::size_t>(column)].Mean(double{1} * rows * columns, light);
      smaller->PutColors(row, column, {&mean, 1});
    }
  }
}

constexpr int RoundedUp(int dividend, int divisor) noexcept {
  return dividend / divisor + (dividend % divisor != 0 ? 1 : 0);
}

/// The numbers of the smaller picture mean what those of the larger one do.
int CopyColorSpace(const ColorSpace& from, ColorSpace* to) noexcept {
  to->kind = from.kind;
  to->calibration = from.calibration;
  to->intent = from.intent;
  if (from.profile == nullptr) return STATUS_OK;
  const std::size_t closing0 = from.kind == VX_COLOR_SPACE_LINKED ? 1 : 0;
  const std::size_t size = from.profileSize + closing0;
  to->profile = memory::MakeBytes(size, {"kernel/Shrink", __LINE__});
  if (to->profile == nullptr) return FailForMemory("its colour profile", size);
  std::copy_n(from.profile.get(), size, to->profile.get());
  to->profileSize = from.profileSize;
  return STATUS_OK;
}

int Shrink(const vx_bitmap& picture, int largestSide, memory::Owned<vx_bitmap>* smaller) {
  const _BITMAPHANDLE& record = picture.record;
  const int factor = RoundedUp(std::max(record.Width, record.Height), largestSide);
  int status = MakePicture(RoundedUp(record.Width, factor), RoundedUp(record.Height, factor), smaller);
  if (status == STATUS_OK) status = CopyColorSpace(picture.colorSpace, &(*smaller)->colorSpace);
  if (status != STATUS_OK) return status;
  if (factor == 1) {
    Copy(picture, smaller->get());
  } else {
    TakeMeans(picture, factor, smaller->get());
  }
  return STATUS_OK;
}

}  // namespace
}  // namespace vxkrn

int vx_bitmap_shrink(const vx_bitmap* bitmap, int largest_side, vx_bitmap** smaller) {
  return vxkrn::Guarded([&]() -> int {
    if (smaller != nullptr) *smaller = nullptr;
    if (bitmap == nullptr || smaller == nullptr || largest_side < 1) {
      return vxkrn::FailForArgument(
          "the bitmap, the place for the smaller one and a side from 1 must be given");
    }
    vxkrn::memory::Owned<vx_bitmap> made;
    const int status = vxkrn::Shrink(*bitmap, largest_side, &made);
    if (status == STATUS_OK) *smaller = made.release();
    return status;
  });
}
