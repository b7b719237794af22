#include "filter/FilterCalls.h"

#include <cerrno>
#include <climits>
#include <cstring>

#include "base/CallRecord.h"
#include "base/Errors.h"
#include "convert/Conversion.h"
#include "files/Files.h"
#include "filter/FilterLoader.h"

namespace vxkrn {
namespace {

/// Puts a failure into words, unless a callback or service already found some.
int ExplainWrite(int status, const char* name, int error) {
  if (status == STATUS_NO_MEMORY && Detail().Empty()) FailForMemory("saving it", memory::LastRefusal());
  if (!Detail().Empty()) return NameFailure(status, name);
  const char* why = error != 0 ? std::strerror(error) : "the file functions refused it";
  switch (status) {
    case STATUS_WRITE_ERROR: return Fail(SystemCause(status, error), name, " cannot be written: ", why);
    case STATUS_OPEN_WRITE_ERROR:
      return Fail(SystemCause(status, error), name, " cannot be opened for writing: ", why);
    default:
      return Fail({status, VX_REASON_FILTER_GAVE_UP, status}, name, ": the filter gave up with status ",
                  status);
  }
}

/// Makes a call whose file services go to `backend`, and watches over what it cannot know.
template <class Call>
int Watched(const Backend& backend, const char* name, const Call& call) {
  const BackendScope scope(backend);
  (void)TakeLateWrite();
  errno = 0;
  int status = call();
  const int openError = status == STATUS_OPEN_WRITE_ERROR ? errno : 0;
  const LateWrite late = TakeLateWrite();
  // Bytes that wait are written when the filter reads next, and then it is the read that fails.
  if (late.failed && (status == STATUS_OK || status == STATUS_READ_ERROR)) status = STATUS_WRITE_ERROR;
  return status == STATUS_OK ? status : ExplainWrite(status, name, late.failed ? late.error : openError);
}

_SAVEDISPATCH DispatchOf(const char* name, SavePlan* plan) {
  _SAVEDISPATCH dispatch = {};
  dispatch.FileName = name;
  dispatch.Bitmap = &plan->shown;
  dispatch.BitsPerPixel = plan->outcome.bits_per_pixel;
  dispatch.Format = plan->outcome.format;
  dispatch.Flags = plan->rows.is565 ? SAVE_ORDER_565 : 0;
  dispatch.ConvertArg1 = plan->ConvertArg1();
  dispatch.ConvertArg2 = plan->ConvertArg2();
  dispatch.BeginSave = BeginSave;
  dispatch.GetSaveRow = GetSaveRow;
  dispatch.EndSave = EndSave;
  dispatch.SaveToMemory = SaveToMemory;
  return dispatch;
}

/// Has `writing` write a file. May throw what that throws. @return what it returns, but for what it cannot
/// know
template <class Writing>
int WriteInto(const Backend& backend, const char* name, int flags, const Writing& writing) {
  struct Closed {
    HANDLE file;
    explicit Closed(HANDLE opened) noexcept : file(opened) {}
    ~Closed() { (void)VX_RedirectedClose(file); }
    Closed(const Closed&) = delete;
    Closed& operator=(const Closed&) = delete;
  };
  return Watched(backend, name, [&]() -> int {
    HANDLE file = VX_RedirectedOpen(name, flags, 0);
    if (file == InvalidHandle()) return STATUS_OPEN_WRITE_ERROR;
    const Closed closed(file);
    return writing(file);
  });
}

bool WriteNext(HANDLE file, const unsigned char* bytes, std::size_t count) {
  if (count == 0) return true;  // which would end the file
  return count <= INT_MAX &&
         VX_RedirectedWrite(file, bytes, static_cast<unsigned int>(count)) == static_cast<int>(count);
}

bool WriteAt(HANDLE file, uint64_t position, const void* bytes, uint64_t count) {
  const bool fits = position + count <= kLastPosition;
  const auto size = static_cast<unsigned int>(count);
  const auto start = static_cast<int>(static_cast<unsigned int>(position));
  return fits && VX_RedirectedSeek(file, start, VX_SEEK_START) == start &&
         VX_RedirectedWrite(file, bytes, size) == static_cast<int>(size);
}

}  // namespace

SAVEOPTIONS NewFile() noexcept {
  SAVEOPTIONS options = {};
  options.StructSize = sizeof options;
  return options;
}

int SavePicture(const Backend& backend, const char* name, const SAVEOPTIONS& page, SavePlan* plan) {
  const Filter* filter = nullptr;
  const int status = LoadFilter(&filter);
  if (status != STATUS_OK) return status;
  SAVEOPTIONS options = page;
  _SAVEDISPATCH dispatch = DispatchOf(name, plan);
  dispatch.SaveOptions = &options;
  FilterCall context;
  context.convertArg1 = dispatch.ConvertArg1;
  context.convertArg2 = dispatch.ConvertArg2;
  context.census = &plan->census;
  const FilterCallScope scope(&context);
  return Watched(backend, name, [&] { return filter->save(&dispatch); });
}

int SavePng(const Backend& backend, const char* name, SavePlan* plan) {
  return WriteInto(backend, name, VX_OPEN_CREATE, [&](HANDLE file) {
    const PngOutput output = {file, [](void* owner, const unsigned char* bytes, std::size_t count) {
                                return WriteNext(static_cast<HANDLE>(owner), bytes, count);
                              }};
    return EncodeAsPng(plan->census, plan->outcome.bits_per_pixel, plan->ConvertArg1(), plan->ConvertArg2(),
                       plan->colorSpace, output);
  });
}

int DeletePage(const Backend& backend, const char* name, int page) {
  const Filter* filter = nullptr;
  const int status = LoadFilter(&filter);
  if (status != STATUS_OK) return status;
  _DELETEPAGEDISPATCH dispatch = {name, page};
  return Watched(backend, name, [&] { return filter->deletePage(&dispatch); });
}

int WriteFile(const Backend& backend, const char* name, int flags,
              const std::function<bool(HANDLE file)>& writing) {
  return WriteInto(backend, name, flags,
                   [&](HANDLE file) { return writing(file) ? STATUS_OK : STATUS_WRITE_ERROR; });
}

int WriteWhole(const Backend& backend, const char* name, const void* bytes, uint64_t size) {
  return WriteFile(backend, name, VX_OPEN_CREATE, [&](HANDLE file) { return WriteAt(file, 0, bytes, size); });
}

int Overwrite(const Backend& backend, const char* name, uint64_t position, const void* bytes,
              uint32_t count) {
  return WriteFile(backend, name, VX_OPEN_UPDATE,
                   [&](HANDLE file) { return WriteAt(file, position, bytes, count); });
}

}  // namespace vxkrn
