// Takes a page out of a file's directory. Its body stays in the file, where nothing refers to it any more.
#include "Drivers/DeletePage.h"

#include "Kernel.h"
#include "Pages/Directory.h"

namespace bmp {
namespace {

int CheckPage(int page, int count) {
  if (page == 1 && count == 1) return STATUS_LAST_PAGE;
  return page < 1 || page > count ? STATUS_BAD_PAGE : STATUS_OK;
}

}  // namespace

int DeletePage(_DELETEPAGEDISPATCH& dispatch) {
  const File file(dispatch.FileName, kForEditing);
  if (!file.IsOpen()) return STATUS_OPEN_WRITE_ERROR;
  Block<kDirectorySize> bytes;
  if (!ReadBlock(file.Handle(), bytes)) return STATUS_BAD_PAGE;
  const ICONDIR directory = DecodeDirectory(bytes);
  const int status = CheckPage(dispatch.PageNumber, directory.Count);
  return status == STATUS_OK ? CloseSlot(file.Handle(), dispatch.PageNumber, directory) : status;
}

}  // namespace bmp
