// What the directory of an icon or cursor file says, to applications. Asks no filter, so that what is wrong
// with a page stays that page's matter.
#include "base/Errors.h"
#include "beyond/IconFile.h"
#include "files/Source.h"

namespace vxkrn {
namespace {

/// Reads how the directory begins of a source that must be an icon or cursor file.
template <class Use>
int WithDirectory(vx_source& source, const Use& use) {
  const Backend view = source.View();
  const IconReader reader(view, source.Name());
  IconDirectory directory;
  const int status = reader.ReadStart(&directory);
  if (status == STATUS_OK) return use(reader, directory);
  return NameFailure(status, source.Name());
}

}  // namespace
}  // namespace vxkrn

using vxkrn::Fail;
using vxkrn::FailForArgument;

int vx_directory_describe(vx_source* source, vx_directory_info* info) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || info == nullptr) {
      return FailForArgument("the source and the record to fill must be given");
    }
    *info = vx_directory_info{};
    return vxkrn::WithDirectory(*source, [&](const auto& /*reader*/, const auto& directory) {
      info->is_cursor = directory.isCursor ? 1 : 0;
      info->page_count = directory.count;
      return int{VX_OK};
    });
  });
}

int vx_page_describe(vx_source* source, int page, vx_page_info* info) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || info == nullptr) {
      return FailForArgument("the source and the record to fill must be given");
    }
    *info = vx_page_info{};
    return vxkrn::WithDirectory(*source, [&](const auto& reader, const auto& directory) {
      const int count = directory.count;
      if (page < 1 || page > count) {
        return Fail({VX_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page, count}, source->Name(), " has no page ", page,
                    ": its pages are 1 to ", count);
      }
      ICONDIRENTRY entry;
      if (!reader.ReadEntry(page, &entry)) {
        return vxkrn::NameFailure(vxkrn::FailToReadDirectory(), source->Name());
      }
      info->is_png = reader.IsPng(entry) ? 1 : 0;
      info->offset = entry.ImageOffset;
      info->size = entry.BytesInRes;
      if (directory.isCursor) {
        info->hot_x = vxkrn::HotSpotOf(entry).x;
        info->hot_y = vxkrn::HotSpotOf(entry).y;
      }
      return int{VX_OK};
    });
  });
}

int vx_unreferenced_bytes(vx_source* source, uint64_t* bytes) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || bytes == nullptr) {
      return FailForArgument("the source and the number to fill must be given");
    }
    *bytes = 0;
    return vxkrn::WithDirectory(*source, [&](const auto& reader, auto& directory) {
      const int status = reader.ReadDirectory(&directory);
      if (status != VX_OK) return vxkrn::NameFailure(status, source->Name());
      *bytes = vxkrn::UnreferencedBytes(reader, directory);
      return int{VX_OK};
    });
  });
}
