// A page less in a file that exists. Its body stays in the file, where nothing refers to it any more.
#include "../Bmp.h"
#include "../Resources.h"
#include "Directory.h"

namespace bmp {
namespace {

int CheckPage(int page, int count) {
  if (page == 1 && count == 1) return STATUS_LAST_PAGE;
  return page < 1 || page > count ? STATUS_BAD_PAGE : STATUS_OK;
}

}  // namespace
}  // namespace bmp

int fltDeletePageBMP(_DELETEPAGEDISPATCH* dispatch) {
  const bmp::File file(dispatch->FileName, bmp::kForEditing);
  if (!file.IsOpen()) return STATUS_OPEN_WRITE_ERROR;
  bmp::Block<bmp::kDirectorySize> bytes;
  if (!bmp::ReadBlock(file.Handle(), bytes)) return STATUS_BAD_PAGE;
  const ICONDIR directory = bmp::DecodeDirectory(bytes);
  const int status = bmp::CheckPage(dispatch->PageNumber, directory.Count);
  return status == STATUS_OK ? bmp::CloseSlot(file.Handle(), dispatch->PageNumber, directory) : status;
}
