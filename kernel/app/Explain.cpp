// The sentences and reasons for sources that the filter refused. What the filter looked at last is known from
// its reads; what it found there is guessed from the status alone, so the words stay careful.
#include "app/Explain.h"

#include "app/Foreign.h"
#include "base/Errors.h"
#include "bitmap/Bitmap.h"
#include "format/BitmapHeader.h"
#include "format/BitmapLayout.h"
#include "format/IconDirectory.h"

namespace vxkrn {
namespace {

using bmp::Block;
using bmp::View;

/// What a file begins with.
class Start {
 public:
  explicit Start(const vx_source& source) noexcept
      : bytes_(source.BlockAt<2>(0)), count_(source.Peek(bytes_.data(), 2, 0)) {}

  [[nodiscard]] uint16_t Signature() const noexcept { return bmp::LoadU16(View<2>(bytes_), 0); }
  [[nodiscard]] bool IsKnown() const noexcept { return bmp::IsKnownSignature(Signature()); }
  [[nodiscard]] bool IsIcon() const noexcept { return Signature() == bmp::kIconSignature; }
  /// Where a bitmap file has its image header.
  [[nodiscard]] uint32_t HeaderOffset() const noexcept { return bmp::ImageHeaderOffset(Signature()); }
  [[nodiscard]] uint32_t Count() const noexcept { return count_; }
  [[nodiscard]] unsigned char operator[](std::size_t i) const noexcept { return bytes_[i]; }

 private:
  Block<2> bytes_;
  uint32_t count_;
};

std::string_view Hexadecimal(unsigned char byte, char (&text)[3]) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  text[0] = kDigits[byte >> 4];
  text[1] = kDigits[byte & 15];
  text[2] = '\0';
  return {text, 2};
}

/// Pages in the directory of an icon or cursor file; 0 in others.
uint32_t PagesListed(const vx_source& source) {
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
  return Start(source).IsIcon() ? directory.Count : uint32_t{0};
}

void ExplainShortRead(const vx_source& source, const ReadTrace& trace) {
  const int64_t size = source.Size();
  const bool isIcon = Start(source).IsIcon();
  const uint32_t pages = PagesListed(source);
  const Cause endsEarly = Cause(STATUS_READ_ERROR, VX_REASON_ENDS_EARLY, trace.offset).At(size);
  if (size < 0 || trace.offset + trace.got < static_cast<uint64_t>(size)) {
    Fail(Cause(STATUS_READ_ERROR, VX_REASON_SYSTEM_ERROR).At(trace.offset), "reading ", trace.asked,
         " bytes at byte ", trace.offset, " failed");
  } else if (size == 0) {
    Fail({STATUS_READ_ERROR, VX_REASON_EMPTY_FILE}, "the file is empty");
  } else if (pages > 0 && static_cast<uint64_t>(size) < bmp::DirectoryBytes(pages)) {
    Fail(Cause(STATUS_READ_ERROR, VX_REASON_ENDS_EARLY).At(size), "the file ends at byte ", size,
         ", in the middle of the directory of its ", pages, " pages");
  } else if (trace.offset > static_cast<uint64_t>(size)) {
    Fail(Cause(STATUS_READ_ERROR, VX_REASON_BEHIND_END, size).At(trace.offset),
         "its data would start at byte ", trace.offset, ", but the file has ", size, " bytes");
  } else if (trace.got == 0) {
    Fail(endsEarly, "the file ends at byte ", size, ", where ",
         isIcon ? "a page should begin or go on" : "more data should follow");
  } else {
    Fail(endsEarly, "the file ends at byte ", size, ", ", isIcon ? "inside a page, " : "",
         "in the middle of what begins at byte ", trace.offset);
  }
}

constexpr std::string_view kDepths = " bits per pixel; pictures have 1, 4, 8, 16, 24 or 32";

bmp::ImageHeader HeaderAt(const vx_source& source, uint64_t offset) {
  const Block<bmp::kInfoHeaderSize> bytes = source.BlockAt<bmp::kInfoHeaderSize>(offset);
  const Block<bmp::kCoreHeaderSize> start = bmp::Slice<bmp::kCoreHeaderSize>(bytes, 0);
  return bmp::DeclaredHeaderSize(start) == bmp::kCoreHeaderSize ? bmp::DecodeCoreHeader(start)
                                                                : bmp::DecodeInfoHeader(bytes);
}

/// What of a header of 12, 40 or more bytes no reader takes: its depth, its coding, or masks that follow it.
void ExplainFields(const bmp::ImageHeader& header, uint64_t offset) {
  const int depth = header.bitCount;
  const uint32_t coding = header.compression;
  const auto fail = [&](const Cause& cause) {
    Fail(cause.At(offset), "the image header at byte ", offset, " (", header.size, " bytes) says ", depth);
  };
  if (!bmp::IsDepth(depth)) {
    fail({STATUS_BAD_FORMAT, VX_REASON_BAD_DEPTH, depth});
    Detail() << kDepths;
  } else if (coding > bmp::kCompressionBitFields) {
    fail({STATUS_BAD_FORMAT, VX_REASON_UNSUPPORTED_CODING, coding, depth});
    Detail() << " bits per pixel in coding " << coding << ", which is not known at that depth";
  } else if (coding == bmp::kCompressionBitFields) {
    fail({STATUS_BAD_FORMAT, VX_REASON_BAD_MASKS, depth});
    Detail() << " bits per pixel with colour masks that cannot be used there";
  } else {
    fail({STATUS_BAD_FORMAT, VX_REASON_PAGE_DAMAGED});
    Detail() << " bits per pixel in coding " << coding << ", and the page is not complete or not usable";
  }
}

void ExplainBitmapHeader(const vx_source& source, uint32_t offset) {
  const int64_t size = source.Size();
  const bmp::ImageHeader header = HeaderAt(source, offset);
  const Cause endsEarly = Cause(STATUS_BAD_FORMAT, VX_REASON_ENDS_EARLY, offset).At(size);
  if (size < int64_t{offset} + static_cast<int64_t>(sizeof header.size)) {
    Fail(endsEarly, "the file ends at byte ", size, ", before its image header at byte ", offset);
  } else if (size < int64_t{offset} + header.size) {
    Fail(endsEarly, "the image header at byte ", offset, " says it is ", header.size,
         " bytes long, but the file ends at byte ", size);
  } else if (header.size < bmp::kCoreHeaderSize) {
    Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_HEADER_TOO_SHORT, header.size).At(offset),
         "the image header at byte ", offset, " says it is ", header.size, " bytes long; the shortest has ",
         bmp::kCoreHeaderSize);
  } else {
    ExplainFields(header, offset);
  }
}

void ExplainIcon(const vx_source& source, const ReadTrace& trace) {
  const ICONDIR directory = bmp::DecodeDirectory(source.BlockAt<bmp::kDirectorySize>(0));
  const bool isCursor = directory.Type == bmp::kCursorType;
  const int64_t size = source.Size();
  if (size >= 0 && size < bmp::kDirectorySize) {
    Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_ENDS_EARLY).At(size),
         "it begins like an icon file, but ends at byte ", size, ", inside its directory");
  } else if (directory.Type != bmp::kIconType && !isCursor) {
    Fail({STATUS_BAD_FORMAT, VX_REASON_WRONG_ICON_TYPE, directory.Type},
         "it begins like an icon file, but says it is of type ", directory.Type,
         ", which is neither 1 (icon) nor 2 (cursor)");
  } else if (directory.Count == 0) {
    Fail({STATUS_BAD_FORMAT, VX_REASON_NO_PAGES}, "its directory lists no pages");
  } else if (isCursor && bmp::BeginsLikePng(source.BlockAt<4>(trace.offset))) {
    Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_PNG_IN_CURSOR).At(trace.offset), "the page at byte ",
         trace.offset, " is a PNG stream, which cursors cannot have");
  } else if (trace.asked == bmp::kInfoHeaderSize && trace.got == bmp::kInfoHeaderSize) {
    ExplainFields(HeaderAt(source, trace.offset), trace.offset);
  } else {
    Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_PAGE_DAMAGED).At(trace.offset), "the page at byte ", trace.offset,
         " is not one a reader takes");
  }
}

void ExplainBadFormat(const vx_source& source, const ReadTrace& trace) {
  const Start start(source);
  char first[3];
  char second[3];
  if (start.Count() < 2) {
    Fail({STATUS_BAD_FORMAT, VX_REASON_TOO_SHORT, start.Count()}, "the file has ", start.Count(),
         " bytes, too few for any picture");
  } else if (const ForeignKind* kind = ForeignKindOf(source); kind != nullptr && !start.IsKnown()) {
    Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_FOREIGN, int{kind->number}).At(0), "it is ", kind->name,
         ", and not a bitmap, an icon, a cursor or a PNG file");
  } else if (!start.IsKnown()) {
    Fail(Cause(STATUS_BAD_FORMAT, VX_REASON_NO_SIGNATURE, start[0], start[1]).At(0),
         "it begins with the bytes ", Hexadecimal(start[0], first), " ", Hexadecimal(start[1], second),
         "; bitmaps begin with 42 4D or 42 41, PNG files with 89 50, icons and cursors with 00 00");
  } else if (!start.IsIcon()) {
    ExplainBitmapHeader(source, start.HeaderOffset());
  } else {
    ExplainIcon(source, trace);
  }
}

void ExplainHeaderLength(const vx_source& source, const ReadTrace& trace) {
  const Start start(source);
  const uint64_t offset = start.IsIcon() ? trace.offset : start.HeaderOffset();
  const uint32_t length = HeaderAt(source, offset).size;
  const uint32_t pages = PagesListed(source);
  if (pages > 0 && offset < bmp::DirectoryBytes(pages)) {
    const uint32_t end = bmp::DirectoryBytes(pages);
    Fail(Cause(STATUS_FAILURE, VX_REASON_PAGE_IN_DIRECTORY, end).At(offset), "the page at byte ", offset,
         " lies in the directory, which ends at byte ", end);
    return;
  }
  const bool isOfBitmaps = start.IsIcon() && bmp::IsHeaderSize(length);
  Fail(Cause(STATUS_FAILURE, VX_REASON_UNKNOWN_HEADER, length).At(offset), "the image header at byte ",
       offset, " says it is ", length, " bytes long; ",
       isOfBitmaps ? "in icons the filter takes 40 alone" : "no header has that length");
}

void FindReason(int status, const vx_source& source, const ReadTrace& trace) {
  switch (status) {
    case STATUS_FAILURE: ExplainHeaderLength(source, trace); break;
    case STATUS_NO_MEMORY: (void)FailForMemory("reading it", memory::LastRefusal()); break;
    case STATUS_READ_ERROR: ExplainShortRead(source, trace); break;
    case STATUS_BAD_FORMAT: ExplainBadFormat(source, trace); break;
    case STATUS_SEEK_ERROR:
      Fail({status, VX_REASON_OUT_OF_REACH}, "its headers point to a place no file reaches, beyond byte ",
           kLastPosition);
      break;
    case STATUS_OPEN_ERROR: Fail({status, VX_REASON_SYSTEM_ERROR}, "it cannot be opened"); break;
    default:
      Fail({status, VX_REASON_FILTER_GAVE_UP, status}, "the filter gave up with status ", status);
      break;
  }
}

}  // namespace

int Explain(int status, const vx_source& source, int page, const ReadTrace& trace) noexcept {
  if (Detail().Empty()) FindReason(status, source, trace);
  return NameFailure(status, source.Name(), page);
}

}  // namespace vxkrn
