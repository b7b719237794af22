// Looks up the filter, makes calls and builds files. The builders write what they are told, wrong
// files too; they check nothing.
#include "Rig.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace {

template <class Function>
void Find(void* module, const char* name, Function& function) {
  void* symbol = dlsym(module, name);
  if (symbol == nullptr) ADD_FAILURE() << "the filter does not export " << name;
  function = reinterpret_cast<Function>(symbol);
}

}  // namespace

const Filter& TheFilter() {
  static const Filter filter = [] {
    Filter found{};
    void* module = dlopen(VX_FILTER_PATH, RTLD_NOW | RTLD_LOCAL);
    if (module == nullptr) {
      ADD_FAILURE() << dlerror();
      std::abort();
    }
    Find(module, "fltInfo", found.info);
    Find(module, "fltLoad", found.load);
    Find(module, "_Z13ReadBMPHeaderP9tagHANDLEPhjj", found.readHeader);
    Find(module, "_Z16VerifyColorMasksPjPiS0_i", found.verifyMasks);
    Find(module, "_Z15GetBytesPerLineiii", found.bytesPerLine);
    Find(module, "_Z11ReadRawDataP13_LOADDISPATCHP9tagHANDLEiiiiit", found.readRaw);
    Find(module, "_Z11IsPNGHeaderPh", found.isPng);
    Find(module, "fltSave", found.save);
    Find(module, "fltDeletePage", found.deletePage);
    Find(module, "_Z18GetDisplayDispatchP12_DISDISPATCHRP9tagHANDLE", found.display);
    Find(module, "_Z16CreateMaskBitmapP13_BITMAPHANDLE", found.createMask);
    Find(module, "_Z14FreeMaskBitmapP13_BITMAPHANDLE", found.freeMask);
    Find(module, "_Z12InvertBufferPhj", found.invert);
    return found;
  }();
  return filter;
}

std::size_t RowImage::Stride() const {
  return static_cast<std::size_t>((std::int64_t{width} * bits + 31) / 32 * 4);
}

Rig::Rig() {
  load.FileName = FakeKernel::kFileName;
  load.Bitmap = &kernel.target;
  load.RowCallback = FakeRowCallback;
  load.UserData = &kernel;
  load.ReadBufferSize = 64;
  load.FileInfo = &info;
  load.LoadOptions = &options;
  load.LoadPngFromMemory = FakeLoadPng;
  info.StructSize = sizeof info;
  options.StructSize = sizeof options;
  Target(4, 2, 24);
}

void Rig::Target(int width, int height, int bits, int order) {
  kernel.target = {};
  kernel.target.StructSize = sizeof kernel.target;
  kernel.target.Width = width;
  kernel.target.Height = height;
  kernel.target.BitsPerPixel = bits;
  kernel.target.BytesPerLine = (width * bits + 31) / 32 * 4;
  kernel.target.Orientation = ORIENT_BOTTOM_UP;
  kernel.target.ColorOrder = order;
}

int Rig::Identify() {
  kernel.StartCall();
  const HANDLE file = kernel.HandOver();
  file->position = 7;  // anywhere: the filter goes to the start itself
  _INFODISPATCH dispatch{};
  dispatch.StructSize = sizeof dispatch;
  dispatch.File = file;
  dispatch.FileInfo = &info;
  dispatch.LoadOptions = &options;
  dispatch.GetPngInfoFromMemory = FakeGetPngInfo;
  const int status = TheFilter().info(&dispatch);
  EXPECT_EQ(kernel.Verdict(), "");
  kernel.TakeBack(file);
  return status;
}

int Rig::Load() {
  kernel.StartCall();
  const int status = TheFilter().load(&load);
  EXPECT_EQ(kernel.Verdict(), "");
  return status;
}

int Rig::Decode(const RowImage& image) {
  kernel.StartCall();
  kernel.rowBytes = image.Stride();
  const HANDLE file = kernel.HandOver();
  const int status = TheFilter().readRaw(&load, file, image.width, image.height, image.bits,
                                         image.compression, image.conversion, image.signature);
  EXPECT_EQ(kernel.Verdict(), "");
  kernel.TakeBack(file);
  return status;
}

Bytes Hex(std::string_view digits) {
  Bytes bytes;
  std::string pair;
  for (const char c : digits) {
    if (c != ' ') pair += c;
    if (pair.size() < 2) continue;
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(pair, nullptr, 16)));
    pair.clear();
  }
  return bytes;
}

std::string ToHex(const Bytes& bytes) {
  std::string text;
  for (const auto byte : bytes) {
    text += "0123456789abcdef"[byte / 16];
    text += "0123456789abcdef"[byte % 16];
  }
  return text;
}

void Put(Bytes& bytes, std::uint64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

Bytes Part(const Bytes& bytes, std::size_t at, std::size_t count) {
  if (at + count > bytes.size()) return {};
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}

Bytes Repeat(std::size_t count, std::uint8_t value) {
  return Bytes(count, value);
}

Bytes Join(std::initializer_list<Bytes> parts) {
  Bytes whole;
  for (const auto& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}

Bytes Words(std::initializer_list<std::uint32_t> words) {
  Bytes bytes;
  for (const auto word : words) Put(bytes, word, 4);
  return bytes;
}

Bytes Header::Encode() const {
  Bytes bytes;
  Put(bytes, size, 4);
  const int side = size == 12 ? 2 : 4;
  Put(bytes, static_cast<std::uint32_t>(width), side);
  Put(bytes, static_cast<std::uint32_t>(height), side);
  Put(bytes, 1, 2);
  Put(bytes, bits, 2);
  for (const auto word : {compression, imageSize, xPixelsPerMetre, yPixelsPerMetre, colorsUsed, 0U})
    Put(bytes, word, 4);
  bytes.resize(std::min<std::size_t>(size, 128));
  return bytes;
}

Bytes BitmapFile::Encode() const {
  const Bytes encodedHeader = header.Encode();
  const std::size_t pixelsAt = (inArray ? 28U : 14U) + encodedHeader.size() + afterHeader.size();
  Bytes fileHeader = Hex("424d 00000000 00000000");
  Put(fileHeader, dataOffset.value_or(static_cast<std::uint32_t>(pixelsAt)), 4);
  const Bytes arrayHeader = inArray ? Hex("4241 28000000 00000000 00000000") : Bytes{};
  return Join({arrayHeader, fileHeader, encodedHeader, afterHeader, pixels});
}

Bytes IconFile(unsigned type, const std::vector<IconPage>& pages) {
  Bytes directory;
  Put(directory, 0, 2);
  Put(directory, type, 2);
  Put(directory, pages.size(), 2);
  Bytes bodies;
  for (const auto& page : pages) {
    for (const auto byte : {page.width, page.height, page.colorCount, 0U}) Put(directory, byte, 1);
    Put(directory, 1, 2);
    Put(directory, page.bitCount, 2);
    Put(directory, page.length.value_or(static_cast<std::uint32_t>(page.body.size())), 4);
    const std::size_t here = 6 + 16 * pages.size() + bodies.size();
    Put(directory, page.offset.value_or(static_cast<std::uint32_t>(here)), 4);
    bodies = Join({bodies, page.body});
  }
  return Join({directory, bodies});
}

Bytes PngBody(std::size_t length) {
  Bytes body = Hex("89504e470d0a1a0a");
  body.resize(std::max(length, body.size()), 0x33);
  return body;
}
