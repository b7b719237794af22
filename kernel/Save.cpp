// vx_save_file and vx_save_memory: a plan, through the filter or the PNG encoder, into a file.
#include <cerrno>
#include <cstring>

#include "CallContext.h"
#include "Conversion.h"
#include "Errors.h"
#include "Files.h"
#include "FilterLoader.h"
#include "MemoryTarget.h"
#include "Replacement.h"
#include "SavePlan.h"

namespace vxkrn {
namespace {

/// Puts a failed save into words, unless a callback or service already found some.
int ExplainSave(int status, const char* name, int writeError) {
  if (!Detail().Empty()) {
    const Text reason = Detail();
    return Fail(status, name, ": ", reason.CString());
  }
  const char* why = writeError != 0 ? std::strerror(writeError) : "the file functions refused it";
  switch (status) {
    case STATUS_WRITE_ERROR: return Fail(status, name, " cannot be written: ", why);
    case STATUS_OPEN_WRITE_ERROR: return Fail(status, name, " cannot be opened for writing: ", why);
    case STATUS_NO_MEMORY: {
      FailForMemory("saving the picture", memory::LastRefusal());
      return ExplainSave(status, name, 0);
    }
    default: return Fail(status, name, ": the filter gave up with status ", status);
  }
}

int RunFilter(const Filter& filter, const char* name, SavePlan* plan) {
  SAVEOPTIONS newFile = {};
  newFile.StructSize = sizeof newFile;
  _SAVEDISPATCH dispatch = {};
  dispatch.FileName = name;
  dispatch.Bitmap = &plan->shown;
  dispatch.BitsPerPixel = plan->outcome.bits_per_pixel;
  dispatch.Format = plan->outcome.format;
  dispatch.Flags = plan->rows.is565 ? SAVE_ORDER_565 : 0;
  dispatch.ConvertArg1 = plan->ConvertArg1();
  dispatch.ConvertArg2 = plan->ConvertArg2();
  dispatch.SaveOptions = &newFile;
  dispatch.BeginSave = BeginSave;
  dispatch.GetSaveRow = GetSaveRow;
  dispatch.EndSave = EndSave;
  dispatch.SaveToMemory = SaveToMemory;
  CallContext context;
  context.convertArg1 = dispatch.ConvertArg1;
  context.convertArg2 = dispatch.ConvertArg2;
  const CallScope scope(&context);
  return filter.save(&dispatch);
}

int WritePng(const char* name, const SavePlan& plan) {
  unsigned char* png = nullptr;
  std::size_t size = 0;
  const int status = EncodeAsPng(plan.shown, plan.outcome.bits_per_pixel, plan.ConvertArg1(),
                                 plan.ConvertArg2(), &png, &size);
  if (status != STATUS_OK) return status;
  const memory::Bytes stream(png);
  HANDLE file = VX_RedirectedOpen(name, VX_OPEN_CREATE, 0);
  if (file == InvalidHandle()) return STATUS_OPEN_WRITE_ERROR;
  const bool fits = size <= kLastPosition;
  const auto count = static_cast<unsigned int>(size);
  const bool isWritten = fits && VX_RedirectedWrite(file, png, count) == static_cast<int>(count);
  (void)VX_RedirectedClose(file);
  return isWritten ? STATUS_OK : STATUS_WRITE_ERROR;
}

/// Writes the picture as the file that `backend` opens. @return STATUS_OK, or a failure with its detail set
int WriteThrough(const Backend& backend, const char* name, SavePlan* plan) {
  const BackendScope scope(backend);
  (void)TakeLateWrite();
  errno = 0;
  int status = STATUS_OK;
  if (plan->outcome.format == FMT_PNG) {
    status = WritePng(name, *plan);
  } else {
    const Filter* filter = nullptr;
    status = LoadFilter(&filter);
    if (status != STATUS_OK) return status;
    status = RunFilter(*filter, name, plan);
  }
  const int openError = status == STATUS_OPEN_WRITE_ERROR ? errno : 0;
  const LateWrite late = TakeLateWrite();
  if (status == STATUS_OK && late.failed) status = STATUS_WRITE_ERROR;
  return status == STATUS_OK ? status : ExplainSave(status, name, late.failed ? late.error : openError);
}

int WriteToMemory(const char* name, SavePlan* plan, MemoryTarget* target) {
  const int status = WriteThrough(target->AsBackend(), name, plan);
  if (status != STATUS_WRITE_ERROR || memory::LastRefusal() == 0) return status;
  return FailForMemory("the file", memory::LastRefusal());
}

int SaveInPlaceOf(const char* path, SavePlan* plan) {
  Replacement file;
  int status = file.Open(path);
  if (status != STATUS_OK) return status;
  if (!file.IsStream()) {
    status = WriteThrough(file.AsBackend(), path, plan);
    return status == STATUS_OK ? file.Commit() : status;
  }
  MemoryTarget target;  // the filter goes back to put sizes in
  status = WriteToMemory(path, plan, &target);
  return status == STATUS_OK ? WriteToStream(path, target.Data(), target.Size()) : status;
}

bool AreSystemFiles(const Backend& backend) {
  return backend.functions.open == kSystemBackend.functions.open;
}

}  // namespace
}  // namespace vxkrn

int vx_save_file(const vx_bitmap* bitmap, const char* path, const vx_save_options* options) {
  return vxkrn::Guarded([&]() -> int {
    if (bitmap == nullptr || path == nullptr) {
      return vxkrn::Fail(VX_BAD_PARAMETER, "the bitmap and the path must be given");
    }
    vxkrn::SavePlan plan = {};
    const int status = vxkrn::PlanSave(*bitmap, options, &plan);
    if (status != STATUS_OK) return status;
    const vxkrn::Backend& backend = vxkrn::InstalledBackend();
    const bool inPlace = (options != nullptr && options->in_place != 0) || !vxkrn::AreSystemFiles(backend);
    return inPlace ? vxkrn::WriteThrough(backend, path, &plan) : vxkrn::SaveInPlaceOf(path, &plan);
  });
}

int vx_save_memory(const vx_bitmap* bitmap, const vx_save_options* options, uint8_t** bytes, size_t* size) {
  return vxkrn::Guarded([&]() -> int {
    if (bytes != nullptr) *bytes = nullptr;
    if (size != nullptr) *size = 0;
    if (bitmap == nullptr || bytes == nullptr || size == nullptr) {
      return vxkrn::Fail(VX_BAD_PARAMETER, "the bitmap and the places for bytes and size must be given");
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
