// The filter's saves, with rows and file in memory, against a loop that looks for runs a byte at a time and
// appends its codes to memory, or that copies rows.
#include <algorithm>
#include <cstring>
#include <memory>
#include <random>

#include "MemoryKernel.h"
#include "Rows.h"
#include "TightLoops.h"

namespace bench {
namespace {

using Save = int (*)(_SAVEDISPATCH*);

/// The picture being saved: one function for every depth, for rows are bytes to the encoders.
struct Picture {
  _BITMAPHANDLE bitmap;
  _SAVEFILESTRUCT saveFile;
  Bytes pixels;
  Bytes row;
  size_t rowBytes;
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
  std::memcpy(rowBuffer, picture.pixels.data() + static_cast<size_t>(row) * picture.rowBytes,
              picture.rowBytes);
  return STATUS_OK;
}
int EndSave(_BITMAPHANDLE*, _BITMAPHANDLE**, unsigned int*, unsigned char**, _SAVEFILESTRUCT**) {
  return STATUS_OK;
}

struct Case {
  const char* name;
  int bitsPerPixel;
  int format;
  const Coding* coding;  ///< null: rows are copied
  unsigned longestRun;   ///< bytes; runs have 1 to so many
};

constexpr Case kCases[] = {
    {"filter's save: 8 bits", 8, FMT_BMP, nullptr, 1},
    {"filter's save: 24 bits", 24, FMT_BMP, nullptr, 1},
    {"filter's save: RLE8, noise", 8, FMT_BMP_RLE, &kRle8, 1},
    {"filter's save: RLE8, runs of 1 to 8", 8, FMT_BMP_RLE, &kRle8, 8},
    {"filter's save: RLE8, runs of 1 to 64", 8, FMT_BMP_RLE, &kRle8, 64},
    {"filter's save: RLE8, runs of 1 to 1000", 8, FMT_BMP_RLE, &kRle8, 1000},
    {"filter's save: RLE4, noise", 4, FMT_BMP_RLE, &kRle4, 1},
    {"filter's save: RLE4, runs of 2 to 16", 4, FMT_BMP_RLE, &kRle4, 8},
    {"filter's save: RLE4, runs of 2 to 2000", 4, FMT_BMP_RLE, &kRle4, 1000},
};

/// Bytes in runs of 1 to longestRun.
Bytes Runs(size_t size, unsigned longestRun) {
  std::mt19937 random(11);
  Bytes pixels(size);
  for (size_t i = 0; i < pixels.size();) {
    const auto value = static_cast<uint8_t>(random());
    for (auto n = 1 + random() % longestRun; n > 0 && i < pixels.size(); --n) pixels[i++] = value;
  }
  return pixels;
}

struct Work {
  Bytes written;
  Bytes expected;
  _SAVEDISPATCH dispatch{};
};

void Begin(const Case& c, int side, Work& work) {
  picture.rowBytes = static_cast<size_t>(side) * static_cast<size_t>(c.bitsPerPixel) / 8;
  picture.pixels = Runs(picture.rowBytes * static_cast<size_t>(side), c.longestRun);
  picture.row.resize(picture.rowBytes);
  picture.bitmap = {};
  picture.bitmap.Width = picture.bitmap.Height = side;
  picture.bitmap.BitsPerPixel = c.bitsPerPixel;
  picture.bitmap.BytesPerLine = static_cast<int>(picture.rowBytes);
  picture.bitmap.Orientation = ORIENT_BOTTOM_UP;
  work.written.resize(picture.pixels.size() * 2 + 4096);
  work.expected.reserve(work.written.size());
  work.dispatch.FileName = "";
  work.dispatch.Bitmap = &picture.bitmap;
  work.dispatch.BitsPerPixel = c.bitsPerPixel;
  work.dispatch.Format = c.format;
  work.dispatch.BeginSave = BeginSave;
  work.dispatch.GetSaveRow = GetSaveRow;
  work.dispatch.EndSave = EndSave;
}

bool Loop(const Case& c, int side, Bytes& out) {
  out.clear();
  for (int row = 0; row < side; ++row) {
    const uint8_t* bytes = picture.pixels.data() + static_cast<size_t>(row) * picture.rowBytes;
    if (c.coding != nullptr) {
      AppendCodes(*c.coding, bytes, picture.rowBytes, out);
    } else {
      out.insert(out.end(), bytes, bytes + picture.rowBytes);
    }
  }
  return true;
}

Row MakeRow(const Case& c, const Options& options, Save save) {
  const auto work = std::make_shared<Work>();
  const int side = options.side / 2;
  Begin(c, side, *work);
  const auto filter = [work, save] {
    theFile = {work->written, 0, -1};
    return save(&work->dispatch) == STATUS_OK;
  };
  const auto compare = [work, &c] {
    const size_t start = c.bitsPerPixel > 8 ? 54 : 54 + (size_t{4} << c.bitsPerPixel);
    Finding finding;
    if (!std::equal(work->expected.begin(), work->expected.end(),
                    work->written.begin() + static_cast<std::ptrdiff_t>(start))) {
      finding.fault = "writes other codes";
    }
    return finding;
  };
  return {"",
          "pixel",
          static_cast<double>(side) * side,
          c.coding != nullptr ? 0.6 : 0.7,
          0,
          {{Kind::Tight, "tight loop", [work, &c, side] { return Loop(c, side, work->expected); }},
           {Kind::Ours, "fltSave", filter, compare}}};
}

}  // namespace

void AddEncoderRows(void* filter, std::vector<RowMaker>& rows) {
  const auto save = SymbolOf<Save>(filter, "fltSave");
  if (save == nullptr) return;
  for (const Case& c : kCases) {
    rows.push_back({c.name, [&c, save](const Options& options) { return MakeRow(c, options, save); }});
  }
}

}  // namespace bench
