// Identification on behalf of an application: vx_describe, and the first half of vx_load.
#include "app/Describe.h"

#include <algorithm>
#include <cstring>

#include "app/Explain.h"
#include "app/Frames.h"
#include "app/PngFile.h"
#include "base/CallRecord.h"
#include "base/Errors.h"
#include "beyond/BitmapFile.h"
#include "beyond/IconKind.h"
#include "beyond/MendedIcon.h"
#include "bitmap/Bitmap.h"
#include "files/Files.h"
#include "filter/FilterLoader.h"
#include "filter/PngCallbacks.h"

namespace vxkrn {
namespace {

/// Has the filter look at what the view opens. page is clamped into the file.
int LetFilterLook(const Filter& filter, const Backend& view, const char* name, int* page, IMAGEINFO* info,
                  ReadTrace* trace) {
  *info = IMAGEINFO{};
  info->StructSize = sizeof *info;
  const BackendScope scope(view);
  HANDLE file = VX_RedirectedOpen(name, VX_OPEN_READ, 0);
  if (file == InvalidHandle()) return FailForMemory("opening it", sizeof(OpenFile));

  LOADOPTIONS options = {};
  options.StructSize = sizeof options;
  options.PageNumber = *page;
  _INFODISPATCH dispatch = {};
  dispatch.StructSize = sizeof dispatch;
  dispatch.File = file;
  dispatch.FileInfo = info;
  dispatch.LoadOptions = &options;
  dispatch.GetPngInfoFromMemory = DescribePngPage;
  const int status = filter.info(&dispatch);
  *page = options.PageNumber;
  *trace = TraceOf(file);
  (void)VX_RedirectedClose(file);
  return status;
}

/// Has the filter look at the source, past other pages that are out of reach.
int AskFilter(const Filter& filter, vx_source& source, int* page, IMAGEINFO* info, ReadTrace* trace) {
  const int status = LetFilterLook(filter, source.View(), source.Name(), page, info, trace);
  if (status != STATUS_READ_ERROR) return status;
  MendedIcon mended(source);
  if (!mended.MendFor(*page)) {
    Detail().Clear();  // what was found on the way is not why the filter gave up
    return status;
  }
  const int again = LetFilterLook(filter, mended.View(), source.Name(), page, info, trace);
  info->TotalPages = mended.PageCount();
  return again;
}

int PageCount(const IMAGEINFO& info) {
  return std::max(info.TotalPages, 1);
}

int FailForPage(const vx_source& source, int page, int pageCount) {
  return Fail({STATUS_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page, pageCount}, source.Name(), " has no page ",
              page, ": its pages are 1 to ", pageCount);
}

/// A PNG page is described with its directory entry's depth, which may be one that no bitmap has.
void CorrectPngDepth(const FilterCall& context, IMAGEINFO* info) {
  if (!context.sawPng || IsDepth(info->BitsPerPixel)) return;
  info->BitsPerPixel = context.png.bitsPerPixel;
  const auto rowBytes = static_cast<uint64_t>(PixelBytes(info->Width, info->BitsPerPixel));
  info->DataSize = static_cast<int>(static_cast<uint32_t>(rowBytes * static_cast<uint64_t>(info->Height)));
}

int CheckPicture(const vx_source& source, int page, const IMAGEINFO& info) {
  const auto isSide = [](int side) { return side >= 1 && side <= kLongestSide; };
  if (!isSide(info.Width) || !isSide(info.Height)) {
    Fail({STATUS_BAD_DIMENSIONS, VX_REASON_BAD_SIZE, info.Width, info.Height}, "its header says ", info.Width,
         " x ", info.Height, " pixels; a side can have 1 to ", kLongestSide);
    return Explain(STATUS_BAD_DIMENSIONS, source, page, {});
  }
  if (IsDepth(info.BitsPerPixel)) return STATUS_OK;
  Fail({STATUS_BAD_BPP, VX_REASON_BAD_DEPTH, info.BitsPerPixel}, "its header says ", info.BitsPerPixel,
       " bits per pixel");
  return Explain(STATUS_BAD_BPP, source, page, {});
}

}  // namespace

bool IsPngPage(const IMAGEINFO& info) noexcept {
  return std::strcmp(info.Compression, "PNG") == 0;
}

bool IsIcon(const IMAGEINFO& info) noexcept {
  return info.Format == FMT_ICO || info.Format == FMT_CUR || info.Format == FMT_VISTA_ICO;
}

namespace {

int DescribeOwn(vx_source& source, const BitmapImage& image, IMAGEINFO* info) {
  const int pageWorthSaying = image.pageCount > 1 ? image.page : 0;
  const bool isPng = image.icon && image.icon->isPng;
  if (!isPng) {
    const int status = CheckBitmap(image);
    if (status != STATUS_OK) return Explain(status, source, pageWorthSaying, {});
    DescribeBitmap(image, info);
  } else if (const int status = DescribePngBody(source, *image.icon, info); status != STATUS_OK) {
    return Explain(status, source, pageWorthSaying, {});
  }
  info->PageNumber = image.page;
  info->TotalPages = image.pageCount;
  if (image.icon && image.icon->HasDirectory()) info->Format = FormatOfIconFile(source);
  info->XResolution = DpiOrDefault(info->XResolution);
  info->YResolution = DpiOrDefault(info->YResolution);
  return STATUS_OK;
}

/// Whether the filter would have to look at every page to describe this one.
bool IsBitmapOfIcon(const BitmapImage& image) {
  return image.icon && image.icon->HasDirectory() && !image.icon->isPng;
}

/// What the filter says of such an image, which is its own, without asking it.
int DescribeForFilter(vx_source& source, const BitmapImage& image, IMAGEINFO* info) {
  const int pageWorthSaying = image.pageCount > 1 ? image.page : 0;
  DescribeBitmap(image, info);
  info->Height = bmp::WrapAbsolute(info->Height);
  info->XResolution = DpiOrDefault(info->XResolution);
  info->YResolution = DpiOrDefault(info->YResolution);
  const int status = FindFiltersFormat(source, image, &info->Format);
  if (status != STATUS_OK) return Explain(status, source, pageWorthSaying, {});
  return CheckPicture(source, pageWorthSaying, *info);
}

int LookAtPage(vx_source& source, int page, bool asFilter, IMAGEINFO* info) {
  if (page < 1) {
    return Fail({STATUS_BAD_PAGE, VX_REASON_NO_SUCH_PAGE, page}, "page ", page,
                " was asked for; pages count from 1");
  }
  if (IsPngFile(source)) {
    if (page > 1) return FailForPage(source, page, 1);
    const int described = DescribePngFile(source, info);
    return described == STATUS_OK ? described : Explain(described, source, 0, {});
  }
  std::optional<BitmapImage> image;
  int status = asFilter ? int{STATUS_OK} : FindBitmap(source, page, &image);
  if (status == STATUS_OK && image && !image->icon) status = CheckBitmap(*image);
  if (status != STATUS_OK) return Explain(status, source, 0, {});
  if (image && !image->isFilters) return DescribeOwn(source, *image, info);
  if (image && IsBitmapOfIcon(*image)) return DescribeForFilter(source, *image, info);
  const Filter* filter = nullptr;
  status = LoadFilter(&filter);
  if (status != STATUS_OK) return status;

  FilterCall context;
  const FilterCallScope scope(&context);
  int found = page;
  ReadTrace trace;
  status = AskFilter(*filter, source, &found, info, &trace);
  info->Compression[sizeof info->Compression - 1] = '\0';
  if (found != page) return FailForPage(source, page, found);
  const int pageWorthSaying = info->TotalPages > 1 ? page : 0;
  if (status != STATUS_OK) return Explain(status, source, pageWorthSaying, trace);
  if (page > PageCount(*info)) return FailForPage(source, page, PageCount(*info));

  info->XResolution = DpiOrDefault(info->XResolution);
  info->YResolution = DpiOrDefault(info->YResolution);
  if (image) info->TotalPages = image->pageCount;
  CorrectPngDepth(context, info);
  return CheckPicture(source, pageWorthSaying, *info);
}

}  // namespace

int Identify(vx_source& source, int page, bool asFilter, IMAGEINFO* info) {
  vx_source::Head* const head = source.head.get();
  if (head != nullptr && page >= 1 && page == head->describedPage && asFilter == head->describedAsFilter) {
    *info = head->described;
    return STATUS_OK;
  }
  const int status = LookAtPage(source, page, asFilter, info);
  if (status != STATUS_OK || head == nullptr) return status;
  head->described = *info;
  head->describedPage = page;
  head->describedAsFilter = asFilter;
  return STATUS_OK;
}

namespace {

/// Describes a page of a source that is no animated cursor.
int Describe(vx_source& source, int page, vx_info* info) {
  IMAGEINFO found = {};
  const int status = Identify(source, page, false, &found);
  if (status != STATUS_OK) return status;
  info->format = found.Format;
  info->width = found.Width;
  info->height = found.Height;
  info->bits_per_pixel = found.BitsPerPixel;
  info->orientation = found.Orientation;
  info->color_order = found.ColorOrder;
  info->x_dpi = found.XResolution;
  info->y_dpi = found.YResolution;
  info->page = page;
  info->page_count = PageCount(found);
  info->data_size = static_cast<uint32_t>(found.DataSize);
  std::memcpy(info->compression, found.Compression, sizeof info->compression);
  return STATUS_OK;
}

int DescribeFrame(vx_source& source, int page, vx_info* info) {
  return WithFrame(source, page, [&](vx_source& frame, const Animation& animation) {
    const int status = Describe(frame, 1, info);
    if (status != STATUS_OK) return status;
    info->format = VX_FORMAT_ANI;
    info->page = page;
    info->page_count = static_cast<int>(animation.frames.size());
    return int{STATUS_OK};
  });
}

}  // namespace
}  // namespace vxkrn

int vx_describe(vx_source* source, int page, vx_info* info) {
  return vxkrn::Guarded([&]() -> int {
    if (source == nullptr || info == nullptr) {
      return vxkrn::FailForArgument("the source and the record to fill must be given");
    }
    *info = vx_info{};
    return vxkrn::IsAnimation(*source) ? vxkrn::DescribeFrame(*source, page, info)
                                       : vxkrn::Describe(*source, page, info);
  });
}
