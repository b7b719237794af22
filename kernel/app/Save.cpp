// vx_save_file and vx_save_memory: a plan, through whoever writes its format, into a file.
#include "app/Save.h"

#include "base/Errors.h"
#include "beyond/BitmapWriter.h"
#include "beyond/PageWriter.h"
#include "files/FileLock.h"
#include "files/MemoryTarget.h"
#include "files/MirroredFile.h"
#include "files/Place.h"
#include "files/Replacement.h"
#include "filter/FilterCalls.h"
#include "format/SaveRules.h"

namespace vxkrn {
namespace {

int Write(const Backend& backend, const char* name, SavePlan* plan) {
  switch (plan->writer) {
    case bmp::Writer::kPng: return SavePng(backend, name, plan);
    case bmp::Writer::kAlphaBitmap: return SaveAlphaBitmap(backend, name, *plan);
    case bmp::Writer::kAlphaPage:
    case bmp::Writer::kFilter: break;
  }
  if (bmp::IsIconFormat(plan->outcome.format)) return SavePage(backend, name, NewFile(), 1, plan);
  return SavePicture(backend, name, NewFile(), plan);
}

/// Whether every row has its place in the file, and is what it is whichever row was asked for before it.
bool TakesRowsFromTop(const SavePlan& plan) {
  const int format = plan.outcome.format;
  const bool isPlain = format == FMT_BMP || format == FMT_OS2 || format == FMT_OS2_2;
  const bool diffuses =
      plan.outcome.bits_per_pixel <= 8 && plan.rows.diffuses && plan.outcome.colors_lost != 0;
  return isPlain && !diffuses;
}

/// Writes the picture as the file that `backend` opens. PNG streams take rows from the top, all else from
/// below: a picture that comes from the top is shown to the writer upside down, and its rows are put where
/// they belong. Where they have no place until those below them are known, all are taken into memory.
/// @return STATUS_OK, or a failure with its detail set
int WriteThrough(const Backend& backend, const char* name, SavePlan* plan) {
  RowProvider* const provider = plan->shown.Pixels == nullptr ? ProviderOf(plan->shown) : nullptr;
  if (provider == nullptr || plan->writer == bmp::Writer::kPng) return Write(backend, name, plan);
  const bool comesFromTop = provider->IsSequential() && plan->shown.Orientation == ORIENT_TOP_DOWN;
  if (!comesFromTop || !TakesRowsFromTop(*plan)) {
    provider->PrepareForAnyOrder();
    return Write(backend, name, plan);
  }
  const auto rowBytes = static_cast<uint64_t>(Stride(plan->shown.Width, plan->outcome.bits_per_pixel));
  MirroredFile mirrored(backend, rowBytes, plan->shown.Height);
  plan->shown.Orientation = ORIENT_BOTTOM_UP;
  return Write(mirrored.AsBackend(), name, plan);
}

int WriteToMemory(const char* name, SavePlan* plan, MemoryTarget* target) {
  const int status = WriteThrough(target->AsBackend(), name, plan);
  if (status != STATUS_WRITE_ERROR || memory::LastRefusal() == 0) return status;
  return FailForMemory("the file", memory::LastRefusal());
}

int SaveInPlaceOf(const char* path, SavePlan* plan) {
  Place place;
  int status = place.Find(path);
  if (status != STATUS_OK) return status;
  if (place.IsStream()) {
    MemoryTarget target;  // the filter goes back to put sizes in
    status = WriteToMemory(path, plan, &target);
    return status == STATUS_OK ? WriteToStream(path, place, target.Data(), target.Size()) : status;
  }
  Replacement file;
  status = file.Open(path, place);
  if (status == STATUS_OK) status = WriteThrough(file.AsBackend(), path, plan);
  return status == STATUS_OK ? file.Commit() : status;
}

/// Over what is there, once nobody edits it.
int SaveOnto(const char* path, SavePlan* plan) {
  Place place;
  FileLock lock;
  int status = place.Find(path);
  if (status == STATUS_OK && !place.IsStream()) status = lock.TakeIfThere(place, path);
  if (status != STATUS_OK) return status;
  return WriteThrough(lock.IsOpen() && lock.WhyReadOnly() == 0 ? lock.AsBackend() : kSystemBackend, path,
                      plan);
}

bool AreSystemFiles(const Backend& backend) {
  return backend.functions.open == kSystemBackend.functions.open;
}

/// Takes rows into memory that may come from the very file that is written over.
/// @return STATUS_OK, or a failure with its detail set
int HoldRows(SavePlan* plan, OwnedBitmap* held) {
  if (plan->shown.Pixels != nullptr) return STATUS_OK;
  const int status = CopyPixels(plan->shown, held);
  if (status == STATUS_OK) plan->shown.Pixels = held->Pixels;
  return status;
}

int SaveFile(const char* path, bool inPlace, SavePlan* plan) {
  const Backend& backend = InstalledBackend();
  OwnedBitmap held;
  if (inPlace || !AreSystemFiles(backend)) {
    const int status = HoldRows(plan, &held);
    if (status != STATUS_OK) return status;
  }
  if (!AreSystemFiles(backend)) return WriteThrough(backend, path, plan);
  return inPlace ? SaveOnto(path, plan) : SaveInPlaceOf(path, plan);
}

}  // namespace

int SavePictureAs(const vx_bitmap& picture, const char* path, const vx_save_options* options) {
  SavePlan plan = {};
  int status = PlanSave(picture, options, &plan);
  const bool inPlace = options != nullptr && options->in_place != 0;
  if (status == STATUS_OK) status = SaveFile(path, inPlace, &plan);
  if (status == STATUS_OK) RemarkOnLosses(plan, 0);
  return status;
}

}  // namespace vxkrn

int vx_save_file(const vx_bitmap* bitmap, const char* path, const vx_save_options* options) {
  return vxkrn::Guarded([&]() -> int {
    if (bitmap == nullptr || path == nullptr) {
      return vxkrn::FailForArgument("the bitmap and the path must be given");
    }
    return vxkrn::SavePictureAs(*bitmap, path, options);
  });
}

int vx_save_memory(const vx_bitmap* bitmap, const vx_save_options* options, uint8_t** bytes, size_t* size) {
  return vxkrn::Guarded([&]() -> int {
    if (bytes != nullptr) *bytes = nullptr;
    if (size != nullptr) *size = 0;
    if (bitmap == nullptr || bytes == nullptr || size == nullptr) {
      return vxkrn::FailForArgument("the bitmap and the places for bytes and size must be given");
    }
    vxkrn::SavePlan plan = {};
    vxkrn::MemoryTarget target;
    int status = vxkrn::PlanSave(*bitmap, options, &plan);
    if (status == STATUS_OK) status = vxkrn::WriteToMemory("memory", &plan, &target);
    if (status != STATUS_OK) return status;
    vxkrn::RemarkOnLosses(plan, 0);
    *size = target.Size();
    *bytes = target.Take().release();
    return VX_OK;
  });
}
