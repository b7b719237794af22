// One save, ready to be made.
#pragma once

#include <gtest/gtest.h>

#include "Rig.h"

class SaveRig {
 public:
  SaveRig(int format, int bits, int width, int height) {
    bitmap.Width = width;
    bitmap.Height = height;
    bitmap.BitsPerPixel = 24;
    bitmap.ColorOrder = ORDER_BGR;
    bitmap.Orientation = ORIENT_BOTTOM_UP;
    options.StructSize = sizeof options;
    dispatch.FileName = FakeKernel::kFileName;
    dispatch.Bitmap = &bitmap;
    dispatch.BitsPerPixel = bits;
    dispatch.Format = format;
    dispatch.ConvertArg1 = 11;
    dispatch.ConvertArg2 = 12;
    dispatch.SaveOptions = &options;
    dispatch.BeginSave = FakeBeginSave;
    dispatch.GetSaveRow = FakeGetSaveRow;
    dispatch.EndSave = FakeEndSave;
    dispatch.SaveToMemory = FakeSaveToMemory;
    kernel.saved.converted.BytesPerLine = RowSize();
    kernel.saved.converted.ColorCount = 2;  // as if it said so at every depth
    kernel.saved.converted.XResolution = 96;
    kernel.saved.converted.YResolution = 300;
    kernel.saved.maskBytesPerLine = MaskRowSize();
    for (int i = 0; i < 256; ++i) {
      const auto byte = static_cast<unsigned char>(i);
      kernel.saved.saveFile.Palette[i] = {byte, static_cast<unsigned char>(255 - i), 7, 0};
    }
  }

  int Save() {
    kernel.StartCall();
    const int status = TheFilter().save(&dispatch);
    EXPECT_EQ(kernel.Verdict(), "");
    return status;
  }

  [[nodiscard]] int RowSize() const { return (bitmap.Width * dispatch.BitsPerPixel + 31) / 32 * 4; }
  [[nodiscard]] int MaskRowSize() const { return (bitmap.Width + 31) / 32 * 4; }

  FakeKernel kernel;
  _BITMAPHANDLE bitmap{};
  SAVEOPTIONS options{};
  _SAVEDISPATCH dispatch{};
};
