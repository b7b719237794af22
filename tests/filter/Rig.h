// Calls of the filter, ready to be made: records with their callbacks, a fake kernel.
#pragma once

#include <string>
#include <string_view>

#include "Bmp.h"
#include "FakeKernel.h"

/** The arguments of ReadRawData. */
struct RowImage {
  int width = 1;
  int height = 1;
  int bits = 8;
  int compression = 0;
  int conversion = 0;
  unsigned short signature = 0x4D42;

  [[nodiscard]] std::size_t Stride() const { return static_cast<std::size_t>(RowSize(width, bits)); }
};

class Rig {
 public:
  Rig();

  FakeKernel kernel;
  _LOADDISPATCH load{};
  LOADOPTIONS options{};
  IMAGEINFO info{};
  _SAVEDISPATCH save{};
  SAVEOPTIONS saveOptions{};
  _BITMAPHANDLE bitmap{};  // that is saved

  /** Makes the target what the kernel would prepare for such an image. */
  void Target(int width, int height, int bits, int order = ORDER_BGR);
  /** Makes the bitmap that is saved, and what its conversion comes to. */
  void Picture(int format, int bits, int width, int height);
  [[nodiscard]] int FileRowSize() const { return RowSize(bitmap.Width, save.BitsPerPixel); }
  [[nodiscard]] int MaskRowSize() const { return RowSize(bitmap.Width, 1); }

  // Each makes one call and fails the test when the call leaves anything behind.
  int Identify();
  int Load();
  int Decode(const RowImage& image);
  int ReadHeader(Bytes& buffer, unsigned capacity, unsigned size);
  int Save(unsigned pageFlags = 0, int page = 0);
  int Delete(int page);
};

/** The bytes written as hexadecimal digits; blanks are for the reader. */
Bytes Hex(std::string_view digits);
std::string ToHex(const Bytes& bytes);
void Put(Bytes& bytes, uint64_t value, int size);
void Append(Bytes& bytes, const Bytes& more);
/** Those bytes; none where they are not all there. */
Bytes Part(const Bytes& bytes, std::size_t at, std::size_t count);
