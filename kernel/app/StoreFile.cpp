// Where bytes go is decided as saves of pictures decide it.
#include "app/StoreFile.h"

#include "base/Errors.h"
#include "files/Backend.h"
#include "files/Place.h"
#include "files/Replacement.h"
#include "filter/FilterCalls.h"

namespace vxkrn {

int StoreFile(const char* path, const memory::Vector<uint8_t>& bytes) {
  const Backend& backend = InstalledBackend();
  if (backend.functions.open != kSystemBackend.functions.open) {
    return WriteWhole(backend, path, bytes.data(), bytes.size());
  }
  Place place;
  int status = place.Find(path);
  if (status != STATUS_OK) return status;
  if (place.IsStream()) return WriteToStream(path, place, bytes.data(), bytes.size());
  Replacement file;
  status = file.Open(path, place);
  if (status == STATUS_OK) status = file.Fill(bytes.data(), bytes.size());
  return status == STATUS_OK ? file.Commit() : status;
}

int StoreNewFile(const char* path, const uint8_t* bytes, std::size_t size) {
  Place place;
  int status = place.Find(path);
  if (status != STATUS_OK) return status;
  if (place.Exists() || place.IsStream()) {
    return Fail({STATUS_OPEN_WRITE_ERROR, VX_REASON_FILE_CHANGED}, path,
                " is there already, and stays as it is");
  }
  Replacement file;
  status = file.Open(path, place);
  if (status == STATUS_OK) status = file.Fill(bytes, size);
  return status == STATUS_OK ? file.CommitOver(FileLock(), [] { return int{STATUS_OK}; }) : status;
}

}  // namespace vxkrn
