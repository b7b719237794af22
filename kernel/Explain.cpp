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
  } else if (trace.got == 0) {
    Fail(STATUS_READ_ERROR, "the file ends at byte ", size, ", where more data should follow");
  } else {
    Fail(STATUS_READ_ERROR, "the file ends at byte ", size, ", in the middle of what begins at byte ",
         trace.offset);
  }
}

constexpr std::size_t kLongestName = 500;  // bytes of a name that are shown, so that the reason finds room
constexpr std::string_view kDepths = " bits per pixel; pictures have 1, 4, 8, 16, 24 or 32";

/// What of a header of 12, 40 or more bytes no reader takes: its depth, its coding, or masks that follow it.
void ExplainFields(const vx_source& source, std::uint64_t header, std::uint32_t length) {
  const bool isCore = length == 12;
  const std::uint32_t depth = source.Number(header + (isCore ? 10 : 14), 2);
  const std::uint32_t coding = isCore || length < 20 ? 0 : source.Number(header + 16, 4);
  Fail(STATUS_BAD_FORMAT, "the image header at byte ", header, " (", length, " bytes) says ", depth);
  if (!IsDepth(static_cast<int>(depth))) {
    Detail() << kDepths;
  } else if (coding > 3) {
    Detail() << " bits per pixel in coding " << coding << ", which is not known at that depth";
  } else if (coding == 3) {
    Detail() << " bits per pixel with colour masks that cannot be used there";
  } else {
    Detail() << " bits per pixel in coding " << coding << ", and the page is not complete or not usable";
  }
}

void ExplainBitmapHeader(const vx_source& source, std::uint64_t header) {
  const std::int64_t size = source.Size();
  const std::uint32_t length = source.Number(header, 4);
  if (size < static_cast<std::int64_t>(header + sizeof length)) {
    Fail(STATUS_BAD_FORMAT, "the file ends at byte ", size, ", before its image header at byte ", header);
  } else if (size < static_cast<std::int64_t>(header + length)) {
    Fail(STATUS_BAD_FORMAT, "the image header at byte ", header, " says it is ", length,
         " bytes long, but the file ends at byte ", size);
  } else if (length < 12) {
    Fail(STATUS_BAD_FORMAT, "the image header at byte ", header, " says it is ", length,
         " bytes long; the shortest has 12");
  } else {
    ExplainFields(source, header, length);
  }
}

void ExplainIcon(const vx_source& source, const ReadTrace& trace) {
  constexpr std::uint32_t kIcon = 1;
  constexpr std::uint32_t kCursor = 2;
  constexpr std::uint32_t kInfoHeader = 40;
  constexpr std::uint32_t kPngStart = 0x474E5089;
  const std::uint32_t type = source.Number(2, 2);
  if (type != kIcon && type != kCursor) {
    Fail(STATUS_BAD_FORMAT, "it begins like an icon file, but says it is of type ", type,
         ", which is neither 1 (icon) nor 2 (cursor)");
  } else if (source.Number(4, 2) == 0) {
    Fail(STATUS_BAD_FORMAT, "its directory lists no pages");
  } else if (type == kCursor && source.Number(trace.offset, 4) == kPngStart) {
    Fail(STATUS_BAD_FORMAT, "the page at byte ", trace.offset, " is a PNG stream, which cursors cannot have");
  } else if (trace.asked == kInfoHeader && trace.got == kInfoHeader) {
    ExplainFields(source, trace.offset, kInfoHeader);
  } else {
    Fail(STATUS_BAD_FORMAT, "the page at byte ", trace.offset, " is not one a reader takes");
  }
}

void ExplainBadFormat(const vx_source& source, const ReadTrace& trace) {
  const Start start(source);
  char first[3];
  char second[3];
  if (start.Count() < 2) {
    Fail(STATUS_BAD_FORMAT, "the file has ", start.Count(), " bytes, too few for any picture");
  } else if (start.HeaderOffset() == 0 && !start.Is(0, 0)) {
    Fail(STATUS_BAD_FORMAT, "it begins with the bytes ", Hexadecimal(start[0], first), " ",
         Hexadecimal(start[1], second),
         "; bitmaps begin with 42 4D or 42 41, PNG files with 89 50, icons and cursors with 00 00");
  } else if (start.HeaderOffset() != 0) {
    ExplainBitmapHeader(source, start.HeaderOffset());
  } else {
    ExplainIcon(source, trace);
  }
}

void ExplainHeaderLength(const vx_source& source, const ReadTrace& trace) {
  const std::uint64_t bitmapHeader = Start(source).HeaderOffset();
  const std::uint64_t offset = bitmapHeader != 0 ? bitmapHeader : trace.offset;
  Fail(STATUS_FAILURE, "the image header at byte ", offset, " says it is ", source.Number(offset, 4),
       " bytes long; ", bitmapHeader != 0 ? "no header has that length" : "inside icons it has 40");
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
  const std::string_view name = source.Name();
  if (name.size() > kLongestName) Detail() << "...";
  Detail() << (name.size() > kLongestName ? name.substr(name.size() - kLongestName) : name);
  if (page > 0) Detail() << ", page " << page;
  Detail() << ": " << reason.CString();
  return status;
}

}  // namespace vxkrn
