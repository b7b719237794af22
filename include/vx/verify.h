/*
 * verify.h - what is wrong with a file, what of that matters, and a file with as much of it mended as can be
 * mended without guessing a pixel.
 *
 *     static int Print(void* user, const vx_finding* finding) {
 *       printf("page %d: %s (%s)\n", finding->page, finding->text, vx_finding_name(finding->code));
 *       return 0;
 *     }
 *     ...
 *     vx_verify(source, VX_PURPOSE_ANY, Print, NULL);
 *
 * The conventions are those of <vx/vx.h>. All offsets count from the start of the file. docs/findings.md
 * lists every code with what to do about it.
 */
#ifndef VX_VERIFY_H
#define VX_VERIFY_H

#include <vx/vx.h>

#ifdef __cplusplus
extern "C" {
#endif

/** How much a finding matters. */
typedef enum vx_severity {
  VX_NOTE = 0,    /**< readers do not mind; worth knowing */
  VX_WARNING = 1, /**< some readers mind, or show something else */
  VX_ERROR = 2    /**< something is missing or cannot be read, or readers are led astray */
} vx_severity;

/** What is found. first and second are numbers of vx_finding. */
typedef enum vx_finding_code {
  VX_FINDING_NONE = 0,
  /* headers */
  VX_FINDING_FILE_SIZE = 1,     /**< first: what the header says; second: bytes of the file */
  VX_FINDING_DATA_OFFSET = 2,   /**< no pixels can be there; first: what is said; second: where they are */
  VX_FINDING_IMAGE_SIZE = 3,    /**< first: what the header says; second: bytes that there are */
  VX_FINDING_PLANES = 4,        /**< first: planes, which should be 1 */
  VX_FINDING_PALETTE_COUNT = 5, /**< first: colours said; second: the most that the depth can use */
  VX_FINDING_PALETTE_SHORT = 6, /**< first: colours that there is room for; second: colours meant */
  VX_FINDING_TOP_DOWN_COMPRESSED = 7, /**< compressed data that says its top row is first */
  VX_FINDING_HEADER_UNKNOWN = 8,      /**< no reader knows the image header; first: its length */
  VX_FINDING_UNREADABLE = 9,          /**< no reader takes the picture; text says why */
  /* what is not whole */
  VX_FINDING_HEADER_CUT = 10,      /**< the file ends inside an image header; first: bytes it should have */
  VX_FINDING_PALETTE_CUT = 11,     /**< the file ends inside a colour table; first: bytes it should have */
  VX_FINDING_ROWS_MISSING = 12,    /**< first: rows that are there; second: rows of the picture */
  VX_FINDING_STREAM_DAMAGED = 13,  /**< a PNG, JPEG or Huffman stream; text says what is wrong */
  VX_FINDING_PROFILE_OUTSIDE = 14, /**< a colour profile that the file does not have; first: bytes said */
  VX_FINDING_PARTS_OVERLAP = 15,   /**< two structures of one picture; first: where the other one begins */
  /* pixels */
  VX_FINDING_PALETTE_INDEX = 16, /**< first: pixels with colours that are not there; second: colours there */
  VX_FINDING_ALPHA_EMPTY = 17,   /**< alpha that would hide every pixel */
  /* run-length data */
  VX_FINDING_CODES_CUT = 18,     /**< first: the row where it ends; second: rows of the picture */
  VX_FINDING_CODES_NO_END = 19,  /**< nothing says that the picture ends */
  VX_FINDING_CODES_OVERRUN = 20, /**< first: runs beyond the end of their row; second: the first one's row */
  VX_FINDING_CODES_OUTSIDE = 21, /**< first: runs behind the last row; second: rows of the picture */
  VX_FINDING_CODES_RUN_ON = 22,  /**< no code ends a row */
  /* directories */
  VX_FINDING_DIRECTORY_CUT = 23,     /**< first: pages that it should have; second: entries there */
  VX_FINDING_PAGE_MISSING = 24,      /**< a page begins behind the end; first: where */
  VX_FINDING_PAGE_IN_DIRECTORY = 25, /**< a page begins inside the directory; first: where that ends */
  VX_FINDING_PAGES_OVERLAP = 26,     /**< first: the page that the bytes are shared with */
  VX_FINDING_PAGES_SHARED = 27,      /**< the very same bytes are two pages; first: the other one */
  VX_FINDING_ENTRY_SIZE = 28,        /**< first, second: width and height that the directory says */
  VX_FINDING_ENTRY_DEPTH = 29,       /**< first: bits that the directory says; second: the page's own */
  VX_FINDING_ENTRY_LENGTH = 30,      /**< first: bytes that the directory says; second: the page's own */
  /* pages */
  VX_FINDING_HEIGHT_NOT_DOUBLED = 31, /**< the header leaves out the mask; first: the height it says */
  VX_FINDING_HEADER_IN_ICON = 32,     /**< not the usual header; first: its length */
  VX_FINDING_MASK_CUT = 33,           /**< first: mask rows that are there; second: mask rows of the page */
  VX_FINDING_MASK_DISAGREES = 34,     /**< first: pixels that mask and alpha do not agree about */
  VX_FINDING_SOFT_EDGES_LOST = 35,    /**< first: half opaque pixels and more that the mask hides */
  VX_FINDING_PNG_IN_CURSOR = 36,      /**< a page of a cursor is a PNG stream */
  VX_FINDING_PNG_SMALL = 37,          /**< a PNG page below 256 pixels; first, second: width and height */
  VX_FINDING_HOT_SPOT_OUTSIDE = 38,   /**< first, second: x and y */
  /* animated cursors */
  VX_FINDING_CHUNK_SIZE = 39,    /**< first: what a size or count says */
  VX_FINDING_FRAME_MISSING = 40, /**< first: steps whose frame is not there; second: steps */
  /* the whole file */
  VX_FINDING_UNREFERENCED = 41,  /**< bytes that no structure speaks of; first: how many */
  VX_FINDING_TRAILING = 42,      /**< the same behind everything else; first: how many */
  VX_FINDING_NOT_LOOKED_AT = 43, /**< a picture whose pixels were not looked at: it needs too much memory, or
                                    its bytes are those of many pages */
  /* what the file is for */
  VX_FINDING_WRONG_KIND = 44,  /**< the file is not of the kind that the purpose needs */
  VX_FINDING_SIZE_MISSING = 45 /**< first: pixels a side of a page that the purpose needs */
} vx_finding_code;

/** Something that is wrong with a file, or worth knowing. */
typedef struct vx_finding {
  int code;         /**< vx_finding_code */
  int severity;     /**< vx_severity */
  int page;         /**< the page or frame it is about, from 1; 0: the whole file */
  int reserved;     /**< 0 */
  int64_t offset;   /**< the byte of the file where it shows; -1 where no byte is meant */
  int64_t first;    /**< what vx_finding_code says; else 0 */
  int64_t second;   /**< what vx_finding_code says; else 0 */
  const char* text; /**< words that go on from the name of the file or page and say what is found */
} vx_finding;

/** What a file is for. */
typedef enum vx_purpose {
  VX_PURPOSE_ANY = 0,
  VX_PURPOSE_FAVICON = 1,      /**< an icon of 16, 32 and 48 pixels */
  VX_PURPOSE_WINDOWS_ICON = 2, /**< an icon of 16, 32, 48 and 256 pixels */
  VX_PURPOSE_CURSOR = 3        /**< a cursor of 32 pixels */
} vx_purpose;

/** Takes a finding, which is valid until the function returns. @return 0 to go on; anything else ends the
 * call. May not throw. */
typedef int (*vx_finding_function)(void* user, const vx_finding* finding);

/**
 * Looks for everything that can be found wrong with a file, pixels included, and hands it over: first what is
 * of the whole file, then page by page, in the order of offsets. Takes time and memory for as much as a load
 * of every page does, and no more where pages share bytes.
 * @param purpose vx_purpose @return VX_OK whatever is found, and also where `take` had enough; VX_BAD_FORMAT
 * for what begins like no bitmap, icon, cursor, animated cursor or PNG file
 */
VX_API int vx_verify(vx_source* source, int purpose, vx_finding_function take, void* user);

/** @return the code's name, such as "file-size"; "unknown" for any other number. */
VX_API const char* vx_finding_name(int code);
/** @return one sentence that says what to do about it; "" for other numbers. */
VX_API const char* vx_finding_advice(int code);
/** @return nonzero where a repair can mend it. */
VX_API int vx_finding_can_be_mended(int code);
/** @return "note", "warning" or "error"; "unknown" for any other number. */
VX_API const char* vx_severity_name(int severity);

/** What a repair did about a finding, or did not. */
typedef struct vx_repair_step {
  const vx_finding* finding;
  int is_mended;    /**< nonzero: it is not found any more; 0: it still is, and shows in the new file */
  const char* text; /**< what was done, in words that go on from the name of the page; else what to do */
} vx_repair_step;

/** Takes a step, which is valid until the function returns. May not throw. */
typedef void (*vx_repair_function)(void* user, const vx_repair_step* step);

/** How a repair ended. */
typedef struct vx_repair_outcome {
  int has_changed; /**< nonzero: the new file is another one than the old */
  int errors_left; /**< findings of severity VX_ERROR that it still has */
} vx_repair_outcome;

/**
 * Writes a file with everything mended that can be without guessing a pixel: sizes, offsets and entries that
 * lie, pages that share bytes, masks that are cut short, bytes that nobody refers to. A step is taken only if
 * every page then loads as the very same picture, or fails as before. The file appears as with vx_save_file,
 * whole or not at all, whether or not there was something to mend; `path` may name the source's own file.
 * @param take may be null @return VX_OK also where something is left, which the outcome tells
 */
VX_API int vx_repair(vx_source* source, const char* path, vx_repair_function take, void* user,
                     vx_repair_outcome* outcome);
/**
 * The same in the place of a file, which is locked meanwhile and stays as it is where nothing can be mended.
 * @param backup null, or what the old file is to be called; nothing may stand there
 * @return VX_FILE_CHANGED where somebody else changed the file meanwhile
 */
VX_API int vx_repair_in_place(const char* path, const char* backup, vx_repair_function take, void* user,
                              vx_repair_outcome* outcome);

#ifdef __cplusplus
}
#endif

#endif /* VX_VERIFY_H */
