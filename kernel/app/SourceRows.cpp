// Rows that are stored plainly are found in any order. A PNG stream goes downwards only: for its first row it
// is begun again, and for any other order it is loaded whole.
#include "app/SourceRows.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "app/Explain.h"
#include "app/Load.h"
#include "app/PieceRows.h"
#include "app/PngFile.h"
#include "base/Errors.h"
#include "beyond/PngReader.h"
#include "png/PngRows.h"

namespace vxkrn {
namespace {

class PlainRows final : public PieceRows {
 public:
  PlainRows(vx_source& source, const LoadPlan& plan);
  [[nodiscard]] bool IsSequential() const noexcept override { return false; }
  /// @return STATUS_OK, or a failure with its detail set that names the file
  int Open(vx_bitmap* picture);

 private:
  int LoadPiece(int* first, int count, vx_bitmap* piece) override;
  int LookForAlpha(int first, int count);

  vx_source& source_;
  LoadPlan whole_;  // of all rows
  LoadPlan plan_;   // of the piece
  vx_raw raw_ = {};
  std::vector<uint8_t> rawPalette_;
  uint32_t pixelBits_ = 0;  // of the pieces that were loaded
};

PlainRows::PlainRows(vx_source& source, const LoadPlan& plan)
    : PieceRows(source.Name(), plan.options.read_buffer_size), source_(source), whole_(plan), plan_(plan) {
  plan_.isPiece = true;
  if (plan.options.raw == nullptr) return;
  raw_ = *plan.options.raw;  // which has to live no longer than the call that it was given to
  rawPalette_.assign(raw_.palette, raw_.palette + std::ptrdiff_t{4} * raw_.palette_count);
  raw_.palette = rawPalette_.data();
  plan_.options.raw = &raw_;
}

int PlainRows::LoadPiece(int* first, int count, vx_bitmap* piece) {
  plan_.AimAt(whole_.bandFirst + *first, count);
  return LoadBand(source_, &plan_, piece, &pixelBits_);
}

/// Goes through rows, from the top of the page, until some fourth byte is in use.
int PlainRows::LookForAlpha(int first, int count) {
  constexpr int kRows = 64;
  int status = STATUS_OK;
  for (int done = 0; status == STATUS_OK && done < count && !UseFourthByte(pixelBits_); done += kRows) {
    vx_bitmap piece;
    plan_.AimAt(first + done, std::min(kRows, count - done));
    status = LoadBand(source_, &plan_, &piece, &pixelBits_);
  }
  return status;
}

int PlainRows::Open(vx_bitmap* picture) {
  vx_bitmap sample;
  int first = 0;
  int status = LoadPiece(&first, 1, &sample);
  if (status == STATUS_OK) status = Describe(&sample, whole_.bandCount, picture);
  if (status != STATUS_OK) return status;
  const bool has32 = picture->record.BitsPerPixel == 32;
  if (has32) status = LookForAlpha(whole_.bandFirst, whole_.bandCount);
  // A band may lie where nothing can be seen.
  const bool isHidden = HasAlpha(picture->record) && !UseFourthByte(pixelBits_);
  if (status == STATUS_OK && isHidden) status = LookForAlpha(0, whole_.info.Height);
  if (status != STATUS_OK) return status;
  SettleAlpha(whole_, pixelBits_, &picture->record);
  if (whole_.image) picture->rowsPresent = RowsOfBand(source_, whole_, *whole_.image);
  const bool toSrgb = (whole_.options.flags & VX_LOAD_TO_SRGB) != 0;
  status = Settle(toSrgb, whole_.options.color_order, picture);
  return status == STATUS_OK ? status : NameFailure(status, source_.Name());
}

class PngFileRows final : public PieceRows {
 public:
  PngFileRows(const vx_source& source, const LoadPlan& plan) noexcept
      : PieceRows(source.Name(), plan.options.read_buffer_size), source_(source), plan_(plan) {}
  [[nodiscard]] bool IsSequential() const noexcept override { return !isWhole_; }
  void PrepareForAnyOrder() noexcept override { isWhole_ = true; }
  /// @return STATUS_OK and whether rows come one by one, or a failure with its detail set that names the file
  int Open(vx_bitmap* picture, bool* isThere);

 private:
  struct Stream {
    explicit Stream(const vx_source& source) noexcept : bytes(source, 0), rows(InputFrom(bytes), true) {}

    ByteReader bytes;
    PngRows rows;
    int next = 0;  ///< the row that comes next
  };

  int LoadPiece(int* first, int count, vx_bitmap* piece) override;
  int Begin(PngDescription* description, ColorSpace* colors);
  int ReadRows(int first, vx_bitmap* piece);
  int Explained(int status) const {
    return Explain(SettlePngFile(source_, stream_->bytes, status), source_, 0, {});
  }

  const vx_source& source_;
  LoadPlan plan_;
  memory::Owned<Stream> stream_;
  bool isWhole_ = false;  // what is loaded next is all there is
};

int PngFileRows::Begin(PngDescription* description, ColorSpace* colors) {
  stream_ = memory::Make<Stream>({"kernel/SourceRows", __LINE__}, source_);
  if (stream_ == nullptr) return FailForMemory("reading it", sizeof(Stream));
  const int status = stream_->rows.ReadHeader(description, colors);
  return status == STATUS_OK ? status : Explained(status);
}

int PngFileRows::Open(vx_bitmap* picture, bool* isThere) {
  PngDescription description = {};
  ColorSpace colors;
  int status = Begin(&description, &colors);
  *isThere = status == STATUS_OK && !stream_->rows.IsInterlaced();
  if (!*isThere) return status;
  picture->colorSpace = std::move(colors);
  vx_bitmap sample;
  status = InitPngRecord(description, &sample.record);
  if (status == STATUS_OK && description.bitsPerPixel <= 8)
    status = stream_->rows.AttachPalette(&sample.record);
  if (status == STATUS_OK) status = stream_->rows.Begin(sample.record);
  if (status == STATUS_OK) status = Describe(&sample, plan_.bandCount, picture);
  const bool toSrgb = (plan_.options.flags & VX_LOAD_TO_SRGB) != 0;
  if (status == STATUS_OK) status = Settle(toSrgb, plan_.options.color_order, picture);
  return status == STATUS_OK ? status : Explained(status);
}

/// Reads on to row `first` of the stream, and then the rows of the piece.
int PngFileRows::ReadRows(int first, vx_bitmap* piece) {
  const int last = first + piece->record.Height - 1;
  int status = STATUS_OK;
  while (status == STATUS_OK && stream_->next <= last) {
    status = stream_->rows.ReadRow(StoredRow(piece->record, std::max(stream_->next - first, 0)));
    ++stream_->next;
  }
  if (status == STATUS_OK && stream_->next == plan_.info.Height) status = stream_->rows.End();
  return status;
}

int PngFileRows::LoadPiece(int* first, int count, vx_bitmap* piece) {
  const int row = plan_.bandFirst + *first;
  const bool isBehind = stream_->next > row;
  isWhole_ = isWhole_ || (isBehind && *first > 0);
  if (isWhole_) {
    *first = 0;
    const int status = LoadPngFile(source_, plan_.bandFirst, plan_.bandCount, piece);
    return status == STATUS_OK ? status : Explain(status, source_, 0, {});
  }
  int status = AllocatePixels(plan_.info.Width, count, plan_.info.BitsPerPixel, piece);
  piece->record.Orientation = ORIENT_TOP_DOWN;
  if (status == STATUS_OK && isBehind) {
    PngDescription description = {};
    status = Begin(&description, nullptr);
    if (status == STATUS_OK) status = stream_->rows.Begin(piece->record);
  }
  if (status == STATUS_OK) status = ReadRows(row, piece);
  return status == STATUS_OK ? status : Explained(status);
}

template <class Rows, class... Arguments>
int Open(vx_source& source, const LoadPlan& plan, vx_bitmap* picture, Arguments... arguments) {
  auto rows = memory::Make<Rows>({"kernel/SourceRows", __LINE__}, source, plan);
  if (rows == nullptr) return FailForMemory("a reader", sizeof(Rows));
  const int status = rows->Open(picture, arguments...);
  if (status == STATUS_OK && ProviderOf(picture->record) != nullptr) picture->provider.reset(rows.release());
  return status;
}

/// Whether the file has every byte of headerless data, so that no piece ends early.
bool HasAllOf(const vx_raw& raw, const vx_source& source) noexcept {
  const uint64_t end = raw.offset + PictureBytes(raw.width, raw.height, raw.bits_per_pixel);
  return source.Size() >= 0 && static_cast<uint64_t>(source.Size()) >= end;
}

}  // namespace

int LoadRowByRow(vx_source& source, const LoadPlan& plan, vx_bitmap* picture, bool* isDone) {
  const vx_raw* const raw = plan.options.raw;
  *isDone = plan.HasPlainRows() && (raw == nullptr || HasAllOf(*raw, source));
  if (*isDone) return Open<PlainRows>(source, plan, picture);
  return plan.info.Format == FMT_PNG ? Open<PngFileRows>(source, plan, picture, isDone) : int{STATUS_OK};
}

}  // namespace vxkrn
