#include "convert/Colors.h"

#include <new>

namespace vxkrn {
ColorRows::ColorRows(const _BITMAPHANDLE& bitmap)
    : bitmap_(bitmap),
      table_(ColorsOf(bitmap)),
      row_(memory::MakeBytes(static_cast<std::size_t>(bitmap.Width) * sizeof(Rgba),
                             {"kernel/Colors", __LINE__})) {
  if (row_ == nullptr) throw std::bad_alloc();
}

std::span<Rgba> ColorRows::Read(int storedRow) {
  ReadRgba(bitmap_, table_, storedRow, row_.get());
  return {reinterpret_cast<Rgba*>(row_.get()), static_cast<std::size_t>(bitmap_.Width)};
}

}  // namespace vxkrn
