// Adds a page to a file that exists, or replaces one. Only the directory changes in the middle of the file:
// bodies are appended, and that of a replaced page stays.
#include "Pages/AddPage.h"

#include "Kernel.h"
#include "Pages/Directory.h"
#include "Pages/PngPage.h"
#include "Write/Conversion.h"
#include "Write/IconMasks.h"
#include "Write/RowWriter.h"
#include "format/HeaderEncoding.h"
#include "format/PageSlot.h"

namespace bmp {
namespace {

/// Sizes of the body that a page gets.
class PageBody {
 public:
  PageBody(const _SAVEDISPATCH& dispatch, const _BITMAPHANDLE& converted)
      : bitmap_(*dispatch.Bitmap), bitsPerPixel_(dispatch.BitsPerPixel), converted_(converted) {}

  [[nodiscard]] uint32_t TableSize() const {
    const uint32_t entries = HasPalette(bitsPerPixel_) ? PaletteSize(bitsPerPixel_) : 0;
    return static_cast<uint32_t>(sizeof(RGBQUAD)) * entries;
  }
  [[nodiscard]] uint32_t RowsSize() const {
    const uint32_t rowSize = RowSize(converted_.BitsPerPixel, converted_.Width);
    return (rowSize + RowSize(1, bitmap_.Width)) * Height();
  }
  [[nodiscard]] ICONDIRENTRY Entry(uint32_t offset) const {
    return {.Width = EntrySide(bitmap_.Width),
            .Height = EntrySide(bitmap_.Height),
            .ColorCount = EntryColorCount(bitsPerPixel_),
            .Reserved = 0,
            .Planes = 0,
            .BitCount = 0,
            .BytesInRes = kInfoHeaderSize + TableSize() + RowsSize(),
            .ImageOffset = offset};
  }
  [[nodiscard]] NewHeader Header() const {
    return {.width = static_cast<uint32_t>(bitmap_.Width),
            .height = 2 * Height(),
            .bitCount = static_cast<uint16_t>(bitsPerPixel_),
            .imageSize = RowsSize()};
  }

 private:
  [[nodiscard]] uint32_t Height() const { return static_cast<uint32_t>(bitmap_.Height); }

  const _BITMAPHANDLE& bitmap_;
  int bitsPerPixel_;
  const _BITMAPHANDLE& converted_;
};

/// Closes a file earlier than its own scope would: before everything that was declared ahead of this.
class ClosedFirst {
 public:
  explicit ClosedFirst(File& file) : file_(file) {}
  ~ClosedFirst() { file_.Close(); }
  ClosedFirst(const ClosedFirst&) = delete;
  ClosedFirst& operator=(const ClosedFirst&) = delete;

 private:
  File& file_;
};

bool WriteBodyStart(HANDLE file, const PageBody& body, const _SAVEFILESTRUCT& saveFile) {
  if (VX_RedirectedSeek(file, 0, VX_SEEK_END) == -1) return false;
  if (!WriteBlock(file, EncodeHeader<kInfoHeaderSize>(body.Header()))) return false;
  return body.TableSize() == 0 || WriteExactly(file, saveFile.Palette, body.TableSize());
}

/// Writes the entry into its slot and the body at the end. What was acquired goes in the reverse of the order
/// in which it is declared here.
int WritePage(_SAVEDISPATCH& dispatch, File& file, uint32_t slot) {
  const Conversion conversion(dispatch);
  RowWriter rows(*dispatch.Bitmap, conversion, RowForm::kPlain);
  Mask mask;
  const ClosedFirst closed(file);
  if (conversion.Status() < STATUS_OK) return conversion.Status();
  if (!mask.Make(dispatch.Bitmap)) return STATUS_NO_MEMORY;

  const PageBody body(dispatch, conversion.Image());
  const int end = VX_RedirectedSeek(file.Handle(), 0, VX_SEEK_END);
  const ICONDIRENTRY entry = body.Entry(static_cast<uint32_t>(end));
  if (end == -1 || !SeekTo(file.Handle(), slot) || !WriteBlock(file.Handle(), EncodeEntry(entry))) {
    return STATUS_WRITE_ERROR;
  }
  int status = rows.Prepare();
  if (status != STATUS_OK) return status;
  if (!WriteBodyStart(file.Handle(), body, conversion.SaveFile())) return STATUS_WRITE_ERROR;
  if (conversion.Status() != STATUS_OK) return conversion.Status();
  status = rows.WriteColorRows(file.Handle());
  return status == STATUS_OK ? rows.WriteMaskRows(file.Handle(), mask.Record()) : status;
}

}  // namespace

int AddPage(_SAVEDISPATCH& dispatch) {
  File file(dispatch.FileName, kForEditing);
  if (!file.IsOpen()) return STATUS_OPEN_WRITE_ERROR;
  Block<kDirectorySize> bytes;
  const int read = VX_RedirectedRead(file.Handle(), bytes.data(), kDirectorySize);
  if (read <= 0) return STATUS_OPEN_WRITE_ERROR;  // an empty file is as good as none
  if (read < static_cast<int>(kDirectorySize)) return STATUS_BAD_FORMAT;

  const ICONDIR directory = DecodeDirectory(bytes);
  const SAVEOPTIONS& options = *dispatch.SaveOptions;
  const PageSlot slot = FindPageSlot(dispatch.Flags, options.Flags, options.PageNumber, directory.Count);
  if (slot.page == 0) return STATUS_BAD_PAGE;
  if (slot.isNew) {
    const int status = OpenSlot(file.Handle(), slot.page, directory);
    if (status != STATUS_OK) return status;
  }
  const uint32_t offset = EntryOffset(slot.page);
  if (dispatch.Format == FMT_VISTA_ICO) return InsertPngPage(dispatch, file.Take(), offset);
  return WritePage(dispatch, file, offset);
}

}  // namespace bmp
