// vx_load: from a plan through the filter to a finished picture.
#include "app/Load.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "app/Describe.h"
#include "app/Explain.h"
#include "app/Frames.h"
#include "app/LoadOwn.h"
#include "app/LoadPlan.h"
#include "app/PngFile.h"
#include "app/RowSink.h"
#include "app/SourceRows.h"
#include "base/Errors.h"
#include "base/Remarks.h"
#include "beyond/BitmapColors.h"
#include "beyond/IconFile.h"
#include "beyond/IconPage.h"
#include "beyond/RunLengthScan.h"
#include "bitmap/Region.h"
#include "convert/ToSrgb.h"
#include "files/Files.h"
#include "filter/FilterLoader.h"
#include "filter/PngCallbacks.h"

namespace vxkrn {
namespace {

// No order of the contract's, so that the filter sets the one the file implies.
constexpr int kOrderOfTheFile = -1;

/// The record the filter is shown: the whole page's size, but no pixels, for rows go to the sink.
int PrepareTarget(const LoadPlan& plan, _BITMAPHANDLE* target) {
  const IMAGEINFO& info = plan.info;
  const int status = VX_InitBitmap(target, sizeof(_BITMAPHANDLE), info.Width, info.Height, info.BitsPerPixel);
  if (status != STATUS_OK)
    return Fail({status, VX_REASON_BAD_SIZE, info.Width, info.Height}, "no bitmap can hold the page");
  target->Orientation = info.Orientation;
  target->ColorOrder = plan.options.raw != nullptr || plan.IsOwn() ? info.ColorOrder : kOrderOfTheFile;
  target->XResolution = info.XResolution;
  target->YResolution = info.YResolution;
  target->ColorCount = info.BitsPerPixel <= 8 ? 1 << info.BitsPerPixel : 0;
  return STATUS_OK;
}

void DescribeRawTo(const vx_raw& raw, _LOADDISPATCH* dispatch) {
  dispatch->RawHasOffset = 1;
  dispatch->RawOffset = static_cast<int>(raw.offset);
  if (raw.palette_count > 0) {
    dispatch->RawFlags |= RAW_HAS_PALETTE;
    for (int i = 0; i < raw.palette_count; ++i) {
      const uint8_t* entry = raw.palette + std::ptrdiff_t{4} * i;
      dispatch->RawPalette[i] = {entry[0], entry[1], entry[2], 0};
    }
  }
  if (raw.has_masks != 0) {
    dispatch->RawFlags |= RAW_HAS_MASKS;
    dispatch->RedMask = raw.red_mask;
    dispatch->GreenMask = raw.green_mask;
    dispatch->BlueMask = raw.blue_mask;
  }
}

/// Has the filter decode run-length data that was found here as if it had no header.
int TakeAsHeaderless(const vx_source& source, const bmp::BitmapLayout& layout, _LOADDISPATCH* dispatch) {
  if (layout.pixelOffset > INT32_MAX) {
    return Fail({STATUS_SEEK_ERROR, VX_REASON_OUT_OF_REACH}, "its run-length data begins beyond byte ",
                INT32_MAX);
  }
  const bool isRle4 = layout.compression == bmp::kCompressionRle4;
  dispatch->FileInfo->Format = isRle4 ? FMT_RAW_RLE4 : FMT_RAW_RLE8;
  dispatch->RawHasOffset = 1;
  dispatch->RawOffset = static_cast<int>(layout.pixelOffset);
  dispatch->RawFlags |= RAW_HAS_PALETTE;
  return ReadPalette(source, layout, dispatch->RawPalette);
}

int RunFilter(const Filter& filter, vx_source& source, LoadPlan* plan, _BITMAPHANDLE* target, RowSink* sink) {
  LOADOPTIONS options = {};
  options.StructSize = sizeof options;
  options.Flags = plan->options.allow_truncated != 0 ? LOAD_ALLOW_TRUNCATED : 0;
  options.PageNumber = plan->options.page;
  _LOADDISPATCH dispatch = {};
  dispatch.FileName = source.Name();
  dispatch.Bitmap = target;
  dispatch.RowCallback = RowSink::Callback;
  dispatch.UserData = sink;
  dispatch.ReadBufferSize = plan->options.read_buffer_size;
  dispatch.FileInfo = &plan->info;
  dispatch.LoadOptions = &options;
  dispatch.LoadPngFromMemory = LoadPngPage;
  if (plan->filterCutsBand) {
    dispatch.BandEnabled = 1;
    dispatch.BandFirstRow = plan->bandFirst;
    dispatch.BandTopRow = plan->bandFirst;
    dispatch.BandRowCount = plan->bandCount;
  }
  if (plan->options.raw != nullptr) DescribeRawTo(*plan->options.raw, &dispatch);
  if (plan->IsOwn()) {
    const int status = TakeAsHeaderless(source, plan->image->layout, &dispatch);
    if (status != STATUS_OK) return status;
  }
  const Backend view = source.View();
  const BackendScope scope(view);
  return filter.load(&dispatch);
}

int OrderOf(const _BITMAPHANDLE& record, int order) {
  if (record.BitsPerPixel <= 8) return ORDER_RGB;
  return record.BitsPerPixel == 16 && order == ORDER_565 ? ORDER_565 : ORDER_BGR;
}

/// Gives the picture a palette with an entry for every index there can be, black where the file has none.
int TakePalette(const _BITMAPHANDLE& target, _BITMAPHANDLE* record) {
  if (record->BitsPerPixel > 8) return STATUS_OK;
  if (target.Palette == nullptr) return STATUS_NO_MEMORY;
  RGBQUAD palette[256] = {};
  std::copy_n(target.Palette, target.ColorCount, palette);
  return VX_SetBitmapNewPalette(record, palette, 1 << record->BitsPerPixel);
}

/// Completes the picture with what the filter set on the record it was shown.
int Finish(const LoadPlan& plan, const _BITMAPHANDLE& target, vx_bitmap* picture) {
  _BITMAPHANDLE* record = &picture->record;
  if (record->Pixels == nullptr)
    return Fail({STATUS_BAD_FORMAT, VX_REASON_PAGE_DAMAGED}, "the page holds no rows");
  record->Orientation = target.Orientation;
  record->ColorOrder = OrderOf(*record, target.ColorOrder);
  record->XResolution = DpiOrDefault(target.XResolution);
  record->YResolution = DpiOrDefault(target.YResolution);
  int status = TakePalette(target, record);
  const int firstStored = FirstStoredRow(plan.bandFirst, plan.bandCount, target.Height, record->Orientation);
  if (status == STATUS_OK) status = CopyRegionRows(target, firstStored, record);
  return status;
}

/// Whether the filter failed within the rows, which it can do without: it sets the order of the colours once
/// headers and palette are read, and headerless data is all rows.
bool MissesRowsAlone(const LoadPlan& plan, const _BITMAPHANDLE& target, int status) {
  const bool tookHeaders =
      plan.options.raw != nullptr || plan.IsOwn() || target.ColorOrder != kOrderOfTheFile;
  return status == STATUS_READ_ERROR && tookHeaders && plan.options.allow_truncated == 0;
}

/// What is said of an icon's mask that is not whole. Where run-length codes end only the filter knows; it
/// leaves out such a mask.
void RemarkOnMask(const LoadPlan& plan, const FilterCall& context) {
  if (!plan.image || !plan.image->icon || plan.image->icon->isPng) return;
  const BitmapImage& image = *plan.image;
  const int height = image.layout.height;
  const bool isKnown = IsPlain(image.layout, image.decoder) || plan.IsOwn();
  const int there = isKnown ? image.icon->maskRowsThere : 0;
  const int page = image.pageCount > 1 ? image.page : 0;
  if (isKnown ? there < height : context.isMaskCut) AddRemark(VX_REMARK_MASK_MISSING, there, height, page);
}

/// The rows, decoded by the filter. @return STATUS_OK, or a failure with its detail set that names the file
int LoadByFilter(vx_source& source, LoadPlan* plan, vx_bitmap* picture, uint32_t* pixelBits) {
  const Filter* filter = nullptr;
  int status = LoadFilter(&filter);
  if (status != STATUS_OK) return status;
  FilterCall context;
  const bool asFilter = (plan->options.flags & VX_LOAD_AS_FILTER) != 0;
  context.toleratesMissingMask = plan->options.allow_truncated != 0 || !asFilter;
  const FilterCallScope scope(&context);
  RowSink sink(*plan, context, picture);
  OwnedBitmap target;
  status = PrepareTarget(*plan, &target);
  if (status == STATUS_OK && !plan->isPng) status = sink.Allocate(plan->info.BitsPerPixel);
  if (status == STATUS_OK) status = RunFilter(*filter, source, plan, &target, &sink);
  if (status == kAllRowsTaken) status = STATUS_OK;
  if (status == STATUS_OK) sink.Finish();
  if (status == STATUS_OK) status = Finish(*plan, target, picture);
  const int pageWorthSaying = plan->info.TotalPages > 1 ? plan->options.page : 0;
  if (status != STATUS_OK) {
    Explain(status, source, pageWorthSaying, ThisCall().lastRead);
    if (MissesRowsAlone(*plan, target, status)) {
      Failure().reason = VX_REASON_ROWS_MISSING;
      Failure().first = sink.RowsTaken();
      Failure().second = target.Height;
    }
    return status;
  }
  if (plan->isPng && context.png.hasAlpha) picture->record.Flags |= kBitmapHasAlpha;
  *pixelBits = sink.PixelBits();
  RemarkOnMask(*plan, context);
  return plan->IsOwn() ? SetOwnRegion(source, *plan, &picture->record) : int{STATUS_OK};
}

/// Headerless data as if it had a header; none where the coding is another depth's.
std::optional<BitmapImage> ImageOfRaw(const vx_raw& raw) {
  const int codedDepth = raw.format == VX_FORMAT_RAW_RLE4 ? 4 : raw.format == VX_FORMAT_RAW_RLE8 ? 8 : 0;
  if (codedDepth != 0 && codedDepth != raw.bits_per_pixel) return std::nullopt;
  BitmapImage image;
  image.decoder = bmp::Decoder::kFilter;
  image.layout.width = raw.width;
  image.layout.height = raw.height;
  image.layout.depth = raw.bits_per_pixel;
  image.layout.pixelOffset = raw.offset;
  if (codedDepth != 0) {
    image.layout.compression = codedDepth == 4 ? bmp::kCompressionRle4 : bmp::kCompressionRle8;
  }
  return image;
}

/// The image whose rows the filter decoded; none where it alone knows where they end.
std::optional<BitmapImage> ImageOfTheFilter(const vx_source& source, const LoadPlan& plan) {
  std::optional<BitmapImage> image = plan.image;
  if (plan.options.raw != nullptr) return ImageOfRaw(*plan.options.raw);
  if (!image && FindBitmap(source, plan.options.page, &image) != STATUS_OK) Detail().Clear();
  const bool isKnown = image && image->decoder == bmp::Decoder::kFilter && (plan.image || image->isFilters);
  return isKnown ? image : std::nullopt;
}

/// What is said of a picture that is there, but not as its file says.
void RemarkOn(const vx_source& source, const LoadPlan& plan, vx_bitmap* picture) {
  if (plan.image && plan.image->icon) RemarkOnPage(source, *plan.image);
  if (plan.image) {
    const bmp::BitmapLayout& layout = plan.image->layout;
    const auto taken = static_cast<int64_t>(layout.pixelOffset);
    if (layout.isOffsetMended) AddRemark(VX_REMARK_OFFSET_MENDED, layout.dataOffset, taken);
    if (!layout.hasFileHeader && !plan.isIcon) AddRemark(VX_REMARK_NO_FILE_HEADER, layout.headerSize);
  }
  if (!plan.IsDecodedHere() && !plan.isPng && plan.info.Format != FMT_PNG) {
    const std::optional<BitmapImage> image = ImageOfTheFilter(source, plan);
    if (image) picture->rowsPresent = RowsOfBand(source, plan, *image);
  }
  if (picture->rowsPresent < picture->record.Height) {
    AddRemark(VX_REMARK_ROWS_MISSING, picture->rowsPresent, picture->record.Height);
  }
}

/// The pixel of a cursor that points, whoever decoded it.
HotSpot HotSpotOf(const vx_source& source, const LoadPlan& plan) {
  if (plan.image) return plan.image->icon ? plan.image->icon->hotSpot : HotSpot{};
  if (plan.info.Format != FMT_CUR) return {};
  const auto bytes = source.BlockAt<bmp::kEntrySize>(bmp::EntryOffset(plan.options.page));
  const ICONDIRENTRY entry = bmp::DecodeEntry(bytes);
  return {entry.Planes, entry.BitCount};
}

}  // namespace

/// Icons say nothing of the fourth bytes: there any that is not 0 makes all of them alpha. Bitmap files say
/// so by a mask; many writers leave 0 everywhere all the same, and every reader that people use shows such a
/// picture.
void SettleAlpha(const LoadPlan& plan, uint32_t pixelBits, _BITMAPHANDLE* record) noexcept {
  const bool isPng = plan.isPng || (plan.image && plan.image->decoder == bmp::Decoder::kPng);
  if (record->BitsPerPixel != 32 || isPng) return;
  const bool isInUse = UseFourthByte(pixelBits);
  if (HasAlpha(*record)) {
    if (isInUse || pixelBits == 0) return;  // where there is no colour either, nothing is all that there is
    record->Flags &= ~kBitmapHasAlpha;
    return AddRemark(VX_REMARK_ALPHA_EMPTY);
  }
  const bool isAsked =
      plan.options.alpha == VX_ALPHA_FORCE || (plan.options.alpha == VX_ALPHA_AUTO && isInUse);
  if (plan.isIcon ? isInUse : isAsked) record->Flags |= kBitmapHasAlpha;
  if (!plan.isIcon && isInUse) AddRemark(HasAlpha(*record) ? VX_REMARK_ALPHA_TAKEN : VX_REMARK_ALPHA_IGNORED);
}

int RowsOfBand(const vx_source& source, const LoadPlan& plan, const BitmapImage& image) noexcept {
  const bmp::BitmapLayout& layout = image.layout;
  const bool isPlain = IsPlain(layout, image.decoder);
  const int there = isPlain ? RowsThere(source, layout) : RowsCoded(source, layout);
  const int first = FirstStoredRow(plan.bandFirst, plan.bandCount, plan.info.Height, plan.info.Orientation);
  return std::clamp(there - first, 0, plan.bandCount);
}

int LoadBand(vx_source& source, LoadPlan* plan, vx_bitmap* picture, uint32_t* pixelBits) {
  if (plan->info.Format == FMT_PNG) {
    const int status = LoadPngFile(source, plan->bandFirst, plan->bandCount, picture);
    return status == STATUS_OK ? status : Explain(status, source, 0, {});
  }
  if (!plan->IsDecodedHere()) return LoadByFilter(source, plan, picture, pixelBits);
  const int status = LoadOwn(source, *plan, picture, pixelBits);
  if (status != STATUS_OK)
    return Explain(status, source, plan->info.TotalPages > 1 ? plan->options.page : 0, {});
  RemarkOnMask(*plan, {});
  return STATUS_OK;
}

namespace {

/// Loads the rows now, and gives them the colours and the order that were asked for.
int LoadRows(vx_source& source, LoadPlan* plan, vx_bitmap* picture) {
  uint32_t pixelBits = 0;
  int status = LoadBand(source, plan, picture, &pixelBits);
  if (status != STATUS_OK) return status;
  SettleAlpha(*plan, pixelBits, &picture->record);
  if ((plan->options.flags & VX_LOAD_TO_SRGB) != 0) status = ConvertToSrgb(picture);
  if (status != STATUS_OK) return NameFailure(status, source.Name());
  picture->TakeColors();
  if (plan->options.color_order != VX_ORDER_FILE) picture->ConvertOrder(plan->options.color_order);
  return STATUS_OK;
}

}  // namespace

int Load(vx_source& source, const vx_load_options* options, memory::Owned<vx_bitmap>* loaded) {
  LoadPlan plan;
  int status = PlanLoad(source, options, &plan);
  if (status != STATUS_OK) return status;
  auto picture = memory::Make<vx_bitmap>({"kernel/Load", __LINE__});
  if (picture == nullptr) return FailForMemory("a bitmap record", sizeof(vx_bitmap));
  const bool toSrgb = (plan.options.flags & VX_LOAD_TO_SRGB) != 0;
  if (plan.image && !plan.image->icon)
    status = ReadColorSpace(source, plan.image->layout, toSrgb, &picture->colorSpace);
  if (status != STATUS_OK) return NameFailure(status, source.Name());
  const bool isLater = (plan.options.flags & VX_LOAD_ROW_BY_ROW) != 0;
  bool isDone = false;
  if (isLater) status = LoadRowByRow(source, plan, picture.get(), &isDone);
  if (status == STATUS_OK && !isDone) status = LoadRows(source, &plan, picture.get());
  if (status != STATUS_OK) return status;
  const bool isWhole = picture->record.Height == plan.info.Height;
  if (isWhole) picture->hotSpot = HotSpotOf(source, plan);
  RemarkOn(source, plan, picture.get());
  *loaded = std::move(picture);
  return STATUS_OK;
}

int LoadAny(vx_source& source, const vx_load_options* asked, memory::Owned<vx_bitmap>* loaded) {
  vx_load_options options = asked == nullptr ? vx_load_options VX_LOAD_OPTIONS_DEFAULT : *asked;
  const bool mayHaveFrames = options.raw == nullptr && (options.flags & VX_LOAD_AS_FILTER) == 0;
  if (!mayHaveFrames || !IsAnimation(source)) return Load(source, &options, loaded);
  const int page = std::exchange(options.page, 1);
  options.flags &= ~unsigned{VX_LOAD_ROW_BY_ROW};  // the frame's source ends with this call
  return WithFrame(source, page,
                   [&](vx_source& frame, const Animation&) { return Load(frame, &options, loaded); });
}

}  // namespace vxkrn

int vx_load(vx_source* source, const vx_load_options* options, vx_bitmap** bitmap) {
  return vxkrn::Guarded([&]() -> int {
    if (bitmap != nullptr) *bitmap = nullptr;
    if (source == nullptr || bitmap == nullptr) {
      return vxkrn::FailForArgument("the source and the place for the bitmap must be given");
    }
    vxkrn::memory::Owned<vx_bitmap> loaded;
    const int status = vxkrn::LoadAny(*source, options, &loaded);
    if (status == STATUS_OK) *bitmap = loaded.release();
    return status;
  });
}
