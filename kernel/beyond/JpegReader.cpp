// Rows of a JPEG stream inside a bitmap, by libjpeg. Nothing here has a destructor in a frame that libjpeg's
// longjmp crosses.
//
// libjpeg makes up what a stream lacks and calls that a warning. Here a row is there or it is not: the data
// that ends early ends the rows, and what can only be noise is refused.
#include <csetjmp>
#include <cstdio>
// after <cstdio>, whose types it takes for granted
#include <jpeglib.h>

#include <jerror.h>

#include <algorithm>

#include "base/Errors.h"
#include "beyond/CodedReader.h"
#include "beyond/EmbeddedStream.h"
#include "bitmap/Bitmap.h"

namespace vxkrn {
namespace {

// A stream in many scans has libjpeg go over the whole picture for each, however short it is; writers make
// about ten.
constexpr int kMostScans = 40;
constexpr std::size_t kBufferSize = 4096;
constexpr long kSlack = 1 << 20;  // bytes for libjpeg's small things

class JpegReader final : public CodedReader {
 public:
  JpegReader(const vx_source& source, const bmp::BitmapLayout& layout) noexcept;
  ~JpegReader() override { jpeg_destroy_decompress(&jpeg_); }

  /// Reads up to the pixels. May throw std::bad_alloc. @return STATUS_OK, or a failure with its detail set
  [[nodiscard]] int Open();
  [[nodiscard]] RowShape Shape() const noexcept override { return {IsGrey() ? 8 : 24, false}; }
  [[nodiscard]] const RGBQUAD* Palette() const noexcept override { return greys_; }
  [[nodiscard]] uint64_t DataEnd() const noexcept override {
    return bytes_.Position() - (hasEnded_ ? 0 : manager_.bytes_in_buffer);
  }

 private:
  using Step = void (*)(JpegReader& reader);

  bool Run(Step step) noexcept;
  [[nodiscard]] int FailForStream() const noexcept;
  [[nodiscard]] int CheckHead() const noexcept;
  [[nodiscard]] bool IsGrey() const noexcept { return jpeg_.num_components == 1; }
  [[nodiscard]] uint64_t MemoryNeeded() const noexcept;
  int DecodeRow(uint8_t* row) override;
  void SortColors(uint8_t* row) const noexcept;

  static JpegReader& Of(j_common_ptr jpeg) noexcept { return *static_cast<JpegReader*>(jpeg->client_data); }
  static void OnError(j_common_ptr jpeg);
  static void OnMessage(j_common_ptr jpeg, int level);
  static void OnProgress(j_common_ptr jpeg);
  static boolean OnFill(j_decompress_ptr jpeg);
  static void OnSkip(j_decompress_ptr jpeg, long count);

  ByteReader bytes_;
  jpeg_decompress_struct jpeg_ = {};
  jpeg_error_mgr errors_ = {};
  jpeg_source_mgr manager_ = {};
  jpeg_progress_mgr progress_ = {};
  std::jmp_buf jump_ = {};
  bool hasEnded_ = false;   // the bytes, before the stream said so
  bool isInScans_ = false;  // each of the whole picture
  bool isCutOff_ = false;   // libjpeg lacked some of the pixels
  memory::Bytes reserved_;  // stands for what libjpeg takes, which the limit does not see; never touched
  memory::Vector<uint8_t> scratch_;  // a row as libjpeg gives it
  RGBQUAD greys_[256] = {};
  uint8_t buffer_[kBufferSize];
};

JpegReader::JpegReader(const vx_source& source, const bmp::BitmapLayout& layout) noexcept
    : CodedReader(layout), bytes_(source, layout.pixelOffset) {
  jpeg_.err = jpeg_std_error(&errors_);
  jpeg_.client_data = this;
  errors_.error_exit = OnError;
  errors_.emit_message = OnMessage;
  manager_.init_source = [](j_decompress_ptr) {};
  manager_.fill_input_buffer = OnFill;
  manager_.skip_input_data = OnSkip;
  manager_.resync_to_restart = jpeg_resync_to_restart;
  manager_.term_source = [](j_decompress_ptr) {};
  progress_.progress_monitor = OnProgress;
  for (unsigned int i = 0; i < 256; ++i) {
    const auto level = static_cast<uint8_t>(i);
    greys_[i] = {level, level, level, 0};
  }
}

void JpegReader::OnError(j_common_ptr jpeg) {
  std::longjmp(Of(jpeg).jump_, 1);
}

/// Tells warnings that say something of the pixels from those that do not.
void JpegReader::OnMessage(j_common_ptr jpeg, int level) {
  if (level >= 0) return;
  switch (jpeg->err->msg_code) {
    case JWRN_HIT_MARKER: Of(jpeg).isCutOff_ = true; return OnError(jpeg);
    case JWRN_HUFF_BAD_CODE:
    case JWRN_ARITH_BAD_CODE:
    case JWRN_BOGUS_PROGRESSION:
    case JWRN_MUST_RESYNC: return OnError(jpeg);
    default: return;
  }
}

void JpegReader::OnProgress(j_common_ptr jpeg) {
  const auto* decompress = reinterpret_cast<j_decompress_ptr>(jpeg);
  if (decompress->input_scan_number <= kMostScans) return;
  jpeg->err->msg_code = JERR_BAD_PROGRESSION;
  OnError(jpeg);
}

/// Behind the last byte comes the marker that a whole stream has there: libjpeg then says whether it lacks
/// anything else.
boolean JpegReader::OnFill(j_decompress_ptr jpeg) {
  JpegReader& reader = Of(reinterpret_cast<j_common_ptr>(jpeg));
  std::size_t got = reader.bytes_.Read(reader.buffer_, kBufferSize);
  if (got == 0) {
    reader.hasEnded_ = true;
    reader.buffer_[0] = 0xFF;
    reader.buffer_[1] = JPEG_EOI;
    got = 2;
  }
  jpeg->src->next_input_byte = reader.buffer_;
  jpeg->src->bytes_in_buffer = got;
  return TRUE;
}

void JpegReader::OnSkip(j_decompress_ptr jpeg, long count) {
  if (count <= 0) return;
  const std::size_t buffered = std::min(static_cast<std::size_t>(count), jpeg->src->bytes_in_buffer);
  jpeg->src->next_input_byte += buffered;
  jpeg->src->bytes_in_buffer -= buffered;
  JpegReader& reader = Of(reinterpret_cast<j_common_ptr>(jpeg));
  reader.bytes_.Skip(static_cast<std::size_t>(count) - buffered);
}

/// Runs a step, in which libjpeg may fail at any call and then jumps out of it. @return whether it did not
bool JpegReader::Run(Step step) noexcept {
  if (setjmp(jump_) != 0) return false;
  step(*this);
  return true;
}

int JpegReader::FailForStream() const noexcept {
  if (memory::LastRefusal() != 0) return FailForMemory("reading it", memory::LastRefusal());
  const int code = errors_.msg_code;
  if (code == JERR_OUT_OF_MEMORY || code == JERR_NO_BACKING_STORE) {
    return FailForMemory("decoding a JPEG stream", MemoryNeeded());
  }
  const Cause cause = Cause(STATUS_BAD_FORMAT, VX_REASON_JPEG_DAMAGED).At(DataEnd());
  if (isCutOff_ || hasEnded_) return Fail(cause, "its JPEG stream ends early, at byte ", DataEnd());
  char message[JMSG_LENGTH_MAX] = {};
  auto* jpeg = const_cast<jpeg_decompress_struct*>(&jpeg_);  // it is only looked at
  errors_.format_message(reinterpret_cast<j_common_ptr>(jpeg), message);
  return Fail(cause, "its JPEG stream is damaged: ", message);
}

/// Bytes that libjpeg takes to decode: some rows of blocks, or all of them where they come in several scans.
uint64_t JpegReader::MemoryNeeded() const noexcept {
  constexpr uint64_t kRowsAtOnce = 4 * DCTSIZE * MAX_SAMP_FACTOR;
  uint64_t bytes = 0;
  for (int i = 0; i < jpeg_.num_components && jpeg_.comp_info != nullptr; ++i) {
    const jpeg_component_info& component = jpeg_.comp_info[i];
    const auto across = uint64_t{component.width_in_blocks} + MAX_SAMP_FACTOR;
    const auto down = uint64_t{component.height_in_blocks} + MAX_SAMP_FACTOR;
    bytes += across * DCTSIZE * kRowsAtOnce;
    bytes += across * (isInScans_ ? down : 0) * sizeof(JBLOCK);
  }
  return bytes;
}

int JpegReader::CheckHead() const noexcept {
  const bool isSame = static_cast<int>(jpeg_.image_width) == Width();
  if (!isSame) {
    return Fail({STATUS_BAD_FORMAT, VX_REASON_CHANGED_WHILE_READ},
                "the file changed while it was read, or contradicts itself");
  }
  if (jpeg_.num_components == 1 || jpeg_.num_components == 3 || jpeg_.num_components == 4) return STATUS_OK;
  return Fail({STATUS_BAD_FORMAT, VX_REASON_JPEG_DAMAGED}, "its JPEG stream has ", jpeg_.num_components,
              " channels; pictures have 1, 3 or 4");
}

int JpegReader::Open() {
  const bool isRead = Run([](JpegReader& reader) {
    jpeg_create_decompress(&reader.jpeg_);
    // which leaves of the record only the error manager and this
    reader.jpeg_.src = &reader.manager_;
    reader.jpeg_.progress = &reader.progress_;
    (void)jpeg_read_header(&reader.jpeg_, TRUE);
    reader.isInScans_ = jpeg_has_multiple_scans(&reader.jpeg_) != FALSE;
  });
  if (!isRead) return FailForStream();
  if (const int status = CheckHead(); status != STATUS_OK) return status;
  const uint64_t needed = MemoryNeeded();
  if (needed > SIZE_MAX / 2) return FailForMemory("decoding a JPEG stream", needed);
  reserved_.reset(static_cast<uint8_t*>(
      memory::AllocateZeroed(static_cast<std::size_t>(needed), {"kernel/JpegReader", __LINE__})));
  if (reserved_ == nullptr) return FailForMemory("decoding a JPEG stream", needed);
  jpeg_.mem->max_memory_to_use = static_cast<long>(needed) + kSlack;
  if (IsGrey()) {
    jpeg_.out_color_space = JCS_GRAYSCALE;
  } else {
    jpeg_.out_color_space = jpeg_.num_components == 3 ? JCS_RGB : JCS_CMYK;
  }
  scratch_.resize(std::size_t{4} * jpeg_.image_width);
  const bool isStarted = Run([](JpegReader& reader) { (void)jpeg_start_decompress(&reader.jpeg_); });
  // Of a picture in several scans no row is whole before the last one.
  const bool lacksScans = isInScans_ && hasEnded_;
  return isStarted && !lacksScans ? int{STATUS_OK} : FailForStream();
}

int JpegReader::DecodeRow(uint8_t* row) {
  if (RowsDone() >= static_cast<int>(jpeg_.output_height)) return STATUS_READ_ERROR;
  const bool isRead = Run([](JpegReader& reader) {
    JSAMPROW rows[] = {reader.scratch_.data()};
    (void)jpeg_read_scanlines(&reader.jpeg_, rows, 1);
  });
  if (!isRead) return isCutOff_ ? int{STATUS_READ_ERROR} : FailForStream();
  if (row != nullptr) SortColors(row);
  return STATUS_OK;
}

/// Blue, green, red. Of inks, programs that say who they are store how much is left of the light, all others
/// how much is printed.
void JpegReader::SortColors(uint8_t* row) const noexcept {
  const auto width = static_cast<std::size_t>(Width());
  if (IsGrey()) {
    std::copy_n(scratch_.data(), width, row);
    return;
  }
  const bool isInk = jpeg_.num_components == 4;
  const unsigned int flip = isInk && jpeg_.saw_Adobe_marker == FALSE ? 0xFF : 0;
  const uint8_t* from = scratch_.data();
  for (std::size_t x = 0; x < width; ++x, row += 3, from += isInk ? 4 : 3) {
    const unsigned int light = isInk ? from[3] ^ flip : 255;
    for (std::size_t i = 0; i < 3; ++i) {
      row[2 - i] = static_cast<uint8_t>(((from[i] ^ flip) * light + 127) / 255);
    }
  }
}

}  // namespace

int MakeJpegReader(const vx_source& source, const bmp::BitmapLayout& layout,
                   memory::Owned<RowReader>* reader) {
  auto made = memory::Make<JpegReader>({"kernel/JpegReader", __LINE__}, source, layout);
  if (made == nullptr) return FailForMemory("a reader", sizeof(JpegReader));
  const int status = made->Open();
  if (status == STATUS_OK) reader->reset(made.release());
  return status;
}

}  // namespace vxkrn
