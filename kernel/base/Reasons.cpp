// Names for the reasons of failures, and what to do about each. A table only.
#include <algorithm>
#include <array>

#include "vx/vx.h"

namespace {

struct ReasonEntry {
  int reason;
  const char* name;
  const char* advice;
};

constexpr std::array<ReasonEntry, 61> kReasons = {{
    {VX_REASON_NONE, "none", ""},
    {VX_REASON_BAD_ARGUMENT, "bad-argument", "Correct the calling program; the detail names the argument."},
    {VX_REASON_EDIT_IS_OVER, "edit-is-over", "Close the edit and open the file again."},
    {VX_REASON_OVER_MEMORY_LIMIT, "over-memory-limit",
     "Raise the limit (vx_set_memory_limit, --memory-limit), free bitmaps, or load a band of rows."},
    {VX_REASON_OUT_OF_MEMORY, "out-of-memory", "Free memory, or load a band of rows."},
    {VX_REASON_NO_SUCH_FILE, "no-such-file", "See to the name, and whether its folder is there."},
    {VX_REASON_NO_PERMISSION, "no-permission", "See to the permissions of the file and of its folder."},
    {VX_REASON_NOT_A_FILE, "not-a-file", "Name a file; pipes and devices are read through vx_open_stream."},
    {VX_REASON_DISK_FULL, "disk-full", "Make room, or see to the quota and the limit on file sizes."},
    {VX_REASON_SYSTEM_ERROR, "system-error", "See what the detail says that the system says."},
    {VX_REASON_EMPTY_FILE, "empty-file", "Get the file again: it has no bytes."},
    {VX_REASON_ENDS_EARLY, "ends-early", "Get a whole copy of the file."},
    {VX_REASON_ROWS_MISSING, "rows-missing",
     "Get a whole copy of the file, or take what is there: allow_truncated, --allow-truncated."},
    {VX_REASON_BEHIND_END, "behind-end", "Get a whole copy of the file; if this is one, it is damaged."},
    {VX_REASON_OUT_OF_REACH, "out-of-reach", "Take another copy: the file is damaged."},
    {VX_REASON_CHANGED_WHILE_READ, "changed-while-read", "Try again when nobody writes to the file."},
    {VX_REASON_NO_SIGNATURE, "no-signature",
     "Use a program for files of that kind; pixels without a header are described (vx_load_options.raw, "
     "--raw)."},
    {VX_REASON_TOO_SHORT, "too-short", "Get the file again: this is no whole one."},
    {VX_REASON_WRONG_ICON_TYPE, "wrong-icon-type",
     "Use a program for files of that kind, or take another copy."},
    {VX_REASON_NO_PAGES, "no-pages", "Add a page; a file without one cannot be."},
    {VX_REASON_NOT_AN_ICON, "not-an-icon", "Only icon and cursor files have pages; choose one."},
    {VX_REASON_HEADER_TOO_SHORT, "header-too-short",
     "Take another copy; the pixels may still load as headerless data."},
    {VX_REASON_UNKNOWN_HEADER, "unknown-header",
     "Take another copy; the pixels may still load as headerless data."},
    {VX_REASON_BAD_DEPTH, "bad-depth",
     "Pixels have 1, 4, 8, 16, 24 or 32 bits; if a file says else, it is damaged."},
    {VX_REASON_UNSUPPORTED_CODING, "unsupported-coding", "Convert the file with the program that wrote it."},
    {VX_REASON_BAD_MASKS, "bad-masks", "Convert the file with the program that wrote it."},
    {VX_REASON_BAD_SIZE, "bad-size", "Sides have 1 to 268435455 pixels; if a file says else, it is damaged."},
    {VX_REASON_PNG_DAMAGED, "png-damaged",
     "Take another copy; the other pages of an icon are none the worse."},
    {VX_REASON_PNG_IN_CURSOR, "png-in-cursor", "Replace the page, or change the file's type to icon."},
    {VX_REASON_PAGE_DAMAGED, "page-damaged", "Replace or delete the page; the others are none the worse."},
    {VX_REASON_PAGE_IN_DIRECTORY, "page-in-directory", "Delete or replace that page first."},
    {VX_REASON_NO_SUCH_PAGE, "no-such-page", "Choose a page from 1 to vx_info.page_count."},
    {VX_REASON_TOO_MANY_PAGES, "too-many-pages", "Delete a page first, or begin another file."},
    {VX_REASON_LAST_PAGE, "last-page", "Delete the file, or add a page first."},
    {VX_REASON_FORMAT_NOT_WRITTEN, "format-not-written", "Choose a format that vx_format_describe knows."},
    {VX_REASON_DEPTH_NOT_IN_FORMAT, "depth-not-in-format",
     "Choose a depth that vx_format_describe lists, or 0 to have one chosen."},
    {VX_REASON_TOO_LARGE, "too-large", "Make the picture smaller, or choose another format."},
    {VX_REASON_NEEDS_PNG_ICON, "needs-png-icon", "Save it as VX_FORMAT_VISTA_ICO (--to png-icon, --png)."},
    {VX_REASON_FILE_TOO_LARGE, "file-too-large", "Choose fewer bits per pixel, or save it in parts."},
    {VX_REASON_PAGE_NOT_IN_FILE, "page-not-in-file", "Choose a page of the file's own kind."},
    {VX_REASON_NOT_A_CURSOR, "not-a-cursor", "Leave the hot spot out: icons have none."},
    {VX_REASON_NOT_IN_PLACE, "not-in-place", "Open the edit without VX_EDIT_IN_PLACE."},
    {VX_REASON_LOCKED, "locked", "Try again when the other edit is done."},
    {VX_REASON_NO_LOCKS, "no-locks", "Leave VX_EDIT_REQUIRE_LOCK out to edit the file all the same."},
    {VX_REASON_FILE_CHANGED, "file-changed", "Open the file again, look at it, and repeat the edit."},
    {VX_REASON_FOLDER_NOT_STORED, "folder-not-stored",
     "See after a crash whether the new file is still there."},
    {VX_REASON_NO_FILTER, "no-filter",
     "Install vxfbmp.so.18, or set VX_FILTER_PATH to the folder that holds it."},
    {VX_REASON_BAD_FILTER, "bad-filter",
     "Put the filter of this kernel where the detail says one was found."},
    {VX_REASON_NO_DISPLAY, "no-display",
     "Install VXDIS.so next to the kernel library; drawing alone needs it."},
    {VX_REASON_BAD_DISPLAY, "bad-display", "Put the display library of this kernel where the other one is."},
    {VX_REASON_FILTER_GAVE_UP, "filter-gave-up",
     "See what the status means; report it if the file is whole."},
    {VX_REASON_INTERNAL, "internal", "Report it, with the file and the detail."},
    {VX_REASON_CODING_NOT_AT_DEPTH, "coding-not-at-depth",
     "Take another copy; VX_LOAD_AS_FILTER (--as-filter) may make something of it."},
    {VX_REASON_HEADER_CUT, "header-cut", "Get a whole copy of the file."},
    {VX_REASON_TABLE_CUT, "table-cut", "Get a whole copy of the file."},
    {VX_REASON_TOO_LITTLE_DATA, "too-little-data",
     "Get a whole copy of the file: of this one nothing can be shown."},
    {VX_REASON_JPEG_DAMAGED, "jpeg-damaged", "Take another copy; the JPEG stream in it is damaged."},
    {VX_REASON_NO_JPEG, "no-jpeg", "Build the library with libjpeg, which reads such streams."},
    {VX_REASON_PROFILE_DAMAGED, "profile-damaged", "Load it without VX_LOAD_TO_SRGB (--srgb)."},
    {VX_REASON_NO_COLOR_MANAGEMENT, "no-color-management",
     "Build the library with liblcms2, which applies colour profiles."},
    {VX_REASON_FOREIGN, "foreign", "Turn it into a PNG file with a program for files of that kind."},
}};

const ReasonEntry* FindReason(int reason) {
  const auto* entry = std::find_if(kReasons.begin(), kReasons.end(),
                                   [reason](const ReasonEntry& each) { return each.reason == reason; });
  return entry == kReasons.end() ? nullptr : entry;
}

}  // namespace

const char* vx_reason_name(int reason) {
  const ReasonEntry* entry = FindReason(reason);
  return entry == nullptr ? "unknown" : entry->name;
}

const char* vx_reason_advice(int reason) {
  const ReasonEntry* entry = FindReason(reason);
  return entry == nullptr ? "" : entry->advice;
}
