// A kernel that lives in memory: it serves the filter under test, logs what is asked of it, fails on
// demand, and knows what a balanced call leaves behind. It knows nothing of the formats of files.
#pragma once

#include <vxkrn.h>

#include <climits>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

using Bytes = std::vector<uint8_t>;

/** Bytes of a stored row, padded to a multiple of 4. */
inline int RowSize(int width, int bits) {
  return static_cast<int>((int64_t{width} * bits + 31) / 32 * 4);
}
/** A record as the kernel makes it: bottom-up, without pixels. */
_BITMAPHANDLE Record(int width, int height, int bits, int order = ORDER_RGB);

/** Makes the nth event of a kind (the first word of the log) fail, and all later ones when persistent. */
struct Fault {
  static constexpr int kHalf = INT_MIN;           // of a read or a write: half of the bytes
  static constexpr int kElsewhere = INT_MIN + 1;  // of a seek: one byte farther on

  std::string kind = {};
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
  int allocated = 1;
};

/** What the kernel makes of an image that is saved; byte i of its row r, and of its mask's, see PixelAt: row
 * 2 has long runs, rows 3 and 4 the shortest of 8 and of 4 bits, at every distance from a word's begin. */
struct Saved {
  _BITMAPHANDLE converted{};  // BytesPerLine and the resolutions are the test's
  int maskBytesPerLine = 4;
  Bytes rowBuffer;
  _SAVEFILESTRUCT saveFile{};
  Bytes png = {1, 2, 3, 4, 5};
  int globals = 0;  // blocks handed out and not yet freed

  static uint8_t PixelAt(int row, int i) {
    switch (row) {
      case 2: return static_cast<uint8_t>(i / 300);
      case 3: return static_cast<uint8_t>(i % 11 < 4 ? 7 : i);
      case 4: return static_cast<uint8_t>(i % 5 < 2 ? 7 : i);
      default: return static_cast<uint8_t>((37 * row + i * i / 7) / 3);
    }
  }
  static uint8_t MaskAt(int row, int i) { return static_cast<uint8_t>(91 * row + 7 * i); }
};

struct tagHANDLE {
  uint32_t position = 0;
  bool open = true;
  bool handedOver = false;
};

class FakeKernel {
 public:
  static constexpr const char* kFileName = "picture";
  static constexpr int kRefused = -777;  // the row callback's answer once rowsAccepted rows were taken

  FakeKernel() : previous_(std::exchange(current, this)) {}
  ~FakeKernel();
  FakeKernel(const FakeKernel&) = delete;
  FakeKernel& operator=(const FakeKernel&) = delete;
  static FakeKernel& Current() { return *current; }

  // What the test prepares.
  Bytes file;
  std::vector<Fault> faults;
  std::function<void(const std::string& kind)> meanwhile;  // what else happens at an event
  int longerMaskRows = 0;  // bytes that mask bitmaps have more in a row than files
  int rowsAccepted = INT_MAX;
  _BITMAPHANDLE target{};
  std::optional<std::size_t> rowBytes;  // how much of each row is kept; without: the target's BytesPerLine
  DecodedPng png;
  IMAGEINFO pngInfo{};  // what GetPngInfoFromMemory tells
  Saved saved;

  // What the test looks at.
  std::size_t faultsStruck = 0;
  std::vector<DeliveredRow> rows;
  std::vector<Bytes> maskRows;
  Bytes palette;  // as last given to the target
  Bytes stream;   // as last handed to a PNG callback
  /** The events of these kinds: all, when none are named. */
  [[nodiscard]] std::string Log(const std::vector<std::string>& kinds = {}) const;
  [[nodiscard]] std::string LastEvent() const { return events_.empty() ? "" : events_.back().kind; }

  /** Forgets the log, the counts of events and the rows; keeps what the test prepared. */
  void StartCall();
  /** What the call left behind or did wrong; empty when nothing. Handles of HandOver may be open. */
  [[nodiscard]] std::string Verdict() const;
  /** Opens the file as the kernel does before an identification. */
  HANDLE HandOver();
  void TakeBack(HANDLE handle);

  // For the services.
  struct Bitmap {
    Bytes pixels;
    bool accessed = false;
  };
  using Numbers = std::initializer_list<int64_t>;
  /** Logs and counts an event; gives the injected answer when it is this event's turn to fail. */
  std::optional<int> Happens(const std::string& kind, Numbers numbers = {}, const std::string& what = "");
  void Complain(const std::string& problem) { problems_.push_back(problem); }
  /** The bitmap's state; complains and gives null when the kernel never made it. */
  Bitmap* Known(_BITMAPHANDLE* bitmap);
  /** Whether the handle is open; complains when not. */
  bool Usable(HANDLE handle);

  std::map<void*, int> blocks;  // what is allocated, with its number
  std::map<_BITMAPHANDLE*, Bitmap> bitmaps;
  std::vector<std::unique_ptr<tagHANDLE>> handles;
  int blocksMade = 0;

 private:
  struct Event {
    std::string kind;
    std::string text;
  };
  static inline FakeKernel* current = nullptr;  // the youngest
  FakeKernel* previous_;
  std::vector<Event> events_;
  std::map<std::string, int> turns_;
  std::vector<std::string> problems_;
};

// The callbacks for the dispatch records.
std::remove_pointer_t<ROWCALLBACK> FakeRowCallback;
std::remove_pointer_t<LOADPNGFROMMEMORY> FakeLoadPng;
std::remove_pointer_t<GETPNGINFOFROMMEMORY> FakeGetPngInfo;
std::remove_pointer_t<BEGINSAVE> FakeBeginSave;
std::remove_pointer_t<GETSAVEROW> FakeGetSaveRow;
std::remove_pointer_t<ENDSAVE> FakeEndSave;
std::remove_pointer_t<SAVETOMEMORY> FakeSaveToMemory;
