// vx_save_file and vx_save_memory: a plan, through the filter or the PNG encoder, into a file.
#include "base/Errors.h"
#include "beyond/IconFile.h"
#include "files/FileLock.h"
#include "files/MemoryTarget.h"
#include "files/Place.h"
#include "files/Replacement.h"
#include "filter/FilterCalls.h"

namespace vxkrn {
namespace {

/// Writes the picture as the file that `backend` opens. @return STATUS_OK, or a failure with its detail set
int WriteThrough(const Backend& backend, const char* name, SavePlan* plan) {
  if (plan->outcome.format == FMT_PNG) return SavePng(backend, name, plan);
  const int status = SavePicture(backend, name, NewFile(), plan);
  const bool pointsElsewhere = plan->hotSpot.x != 0 || plan->hotSpot.y != 0;
  if (status != STATUS_OK || plan->outcome.format != FMT_CUR || !pointsElsewhere) return status;
  return WriteHotSpot(backend, name, 1, plan->hotSpot);  // the filter writes 0, 0
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

}  // namespace
}  // namespace vxkrn

int vx_save_file(const vx_bitmap* bitmap, const char* path, const vx_save_options* options) {
  return vxkrn::Guarded([&]() -> int {
    if (bitmap == nullptr || path == nullptr) {
      return vxkrn::FailForArgument("the bitmap and the path must be given");
    }
    vxkrn::SavePlan plan = {};
    const int status = vxkrn::PlanSave(*bitmap, options, &plan);
    if (status != STATUS_OK) return status;
    const vxkrn::Backend& backend = vxkrn::InstalledBackend();
    if (!vxkrn::AreSystemFiles(backend)) return vxkrn::WriteThrough(backend, path, &plan);
    const bool inPlace = options != nullptr && options->in_place != 0;
    return inPlace ? vxkrn::SaveOnto(path, &plan) : vxkrn::SaveInPlaceOf(path, &plan);
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
    *size = target.Size();
    *bytes = target.Take().release();
    return VX_OK;
  });
}
