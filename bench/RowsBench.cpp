// The row decoder against tight loops over the same data.
#include "RowsBench.h"

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>

#include "MemoryKernel.h"
#include "ReferenceDecoders.h"

namespace {

using Bytes = std::vector<uint8_t>;
using ReadRawData = int (*)(_LOADDISPATCH*, HANDLE, int, int, int, int, int, unsigned short);

uint32_t g_check = 0;  // what the rows came to, so that no decoding can be left out

void Check(const uint8_t* row, int stride) {
  g_check = g_check * 31 + row[0] + row[stride / 2] + row[stride - 1];
}

int TakeRow(IMAGEINFO*, _BITMAPHANDLE*, unsigned char* row, unsigned int, int, int, void* stride) {
  Check(row, *static_cast<int*>(stride));
  return STATUS_OK;
}

struct Case {
  std::string name;
  int bitsPerPixel;
  int compression;
  int convert;
  Bytes data;
  void (*reference)(const Bytes&, int, int, bench::RowSink);
};

constexpr int kWidth = 2048;
constexpr int kRows = 2048;

/// Rows of codes: runs of 1 to longestRun pixels, every literalShare-th code a literal instead.
Bytes Codes(int bitsPerPixel, int longestRun, int literalShare) {
  std::mt19937 random(7);
  const auto upTo = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  Bytes data;
  const auto put = [&](int byte) { data.push_back(static_cast<uint8_t>(byte)); };
  for (int row = 0; row < kRows; ++row) {
    for (int x = 0; x < kWidth;) {
      int n = std::min(1 + upTo(longestRun), kWidth - x);
      if (n >= 3 && literalShare != 0 && upTo(literalShare) == 0) {
        put(0), put(n);
        const int bytes = bitsPerPixel == 8 ? n : (n + 1) / 2;
        for (int i = 0; i < bytes; ++i) put(upTo(256));
        if (bytes % 2 != 0) put(0);
      } else {
        put(n), put(upTo(256));
      }
      x += n;
    }
    put(0), put(row + 1 == kRows ? 1 : 0);
  }
  return data;
}

Bytes Noise(int stride) {
  std::mt19937 random(9);
  Bytes data(static_cast<size_t>(stride) * kRows);
  for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
  return data;
}

int StrideOf(int bitsPerPixel) {
  return kWidth * bitsPerPixel / 8;
}

bool Measure(Case& c, ReadRawData readRawData) {
  int stride = StrideOf(c.bitsPerPixel);
  _BITMAPHANDLE bitmap{};
  bitmap.Width = kWidth;
  bitmap.Height = kRows;
  LOADOPTIONS options{};
  _LOADDISPATCH dispatch{};
  dispatch.Bitmap = &bitmap;
  dispatch.LoadOptions = &options;
  dispatch.RowCallback = TakeRow;
  dispatch.UserData = &stride;
  dispatch.ReadBufferSize = 1 << 16;
  dispatch.RedMask = 0x1F;  // red lowest: every pixel is converted
  dispatch.GreenMask = 0x3E0;
  dispatch.BlueMask = 0x7C00;

  int status = STATUS_OK;
  g_check = 0;
  const double filter = bench::BestTime([&] {
    tagHANDLE file{c.data, 0};
    status = readRawData(&dispatch, &file, kWidth, kRows, c.bitsPerPixel, c.compression, c.convert, 0x4D42);
  });
  const uint32_t filterCheck = g_check;
  g_check = 0;
  const double reference = bench::BestTime([&] { c.reference(c.data, stride, kRows, Check); });

  const double megapixels = 1e-6 * kWidth * kRows;
  std::printf("%-34s %6.2f x   (%7.0f against %7.0f Mpixel/s)\n", c.name.c_str(), filter / reference,
              megapixels / filter, megapixels / reference);
  if (status == STATUS_OK && filterCheck == g_check) return true;
  std::printf("  the rows differ, or status %d\n", status);
  return false;
}

}  // namespace

bool bench::MeasureDecoders(void* filter) {
  const auto readRawData = SymbolOf<ReadRawData>(filter, "_Z11ReadRawDataP13_LOADDISPATCHP9tagHANDLEiiiiit");
  if (readRawData == nullptr) return false;
  Case cases[] = {
      {"RLE8, runs of 1 to 8", 8, 1, 0, Codes(8, 8, 0), bench::DecodeRle8},
      {"RLE8, runs of 1 to 64", 8, 1, 0, Codes(8, 64, 0), bench::DecodeRle8},
      {"RLE8, runs of 1 to 255", 8, 1, 0, Codes(8, 255, 0), bench::DecodeRle8},
      {"RLE8, half literals, 1 to 16", 8, 1, 0, Codes(8, 16, 2), bench::DecodeRle8},
      {"RLE8, literals up to 255", 8, 1, 0, Codes(8, 255, 1), bench::DecodeRle8},
      {"RLE4, runs of 1 to 8", 4, 2, 0, Codes(4, 8, 0), bench::DecodeRle4},
      {"RLE4, runs of 1 to 64", 4, 2, 0, Codes(4, 64, 0), bench::DecodeRle4},
      {"RLE4, half literals, 1 to 16", 4, 2, 0, Codes(4, 16, 2), bench::DecodeRle4},
      {"RLE4, literals up to 255", 4, 2, 0, Codes(4, 255, 1), bench::DecodeRle4},
      {"16-bit fields to 5-5-5", 16, 3, 1, Noise(StrideOf(16)), bench::Convert565},
      {"24-bit rows (against memcpy)", 24, 0, 0, Noise(StrideOf(24)), bench::CopyRows},
  };
  std::printf("time of the row decoder / time of a tight loop over memory\n");
  bool allRight = true;
  for (Case& c : cases) allRight = Measure(c, readRawData) && allRight;
  return allRight;
}
