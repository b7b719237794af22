// The rows of an image in the order in which files have them, bottom row first: colours, then the mask of an
// icon. Serves new files and pages alike; the file stands where the first row goes.
#pragma once

#include "Kernel.h"
#include "Write/Conversion.h"

namespace bmp {

enum class RowForm {
  kPlain,
  kRle8,
  kRle4,
};

class RowWriter {
 public:
  /// Both must outlive the writer.
  RowWriter(const _BITMAPHANDLE& bitmap, const Conversion& conversion, RowForm form)
      : bitmap_(bitmap), conversion_(conversion), form_(form) {}

  /// Takes what memory the rows need. @return STATUS_OK or STATUS_NO_MEMORY
  [[nodiscard]] int Prepare();
  /// @return STATUS_OK, STATUS_WRITE_ERROR, or GetSaveRow's status
  [[nodiscard]] int WriteColorRows(HANDLE file);
  /// @return STATUS_OK or STATUS_WRITE_ERROR
  [[nodiscard]] int WriteMaskRows(HANDLE file, _BITMAPHANDLE* mask);

 private:
  template <class WriteOne>
  [[nodiscard]] int InFileOrder(const WriteOne& writeOne) const;
  [[nodiscard]] int WriteRow(HANDLE file) const;
  [[nodiscard]] bool WritePlainRow(HANDLE file) const;

  const _BITMAPHANDLE& bitmap_;
  const Conversion& conversion_;
  RowForm form_;
  Buffer<> strideBuffer_;  // only where the kernel's rows are longer or shorter than the file's
};

}  // namespace bmp
