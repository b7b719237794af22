// A kernel that lives in memory: it serves the filter under test, logs what is asked of it, fails on
// demand, and knows what a balanced call leaves behind. It knows nothing of the formats of files.
#pragma once

#include <vxkrn.h>

#include <climits>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

enum class Kind {
  kAlloc,
  kFree,
  kOpen,
  kRead,
  kSeek,
  kClose,
  kInitBitmap,
  kAllocateBitmap,
  kFreeBitmap,
  kAccess,
  kRelease,
  kPut,
  kGet,
  kFixedPalette,
  kPalette,
  kRegion,
  kRow,
  kPngLoad,
  kPngInfo,
  kKinds
};

/** Makes the nth event of a kind fail (from 1), and all later ones of that kind when persistent. */
struct Fault {
  static constexpr int kHalfRead = INT_MIN;  // as result of a read: half of what would have arrived

  Kind kind = Kind::kAlloc;
  int nth = 1;
  bool persistent = false;
  int result = -1;  // what the service answers; allocations and opens answer with their own failure

  [[nodiscard]] bool Strikes(int turn) const { return persistent ? turn >= nth : turn == nth; }
};

struct DeliveredRow {
  unsigned flags = 0;
  int number = 0;
  Bytes bytes;
  bool operator==(const DeliveredRow&) const = default;
};

/** The image that every PNG stream decodes to; byte i of its row r is 16 r + i. */
struct DecodedPng {
  int width = 4;
  int height = 3;
  int bits = 32;
  int colors = 0;
  bool allocated = true;
};

class FakeKernel {
 public:
  static constexpr const char* kFileName = "picture";
  static constexpr int kRefused = -777;  // RowCallback's answer once rowsAccepted rows were taken

  FakeKernel();
  ~FakeKernel();
  FakeKernel(const FakeKernel&) = delete;
  FakeKernel& operator=(const FakeKernel&) = delete;
  static FakeKernel& Current();

  // What the test prepares.
  Bytes file;
  std::optional<Fault> fault;
  int rowsAccepted = INT_MAX;
  _BITMAPHANDLE target{};
  std::optional<std::size_t> rowBytes;  // how much of each row is kept; without: the target's BytesPerLine
  DecodedPng png;
  IMAGEINFO pngInfo{};  // what GetPngInfoFromMemory tells

  // What the test looks at.
  bool faultStruck = false;
  std::vector<DeliveredRow> rows;
  std::vector<Bytes> maskRows;
  Bytes palette;  // as last given to the target
  Bytes stream;   // as last handed to a PNG callback
  [[nodiscard]] std::string Log(std::initializer_list<Kind> kinds) const;
  [[nodiscard]] Kind LastEvent() const;

  /** Forgets the log, the counts of events and the rows; keeps what the test prepared. */
  void StartCall();
  /** What the call left behind or did wrong; empty when nothing. Handles of HandOver may be open. */
  [[nodiscard]] std::string Verdict() const;
  /** Opens the file as the kernel does before an identification. */
  HANDLE HandOver();
  void TakeBack(HANDLE handle);
  static std::uint32_t Position(HANDLE handle);

  // The services; the functions of the contract forward to these.
  HANDLE Open(const char* name, int flags, int permission);
  int Read(HANDLE handle, void* buffer, unsigned count);
  int Seek(HANDLE handle, int offset, int origin);
  void Close(HANDLE handle);
  void* Allocate(unsigned count, unsigned size, int line, const char* tag);
  void Free(void* memory, int line, const char* tag);
  int InitBitmap(_BITMAPHANDLE* bitmap, unsigned recordSize, int width, int height, int bits);
  int AllocateBitmap(_BITMAPHANDLE* bitmap, int option);
  void FreeBitmap(_BITMAPHANDLE* bitmap);
  int Access(_BITMAPHANDLE* bitmap, int option);
  int Release(_BITMAPHANDLE* bitmap, int option, int status);
  int GetRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned count);
  int PutRow(_BITMAPHANDLE* bitmap, const unsigned char* buffer, int row, unsigned count);
  void FixedPalette(RGBQUAD* colors, int bits);
  int SetPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* colors, int count);
  int SetRegion(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine);
  int TakeRow(_BITMAPHANDLE* bitmap, const unsigned char* row, unsigned flags, int number, int lineCount);
  int LoadPng(_BITMAPHANDLE* bitmap, unsigned recordSize, int bits, unsigned size, const IMAGEINFO* info);
  int DescribePng(IMAGEINFO* info, unsigned recordSize, unsigned size);
  void Complain(const std::string& problem) { problems.push_back(problem); }

 private:
  struct Block {
    int id = 0;
  };
  struct BitmapState {
    Bytes pixels;
    bool accessed = false;
  };
  struct Event {
    Kind kind;
    std::string text;
  };

  std::optional<int> Happens(Kind kind, const std::string& text);
  BitmapState* Known(_BITMAPHANDLE* bitmap, const char* service);
  bool Usable(HANDLE handle, const char* service);

  std::vector<Event> events;
  std::map<Kind, int> turns;
  std::map<void*, Block> blocks;
  std::map<_BITMAPHANDLE*, BitmapState> bitmaps;
  std::vector<std::unique_ptr<tagHANDLE>> handles;
  std::vector<std::string> problems;
  int blocksMade = 0;
};

// The callbacks for the dispatch records.
int FakeRowCallback(IMAGEINFO* info, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                    int rowNumber, int lineCount, void* userData);
int FakeLoadPng(unsigned char* buffer, _BITMAPHANDLE* bitmap, unsigned int bitmapRecordSize, int bitsPerPixel,
                int reserved1, unsigned int bufferSize, int reserved0, IMAGEINFO* info);
int FakeGetPngInfo(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                   unsigned int bufferSize, int reserved0, int reserved1);
