/*
 * inspect.h - what a file is made of: every structure with its place, every field with its value and what
 * that means, and the codes of run-length data. For programs that show, check or mend files; pictures need
 * none of it.
 *
 *     vx_structure* structure;
 *     if (vx_inspect(source, &structure) == VX_OK) {
 *       int count, fields;
 *       const vx_part* parts = vx_structure_parts(structure, &count);
 *       for (int i = 0; i < count; ++i) {
 *         vx_field all[VX_MOST_FIELDS];
 *         vx_part_fields(source, &parts[i], all, &fields);
 *         ...
 *       }
 *       vx_structure_free(structure);
 *     }
 *
 * The conventions are those of <vx/vx.h>. All offsets count from the start of the file.
 */
#ifndef VX_INSPECT_H
#define VX_INSPECT_H

#include <vx/vx.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What a run of bytes is. */
typedef enum vx_part_kind {
  VX_PART_NONE = 0,
  VX_PART_IMAGE = 1, /**< holds others: an image of an array, the body of a page, a frame */
  /* bitmaps */
  VX_PART_ARRAY_HEADER = 2,    /**< of one image of an OS/2 array */
  VX_PART_FILE_HEADER = 3,     /**< of a bitmap file */
  VX_PART_OS2_ICON_HEADER = 4, /**< of an OS/2 icon or pointer */
  VX_PART_CORE_HEADER = 5,     /**< an image header of 12 bytes */
  VX_PART_OS2_HEADER = 6,      /**< an image header of OS/2 2.x */
  VX_PART_INFO_HEADER = 7,     /**< an image header of Windows, 40 bytes and more */
  VX_PART_MASKS = 8,           /**< masks that stand behind an image header */
  VX_PART_COLOR_TABLE = 9,
  VX_PART_PIXELS = 10,   /**< rows, or coded data */
  VX_PART_XOR_MASK = 11, /**< of an OS/2 icon that has colours beside it */
  VX_PART_AND_MASK = 12, /**< rows of one bit: where the picture is transparent */
  VX_PART_PROFILE = 13,  /**< a colour profile, or the name of a linked one */
  /* icons and cursors */
  VX_PART_DIRECTORY = 14,
  VX_PART_ICON_ENTRY = 15,
  VX_PART_CURSOR_ENTRY = 16,
  /* PNG and animated cursors */
  VX_PART_PNG_SIGNATURE = 17,
  VX_PART_PNG_CHUNK = 18,
  VX_PART_RIFF_CHUNK = 19, /**< of lists and frames the header alone */
  /* what is none of these */
  VX_PART_UNKNOWN = 20,     /**< content that no reader knows */
  VX_PART_UNREFERENCED = 21 /**< bytes that no structure speaks of */
} vx_part_kind;

typedef enum vx_part_flags {
  VX_PART_CUT = 1,   /**< the file ends before it does */
  VX_PART_SHARED = 2 /**< another part claims some of its bytes, too */
} vx_part_flags;

/** A run of bytes. */
typedef struct vx_part {
  int kind;           /**< vx_part_kind */
  int parent;         /**< number of the part, from 0, that it belongs to; -1: of none */
  int page;           /**< the page it belongs to, from 1; 0: the whole file */
  unsigned int flags; /**< vx_part_flags */
  uint64_t offset;    /**< byte of the file where it begins */
  uint64_t length;    /**< bytes that it should have */
  uint64_t present;   /**< those of them that the file has */
  uint32_t count;     /**< rows, colours or entries in it; 0 where it is one thing */
  uint32_t stride;    /**< bytes from one of those to the next; 0 where they differ */
  char name[8];       /**< of chunks: their four characters, "" for others */
} vx_part;

/** How a field's value is written. */
typedef enum vx_field_form {
  VX_FIELD_NUMBER = 0, /**< a decimal number */
  VX_FIELD_HEX = 1,    /**< bits: a hexadecimal number of all its digits */
  VX_FIELD_TEXT = 2    /**< its bytes are characters, which meaning has */
} vx_field_form;

/** A field of a part. */
typedef struct vx_field {
  const char* name; /**< such as "bits_per_pixel"; lives as long as the library */
  uint64_t offset;  /**< byte of the file where it begins */
  int size;         /**< bytes: 1, 2 or 4 */
  int form;         /**< vx_field_form */
  uint8_t bytes[4]; /**< as stored, the first `size` of them */
  int64_t value;    /**< signed where the format says so */
  char meaning[56]; /**< in words, such as "run-length, 8 bits"; "" where the number says it all */
} vx_field;

/** Most fields that a part has. */
#define VX_MOST_FIELDS 40

/** The parts of a file. */
typedef struct vx_structure vx_structure;

/**
 * Finds the parts of a file: what its headers and directories speak of, whether or not it is right, and what
 * they leave out. Those that belong to one part follow it, in the order of their offsets. No pixel is
 * decoded. Some damage hides what lies behind it: then there are fewer parts. A body that two pages share is
 * taken apart once, and beyond a million parts no page is.
 * @return VX_OK for any source that begins like a bitmap, icon, cursor, animated cursor or PNG file;
 * VX_BAD_FORMAT for others, VX_NO_MEMORY where the list does not fit. The caller frees *structure.
 */
VX_API int vx_inspect(vx_source* source, vx_structure** structure);
/** @param count receives how many there are @return the first; valid as long as the structure */
VX_API const vx_part* vx_structure_parts(const vx_structure* structure, int* count);
/** Frees it; null does nothing. */
VX_API void vx_structure_free(vx_structure* structure);
/**
 * Reads the fields of a part, as far as the file has them. The source is the one that was inspected.
 * @param fields room for VX_MOST_FIELDS @param count receives how many there are; 0 for parts without fields
 */
VX_API int vx_part_fields(vx_source* source, const vx_part* part, vx_field* fields, int* count);
/** @return the name of a kind, such as "file-header"; "unknown" for any other number. */
VX_API const char* vx_part_name(int kind);

/** What a code of run-length data does. */
typedef enum vx_code_kind {
  VX_CODE_RUN = 0,           /**< count pixels of one value */
  VX_CODE_LITERAL = 1,       /**< count pixels, each with its value */
  VX_CODE_END_OF_LINE = 2,   /**< the next row begins */
  VX_CODE_END_OF_BITMAP = 3, /**< nothing follows */
  VX_CODE_DELTA = 4          /**< right by count pixels, on by value rows */
} vx_code_kind;

/** A code of run-length data. */
typedef struct vx_code {
  int kind;        /**< vx_code_kind */
  int row;         /**< where it stands: the row as stored, from 0; it may lie behind the last one */
  int64_t x;       /**< and the pixel in it, from 0; it may lie behind the last one */
  int count;       /**< pixels: 1 to 255 of runs, 3 to 255 of literals, 0 to 255 of deltas */
  int value;       /**< of runs: an index (RLE8), two indices (RLE4) or 0xRRGGBB (RLE24); of deltas: rows */
  uint64_t offset; /**< byte of the file where the code begins */
  uint64_t length; /**< bytes of the code with its padding */
} vx_code;

/** Takes a code. @return 0 to go on; anything else ends the walk. May not throw. */
typedef int (*vx_code_function)(void* user, const vx_code* code);

/**
 * Walks the run-length codes of a page in their order, up to the one that ends the picture or to the last
 * that is whole, whether or not they fit into the picture.
 * @return VX_NOT_SUPPORTED where the page has no run-length data
 */
VX_API int vx_read_codes(vx_source* source, int page, vx_code_function take, void* user);

/** A file that lies inside another, such as the image of a disk. */
typedef struct vx_found_file {
  int format;       /**< vx_format of its first page */
  int page_count;   /**< pages of it */
  uint64_t offset;  /**< byte of the source where it begins */
  uint64_t length;  /**< bytes that it should have: up to the last one that its headers speak of */
  uint64_t present; /**< those of them that the source has */
} vx_found_file;

/**
 * Tells how long the bitmap, icon, cursor or animated cursor is that begins at a byte of any source. Bytes
 * behind the last that its headers speak of are none of it, but for up to three that pad it to the length it
 * states. Of what the source cuts off only bitmaps are taken whose headers agree on how long they were. No
 * pixel is decoded.
 * @param offset 0 and more @return VX_BAD_FORMAT where no such file begins, or one that is not whole
 */
VX_API int vx_extent(vx_source* source, uint64_t offset, vx_found_file* found);
/**
 * Finds the first such file that begins at `from` or behind it, and before `until`. Icons of more than 1000
 * pages are not found. To find them all go on at found->offset + found->length, or at `until` where none was
 * found.
 * @param found its length is 0 where there is none
 * @return VX_OK, whether or not there is one; VX_READ_ERROR where the source cannot be read
 */
VX_API int vx_find_file(vx_source* source, uint64_t from, uint64_t until, vx_found_file* found);
/**
 * Reads bytes of a source, whatever they are.
 * @param count how many are wanted @param read receives how many there were: fewer at the end of the source
 */
VX_API int vx_read_bytes(vx_source* source, uint64_t offset, void* buffer, size_t count, size_t* read);

#ifdef __cplusplus
}
#endif

#endif /* VX_INSPECT_H */
