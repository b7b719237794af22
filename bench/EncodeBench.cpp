// The run-length encoders, in whole saves, against a loop that looks for runs a byte at a time and appends
// its codes to memory.
#include <cstring>
#include <random>
#include <vector>

#include "MemoryKernel.h"
#include "RowsBench.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Save = int (*)(_SAVEDISPATCH*);

constexpr int kRowBytes = 2048;
constexpr int kRows = 2048;

/// The picture being saved: one function for every depth, for rows are bytes to the encoders.
struct Picture {
  _BITMAPHANDLE bitmap;
  _SAVEFILESTRUCT saveFile;
  Bytes pixels;
  Bytes row;
} picture;

int BeginSave(_BITMAPHANDLE*, _BITMAPHANDLE** converted, int, unsigned int*, unsigned char** rowBuffer, int,
              int, int, _SAVEFILESTRUCT** saveFile) {
  *converted = &picture.bitmap;
  *rowBuffer = picture.row.data();
  *saveFile = &picture.saveFile;
  return STATUS_OK;
}
int GetSaveRow(_BITMAPHANDLE*, _BITMAPHANDLE*, unsigned char* rowBuffer, int row, int, unsigned int, int, int,
               _SAVEFILESTRUCT*) {
  std::memcpy(rowBuffer, picture.pixels.data() + static_cast<size_t>(row) * kRowBytes, kRowBytes);
  return STATUS_OK;
}
int EndSave(_BITMAPHANDLE*, _BITMAPHANDLE**, unsigned int*, unsigned char**, _SAVEFILESTRUCT**) {
  return STATUS_OK;
}

/// Bytes in runs of 1 to longestRun.
Bytes Runs(unsigned longestRun) {
  std::mt19937 random(11);
  Bytes pixels(size_t{kRowBytes} * kRows);
  for (size_t i = 0; i < pixels.size();) {
    const auto value = static_cast<uint8_t>(random());
    for (auto n = 1 + random() % longestRun; n > 0 && i < pixels.size(); --n) pixels[i++] = value;
  }
  return pixels;
}

struct Coding {
  int bitsPerPixel;
  size_t shortestRun, longestRun, longestLiteral, mostSingles, pixelsPerByte;
};
constexpr Coding kRle8 = {8, 4, 255, 254, 2, 1};
constexpr Coding kRle4 = {4, 2, 127, 127, 1, 2};

void AppendLiterals(const Coding& coding, const uint8_t* bytes, size_t count, Bytes& out) {
  while (count > coding.mostSingles) {
    const size_t part = std::min(count, coding.longestLiteral);
    out.push_back(0);
    out.push_back(static_cast<uint8_t>(part * coding.pixelsPerByte));
    out.insert(out.end(), bytes, bytes + part);
    if (part % 2 != 0) out.push_back(0);
    bytes += part;
    count -= part;
  }
  for (; count > 0; --count) {
    out.push_back(static_cast<uint8_t>(coding.pixelsPerByte));
    out.push_back(*bytes++);
  }
}

void AppendRow(const Coding& coding, const uint8_t* row, Bytes& out) {
  size_t literals = 0;
  for (size_t at = 0; at < kRowBytes;) {
    size_t run = 1;
    while (at + run < kRowBytes && row[at + run] == row[at]) ++run;
    if (run < coding.shortestRun) {
      literals += run;
      at += run;
      continue;
    }
    AppendLiterals(coding, row + at - literals, literals, out);
    literals = 0;
    for (size_t left = run; left > 0;) {
      const size_t part = std::min(left, coding.longestRun);
      out.push_back(static_cast<uint8_t>(part * coding.pixelsPerByte));
      out.push_back(row[at]);
      left -= part;
    }
    at += run;
  }
  AppendLiterals(coding, row + kRowBytes - literals, literals, out);
  out.push_back(0);
  out.push_back(0);
}

bool Measure(const char* name, const Coding& coding, unsigned longestRun, Save save) {
  picture.pixels = Runs(longestRun);
  picture.row.resize(kRowBytes);
  picture.bitmap = {};
  picture.bitmap.Width = kRowBytes * static_cast<int>(coding.pixelsPerByte);
  picture.bitmap.Height = kRows;
  picture.bitmap.BitsPerPixel = coding.bitsPerPixel;
  picture.bitmap.BytesPerLine = kRowBytes;
  picture.bitmap.Orientation = ORIENT_BOTTOM_UP;
  Bytes written(picture.pixels.size() * 2 + 4096);
  bench::theFile = {written, 0};
  _SAVEDISPATCH dispatch{};
  dispatch.FileName = "";
  dispatch.Bitmap = &picture.bitmap;
  dispatch.BitsPerPixel = coding.bitsPerPixel;
  dispatch.Format = FMT_BMP_RLE;
  dispatch.BeginSave = BeginSave;
  dispatch.GetSaveRow = GetSaveRow;
  dispatch.EndSave = EndSave;

  int status = STATUS_OK;
  const double filter = bench::BestTime([&] {
    bench::theFile.position = 0;
    status = save(&dispatch);
  });
  Bytes expected;
  expected.reserve(written.size());
  const double reference = bench::BestTime([&] {
    expected.clear();
    for (int row = 0; row < kRows; ++row) {
      AppendRow(coding, picture.pixels.data() + static_cast<size_t>(row) * kRowBytes, expected);
    }
  });
  const double megabytes = 1e-6 * kRowBytes * kRows;
  std::printf("%-34s %6.2f x   (%7.0f against %7.0f Mbyte/s)\n", name, filter / reference, megabytes / filter,
              megabytes / reference);
  const size_t start = 54 + (size_t{4} << coding.bitsPerPixel);
  if (status == STATUS_OK &&
      std::equal(expected.begin(), expected.end(), written.begin() + static_cast<std::ptrdiff_t>(start))) {
    return true;
  }
  std::printf("  the codes differ, or status %d\n", status);
  return false;
}

}  // namespace

bool bench::MeasureEncoders(void* filter) {
  const auto save = SymbolOf<Save>(filter, "fltSave");
  if (save == nullptr) return false;
  std::printf("time of a run-length coded save / time of a loop that appends the codes to memory\n");
  bool allRight = Measure("RLE8, noise", kRle8, 1, save);
  allRight = Measure("RLE8, runs of 1 to 8", kRle8, 8, save) && allRight;
  allRight = Measure("RLE8, runs of 1 to 64", kRle8, 64, save) && allRight;
  allRight = Measure("RLE8, runs of 1 to 1000", kRle8, 1000, save) && allRight;
  allRight = Measure("RLE4, noise", kRle4, 1, save) && allRight;
  allRight = Measure("RLE4, runs of 2 to 16", kRle4, 8, save) && allRight;
  allRight = Measure("RLE4, runs of 2 to 2000", kRle4, 1000, save) && allRight;
  return allRight;
}
