// vx_read_rows: a picture that comes row by row, handed on from the top.
#include "app/Load.h"
#include "base/Errors.h"

namespace vxkrn {
namespace {

int ReadRows(vx_source& source, const vx_load_options* asked, vx_row_function take, void* user) {
  vx_load_options options = asked == nullptr ? vx_load_options VX_LOAD_OPTIONS_DEFAULT : *asked;
  const bool isNative = (options.flags & VX_LOAD_NATIVE_ROWS) != 0;
  options.flags = (options.flags & ~unsigned{VX_LOAD_NATIVE_ROWS}) | VX_LOAD_ROW_BY_ROW;
  memory::Owned<vx_bitmap> picture;
  const int status = LoadAny(source, &options, &picture);
  if (status != STATUS_OK) return status;
  const _BITMAPHANDLE& record = picture->record;
  memory::Vector<uint8_t> rgba(isNative ? 0 : static_cast<std::size_t>(record.Width) * sizeof(Rgba));
  bool goesOn = true;
  for (int row = 0; row < record.Height && goesOn; ++row) {
    const int stored = picture->Stored(row);
    if (!isNative) ReadRgba(record, picture->colors, stored, rgba.data());
    goesOn = take(user, picture.get(), row, isNative ? ReadRow(record, stored) : rgba.data()) != 0;
  }
  return STATUS_OK;
}

}  // namespace
}  // namespace vxkrn

int vx_read_rows(vx_source* source, const vx_load_options* options, vx_row_function take, void* user) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || take == nullptr) {
      return vxkrn::FailForArgument("the source and the function that takes rows must be given");
    }
    return vxkrn::ReadRows(*source, options, take, user);
  });
}
