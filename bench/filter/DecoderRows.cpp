// The row decoder against tight loops over the same file, whose pages the system has in memory.
#include <fcntl.h>
#include <unistd.h>

#include <memory>
#include <random>

#include "MemoryKernel.h"
#include "Rows.h"
#include "TightLoops.h"

namespace bench {
namespace {

using ReadRawData = int (*)(_LOADDISPATCH*, HANDLE, int, int, int, int, int, unsigned short);
using Reference = void (*)(int file, int stride, int rows, RowSink sink);

bool g_isThorough = false;  // every byte counts in what is looked at, few where it is timed
uint64_t g_check = 0;       // what the rows came to, so that no decoding can be left out

void Check(const uint8_t* row, int stride) {
  g_check = g_check * 31 + row[0] + row[stride / 2] + row[stride - 1];
  for (int i = 0; g_isThorough && i < stride; ++i) g_check = g_check * 31 + row[i];
}

int TakeRow(IMAGEINFO*, _BITMAPHANDLE*, unsigned char* row, unsigned int, int, int, void* stride) {
  Check(row, *static_cast<int*>(stride));
  return STATUS_OK;
}

/// What stands in the file, row by row from its position.
enum class Content { Noise, Codes, Literals };

struct Case {
  const char* name;
  int bitsPerPixel;
  int compression;
  int convert;
  Content content;
  int shortest, longest;  ///< pixels of a code
  int smaller;            ///< the picture's side is that of the others through so much
  double ofBound;
  Reference reference;
  const char* boundName;
};

constexpr Case kCases[] = {
    {"rows: 8 bits", 8, 0, 0, Content::Noise, 0, 0, 1, 0.85, CopyRows, "read and copy"},
    {"rows: 24 bits", 24, 0, 0, Content::Noise, 0, 0, 1, 0.85, CopyRows, "read and copy"},
    {"rows: 1 bit, small picture", 1, 0, 0, Content::Noise, 0, 0, 4, 0.85, CopyRows, "read and copy"},
    {"rows: 8 bits, small picture", 8, 0, 0, Content::Noise, 0, 0, 4, 0.85, CopyRows, "read and copy"},
    {"rows: 24 bits, small picture", 24, 0, 0, Content::Noise, 0, 0, 4, 0.85, CopyRows, "read and copy"},
    {"rows: 16-bit masks to 5-5-5", 16, 3, 1, Content::Noise, 0, 0, 1, 0.7, CopyRows, "read and copy"},
    {"rows: 16-bit masks, small picture", 16, 3, 1, Content::Noise, 0, 0, 4, 0, SwapFields, "tight loop"},
    {"rows: RLE8, literals of 3", 8, 1, 0, Content::Literals, 3, 3, 1, 0.9, DecodeRle8, "tight loop"},
    {"rows: RLE8, codes of 1 pixel", 8, 1, 0, Content::Codes, 1, 1, 1, 0.9, DecodeRle8, "tight loop"},
    {"rows: RLE8, runs of 1 to 64", 8, 1, 0, Content::Codes, 1, 64, 1, 0.9, DecodeRle8, "tight loop"},
    {"rows: RLE8, literals of 3 to 255", 8, 1, 0, Content::Literals, 3, 255, 1, 0.9, DecodeRle8,
     "tight loop"},
    {"rows: RLE4, literals of 3", 4, 2, 0, Content::Literals, 3, 3, 1, 0.9, DecodeRle4, "tight loop"},
    {"rows: RLE4, codes of 1 pixel", 4, 2, 0, Content::Codes, 1, 1, 1, 0.9, DecodeRle4, "tight loop"},
    {"rows: RLE4, runs of 1 to 64", 4, 2, 0, Content::Codes, 1, 64, 1, 0.9, DecodeRle4, "tight loop"},
    {"rows: RLE4, literals of 3 to 255", 4, 2, 0, Content::Literals, 3, 255, 1, 0.9, DecodeRle4,
     "tight loop"},
};

Bytes CodesOf(const Case& c, int side) {
  std::mt19937 random(7);
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  Bytes data;
  const auto put = [&](int byte) { data.push_back(static_cast<uint8_t>(byte)); };
  for (int row = 0; row < side; ++row) {
    for (int x = 0; x < side;) {
      const int n = std::min(c.shortest + below(c.longest - c.shortest + 1), side - x);
      const int bytes = c.bitsPerPixel == 8 ? n : (n + 1) / 2;
      x += n;
      if (c.content == Content::Codes || n < 3) {
        put(n), put(below(256));
        continue;
      }
      put(0), put(n);
      for (int i = 0; i < bytes + bytes % 2; ++i) put(below(256));
    }
    put(0), put(row + 1 == side ? 1 : 0);
  }
  return data;
}

Bytes NoiseOf(size_t size) {
  std::mt19937 random(9);
  Bytes data(size);
  for (uint8_t& byte : data) byte = static_cast<uint8_t>(random());
  return data;
}

/// One picture's rows in a file, and how to have them decoded.
class Work {
 public:
  Work(const Case& c, const Options& options, ReadRawData read)
      : case_(c),
        side_(options.isCounting ? options.side : options.side / c.smaller),
        stride_(side_ * c.bitsPerPixel / 8),
        read_(read) {
    const std::string path = options.folder + "/rows";
    const Bytes data = c.content == Content::Noise
                           ? NoiseOf(static_cast<size_t>(stride_) * static_cast<size_t>(side_))
                           : CodesOf(c, side_);
    CopyAndWrite(path, data.data(), data.size());
    file_.descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    bitmap_.Width = bitmap_.Height = side_;
    dispatch_.Bitmap = &bitmap_;
    dispatch_.LoadOptions = &options_;
    dispatch_.RowCallback = TakeRow;
    dispatch_.UserData = &stride_;
    dispatch_.ReadBufferSize = 1 << 16;
    dispatch_.RedMask = 0x1F;  // red lowest: every pixel is converted
    dispatch_.GreenMask = 0x3E0;
    dispatch_.BlueMask = 0x7C00;
  }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() { close(file_.descriptor); }

  bool Filter() {
    lseek(file_.descriptor, 0, SEEK_SET);
    return read_(&dispatch_, &file_, side_, side_, case_.bitsPerPixel, case_.compression, case_.convert,
                 0x4D42) == STATUS_OK;
  }
  bool Loop(Reference reference) {
    lseek(file_.descriptor, 0, SEEK_SET);
    reference(file_.descriptor, stride_, side_, Check);
    return true;
  }
  Finding Compare() {
    g_isThorough = true;
    g_check = 0;
    (void)Filter();  // the round before said whether it works
    const uint64_t filters = g_check;
    g_check = 0;
    Loop(case_.convert != 0 ? SwapFields : case_.reference);
    g_isThorough = false;
    Finding finding;
    if (filters != g_check) finding.fault = "reads other rows";
    return finding;
  }
  [[nodiscard]] double Pixels() const { return static_cast<double>(side_) * side_; }

 private:
  const Case& case_;
  int side_;
  int stride_;
  ReadRawData read_;
  tagHANDLE file_;
  _BITMAPHANDLE bitmap_{};
  LOADOPTIONS options_{};
  _LOADDISPATCH dispatch_{};
};

Row MakeRow(const Case& c, const Options& options, ReadRawData read) {
  const auto work = std::make_shared<Work>(c, options, read);
  const int times = options.isCounting ? 1 : c.smaller * c.smaller;  // so that small pictures take as long
  const auto repeated = [times](auto once) {
    return [times, once] {
      bool isDone = true;
      for (int i = 0; i < times; ++i) isDone = once() && isDone;
      return isDone;
    };
  };
  const Kind kind = c.reference == CopyRows ? Kind::Bound : Kind::Tight;
  return {"",
          "pixel",
          work->Pixels() * times,
          c.ofBound,
          0,
          {{kind, c.boundName, repeated([work, &c] { return work->Loop(c.reference); })},
           {Kind::Ours, "the filter's rows", repeated([work] { return work->Filter(); }),
            [work] { return work->Compare(); }}}};
}

}  // namespace

void AddDecoderRows(void* filter, std::vector<RowMaker>& rows) {
  const auto read = SymbolOf<ReadRawData>(filter, "_Z11ReadRawDataP13_LOADDISPATCHP9tagHANDLEiiiiit");
  if (read == nullptr) return;
  for (const Case& c : kCases) {
    rows.push_back({c.name, [&c, read](const Options& options) { return MakeRow(c, options, read); }});
  }
}

}  // namespace bench
