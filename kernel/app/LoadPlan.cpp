// Checks load options, for files and for headerless data. Opens and decodes nothing but the description.
#include "app/LoadPlan.h"

#include <algorithm>

#include "app/Describe.h"
#include "base/Errors.h"
#include "beyond/RunLengthScan.h"
#include "bitmap/Bitmap.h"

namespace vxkrn {
namespace {

constexpr int kReadBufferSize = 64 * 1024;

int CheckOptions(vx_load_options* options) {
  if (options->read_buffer_size == 0) options->read_buffer_size = kReadBufferSize;
  if (options->read_buffer_size < 2 || options->read_buffer_size % 2 != 0) {
    return FailForArgument("read_buffer_size is ", options->read_buffer_size,
                           "; it must be even and 2 or more, or 0");
  }
  const int order = options->color_order;
  if (const unsigned int unknown = options->flags & ~unsigned{VX_LOAD_AS_FILTER | VX_LOAD_TO_SRGB};
      unknown != 0) {
    return FailForArgument("flags are ", options->flags, ", but ", unknown, " means nothing");
  }
  if (options->alpha < VX_ALPHA_IGNORE || options->alpha > VX_ALPHA_FORCE) {
    return FailForArgument("alpha is ", options->alpha, "; it must be VX_ALPHA_IGNORE, AUTO or FORCE");
  }
  if (order != VX_ORDER_FILE && order != VX_ORDER_BGR && order != VX_ORDER_565) {
    return FailForArgument("color_order is ", order,
                           "; it must be VX_ORDER_FILE, VX_ORDER_BGR or VX_ORDER_565");
  }
  return STATUS_OK;
}

int CheckRawPicture(const vx_raw& raw) {
  if (raw.format < VX_FORMAT_RAW || raw.format > VX_FORMAT_RAW_BITFIELDS) {
    return FailForArgument("raw.format is ", raw.format, "; it must be one of the raw formats");
  }
  if (raw.width < 1 || raw.width > kLongestSide || raw.height < 1 || raw.height > kLongestSide) {
    return Fail({STATUS_BAD_DIMENSIONS, VX_REASON_BAD_SIZE, raw.width, raw.height}, "raw data of ", raw.width,
                " x ", raw.height, " pixels; a side can have 1 to ", kLongestSide);
  }
  if (!IsDepth(raw.bits_per_pixel)) {
    return Fail({STATUS_BAD_BPP, VX_REASON_BAD_DEPTH, raw.bits_per_pixel}, "raw.bits_per_pixel is ",
                raw.bits_per_pixel, "; it must be 1, 4, 8, 16, 24 or 32");
  }
  return STATUS_OK;
}

int CheckRawDetails(const vx_raw& raw) {
  if (raw.orientation != 0 && raw.orientation != VX_TOP_DOWN && raw.orientation != VX_BOTTOM_UP) {
    return FailForArgument("raw.orientation is ", raw.orientation, "; it must be 0, 1 or 4");
  }
  if (raw.offset > INT32_MAX) {
    return FailForArgument("raw.offset is ", raw.offset, "; it must be below 2147483648");
  }
  if (raw.palette_count < 0 || raw.palette_count > 256 || (raw.palette == nullptr && raw.palette_count > 0)) {
    return FailForArgument("raw.palette_count is ", raw.palette_count,
                           "; it must be the number of entries at raw.palette, 0 to 256");
  }
  if (raw.has_masks != 0 && raw.bits_per_pixel != 16) {
    return FailForArgument("raw.has_masks is set, but masks belong to 16 bits per pixel alone");
  }
  return STATUS_OK;
}

bool Is565(const vx_raw& raw) {
  return raw.has_masks != 0 && raw.red_mask == 0xF800 && raw.green_mask == 0x07E0 && raw.blue_mask == 0x001F;
}

int DescribeRaw(const vx_raw& raw, int page, IMAGEINFO* info) {
  int status = CheckRawPicture(raw);
  if (status == STATUS_OK) status = CheckRawDetails(raw);
  if (status != STATUS_OK) return status;
  if (page != 1) {
    return Fail({STATUS_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page, 1},
                "headerless data has page 1 alone, not page ", page);
  }
  *info = IMAGEINFO{};
  info->StructSize = sizeof *info;
  info->Format = raw.format;
  info->Width = raw.width;
  info->Height = raw.height;
  info->BitsPerPixel = raw.bits_per_pixel;
  info->Orientation = raw.orientation == 0 ? ORIENT_BOTTOM_UP : raw.orientation;
  info->ColorOrder = raw.bits_per_pixel > 8 ? ORDER_BGR : ORDER_RGB;
  if (Is565(raw)) info->ColorOrder = ORDER_565;
  info->XResolution = DpiOrDefault(0);
  info->YResolution = DpiOrDefault(0);
  return STATUS_OK;
}

int PlanBand(LoadPlan* plan) {
  const int height = plan->info.Height;
  const vx_load_options& options = plan->options;
  plan->bandFirst = options.band_first;
  plan->bandCount = options.band_count == 0 && options.band_first == 0 ? height : options.band_count;
  const bool inside = plan->bandFirst >= 0 && plan->bandFirst < height && plan->bandCount >= 1 &&
                      plan->bandCount <= height - plan->bandFirst;
  if (inside) return STATUS_OK;
  return FailForArgument("the band of ", options.band_count, " rows from row ", options.band_first,
                         " on does not lie in the picture, which has ", height, " rows");
}

/// Whether the filter can go straight to the band: it skips the rows before it with one seek, which goes
/// no further than an int.
bool IsWithinReach(const LoadPlan& plan) {
  const IMAGEINFO& info = plan.info;
  const int first = FirstStoredRow(plan.bandFirst, plan.bandCount, info.Height, info.Orientation);
  return first * Stride(info.Width, info.BitsPerPixel) <= INT32_MAX;
}

int CheckTable(const vx_source& source, const bmp::BitmapLayout& layout) {
  const int64_t size = source.Size();
  const uint64_t end = layout.PaletteEnd();
  if (size < 0 || layout.paletteCount == 0 || end <= static_cast<uint64_t>(size)) return STATUS_OK;
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_TABLE_CUT, layout.paletteOffset, end - layout.paletteOffset)
                  .At(size),
              "the file ends at byte ", size, ", inside its colour table, which has ", layout.paletteCount,
              " entries from byte ", layout.paletteOffset, " on");
}

/// Which rows of the band the file has, before memory is taken for any.
int CheckRowsThere(const vx_source& source, const LoadPlan& plan, int there) {
  const bmp::BitmapLayout& layout = plan.image->layout;
  const int first = FirstStoredRow(plan.bandFirst, plan.bandCount, plan.info.Height, plan.info.Orientation);
  const int inBand = std::clamp(there - first, 0, plan.bandCount);
  // The last row may be cut off: old writers leave out what shows nowhere.
  if (there > 0 && inBand >= plan.bandCount - 1) return STATUS_OK;
  if (plan.options.allow_truncated != 0 && there > 0) return STATUS_OK;
  const auto size = static_cast<uint64_t>(std::max<int64_t>(source.Size(), 0));
  const auto needed = PixelBytes(layout.width, layout.depth);
  if (layout.pixelOffset > size) {
    return Fail(Cause(STATUS_READ_ERROR, VX_REASON_BEHIND_END, size).At(layout.pixelOffset),
                "its data would start at byte ", layout.pixelOffset, ", but the file has ", size, " bytes");
  }
  if (there == 0) {
    const uint64_t bytes = size - std::min(size, layout.pixelOffset);
    return Fail(Cause(STATUS_READ_ERROR, VX_REASON_TOO_LITTLE_DATA, bytes, needed).At(size), "of its ",
                layout.height, " rows, ", needed, " bytes each from byte ", layout.pixelOffset,
                " on, not one is there: the file ends at byte ", size);
  }
  return Fail(Cause(STATUS_READ_ERROR, VX_REASON_ROWS_MISSING, there, layout.height).At(size),
              "the file ends at byte ", size, ": ", there, " of its ", layout.height, " rows are there");
}

/// Whether the last row is missing, and padding of the one before it, too: the filter wants that.
bool LacksPadding(const vx_source& source, const bmp::BitmapLayout& layout, int there) {
  const uint64_t end = layout.pixelOffset + layout.StoredStride() * static_cast<uint64_t>(there);
  return there == layout.height - 1 && source.Size() >= 0 && static_cast<uint64_t>(source.Size()) < end;
}

/// Decides who finds the rows and refuses a picture that the file cannot hold.
int PlanRows(const vx_source& source, LoadPlan* plan) {
  BitmapImage& image = *plan->image;
  if (const int status = CheckTable(source, image.layout); status != STATUS_OK) return status;
  if (!IsPlain(image.layout, image.decoder)) {
    if (image.decoder == bmp::Decoder::kFilter && !image.icon)
      plan->rowsTouched = RowsTouched(source, image.layout);
    return STATUS_OK;
  }
  const int there = RowsThere(source, image.layout);
  // The filter decodes an icon whole, with all the rows that its header speaks of, there or not.
  const bool isCutIcon = image.icon && there < image.layout.height;
  if (isCutIcon || LacksPadding(source, image.layout, there) ||
      (plan->bandCount < plan->info.Height && !IsWithinReach(*plan)))
    image.isFilters = false;
  return CheckRowsThere(source, *plan, there);
}

}  // namespace

int PlanLoad(vx_source& source, const vx_load_options* options, LoadPlan* plan) {
  plan->options = options == nullptr ? vx_load_options VX_LOAD_OPTIONS_DEFAULT : *options;
  const vx_raw* raw = plan->options.raw;
  int status = CheckOptions(&plan->options);
  if (status != STATUS_OK) return status;
  const bool asFilter = (plan->options.flags & VX_LOAD_AS_FILTER) != 0;
  status = raw != nullptr ? DescribeRaw(*raw, plan->options.page, &plan->info)
                          : Identify(source, plan->options.page, asFilter, &plan->info);
  if (status == STATUS_OK) status = PlanBand(plan);
  if (status != STATUS_OK) return status;
  if (raw == nullptr && !asFilter) status = FindBitmap(source, plan->options.page, &plan->image);
  if (status == STATUS_OK && plan->image) status = PlanRows(source, plan);
  const int pageWorthSaying = plan->info.TotalPages > 1 ? plan->options.page : 0;
  if (status != STATUS_OK) return NameFailure(status, source.Name(), pageWorthSaying);
  plan->isIcon = IsIcon(plan->info) || (plan->image && plan->image->icon);
  plan->isPng = IsPngPage(plan->info);
  // An icon's mask follows its last row, and a run cannot be started in the middle.
  plan->filterCutsBand = plan->bandCount < plan->info.Height && !plan->isIcon &&
                         plan->info.Compression[0] == '\0' && IsWithinReach(*plan);
  return STATUS_OK;
}

}  // namespace vxkrn
