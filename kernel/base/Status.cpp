// Names and sentences for the statuses and formats an application sees, and the proof that its numbers are
// the contract's. Tables only.
#include <algorithm>
#include <array>

#include "base/Contract.h"
#include "vx/vx.h"

namespace {

struct StatusEntry {
  int status;
  const char* name;
  const char* text;
};

constexpr std::array<StatusEntry, 18> kStatuses = {{
    {VX_OK, "STATUS_OK", "It worked."},
    {VX_UNKNOWN_HEADER, "STATUS_FAILURE",
     "The image header has a length that no reader knows; the file is damaged or of a newer kind."},
    {VX_NO_MEMORY, "STATUS_NO_MEMORY",
     "Memory ran out, or the picture is over the memory limit; raise the limit or load a band of rows."},
    {VX_SEEK_ERROR, "STATUS_SEEK_ERROR",
     "The file's headers point to a place that cannot be reached; the file is damaged."},
    {VX_WRITE_ERROR, "STATUS_WRITE_ERROR",
     "Not everything could be written; see whether the disk is full and try again."},
    {VX_READ_ERROR, "STATUS_READ_ERROR",
     "The file ends before its data does, or cannot be read; allow truncated files to get what is there."},
    {VX_BAD_FORMAT, "STATUS_BAD_FORMAT",
     "This is no bitmap, icon, cursor or PNG file, or a damaged one; look at its first bytes."},
    {VX_OPEN_ERROR, "STATUS_OPEN_ERROR",
     "The file cannot be opened for reading; check its name and permissions."},
    {VX_BAD_DIMENSIONS, "STATUS_BAD_DIMENSIONS",
     "The picture's width or height is out of range; the file is damaged or the size not allowed here."},
    {VX_BAD_PARAMETER, "STATUS_BAD_PARAMETER",
     "An argument is null or out of its range; this is a mistake in the calling program."},
    {VX_OPEN_WRITE_ERROR, "STATUS_OPEN_WRITE_ERROR",
     "The file cannot be opened for writing; check its name and permissions, and whether it is being "
     "edited."},
    {VX_NOT_SUPPORTED, "STATUS_NOT_SUPPORTED", "This kind of file cannot do that; choose another format."},
    {VX_BAD_BPP, "STATUS_BAD_BPP",
     "This depth cannot be used here; choose another number of bits per pixel."},
    {VX_NO_DISPLAY_LIBRARY, "STATUS_NO_DISPLAY_LIBRARY",
     "The display library, VXDIS.so, cannot be loaded; it is built where libchafa is installed."},
    {VX_BAD_PAGE, "STATUS_BAD_PAGE", "The file has no such page; pages count from 1."},
    {VX_LAST_PAGE, "STATUS_LAST_PAGE", "The only page of a file cannot be deleted; delete the file instead."},
    {VX_NO_FILTER, "STATUS_NO_FILTER",
     "The filter vxfbmp.so.18 cannot be found or loaded; set VX_FILTER_PATH to the folder that holds it."},
    {VX_FILE_CHANGED, "STATUS_FILE_CHANGED",
     "The file was changed while it was being edited; open it again and repeat the edit."},
}};

const StatusEntry* FindStatus(int status) {
  const auto* entry = std::find_if(kStatuses.begin(), kStatuses.end(),
                                   [status](const StatusEntry& each) { return each.status == status; });
  return entry == kStatuses.end() ? nullptr : entry;
}

struct FormatEntry {
  int format;
  const char* name;
};

constexpr std::array<FormatEntry, 14> kFormats = {{
    {VX_FORMAT_BMP, "Windows bitmap"},
    {VX_FORMAT_OS2, "OS/2 1.x bitmap"},
    {VX_FORMAT_OS2_2, "OS/2 2.x or long-header bitmap"},
    {VX_FORMAT_PNG, "PNG"},
    {VX_FORMAT_BMP_RLE, "Windows bitmap, run-length coded"},
    {VX_FORMAT_ICO, "icon"},
    {VX_FORMAT_CUR, "cursor"},
    {VX_FORMAT_RAW, "raw pixels"},
    {VX_FORMAT_RAW_RLE4, "raw pixels, RLE4"},
    {VX_FORMAT_RAW_RLE8, "raw pixels, RLE8"},
    {VX_FORMAT_RAW_BITFIELDS, "raw pixels with colour masks"},
    {VX_FORMAT_VISTA_ICO, "icon with PNG or 256-pixel pages"},
    {VX_FORMAT_OS2_ICON, "OS/2 icon"},
    {VX_FORMAT_OS2_POINTER, "OS/2 pointer"},
}};

}  // namespace

static_assert(STATUS_OK == VX_OK && STATUS_FAILURE == VX_UNKNOWN_HEADER && STATUS_NO_MEMORY == VX_NO_MEMORY);
static_assert(STATUS_SEEK_ERROR == VX_SEEK_ERROR && STATUS_WRITE_ERROR == VX_WRITE_ERROR);
static_assert(STATUS_READ_ERROR == VX_READ_ERROR && STATUS_BAD_FORMAT == VX_BAD_FORMAT);
static_assert(STATUS_OPEN_ERROR == VX_OPEN_ERROR && STATUS_BAD_DIMENSIONS == VX_BAD_DIMENSIONS);
static_assert(STATUS_BAD_PARAMETER == VX_BAD_PARAMETER && STATUS_OPEN_WRITE_ERROR == VX_OPEN_WRITE_ERROR);
static_assert(STATUS_NOT_SUPPORTED == VX_NOT_SUPPORTED && STATUS_BAD_BPP == VX_BAD_BPP);
static_assert(STATUS_NO_DISPLAY_LIBRARY == VX_NO_DISPLAY_LIBRARY && STATUS_BAD_PAGE == VX_BAD_PAGE);
static_assert(STATUS_LAST_PAGE == VX_LAST_PAGE);
static_assert(FMT_BMP == VX_FORMAT_BMP && FMT_OS2 == VX_FORMAT_OS2 && FMT_OS2_2 == VX_FORMAT_OS2_2);
static_assert(FMT_PNG == VX_FORMAT_PNG && FMT_BMP_RLE == VX_FORMAT_BMP_RLE && FMT_ICO == VX_FORMAT_ICO);
static_assert(FMT_CUR == VX_FORMAT_CUR && FMT_RAW == VX_FORMAT_RAW && FMT_RAW_RLE4 == VX_FORMAT_RAW_RLE4);
static_assert(FMT_RAW_RLE8 == VX_FORMAT_RAW_RLE8 && FMT_RAW_BITFIELDS == VX_FORMAT_RAW_BITFIELDS);
static_assert(FMT_VISTA_ICO == VX_FORMAT_VISTA_ICO);
static_assert(ORIENT_TOP_DOWN == VX_TOP_DOWN && ORIENT_BOTTOM_UP == VX_BOTTOM_UP);
static_assert(ORDER_RGB == VX_ORDER_RGB && ORDER_BGR == VX_ORDER_BGR && ORDER_565 == VX_ORDER_565);
static_assert(sizeof(vx_info::compression) == sizeof(IMAGEINFO::Compression));

const char* vx_status_name(int status) {
  const StatusEntry* entry = FindStatus(status);
  return entry == nullptr ? "unknown status" : entry->name;
}

const char* vx_status_text(int status) {
  const StatusEntry* entry = FindStatus(status);
  return entry == nullptr ? "This number is no status of this library." : entry->text;
}

const char* vx_format_name(int format) {
  const auto* entry = std::find_if(kFormats.begin(), kFormats.end(),
                                   [format](const FormatEntry& each) { return each.format == format; });
  return entry == kFormats.end() ? "unknown" : entry->name;
}

const char* vx_version(void) {
  return VX_VERSION;
}
