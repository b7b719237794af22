// One call of the filter, ready to be made: the filter's functions as they are exported, records with
// their callbacks, a fake kernel. Also the builders of the files that the tests read.
#pragma once

#include <string>
#include <string_view>

#include "FakeKernel.h"

/** What the module exports; looked up once in the built filter. */
struct Filter {
  int (*info)(_INFODISPATCH*);
  int (*load)(_LOADDISPATCH*);
  int (*readHeader)(HANDLE, unsigned char*, unsigned int, unsigned int);
  int (*verifyMasks)(unsigned int*, int*, int*, int);
  int (*bytesPerLine)(int, int, int);
  int (*readRaw)(_LOADDISPATCH*, HANDLE, int, int, int, int, int, unsigned short);
  int (*isPng)(unsigned char*);
  int (*save)(_SAVEDISPATCH*);
  int (*deletePage)(_DELETEPAGEDISPATCH*);
  int (*display)(_DISDISPATCH*, HANDLE&);
  _BITMAPHANDLE* (*createMask)(_BITMAPHANDLE*);
  void (*freeMask)(_BITMAPHANDLE*);
  void (*invert)(unsigned char*, unsigned int);
};
const Filter& TheFilter();

/** The arguments of ReadRawData. */
struct RowImage {
  int width = 1;
  int height = 1;
  int bits = 8;
  int compression = 0;
  int conversion = 0;
  unsigned short signature = 0x4D42;

  [[nodiscard]] std::size_t Stride() const;
};

class Rig {
 public:
  Rig();

  FakeKernel kernel;
  _LOADDISPATCH load{};
  LOADOPTIONS options{};
  IMAGEINFO info{};

  /** Makes the target what the kernel would prepare for such an image. */
  void Target(int width, int height, int bits, int order = ORDER_BGR);
  // Each makes one call and fails the test when the call leaves anything behind.
  int Identify();
  int Load();
  int Decode(const RowImage& image);
};

/** The bytes written as hexadecimal digits; blanks are for the reader. */
Bytes Hex(std::string_view digits);
std::string ToHex(const Bytes& bytes);
void Put(Bytes& bytes, std::uint64_t value, int size);
/** Those bytes; none where they are not all there. */
Bytes Part(const Bytes& bytes, std::size_t at, std::size_t count);
Bytes Repeat(std::size_t count, std::uint8_t value);
Bytes Join(std::initializer_list<Bytes> parts);
Bytes Words(std::initializer_list<std::uint32_t> words);

/** A header, and what lies around it in the file. */
struct Header {
  std::uint32_t size = 40;
  int width = 4;
  int height = 2;
  unsigned bits = 24;
  std::uint32_t compression = 0;
  std::uint32_t imageSize = 0;
  std::uint32_t xPixelsPerMetre = 0;
  std::uint32_t yPixelsPerMetre = 0;
  std::uint32_t colorsUsed = 0;

  /** The header's bytes; of a size above 128 only the first 128. */
  [[nodiscard]] Bytes Encode() const;
};

struct BitmapFile {
  Header header;
  Bytes afterHeader = {};  // masks or palette
  Bytes pixels = {};
  bool inArray = false;
  std::optional<std::uint32_t> dataOffset = std::nullopt;  // without: right where the pixels are

  [[nodiscard]] Bytes Encode() const;
};

struct IconPage {
  Bytes body;
  unsigned width = 16;  // the bytes of the directory entry
  unsigned height = 16;
  unsigned colorCount = 0;
  unsigned bitCount = 0;
  std::optional<std::uint32_t> length = std::nullopt;  // without: the body's
  std::optional<std::uint32_t> offset = std::nullopt;  // without: where the body is
};

Bytes IconFile(unsigned type, const std::vector<IconPage>& pages);
/** A PNG signature and some bytes. */
Bytes PngBody(std::size_t length = 20);
