/*
 * vx.h - the application side of libvxkrn: open an image file or a block of memory, ask what is on
 * each page, load a page into a bitmap, take its pixels out, and save it as another file.
 *
 * Valid C11 and C++. For C++ with ownership taken care of, see <vx/image.hpp>.
 *
 *     vx_source* source;
 *     vx_info info;
 *     vx_bitmap* bitmap;
 *     if (vx_open_file("app.ico", &source) == VX_OK) {
 *       if (vx_describe(source, 1, &info) == VX_OK && vx_load(source, NULL, &bitmap) == VX_OK) {
 *         ...                          // vx_bitmap_read_rgba, vx_bitmap_encode_png, ...
 *         vx_bitmap_free(bitmap);
 *       }
 *       vx_close(source);
 *     }
 *
 * Conventions
 *   - Functions that can fail return a vx_status: VX_OK (1), anything else is a failure. Objects
 *     asked for are set to null first and left so on failure. vx_status_text says what a status means;
 *     vx_error_detail says what went wrong in this thread's last failed call, and where.
 *   - Strings are UTF-8 or whatever bytes the file system uses, NUL-terminated.
 *   - Rows count from the top of the picture, starting at 0, whatever order the file stores them in.
 *   - Objects may be used by one thread at a time; different objects by different threads at once.
 */
#ifndef VX_VX_H
#define VX_VX_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#define VX_API __attribute__((visibility("default")))
#else
#define VX_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Statuses ---- */

typedef enum vx_status {
  VX_OK = 1,                   /**< it worked */
  VX_UNKNOWN_HEADER = 0,       /**< an image header of a length that no reader knows */
  VX_NO_MEMORY = -1,           /**< memory ran out, or the picture is over the memory limit */
  VX_SEEK_ERROR = -4,          /**< the headers point to where no file can reach, or seeking failed */
  VX_WRITE_ERROR = -5,         /**< not everything could be written */
  VX_READ_ERROR = -7,          /**< the file ends before the data does, or cannot be read */
  VX_BAD_FORMAT = -9,          /**< not a file of a known kind, or a damaged one */
  VX_OPEN_ERROR = -10,         /**< the file cannot be opened for reading */
  VX_BAD_DIMENSIONS = -11,     /**< width or height out of range */
  VX_BAD_PARAMETER = -13,      /**< an argument is null or out of its range */
  VX_OPEN_WRITE_ERROR = -14,   /**< the file cannot be opened for writing */
  VX_NOT_SUPPORTED = -16,      /**< not possible for this kind of file */
  VX_BAD_BPP = -27,            /**< a depth that cannot be used here */
  VX_NO_DISPLAY_LIBRARY = -30, /**< the display library is not there */
  VX_BAD_PAGE = -310,          /**< no such page */
  VX_LAST_PAGE = -311,         /**< the only page of a file cannot go */
  VX_NO_FILTER = -1000,        /**< the filter, vxfbmp.so.18, cannot be found or loaded */
  VX_FILE_CHANGED = -1001      /**< the file was changed by somebody else while it was being edited */
} vx_status;

/**
 * Why a call failed, where a program can do something about it. first and second are numbers of
 * vx_error_info; the record has the byte and the page as well, where they are known.
 */
typedef enum vx_reason {
  VX_REASON_NONE = 0, /**< nothing failed */
  /* the call */
  VX_REASON_BAD_ARGUMENT = 1, /**< an argument is null or out of its range */
  VX_REASON_EDIT_IS_OVER = 2, /**< the edit is stored already, or failed half way: it can only be closed */
  /* memory */
  VX_REASON_OVER_MEMORY_LIMIT = 3, /**< over the memory limit; first: bytes needed; second: the limit */
  VX_REASON_OUT_OF_MEMORY = 4,     /**< the system has no more; first: bytes needed, 0 where not known */
  /* the system's files */
  VX_REASON_NO_SUCH_FILE = 5,  /**< no such file or folder; first: errno */
  VX_REASON_NO_PERMISSION = 6, /**< not allowed; first: errno */
  VX_REASON_NOT_A_FILE = 7,    /**< a folder, pipe or device; first: errno */
  VX_REASON_DISK_FULL = 8,     /**< no room, or over a quota or limit; first: errno */
  VX_REASON_SYSTEM_ERROR = 9,  /**< the system's error; first: errno; 0: of an application's own files */
  /* files that are not whole */
  VX_REASON_EMPTY_FILE = 10, /**< the file has no bytes */
  VX_REASON_ENDS_EARLY = 11, /**< the file ends at the record's offset; first: where what is cut off begins */
  VX_REASON_ROWS_MISSING = 12,       /**< the same, among the rows: allow_truncated takes the others; first:
                                        rows that are there; second: rows of the picture */
  VX_REASON_BEHIND_END = 13,         /**< the offset lies behind the end; first: the file's length */
  VX_REASON_OUT_OF_REACH = 14,       /**< the headers speak of a place where no file reaches */
  VX_REASON_CHANGED_WHILE_READ = 15, /**< the file changed, or contradicts itself */
  /* what a file says */
  VX_REASON_NO_SIGNATURE = 16, /**< no file of a known kind; first, second: the bytes that it begins with */
  VX_REASON_TOO_SHORT = 17,    /**< too short for any picture; first: the file's length */
  VX_REASON_WRONG_ICON_TYPE = 18,  /**< neither an icon's nor a cursor's; first: what it says */
  VX_REASON_NO_PAGES = 19,         /**< an icon or cursor file without one */
  VX_REASON_NOT_AN_ICON = 20,      /**< neither an icon nor a cursor file */
  VX_REASON_HEADER_TOO_SHORT = 21, /**< first: the length that the image header says */
  VX_REASON_UNKNOWN_HEADER = 22,   /**< an image header of a length that no reader knows; first: the length */
  VX_REASON_BAD_DEPTH = 23,        /**< no picture has that depth; first: bits per pixel */
  VX_REASON_UNSUPPORTED_CODING = 24, /**< at that depth; first: the compression; second: bits per pixel */
  VX_REASON_BAD_MASKS = 25,          /**< masks that no reader takes; first: bits per pixel */
  VX_REASON_BAD_SIZE = 26,           /**< no picture has such a size; first: width; second: height */
  VX_REASON_PNG_DAMAGED = 27,        /**< a PNG stream is damaged */
  VX_REASON_PNG_IN_CURSOR = 28,      /**< a page of a cursor file is a PNG stream */
  VX_REASON_PAGE_DAMAGED = 29,       /**< a page that is not complete, or not usable */
  VX_REASON_PAGE_IN_DIRECTORY = 30,  /**< a page begins inside the directory; first: where that ends */
  /* pages */
  VX_REASON_NO_SUCH_PAGE = 31,   /**< first: the page asked for; second: how many there are, if known */
  VX_REASON_TOO_MANY_PAGES = 32, /**< no more can be added; first: how many there are */
  VX_REASON_LAST_PAGE = 33,      /**< the only page cannot go */
  /* what a format can hold */
  VX_REASON_FORMAT_NOT_WRITTEN = 34,  /**< pictures cannot be saved in it; first: the vx_format */
  VX_REASON_DEPTH_NOT_IN_FORMAT = 35, /**< first: bits per pixel; second: the vx_format that has not these */
  VX_REASON_TOO_LARGE = 36, /**< too large for the format; first: its longest side; second: the vx_format */
  VX_REASON_NEEDS_PNG_ICON = 37,   /**< 256 pixels, which icons with PNG pages alone have; the same numbers */
  VX_REASON_FILE_TOO_LARGE = 38,   /**< no file can be so long; first: bytes */
  VX_REASON_PAGE_NOT_IN_FILE = 39, /**< the file cannot have a page of that kind; first: the vx_format */
  VX_REASON_NOT_A_CURSOR = 40,     /**< only cursors have hot spots */
  VX_REASON_NOT_IN_PLACE = 41,     /**< that cannot be done to a file that is edited in place */
  /* writing */
  VX_REASON_LOCKED = 42,            /**< another edit of the file goes on */
  VX_REASON_NO_LOCKS = 43,          /**< the file cannot be locked; first: errno */
  VX_REASON_FILE_CHANGED = 44,      /**< somebody else changed the file while it was edited */
  VX_REASON_FOLDER_NOT_STORED = 45, /**< the file is written, but may be gone after a crash; first: errno */
  /* libraries */
  VX_REASON_NO_FILTER = 46,      /**< the filter is nowhere where it is looked for */
  VX_REASON_BAD_FILTER = 47,     /**< it cannot be loaded, or is none of this kernel */
  VX_REASON_NO_DISPLAY = 48,     /**< the display library cannot be loaded */
  VX_REASON_BAD_DISPLAY = 49,    /**< the display library does not work */
  VX_REASON_FILTER_GAVE_UP = 50, /**< the filter failed for no reason that is known; first: its status */
  VX_REASON_INTERNAL = 51,       /**< a fault of this library, or of functions that an application gave it */
  /* what only the library's own readers know of */
  VX_REASON_CODING_NOT_AT_DEPTH = 52, /**< a coding that there is, at other depths; first: the compression;
                                         second: bits per pixel */
  VX_REASON_HEADER_CUT = 53,          /**< the file ends inside an image header; first: where that begins;
                                         second: the length that it says */
  VX_REASON_TABLE_CUT = 54,           /**< or inside a colour table; the same numbers */
  VX_REASON_TOO_LITTLE_DATA = 55, /**< no row of the picture is there; first, second: bytes of pixels there
                                     are, and that a row needs */
  VX_REASON_JPEG_DAMAGED = 56,    /**< a JPEG stream is damaged */
  VX_REASON_NO_JPEG = 57,         /**< this library was built without a reader for JPEG streams */
  VX_REASON_PROFILE_DAMAGED = 58, /**< a colour profile that cannot be used */
  VX_REASON_NO_COLOR_MANAGEMENT = 59, /**< this library was built without what applies colour profiles */
  VX_REASON_FOREIGN = 60              /**< a picture of a kind that is not read; first: vx_foreign */
} vx_reason;

/** Kinds of pictures that are recognised, and not read. */
typedef enum vx_foreign {
  VX_FOREIGN_JPEG = 1,
  VX_FOREIGN_GIF = 2,
  VX_FOREIGN_WEBP = 3,
  VX_FOREIGN_SVG = 4,
  VX_FOREIGN_TIFF = 5
} vx_foreign;

/** What this thread's last failed call found wrong, in numbers. */
typedef struct vx_error_info {
  int status;     /**< vx_status; VX_OK where the last call did not fail */
  int reason;     /**< vx_reason */
  int page;       /**< the page of the file, from 1; 0 where it has one only, or no page is meant */
  int is_of_rows; /**< nonzero: rows that VX_LOAD_ROW_BY_ROW left to be read could not be, which is no matter
                     of the file that they are saved to */
  int64_t offset; /**< the byte of the file where it shows; -1 where no byte is meant */
  int64_t first;  /**< what vx_reason says; else 0 */
  int64_t second; /**< what vx_reason says; else 0 */
} vx_error_info;

/** @return the status's name, such as "STATUS_BAD_FORMAT"; "unknown status" for any other number. */
VX_API const char* vx_status_name(int status);
/** @return one sentence that says what the status means and what to do about it. */
VX_API const char* vx_status_text(int status);
/**
 * What this thread's last failed call found wrong: in words, with byte offset and page where known.
 * @return text valid until the thread's next call; "" when there is nothing to add to the status.
 */
VX_API const char* vx_error_detail(void);
/** @return the vx_reason of this thread's last failed call; it holds until the thread's next call. */
VX_API int vx_error_reason(void);
/** Fills the record for this thread's last failed call; what it says holds until the thread's next call. */
VX_API void vx_last_error(vx_error_info* info);
/** @return the reason's name, such as "ends-early"; "unknown" for any other number. */
VX_API const char* vx_reason_name(int reason);
/** @return one sentence that says what to do about it; "" where nothing can be done, and for other numbers */
VX_API const char* vx_reason_advice(int reason);
/**
 * Whether this thread's last failed call was a vx_load that found headers and palette whole, but not all the
 * rows: then vx_load_options.allow_truncated makes a picture of what is there.
 * @return 1 or 0; it holds until the thread's next call.
 */
VX_API int vx_error_rows_missing(void);

/* ---- Remarks ---- */

/** What went well, but not whole or not as the file says. first and second are numbers of vx_remark. */
typedef enum vx_remark_code {
  VX_REMARK_NONE = 0,
  /* loading */
  VX_REMARK_ROWS_MISSING = 1,    /**< first: rows that are there; second: rows of the picture */
  VX_REMARK_OFFSET_MENDED = 2,   /**< no pixels can be where the file says; first: what it says; second: where
                                    they were taken from */
  VX_REMARK_NO_FILE_HEADER = 3,  /**< a bitmap that begins with its image header; first: that one's length */
  VX_REMARK_ALPHA_TAKEN = 4,     /**< the fourth bytes are in use, and were taken as alpha */
  VX_REMARK_ALPHA_IGNORED = 5,   /**< the fourth bytes are in use, and were not taken as alpha */
  VX_REMARK_ALPHA_EMPTY = 6,     /**< alpha that would hide every pixel was not believed */
  VX_REMARK_PROFILE_LINKED = 7,  /**< the colour profile is another file, which is never opened */
  VX_REMARK_PROFILE_DAMAGED = 8, /**< the colour profile cannot be used, and was not */
  VX_REMARK_MASK_MISSING = 9,    /**< first: mask rows that are there; second: mask rows of the page */
  VX_REMARK_ENTRY_SIZE = 10,   /**< the directory says another size; first, second: width and height there */
  VX_REMARK_ENTRY_DEPTH = 11,  /**< the directory says another depth; first: that; second: the page's own */
  VX_REMARK_ENTRY_LENGTH = 12, /**< the directory says another length; first: that; second: the page's own */
  VX_REMARK_BODIES_OVERLAP = 13,     /**< the page shares bytes with another; first: the other page */
  VX_REMARK_PNG_IN_CURSOR = 14,      /**< a page of a cursor file is a PNG stream */
  VX_REMARK_HEIGHT_NOT_DOUBLED = 15, /**< the page's header leaves out the mask; first: the height it says */
  VX_REMARK_HEADER_IN_ICON = 16,     /**< the page's header is not the usual one; first: its length */
  VX_REMARK_CHUNK_SIZE = 17,         /**< a size or count of an animated cursor lies; first: the byte of the
                                        first that does; second: what it says */
  /* saving */
  VX_REMARK_ALPHA_HARDENED = 18, /**< half opaque and more became opaque, the rest transparent */
  VX_REMARK_ALPHA_DROPPED = 19,  /**< everything is opaque in the file */
  VX_REMARK_COLORS_LOST = 20,    /**< some pixels changed their colour; first: bits per pixel written */
  VX_REMARK_PROFILE_DROPPED = 21 /**< the format has no place for the colour profile */
} vx_remark_code;

typedef struct vx_remark {
  int code;       /**< vx_remark_code */
  int page;       /**< the page of the file, from 1; 0 where it has one only */
  int64_t first;  /**< what vx_remark_code says; else 0 */
  int64_t second; /**< what vx_remark_code says; else 0 */
} vx_remark;

/**
 * What this thread's last call that loaded or saved has to remark, in the order in which it was noticed.
 * @param count receives how many there are, at most 16 @return the first; valid until the thread's next call
 */
VX_API const vx_remark* vx_remarks(int* count);
/** @return the code's name, such as "rows-missing"; "unknown" for any other number. */
VX_API const char* vx_remark_name(int code);
/**
 * @return words that go on from the name of a file or page and say what it means, with {1} and {2} in the
 * places of first and second; "" for other numbers.
 */
VX_API const char* vx_remark_text(int code);

/* ---- What a file holds ---- */

typedef enum vx_format {
  VX_FORMAT_BMP = 6,      /**< Windows bitmap, uncompressed or bit fields */
  VX_FORMAT_OS2 = 14,     /**< OS/2 1.x bitmap */
  VX_FORMAT_OS2_2 = 74,   /**< bitmap with a header other than 12 or 40 bytes: OS/2 2.x, Windows V4, V5 */
  VX_FORMAT_PNG = 75,     /**< PNG */
  VX_FORMAT_BMP_RLE = 84, /**< Windows bitmap, run-length coded */
  VX_FORMAT_ICO = 91,     /**< icon */
  VX_FORMAT_CUR = 92,     /**< cursor */
  VX_FORMAT_RAW = 156,    /**< headerless data, uncompressed */
  VX_FORMAT_RAW_RLE4 = 157,
  VX_FORMAT_RAW_RLE8 = 158,
  VX_FORMAT_RAW_BITFIELDS = 159,
  VX_FORMAT_VISTA_ICO = 321, /**< icon with a PNG page or a page of 256 pixels */
  /* what the library reads beside the filter */
  VX_FORMAT_DIB = 1000,         /**< bitmap without a file header, as clipboards have them */
  VX_FORMAT_OS2_ICON = 1001,    /**< OS/2 icon */
  VX_FORMAT_OS2_POINTER = 1002, /**< OS/2 pointer */
  VX_FORMAT_ANI = 1003          /**< animated cursor */
} vx_format;

/** @return a short name for people, such as "Windows bitmap"; "unknown" for any other number. */
VX_API const char* vx_format_name(int format);

typedef enum vx_orientation { VX_TOP_DOWN = 1, VX_BOTTOM_UP = 4 } vx_orientation;

typedef enum vx_order {
  VX_ORDER_FILE = -1, /**< load options only: as the file implies */
  VX_ORDER_RGB = 0,   /**< palette indices */
  VX_ORDER_BGR = 1,   /**< blue lowest; at 16 bits 5-5-5 */
  VX_ORDER_565 = 7    /**< 16 bits, 5-6-5 */
} vx_order;

/** One page of a file. */
typedef struct vx_info {
  int format;         /**< vx_format */
  int width;          /**< pixels */
  int height;         /**< pixels */
  int bits_per_pixel; /**< of the file: 1, 4, 8, 16, 24 or 32; of bitmap files also 2 and 64 */
  int orientation;    /**< vx_orientation: the order of the rows in the file */
  int color_order;    /**< vx_order */
  int x_dpi;          /**< dots per inch; 96 where the file names none */
  int y_dpi;
  int page;             /**< page described, from 1 */
  int page_count;       /**< pages in the file; 1 for single images */
  uint32_t data_size;   /**< bytes of pixel data, rows padded to whole bytes */
  char compression[20]; /**< "Run Length", "PNG", "alpha bit fields" and so on, or "" for none */
} vx_info;

/** How one page is stored: what its headers say, and how much of it the file has. */
typedef struct vx_storage_info {
  char kind[56];     /**< what people call it, such as "Windows bitmap, V5 header" or "animated cursor" */
  int header_size;   /**< bytes of the image header, as it says itself; 0: PNG, which has none */
  int palette_count; /**< colours of its table */
  uint32_t masks[4]; /**< the bits of a pixel that are red, green, blue and alpha; 0 where no mask says so */
  int color_space;   /**< vx_color_space: what headers say; profiles are not looked at */
  int has_alpha;     /**< nonzero: it says that there is alpha, or may have some, as icons of 32 bits do */
  int hot_x;         /**< the pixel of a cursor that points; else 0 */
  int hot_y;
  int rows_present;    /**< rows that the file has; -1 where only decoding tells */
  int ends_early;      /**< nonzero: the file ends before the page does */
  int64_t data_offset; /**< byte of the file where pixels, codes or a PNG stream begin; 0 where not known */
  int64_t file_size;   /**< bytes of the whole file; -1 where not known */
} vx_storage_info;

/* ---- Sources ---- */

/** A file or memory block that images are read from. */
typedef struct vx_source vx_source;

/**
 * Opens a file for reading. It stays open, and the same file, until vx_close. What it begins with, up to 4096
 * bytes, is read now and counts from then on, whoever writes to the file; so is all of a small icon file.
 */
VX_API int vx_open_file(const char* path, vx_source** source);
/**
 * Reads from `size` bytes of memory (at most 2^32-2). The bytes are the caller's: they are not copied
 * and must stay until vx_close. `name` (may be null) is used in messages only.
 */
VX_API int vx_open_memory(const void* bytes, size_t size, const char* name, vx_source** source);
/**
 * Gives the next bytes of a stream to `buffer`, as many as there are now, and waits where there are none.
 * @return how many, from 1 to count; 0 at the end, below 0 for an error. May not throw.
 */
typedef int64_t (*vx_read_function)(void* user, void* buffer, uint32_t count);

typedef enum vx_stream_flags {
  VX_STREAM_HEADERLESS = 1 /**< the stream may begin with any bytes: it is for vx_load_options.raw */
} vx_stream_flags;

/**
 * Reads a stream - a pipe, a socket, what cannot be read twice - to its end, into memory that counts against
 * the memory limit until vx_close. Where its first bytes are those of no picture it is read no further; what
 * is wrong with them is told by vx_describe and vx_load. `name` (may be null) is used in messages only.
 * @param flags vx_stream_flags @return VX_READ_ERROR when `read` fails, VX_NO_MEMORY when the stream goes on
 * after the memory limit leaves no more, or after 2^32-2 bytes
 */
VX_API int vx_open_stream(vx_read_function read, void* user, const char* name, unsigned int flags,
                          vx_source** source);
/** Closes the source; null does nothing. Bitmaps loaded from it stay. */
VX_API void vx_close(vx_source* source);

/**
 * Describes one page. Pages count from 1; for icon and cursor files a page out of range is
 * VX_BAD_PAGE, and files of a single image have page 1 alone. What is wrong with other pages is no matter.
 */
VX_API int vx_describe(vx_source* source, int page, vx_info* info);

/**
 * Tells how a page is stored, without decoding it. @return what vx_describe returns
 */
VX_API int vx_storage_describe(vx_source* source, int page, vx_storage_info* info);

/**
 * Finds the page that people mean: of `width` pixels, else the smallest that is wider, else the widest; of
 * several such pages the one with the most bits per pixel, and of those the first. Pages tell their width and
 * depth themselves, whatever the directory says; those that cannot be loaded are passed over, as far as that
 * shows without decoding them. @param width pixels; 0: the widest there is @param page receives it, from 1
 * @return VX_BAD_PAGE where no page can be loaded
 */
VX_API int vx_best_page(vx_source* source, int width, int* page);

/* ---- Loading ---- */

/** Description of headerless pixel data. */
typedef struct vx_raw {
  int format;             /**< VX_FORMAT_RAW ... VX_FORMAT_RAW_BITFIELDS */
  int width;              /**< pixels, 1 and more */
  int height;             /**< pixels, 1 and more */
  int bits_per_pixel;     /**< 1, 4, 8, 16, 24 or 32 */
  int orientation;        /**< vx_orientation; 0 means VX_BOTTOM_UP */
  uint32_t offset;        /**< byte offset of the first pixel, below 2^31 */
  const uint8_t* palette; /**< 4 bytes an entry: blue, green, red, 0; null: the fixed palette */
  int palette_count;      /**< entries at `palette`, 0 to 256 */
  int has_masks;          /**< nonzero: the masks below hold (16 bits per pixel only) */
  uint32_t red_mask;
  uint32_t green_mask;
  uint32_t blue_mask;
} vx_raw;

typedef enum vx_load_flags {
  VX_LOAD_AS_FILTER = 1, /**< exactly what the filter gives: what its contract refuses or flattens stays so */
  VX_LOAD_TO_SRGB = 2,   /**< colours by a profile, or calibrated ones, become sRGB: fails where the profile
                            cannot be used, or this library applies none. A linked one stays unopened */
  VX_LOAD_ROW_BY_ROW = 4, /**< the rows are read from the source when they are asked for: see vx_load */
  VX_LOAD_NATIVE_ROWS = 8 /**< vx_read_rows alone: rows as they are stored, not as red, green, blue, alpha */
} vx_load_flags;

/** What the fourth bytes of a bitmap file's 32-bit pixels are where nothing in the file says so. */
typedef enum vx_alpha {
  VX_ALPHA_IGNORE = 0, /**< nothing */
  VX_ALPHA_AUTO = 1,   /**< alpha where some of them is not 0, as in icons */
  VX_ALPHA_FORCE = 2   /**< alpha */
} vx_alpha;

/** How to load. Start from VX_LOAD_OPTIONS_DEFAULT; passing null means just that. */
typedef struct vx_load_options {
  int page;             /**< from 1 */
  int allow_truncated;  /**< nonzero: take what is there of a file that ends early */
  int color_order;      /**< vx_order wanted for 16-bit images; VX_ORDER_FILE: as the file has it */
  int band_first;       /**< first row of the band, from the top of the picture */
  int band_count;       /**< rows in the band; 0: the whole picture, if band_first is 0 */
  int read_buffer_size; /**< bytes the decoder reads at once, even, 2 and more; 0: a good size */
  const vx_raw* raw;    /**< not null: the source is headerless data of this description */
  unsigned int flags;   /**< vx_load_flags */
  int alpha;            /**< vx_alpha */
} vx_load_options;

#define VX_LOAD_OPTIONS_DEFAULT \
  { 1, 0, VX_ORDER_FILE, 0, 0, 0, NULL, 0, VX_ALPHA_IGNORE }

/** A picture in memory. */
typedef struct vx_bitmap vx_bitmap;

/**
 * Loads one page (or a band of it). @param options may be null. The caller frees *bitmap.
 *
 * With VX_LOAD_ROW_BY_ROW the bitmap is there at once, with everything that vx_load tells of it, remarks
 * included, but without pixels in memory: whoever asks for rows, and be it vx_save_file, has them read from
 * the source, which must stay open as long as the bitmap. Rows of uncompressed bitmaps and headerless data
 * come in any order, those of PNG files that are not interlaced from the top, in memory for about 1 MiB of
 * rows. (Going up in a PNG file takes the whole picture into memory; going back to its first row decodes it
 * anew.) Whatever else, rows that follow from one another or from what is behind them, is loaded whole as
 * without the flag: run-length and Huffman codes, pages of icons and cursors, embedded streams, and what
 * VX_LOAD_AS_FILTER loads. Of 32 bits a first pass finds out whether the fourth bytes are in use; it ends
 * with the first that is.
 */
VX_API int vx_load(vx_source* source, const vx_load_options* options, vx_bitmap** bitmap);
/**
 * Takes a row of a picture. May not throw.
 * @param picture what the rows belong to, with everything that vx_bitmap_describe, vx_bitmap_palette and
 * vx_bitmap_profile tell; it lives until vx_read_rows ends
 * @param row from the top, of the band where one was asked for
 * @param pixels red, green, blue, alpha as vx_bitmap_read_rgba has them, or with VX_LOAD_NATIVE_ROWS the
 * bytes of vx_bitmap_row; valid until the function returns
 * @return nonzero for the next row, 0 if this was enough
 */
typedef int (*vx_row_function)(void* user, const vx_bitmap* picture, int row, const uint8_t* pixels);

/**
 * Hands over the rows of a page (or of a band of it) from the top, one after the other, in as little memory
 * as VX_LOAD_ROW_BY_ROW says; the rows are those of vx_load, and so is all that is told before the first of
 * them. Where the file turns out to be damaged on the way, some have been handed over when the call fails.
 * @param options may be null @return VX_OK also where `take` had enough
 */
VX_API int vx_read_rows(vx_source* source, const vx_load_options* options, vx_row_function take, void* user);
/** Frees a bitmap; null does nothing. */
VX_API void vx_bitmap_free(vx_bitmap* bitmap);

/* ---- Pictures ---- */

/** What the numbers of a bitmap's pixels mean. */
typedef enum vx_color_space {
  VX_COLOR_SPACE_NONE = 0,       /**< nothing is said of it; everybody takes it as sRGB */
  VX_COLOR_SPACE_SRGB = 1,       /**< sRGB */
  VX_COLOR_SPACE_CALIBRATED = 2, /**< what red, green and blue look like is said in numbers, or a gamma is */
  VX_COLOR_SPACE_PROFILE = 3,    /**< what vx_bitmap_profile says, an ICC profile */
  VX_COLOR_SPACE_LINKED = 4      /**< what another file says, which vx_bitmap_profile_name names */
} vx_color_space;

/** What a bitmap is made of. */
typedef struct vx_bitmap_info {
  int width;          /**< pixels */
  int height;         /**< pixels: of the band, where a band was loaded */
  int bits_per_pixel; /**< 1, 4, 8, 16, 24 or 32 */
  int bytes_per_line; /**< bytes of a row, a multiple of 4 */
  int color_order;    /**< vx_order */
  int x_dpi;
  int y_dpi;
  int palette_count; /**< entries; 0 above 8 bits */
  int has_alpha;     /**< nonzero: the fourth byte of its 32-bit pixels is alpha */
  int has_region;    /**< nonzero: some pixels may be outside (transparent) */
  int hot_x;         /**< the pixel that points, of a whole page of a cursor; else 0 */
  int hot_y;
  int rows_present; /**< rows, of the bitmap's, that the file really had; the others are made up */
  int color_space;  /**< vx_color_space */
} vx_bitmap_info;

/**
 * Makes a 32-bit bitmap of `height` rows, the top one first, of 4 x width bytes each: red, green, blue,
 * alpha. It has an alpha channel where some pixel is not opaque. The caller frees *bitmap.
 */
VX_API int vx_bitmap_from_rgba(int width, int height, const uint8_t* rgba, vx_bitmap** bitmap);
/**
 * Makes a smaller 32-bit bitmap: every block of n x n pixels becomes one, n being the least whole number by
 * which no side stays longer than `largest_side` pixels, 1 and more. Blocks at the right and at the bottom
 * may be cut off. Light is averaged, not its coding, and pixels count for as much as can be seen of them.
 * With n = 1 every pixel stays as it is. The fourth bytes are alpha whether or not the bitmap says that it
 * has some; the rows follow one another from the top, without gaps. Beside the new bitmap this takes little
 * memory. What is known of the colours goes along. The caller frees *smaller. @return VX_NO_MEMORY where the
 * new bitmap does not fit
 */
VX_API int vx_bitmap_shrink(const vx_bitmap* bitmap, int largest_side, vx_bitmap** smaller);
VX_API int vx_bitmap_describe(const vx_bitmap* bitmap, vx_bitmap_info* info);
/**
 * One row as stored: indices for 1 to 8 bits (leftmost pixel in the highest bits), little-endian
 * words for 16, blue-green-red(-fourth) bytes above. @return bytes_per_line bytes that live as long as
 * the bitmap, or until the next row is asked for where it was loaded row by row; null when row is out of
 * range, or cannot be read.
 */
VX_API const uint8_t* vx_bitmap_row(const vx_bitmap* bitmap, int row);
/** The palette, 4 bytes an entry: blue, green, red, 0. @return null above 8 bits. */
VX_API const uint8_t* vx_bitmap_palette(const vx_bitmap* bitmap);
/**
 * One row as red, green, blue, alpha bytes. Channels of 5 and 6 bits are scaled by rounding; alpha is
 * the picture's own where it has one, else 0 outside the region and 255 inside.
 * @param rgba 4 x width bytes
 */
VX_API int vx_bitmap_read_rgba(const vx_bitmap* bitmap, int row, uint8_t* rgba);
/**
 * `count` rows from row `first` on, as vx_bitmap_read_rgba gives them: the fastest way to all of a picture.
 * @param rgba where the first row begins; every other one begins `stride` bytes behind the one above it
 * @param stride 4 x width bytes or more; what a row does not fill of them is left as it is
 */
VX_API int vx_bitmap_read_rgba_rows(const vx_bitmap* bitmap, int first, int count, uint8_t* rgba,
                                    size_t stride);
/**
 * The ICC profile of the bitmap's colours, as the file had it. *size (which may be null) receives its length.
 * @return bytes that live as long as the bitmap; null where it has none
 */
VX_API const uint8_t* vx_bitmap_profile(const vx_bitmap* bitmap, size_t* size);
/**
 * The name of the file that holds the colour profile, as the bitmap file has it: bytes of a Windows code
 * page, a path of the machine where it was written. The library never opens it, and you should not either.
 * @return null unless the profile is linked; lives as long as the bitmap
 */
VX_API const char* vx_bitmap_profile_name(const vx_bitmap* bitmap);
/**
 * Encodes the bitmap as PNG: palette PNG for 1 to 8 opaque bits, RGB, or RGBA where there is
 * transparency; the resolution is kept, and so are a profile and calibrated colours. *png is freed with
 * vx_free.
 */
VX_API int vx_bitmap_encode_png(const vx_bitmap* bitmap, uint8_t** png, size_t* size);
/** Frees what the library allocated for the caller; null does nothing. */
VX_API void vx_free(void* memory);

/* ---- Saving ---- */

/** What a format can hold. */
typedef struct vx_format_limits {
  unsigned int depths; /**< bit n - 1 is set where n bits per pixel can be saved */
  int largest_side;    /**< pixels, of width and of height; 0: whatever a bitmap can have */
} vx_format_limits;

/** Tells what can be saved in a format. @return VX_NOT_SUPPORTED for formats that cannot be saved. */
VX_API int vx_format_describe(int format, vx_format_limits* limits);

/** Where the colours of a picture of up to 8 bits come from when its own do not fit. */
typedef enum vx_palette {
  VX_PALETTE_BEST = 0, /**< chosen to suit the picture; its own colours whenever they fit */
  VX_PALETTE_FIXED = 1 /**< the fixed palette of the depth, whatever the picture */
} vx_palette;

/** What happens to the difference between a colour and the one it is saved as. */
typedef enum vx_dither {
  VX_DITHER_DIFFUSE = 0, /**< it is spread over the neighbouring pixels */
  VX_DITHER_NONE = 1     /**< it is lost: every pixel gets the nearest colour */
} vx_dither;

/** Bitmaps of 16 bits with alpha, which a header of 124 bytes with four masks tells. */
typedef enum vx_masks {
  VX_MASKS_NONE = 0, /**< no alpha at 16 bits */
  VX_MASKS_1555 = 1, /**< 5 bits a colour, and one that says whether the pixel is there */
  VX_MASKS_4444 = 2  /**< 4 bits a colour, and as many of alpha */
} vx_masks;

/** How to save. Start from VX_SAVE_OPTIONS_DEFAULT and set the format. */
typedef struct vx_save_options {
  int format;         /**< VX_FORMAT_BMP, OS2, OS2_2, BMP_RLE, ICO, CUR, VISTA_ICO or PNG */
  int bits_per_pixel; /**< a depth of the format; 0: the one that loses least, the picture's own if it is one
                           of those and else the fewest bits; PNG icons get 32, and so does transparency that
                           no other depth keeps */
  int use_565;        /**< nonzero: 16 bits are 5-6-5, not 5-5-5 (VX_FORMAT_BMP alone) */
  int palette;        /**< vx_palette */
  int dither;         /**< vx_dither */
  int in_place;       /**< vx_save_file: nonzero writes over an existing file without making room beside it:
                           what lies beyond the new end of an older, longer file stays, and a failure leaves
                           the file half written */
  int drop_alpha;     /**< nonzero: every pixel is saved opaque, and bitmaps of 32 bits in the plain form that
                           every reader takes */
  int masks;          /**< vx_masks (VX_FORMAT_BMP of 16 bits alone) */
  int dpi; /**< dots per inch to state, 1 to 65535; 0: the picture's own. Icons and cursors of bitmaps,
                and OS/2 1.x bitmaps, state none */
} vx_save_options;

#define VX_SAVE_OPTIONS_DEFAULT \
  { VX_FORMAT_BMP, 0, 0, VX_PALETTE_BEST, VX_DITHER_DIFFUSE, 0, 0, VX_MASKS_NONE, 0 }

/** What becomes of a picture's transparency. */
typedef enum vx_transparency {
  VX_TRANSPARENCY_KEPT = 0,     /**< nothing is lost, or there was none */
  VX_TRANSPARENCY_HARDENED = 1, /**< half opaque and more became opaque, the rest transparent */
  VX_TRANSPARENCY_LOST = 2      /**< everything is opaque */
} vx_transparency;

/** What saving does to a picture. */
typedef struct vx_save_plan {
  int format;         /**< vx_format written: VX_FORMAT_BMP where run-length coding has not the depth */
  int bits_per_pixel; /**< depth written */
  int colors_lost;    /**< nonzero: some pixels change their colour; at 4-4-4-4 also: their alpha */
  int transparency;   /**< vx_transparency */
} vx_save_plan;

/**
 * Tells what saving with these options does, writing nothing. Fails where saving would refuse:
 * VX_BAD_BPP for a depth that the format has not, VX_BAD_DIMENSIONS for sides it has no room for,
 * VX_NOT_SUPPORTED for a format that is not saved. @param options may be null.
 */
VX_API int vx_plan_save(const vx_bitmap* bitmap, const vx_save_options* options, vx_save_plan* plan);
/**
 * Saves the bitmap as a file of its own. The file appears whole or not at all: it is written beside its
 * place, stored and then renamed. Where it stands is found out first, so a folder renamed meanwhile is still
 * the one. An existing file keeps its permissions, access control list, extended attributes of users and,
 * where the system lets us, its owner; nobody gets rights that he had not. A symbolic link keeps pointing to
 * it, other hard links keep the old file. While somebody edits the file this waits, for two seconds, and then
 * fails with VX_OPEN_WRITE_ERROR; so does a save by a thread that has an edit of the file open itself.
 *
 * Devices, pipes and descriptors (/dev/stdout, /dev/fd/N, /proc/self/fd/N) are written to, the latter from
 * their position; what a file behind a descriptor has beyond the new end is cut off. A symbolic link in a
 * folder where everybody may put one (sticky, as /tmp is) is followed only if it is the user's own or the
 * folder's owner's. Files of vx_redirect_files, which cannot be renamed, are always written in place.
 *
 * After VX_WRITE_ERROR the old file is still there, but where it says that the folder cannot be stored: the
 * new one is in place then, and may not outlast a crash of the system.
 * @param options may be null.
 */
VX_API int vx_save_file(const vx_bitmap* bitmap, const char* path, const vx_save_options* options);
/** As vx_save_file, into memory. *bytes is freed with vx_free. */
VX_API int vx_save_memory(const vx_bitmap* bitmap, const vx_save_options* options, uint8_t** bytes,
                          size_t* size);

/** What the rows of vx_save_rows are like. Begin with zeros: `vx_rows rows = {0};` */
typedef struct vx_rows {
  int width;              /**< pixels, 1 and more */
  int height;             /**< rows, 1 and more */
  int bits_per_pixel;     /**< 1, 4, 8, 16, 24 or 32 */
  int color_order;        /**< 16 bits: VX_ORDER_565, anything else is 5-5-5 */
  const uint8_t* palette; /**< 1 to 8 bits: 4 bytes an entry, blue, green, red, 0; else not looked at */
  int palette_count; /**< entries at `palette`, 1 to as many as there are indices; the others are black */
  int has_alpha;     /**< 32 bits: nonzero if the fourth byte of a pixel is alpha */
  int x_dpi;         /**< dots per inch; 0: as of a picture of which nothing is known */
  int y_dpi;         /**< the same */
  int may_repeat;    /**< nonzero: the rows can be asked for again, from the first on */
} vx_rows;

/**
 * Gives a row. May not throw; may call this library, but end no edit and no save of the same file.
 * @param row from the top. Each is asked for once, in turn; with may_repeat row 0 may follow after any row
 * @param pixels receives (width * bits_per_pixel + 7) / 8 bytes, as vx_bitmap_row has them
 * @return nonzero, or 0 if there is no such row: the save then fails
 */
typedef int (*vx_give_row_function)(void* user, int row, uint8_t* pixels);

/**
 * Saves rows that `give` is asked for, from the top, as vx_save_file saves a bitmap of them: the same bytes,
 * the same failures, and the same care for the old file. Where `give` returns 0 it fails with VX_READ_ERROR,
 * and vx_error_info.is_of_rows is set.
 *
 * PNG files, and uncompressed bitmaps of 16 bits and more or of the depth of the rows, take memory for a few
 * rows, whatever the height. So do bitmaps of fewer bits if may_repeat is set and no colours are diffused:
 * the rows are looked at before they are written. All rows are kept in memory, in their own depth, by
 * whatever else needs them twice or from below: without may_repeat, where the colours have to be looked at
 * first; with diffusion; in run-length bitmaps, icons and cursors; and where in_place is set or
 * vx_redirect_files is used.
 * @param options may be null
 */
VX_API int vx_save_rows(const vx_rows* rows, vx_give_row_function give, void* user, const char* path,
                        const vx_save_options* options);

/* ---- Pages of icon and cursor files ---- */

/** What an icon or cursor file says of itself, whatever its pages are like. */
typedef struct vx_directory_info {
  int is_cursor;  /**< nonzero: a cursor file */
  int page_count; /**< entries of the directory, 0 to 65535; a damaged page is one, too */
} vx_directory_info;

/**
 * Tells of a file what its directory says; looks at no page. @return VX_BAD_FORMAT for files that are neither
 * icons nor cursors, VX_READ_ERROR where the file ends in the middle of its directory
 */
VX_API int vx_directory_describe(vx_source* source, vx_directory_info* info);

/** Where one page lies in an icon or cursor file, by its directory. */
typedef struct vx_page_info {
  int is_png;      /**< nonzero: the body is a PNG stream */
  uint32_t offset; /**< byte offset of the body */
  uint32_t size;   /**< bytes of the body */
  int hot_x;       /**< cursors: the pixel that points; 0 for icons */
  int hot_y;
} vx_page_info;

/** Tells where a page lies. @return VX_BAD_FORMAT for files that are neither icons nor cursors */
VX_API int vx_page_describe(vx_source* source, int page, vx_page_info* info);
/** Counts the bytes of an icon or cursor file that belong to no page: what edits leave behind. */
VX_API int vx_unreferenced_bytes(vx_source* source, uint64_t* bytes);

/**
 * Edits of one icon or cursor file, in the order in which they are made. They happen to a copy in memory;
 * vx_edit_commit puts the edited file in the old one's place, as vx_save_file does, so that it is the old one
 * or the new one at every instant. Pages that are not edited stay as they are, bit for bit. What is reached
 * through a descriptor is written over instead.
 */
typedef struct vx_edit vx_edit;

typedef enum vx_edit_flags {
  VX_EDIT_IN_PLACE = 1, /**< every edit goes to the file at once: a failure may leave it half edited. Files of
                             vx_redirect_files are always edited so */
  VX_EDIT_NEW = 2,      /**< begin without pages; a file of that name is replaced when the edit is stored */
  VX_EDIT_REQUIRE_LOCK = 4 /**< fail with VX_OPEN_WRITE_ERROR where the file system has no locks */
} vx_edit_flags;

/**
 * Opens a file for editing. While it is open other edits and saves of the file wait, for two seconds; then
 * they fail with VX_OPEN_WRITE_ERROR. Some network file systems have no locks: vx_edit_is_locked tells, and
 * VX_EDIT_REQUIRE_LOCK refuses. @param flags vx_edit_flags
 */
VX_API int vx_edit_open(const char* path, unsigned int flags, vx_edit** edit);
/** @return nonzero while other edits and saves wait for this one; 0 also of null and of a new file */
VX_API int vx_edit_is_locked(const vx_edit* edit);
/** Tells how many pages there are now. */
VX_API int vx_edit_page_count(vx_edit* edit, int* count);
/*
 * The next three save a picture as a page. options may be null: the page is then a bitmap, of 32 bits where
 * the picture has soft edges, or a PNG stream where an icon's has a side of 256 pixels. Given options have a
 * format of the file's type (VX_FORMAT_CUR for cursors, VX_FORMAT_ICO or VX_FORMAT_VISTA_ICO for icons), or 0
 * to have it chosen so. A cursor's page gets the hot spot of the picture, which one loaded from a cursor has.
 * Pages count from 1, and those behind an inserted or deleted one change their numbers at once.
 */
/** Adds a page behind the last one. */
VX_API int vx_edit_add(vx_edit* edit, const vx_bitmap* bitmap, const vx_save_options* options);
/** Inserts a page so that it becomes page `page`, from 1 to the number of pages and one. */
VX_API int vx_edit_insert(vx_edit* edit, int page, const vx_bitmap* bitmap, const vx_save_options* options);
/** Replaces a page; a cursor's keeps its hot spot. The old body stays in the file until it is compacted. */
VX_API int vx_edit_replace(vx_edit* edit, int page, const vx_bitmap* bitmap, const vx_save_options* options);
/** Deletes a page; the only one of a file cannot go: VX_LAST_PAGE. Its body stays until it is compacted. */
VX_API int vx_edit_delete(vx_edit* edit, int page);
/** Sets the hot spot of a cursor's page, 0 to 65535 each. */
VX_API int vx_edit_set_hot_spot(vx_edit* edit, int page, int x, int y);
/**
 * Drops the bytes that belong to no page. Bodies stay as they are, bit for bit, and in their order; an entry
 * that points to no byte of the file, or into the directory where there is no picture, still does so.
 */
VX_API int vx_edit_compact(vx_edit* edit);
/**
 * Stores the edited file; after that, or after an edit that failed half way, it can only be closed.
 * @return VX_FILE_CHANGED where the file is not the one that was opened any more: replaced, deleted or
 * written to by a program that knows nothing of locks, or made where there was none. It stays as it is then.
 */
VX_API int vx_edit_commit(vx_edit* edit);
/** Ends the edit; without vx_edit_commit before it the file stays as it was. Null does nothing. */
VX_API void vx_edit_close(vx_edit* edit);

/* ---- Animated cursors ---- */

/*
 * The frames of an animated cursor are its pages, from 1. Each is a file of its own, an icon or a cursor as a
 * rule, of which the first page counts; vx_describe and vx_load treat them so, and VX_LOAD_AS_FILTER, which
 * knows of no animated cursors, refuses them. What is shown is a list of steps, each a frame and how long it
 * stays, over and over.
 */

/** What an animated cursor says of itself. */
typedef struct vx_animation_info {
  int frame_count;  /**< frames that there are, 1 and more */
  int step_count;   /**< steps of the animation; without a sequence of its own every frame is one */
  uint32_t jiffies; /**< sixtieths of a second that a step lasts where the file says nothing else of it */
  char
      title[256]; /**< its first 255 bytes, in whatever encoding the maker had, NUL-terminated; "" for none */
  char author[256]; /**< the same of who made it */
} vx_animation_info;

/** A step of the animation. */
typedef struct vx_animation_step {
  int frame;        /**< the page that is shown; 0 where the file names one that it has not */
  uint32_t jiffies; /**< how long, in sixtieths of a second */
} vx_animation_step;

/**
 * Tells of an animated cursor what it says of itself; looks at no frame. A size or count in it that is wrong
 * is a remark. @return VX_BAD_FORMAT for other files, and where there is no frame
 */
VX_API int vx_animation_describe(vx_source* source, vx_animation_info* info);
/** Fills `count` records with the steps from `first` on, which count from 0. @return VX_BAD_PARAMETER where
 * there are fewer, else as vx_animation_describe */
VX_API int vx_animation_steps(vx_source* source, int first, int count, vx_animation_step* steps);

/** How to build an animated cursor. Start from VX_ANIMATION_OPTIONS_DEFAULT. */
typedef struct vx_animation_options {
  int jiffies;        /**< how long each frame is shown: sixtieths of a second, 1 and more */
  int hot_x;          /**< the pixel that points, of every frame, 0 to 65535; below 0: each picture's own */
  int hot_y;          /**< below 0 where hot_x is */
  const char* title;  /**< at most 65535 bytes, stored as they are; null or "": none */
  const char* author; /**< the same */
} vx_animation_options;

#define VX_ANIMATION_OPTIONS_DEFAULT \
  { 6, -1, -1, NULL, NULL }

/**
 * Builds an animated cursor of `count` pictures, 1 to 65535, shown in their order, and saves it as
 * vx_save_file does: whole or not at all. Every frame is what vx_save_memory makes of it as VX_FORMAT_CUR,
 * and fails where that does, with the frame's number as the page; what cannot be held is remarked with that
 * number, too. Sizes may differ from frame to frame. @param options may be null
 */
VX_API int vx_save_animation(const vx_bitmap* const* frames, int count, const vx_animation_options* options,
                             const char* path);

/* ---- Drawing in a terminal ---- */

/** How pixels become text. */
typedef enum vx_draw_mode {
  VX_DRAW_AUTO = 0,    /**< the best that the terminal is known to take, by what the environment says of it */
  VX_DRAW_SYMBOLS = 1, /**< coloured characters */
  VX_DRAW_SIXEL = 2,   /**< pixels, in the coding of the VT340 */
  VX_DRAW_KITTY = 3    /**< pixels, by kitty's graphics protocol */
} vx_draw_mode;

/** How to draw. Start from VX_DRAW_OPTIONS_DEFAULT; passing null means just that. */
typedef struct vx_draw_options {
  int mode;        /**< vx_draw_mode */
  int columns;     /**< most characters side by side, 1 and more */
  int rows;        /**< most characters one above the other, 1 and more */
  int cell_width;  /**< pixels that a character takes on the screen; 0 where that is not known */
  int cell_height; /**< pixels that a character takes on the screen; 0 where that is not known */
  int enlarge;     /**< nonzero: a small picture fills the columns or the rows */
} vx_draw_options;

#define VX_DRAW_OPTIONS_DEFAULT \
  { VX_DRAW_AUTO, 80, 24, 0, 0, 0 }

/**
 * Draws the bitmap as text for a terminal, in its proportions and as far as a terminal can show: 4096 pixels
 * or 512 characters a side. What is transparent shows the terminal's background. *text, `size` bytes without
 * a closing 0, is freed with vx_free.
 * @return VX_NO_DISPLAY_LIBRARY where the display library is not installed, VX_NO_MEMORY where the memory
 * limit or the system leaves too little
 */
VX_API int vx_bitmap_draw(const vx_bitmap* bitmap, const vx_draw_options* options, char** text, size_t* size);

/* ---- The library ---- */

/**
 * Sets how many bytes of pictures and buffers may be alive at once, for the whole process; loads that
 * would need more fail with VX_NO_MEMORY. @param bytes 0 restores the default of 1 GiB.
 */
VX_API void vx_set_memory_limit(uint64_t bytes);
VX_API uint64_t vx_memory_limit(void);
/** @return bytes now alive; 0 once every source and bitmap is closed and freed. */
VX_API uint64_t vx_memory_in_use(void);

/**
 * Files as an application provides them. None of the functions may throw; write_at and truncate may
 * both be null where files are only read. Every function gets `user` and the value that open
 * returned. Positions are absolute; results are byte counts, and below 0 for an error.
 */
typedef struct vx_file_functions {
  /** flags: 0 read, 2 update, 66 update or create. @return a file of the application's, or null. */
  void* (*open)(void* user, const char* name, int flags);
  int64_t (*read_at)(void* user, void* file, void* buffer, uint32_t count, uint64_t position);
  int64_t (*write_at)(void* user, void* file, const void* buffer, uint32_t count, uint64_t position);
  int64_t (*size)(void* user, void* file);
  /** Ends the file at `size`. @return 0, or below 0 for an error. */
  int (*truncate)(void* user, void* file, uint64_t size);
  /** @return 0, or below 0 when what was written could not be kept. */
  int (*close)(void* user, void* file);
} vx_file_functions;

/**
 * From now on this thread's files are opened through `functions` (copied); null goes back to the
 * system's files. Sources opened before keep the functions they were opened with.
 */
VX_API int vx_redirect_files(const vx_file_functions* functions, void* user);

/** @return the library's version, such as "18.0.0". */
VX_API const char* vx_version(void);

#ifdef __cplusplus
}
#endif

#endif /* VX_VX_H */
