// The image being saved, as the kernel converts it to the depth asked for: prepared once, fetched row by row,
// and given up once, whatever happened between.
#pragma once

#include <vxkrn.h>

#include <cstdint>

namespace bmp {

class Conversion {
 public:
  explicit Conversion(_SAVEDISPATCH& dispatch)
      : dispatch_(dispatch),
        status_(dispatch.BeginSave(dispatch.Bitmap, &image_, dispatch.BitsPerPixel, &dispatch.Flags,
                                   &rowBuffer_, kRowsPerCall, dispatch.ConvertArg1, dispatch.ConvertArg2,
                                   &saveFile_)) {}
  ~Conversion() { dispatch_.EndSave(dispatch_.Bitmap, &image_, &dispatch_.Flags, &rowBuffer_, &saveFile_); }
  Conversion(const Conversion&) = delete;
  Conversion& operator=(const Conversion&) = delete;

  /// BeginSave's answer. Below STATUS_OK there is no image; above it there is one without rows.
  [[nodiscard]] int Status() const { return status_; }
  [[nodiscard]] _BITMAPHANDLE& Image() const { return *image_; }
  [[nodiscard]] _SAVEFILESTRUCT& SaveFile() const { return *saveFile_; }
  /// Room for one row of the image, or of its mask.
  [[nodiscard]] uint8_t* RowBuffer() const { return rowBuffer_; }

  /// Fetches stored row `row` of the bitmap into the row buffer. @return STATUS_OK, or GetSaveRow's status
  [[nodiscard]] int FetchRow(int row) const {
    return dispatch_.GetSaveRow(dispatch_.Bitmap, image_, rowBuffer_, row, kRowsPerCall, dispatch_.Flags,
                                dispatch_.ConvertArg1, dispatch_.ConvertArg2, saveFile_);
  }

 private:
  static constexpr int kRowsPerCall = 1;

  _SAVEDISPATCH& dispatch_;
  _BITMAPHANDLE* image_ = nullptr;
  uint8_t* rowBuffer_ = nullptr;
  _SAVEFILESTRUCT* saveFile_ = nullptr;
  int status_;
};

}  // namespace bmp
