// The sentences behind vx_error_detail for sources the filter refused. What the filter looked at last is
// known from its reads; what it found there is guessed from the status alone, so the words stay careful.
#include "Explain.h"

#include "Errors.h"

namespace vxkrn {
namespace {

/// What a file begins with.
class Start {
 public:
  explicit Start(const vx_source& source) noexcept : count_(source.Peek(bytes_, sizeof bytes_, 0)) {}

  [[nodiscard]] bool Is(unsigned char first, unsigned char second) const noexcept {
    return count_ == 2 && bytes_[0] == first && bytes_[1] == second;
  }
  /// Where a bitmap file has its image header; 0 for other files.
  [[nodiscard]] std::uint64_t HeaderOffset() const noexcept {
    if (Is('B', 'M')) return 14;
    return Is('B', 'A') ? 28 : 0;
  }
  [[nodiscard]] std::uint32_t Count() const noexcept { return count_; }
  [[nodiscard]] unsigned char operator[](std::size_t i) const noexcept { return bytes_[i]; }

 private:
  unsigned char bytes_[2] = {};
  std::uint32_t count_;
};

/// The little-endian number of `count` bytes at offset; bytes beyond the end count as 0.
std::uint32_t NumberAt(const vx_source& source, std::uint64_t offset, std::uint32_t count) {
  unsigned char bytes[4] = {};
  (void)source.Peek(bytes, count, offset);
  std::uint32_t number = 0;
  for (std::uint32_t i = count; i-- > 0;) number = number << 8 | bytes[i];
  return number;
}

std::string_view Hexadecimal(unsigned char byte, char (&text)[3]) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  text[0] = kDigits[byte >> 4];
  text[1] = kDigits[byte & 15];
  text[2] = '\0';
  return {text, 2};
}

void ExplainShortRead(const vx_source& source, const ReadTrace& trace) {
  const std::int64_t size = source.Size();
  if (size < 0 || trace.offset + trace.got < static_cast<std::uint64_t>(size)) {
    Fail(STATUS_READ_ERROR, "reading ", trace.asked, " bytes at byte ", trace.offset, " failed");
  } else if (size == 0) {
    Fail(STATUS_READ_ERROR, "the file is empty");
  } else if (trace.offset > static_cast<std::uint64_t>(size)) {
    Fail(STATUS_READ_ERROR, "its data would start at byte ", trace.offset, ", but the file has ", size,
         " bytes");
  } else {
    Fail(STATUS_READ_ERROR, "its data goes on from byte ", trace.offset, ", but the file ends after ", size,
         " bytes");
  }
}

void ExplainBitmapHeader(const vx_source& source, std::uint64_t header) {
  const std::uint32_t length = NumberAt(source, header, 4);
  if (source.Size() < static_cast<std::int64_t>(header + length)) {
    Fail(STATUS_BAD_FORMAT, "its image header is said to have ", length, " bytes at byte ", header,
         ", but the file ends after ", source.Size(), " bytes");
    return;
  }
  const bool isCore = length == 12;
  const std::uint32_t depth = NumberAt(source, header + (isCore ? 10 : 14), 2);
  Fail(STATUS_BAD_FORMAT, "no reader takes its image header (", length, " bytes at byte ", header, ": ",
       depth, " bits per pixel");
  if (!isCore && length >= 20) Detail() << ", compression " << NumberAt(source, header + 16, 4);
  Detail() << ") or the colour masks after it";
}

void ExplainBadFormat(const vx_source& source, const ReadTrace& trace) {
  const Start start(source);
  char first[3];
  char second[3];
  if (start.Count() < 2) {
    Fail(STATUS_BAD_FORMAT, "the file has ", start.Count(), " bytes, too few for any picture");
  } else if (start.HeaderOffset() == 0 && !start.Is(0, 0)) {
    Fail(STATUS_BAD_FORMAT, "it begins with the bytes ", Hexadecimal(start[0], first), " ",
         Hexadecimal(start[1], second), "; bitmaps begin with 42 4D or 42 41, icons and cursors with 00 00");
  } else if (start.HeaderOffset() != 0) {
    ExplainBitmapHeader(source, start.HeaderOffset());
  } else {
    Fail(STATUS_BAD_FORMAT, "no reader takes its directory (type ", NumberAt(source, 2, 2), ", ",
         NumberAt(source, 4, 2), " pages) or the page's header, read up to byte ", trace.offset + trace.got);
  }
}

void ExplainHeaderLength(const vx_source& source, const ReadTrace& trace) {
  const std::uint64_t bitmapHeader = Start(source).HeaderOffset();
  const std::uint64_t offset = bitmapHeader != 0 ? bitmapHeader : trace.offset;
  Fail(STATUS_FAILURE, "the image header at byte ", offset, " says it is ", NumberAt(source, offset, 4),
       " bytes long, a length that no reader knows");
}

void FindReason(int status, const vx_source& source, const ReadTrace& trace) {
  switch (status) {
    case STATUS_FAILURE: ExplainHeaderLength(source, trace); break;
    case STATUS_NO_MEMORY: (void)FailForMemory("reading it", memory::LastRefusal()); break;
    case STATUS_READ_ERROR: ExplainShortRead(source, trace); break;
    case STATUS_BAD_FORMAT: ExplainBadFormat(source, trace); break;
    case STATUS_SEEK_ERROR:
      Fail(status, "its headers point to a place no file reaches, beyond byte ", kLastPosition);
      break;
    case STATUS_OPEN_ERROR: Fail(status, "it cannot be opened"); break;
    default: Fail(status, "the filter gave up with status ", status); break;
  }
}

}  // namespace

int Explain(int status, const vx_source& source, int page, const ReadTrace& trace) noexcept {
  if (Detail().Empty()) FindReason(status, source, trace);
  const Text reason = Detail();
  Detail().Clear();
  Detail() << source.Name();
  if (page > 0) Detail() << ", page " << page;
  Detail() << ": " << reason.CString();
  return status;
}

}  // namespace vxkrn
