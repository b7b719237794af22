// The sentences behind vx_error_detail for sources the filter refused. What the filter looked at last is
// known from its reads; what it found there is guessed from the status alone, so the words stay careful.
#include "Explain.h"

#include "Errors.h"

namespace vxkrn {
namespace {

struct Start {
  unsigned char bytes[2];
  std::uint32_t count;

  [[nodiscard]] bool Is(unsigned char first, unsigned char second) const {
    return count == 2 && bytes[0] == first && bytes[1] == second;
  }
};

Start StartOf(const vx_source& source) {
  Start start = {};
  start.count = source.Peek(start.bytes, sizeof start.bytes, 0);
  return start;
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

void ExplainBadFormat(const vx_source& source, const ReadTrace& trace) {
  const Start start = StartOf(source);
  char first[3];
  char second[3];
  if (start.count < 2) {
    Fail(STATUS_BAD_FORMAT, "the file has ", start.count, " bytes, too few for any picture");
  } else if (!start.Is('B', 'M') && !start.Is('B', 'A') && !start.Is(0, 0)) {
    Fail(STATUS_BAD_FORMAT, "it begins with the bytes ", Hexadecimal(start.bytes[0], first), " ",
         Hexadecimal(start.bytes[1], second),
         "; bitmaps begin with 42 4D or 42 41, icons and cursors with 00 00");
  } else if (trace.got < trace.asked) {
    Fail(STATUS_BAD_FORMAT, "a header at byte ", trace.offset,
         " is cut off or holds impossible values: the file has ", source.Size(), " bytes");
  } else {
    Fail(STATUS_BAD_FORMAT, "a header before byte ", trace.offset + trace.got,
         " holds a value that no reader takes, such as a depth other than 1, 4, 8, 16, 24 or 32");
  }
}

void ExplainHeaderLength(const vx_source& source, const ReadTrace& trace) {
  const Start start = StartOf(source);
  std::uint64_t offset = trace.offset;
  if (start.Is('B', 'M')) offset = 14;
  if (start.Is('B', 'A')) offset = 28;
  unsigned char bytes[4] = {};
  (void)source.Peek(bytes, sizeof bytes, offset);
  std::uint32_t length = 0;
  for (int i = 3; i >= 0; --i) length = length << 8 | bytes[i];
  Fail(STATUS_FAILURE, "the image header at byte ", offset, " says it is ", length,
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
