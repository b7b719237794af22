// What coded rows have in common: they are counted, and end with the data.
#include "beyond/CodedReader.h"

#include "base/Errors.h"

namespace vxkrn {

int CodedReader::Skip(int rows) {
  int status = STATUS_OK;
  for (int i = 0; i < rows && status == STATUS_OK; ++i) status = Settle(DecodeRow(nullptr));
  return status;
}

int CodedReader::Settle(int status) noexcept {
  if (status == STATUS_OK) ++rowsDone_;
  if (status != STATUS_READ_ERROR) return status;
  if (memory::LastRefusal() != 0) return FailForMemory("reading it", memory::LastRefusal());
  if (rowsDone_ > 0) return status;
  const uint64_t end = DataEnd();
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_TOO_LITTLE_DATA).At(end), "of its ", height_,
              " rows not one is whole: the data ends at byte ", end);
}

}  // namespace vxkrn
