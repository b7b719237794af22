// Prepares records and makes calls.
#include "Rig.h"

#include <gtest/gtest.h>

namespace {

/// Makes a call that may use a file that is open already.
template <class Call>
int Make(FakeKernel& kernel, Call call) {
  kernel.StartCall();
  const HANDLE file = kernel.HandOver();
  const int status = call(file);
  EXPECT_EQ(kernel.Verdict(), "");
  kernel.TakeBack(file);
  return status;
}

}  // namespace

Rig::Rig() {
  load.FileName = save.FileName = FakeKernel::kFileName;
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

  saveOptions.StructSize = sizeof saveOptions;
  save.Bitmap = &bitmap;
  save.ConvertArg1 = 11;
  save.ConvertArg2 = 12;
  save.SaveOptions = &saveOptions;
  save.BeginSave = FakeBeginSave;
  save.GetSaveRow = FakeGetSaveRow;
  save.EndSave = FakeEndSave;
  save.SaveToMemory = FakeSaveToMemory;
  for (int i = 0; i < 256; ++i) {
    const auto byte = static_cast<unsigned char>(i);
    kernel.saved.saveFile.Palette[i] = {byte, static_cast<unsigned char>(255 - i), 7, 0};
  }
}

void Rig::Target(int width, int height, int bits, int order) {
  kernel.target = Record(width, height, bits, order);
}

void Rig::Picture(int format, int bits, int width, int height) {
  bitmap = Record(width, height, 24, ORDER_BGR);
  save.BitsPerPixel = bits;
  save.Format = format;
  kernel.saved.converted.BytesPerLine = FileRowSize();
  kernel.saved.converted.ColorCount = 2;  // as if it said so at every depth
  kernel.saved.converted.XResolution = 96;
  kernel.saved.converted.YResolution = 300;
  kernel.saved.maskBytesPerLine = MaskRowSize();
}

int Rig::Identify() {
  return Make(kernel, [this](HANDLE file) {
    file->position = 7;  // anywhere: the filter goes to the start itself
    _INFODISPATCH dispatch{};
    dispatch.StructSize = sizeof dispatch;
    dispatch.File = file;
    dispatch.FileInfo = &info;
    dispatch.LoadOptions = &options;
    dispatch.GetPngInfoFromMemory = FakeGetPngInfo;
    return fltInfo(&dispatch);
  });
}

int Rig::Load() {
  return Make(kernel, [this](HANDLE) { return fltLoad(&load); });
}

int Rig::Decode(const RowImage& image) {
  kernel.rowBytes = image.Stride();
  return Make(kernel, [&](HANDLE file) {
    return ReadRawData(&load, file, image.width, image.height, image.bits, image.compression,
                       image.conversion, image.signature);
  });
}

int Rig::ReadHeader(Bytes& buffer, unsigned capacity, unsigned size) {
  return Make(kernel, [&](HANDLE file) {
    const int result = ReadBMPHeader(file, buffer.data(), capacity, size);
    Put(buffer, file->position, 1);
    return result;
  });
}

int Rig::Save(unsigned pageFlags, int page) {
  saveOptions.Flags = pageFlags;
  saveOptions.PageNumber = page;
  return Make(kernel, [this](HANDLE) { return fltSave(&save); });
}

int Rig::Delete(int page) {
  _DELETEPAGEDISPATCH request = {FakeKernel::kFileName, page};
  return Make(kernel, [&](HANDLE) { return fltDeletePage(&request); });
}

Bytes Hex(std::string_view digits) {
  Bytes bytes;
  std::string pair;
  for (const char c : digits) {
    if (c != ' ') pair += c;
    if (pair.size() < 2) continue;
    bytes.push_back(static_cast<uint8_t>(std::stoi(pair, nullptr, 16)));
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

void Put(Bytes& bytes, uint64_t value, int size) {
  for (int i = 0; i < size; ++i) bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

Bytes Part(const Bytes& bytes, std::size_t at, std::size_t count) {
  if (at > bytes.size() || count > bytes.size() - at) return {};
  const auto begin = bytes.begin() + static_cast<std::ptrdiff_t>(at);
  return {begin, begin + static_cast<std::ptrdiff_t>(count)};
}
