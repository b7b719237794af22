/*
 * The contract between the toolkit's kernel, libvxkrn.so.18, and its file-format filters: the
 * records that cross the boundary, the constants in them, and the kernel services a filter calls.
 *
 * It is the only header both sides include, is valid C11 and C++20, and pulls in nothing but
 * <stdint.h> and <stddef.h>. Applications do not need it: theirs is <vx/vx.h>.
 *
 * Conventions
 *   - `int` and `unsigned int` are 32 bits; numbers are little-endian two's complement.
 *   - Text is 8-bit and NUL-terminated.
 *   - Every record belongs to whoever made it (the kernel, unless said otherwise) and is passed by
 *     pointer; a filter never frees one and keeps none after the call.
 *   - A status is an int: STATUS_OK (1) is success, everything else a failure.
 *   - Fields named Reserved... are there to keep the order and the size; write 0, do not read.
 */
#ifndef VXKRN_H
#define VXKRN_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#define VX_STATIC_ASSERT(condition, text) static_assert(condition, text)
#else
#define VX_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#endif

/* ---- Statuses ---- */

#define STATUS_OK 1                     /* success */
#define STATUS_FAILURE 0                /* an image header of unknown length; no display library */
#define STATUS_NO_MEMORY (-1)           /* an allocation failed or went over the limit */
#define STATUS_SEEK_ERROR (-4)          /* a seek did not land where it was asked to */
#define STATUS_WRITE_ERROR (-5)         /* fewer bytes were stored than asked */
#define STATUS_READ_ERROR (-7)          /* fewer bytes arrived than asked */
#define STATUS_BAD_FORMAT (-9)          /* the bytes are not a file of this family */
#define STATUS_OPEN_ERROR (-10)         /* the file cannot be opened for reading */
#define STATUS_BAD_DIMENSIONS (-11)     /* width or height out of range for the format */
#define STATUS_BAD_PARAMETER (-13)      /* a null record, or an argument out of its range */
#define STATUS_OPEN_WRITE_ERROR (-14)   /* the file cannot be opened for writing or update */
#define STATUS_NOT_SUPPORTED (-16)      /* the format cannot be written */
#define STATUS_BAD_BPP (-27)            /* a depth that the format or the target cannot hold */
#define STATUS_NO_DISPLAY_LIBRARY (-30) /* the display library is not loaded */
#define STATUS_BAD_PAGE (-310)          /* no such page */
#define STATUS_LAST_PAGE (-311)         /* the only page of a file cannot be deleted */

/* ---- Format identifiers: IMAGEINFO.Format, _SAVEDISPATCH.Format ---- */

#define FMT_BMP 6             /* Windows bitmap, 40-byte header, uncompressed or bit fields */
#define FMT_OS2 14            /* OS/2 1.x bitmap, 12-byte core header */
#define FMT_OS2_2 74          /* bitmap with any other header length */
#define FMT_PNG 75            /* PNG stream; only towards the PNG callbacks */
#define FMT_BMP_RLE 84        /* Windows bitmap, 40-byte header, any other compression */
#define FMT_ICO 91            /* icon file */
#define FMT_CUR 92            /* cursor file */
#define FMT_RAW 156           /* headerless data, uncompressed */
#define FMT_RAW_RLE4 157      /* headerless data, RLE4 */
#define FMT_RAW_RLE8 158      /* headerless data, RLE8 */
#define FMT_RAW_BITFIELDS 159 /* headerless data with colour masks */
#define FMT_VISTA_ICO 321     /* icon file with a PNG entry or an entry of 256 pixels */

/* ---- Orientation: the order in which rows are stored and delivered ---- */

#define ORIENT_TOP_DOWN 1  /* the first stored row is the top row */
#define ORIENT_BOTTOM_UP 4 /* the first stored row is the bottom row */

/* ---- Colour order ---- */

#define ORDER_RGB 0 /* palette images: 8 bits per pixel or less */
#define ORDER_BGR 1 /* 9 bits per pixel or more: blue in the lowest byte or bits */
#define ORDER_565 7 /* 16 bits per pixel with the masks 0xF800, 0x07E0, 0x001F */

/* ---- Flags argument of ROWCALLBACK ---- */

#define ROW_FLAGS_BASE 0x3u         /* on every row */
#define ROW_FLAG_FIRST 0x4u         /* stored row 0 of the image, whatever the band */
#define ROW_FLAG_LAST 0x8u          /* the last row delivered */
#define ROW_FLAG_UNCOMPRESSED 0x20u /* the row was not run-length decoded */

/* ---- Flags in the records ---- */

#define BITMAP_ALLOCATED 0x1u         /* _BITMAPHANDLE.Flags: owns pixel memory */
#define LOAD_ALLOW_TRUNCATED 0x10000u /* LOADOPTIONS.Flags: accept uncompressed rows that end early */
#define RAW_HAS_PALETTE 0x1000u       /* _LOADDISPATCH.RawFlags: RawPalette is valid */
#define RAW_HAS_MASKS 0x2000u         /* _LOADDISPATCH.RawFlags: the three masks are valid */
#define SAVE_ADD_PAGE 0x4u            /* _SAVEDISPATCH.Flags: always add a directory entry */
#define SAVE_DIRECT_COLOR 0x1000u     /* _SAVEDISPATCH.Flags: more than 8 bits, not 5-6-5 */
#define SAVE_ORDER_565 0x1000000u     /* _SAVEDISPATCH.Flags: the bitmap is 5-6-5 */
#define CONVERT_PALETTE_BEST 0        /* _SAVEDISPATCH.ConvertArg1: the palette that suits the image best */
#define CONVERT_PALETTE_FIXED 1       /* _SAVEDISPATCH.ConvertArg1: the fixed palette of the depth */
#define CONVERT_DIFFUSE 0        /* _SAVEDISPATCH.ConvertArg2: spread colour errors over the neighbours */
#define CONVERT_NEAREST 1        /* _SAVEDISPATCH.ConvertArg2: every pixel the nearest colour */
#define SAVE_PAGE_REPLACE 0x400u /* SAVEOPTIONS.Flags: write over page PageNumber */
#define SAVE_PAGE_INSERT 0x800u  /* SAVEOPTIONS.Flags: insert at PageNumber; outranks the former */

/* ---- Small records ---- */

/** The structure behind a file or library handle; only the kernel knows what is in it. */
struct tagHANDLE;
typedef struct tagHANDLE* HANDLE;

/** What VX_RedirectedOpen answers when it fails: all bits set. */
#ifdef __cplusplus
#define VX_INVALID_HANDLE (reinterpret_cast<HANDLE>(static_cast<intptr_t>(-1)))
#else
#define VX_INVALID_HANDLE ((HANDLE)(intptr_t)-1)
#endif

/** One palette entry, in the order in which bitmap files store it. */
typedef struct RGBQUAD {
  unsigned char Blue;
  unsigned char Green;
  unsigned char Red;
  unsigned char Reserved; /**< 0 */
} RGBQUAD;
VX_STATIC_ASSERT(sizeof(RGBQUAD) == 4, "a palette entry is 4 bytes");

/** The directory that opens an icon or cursor file. */
typedef struct ICONDIR {
  uint16_t Reserved; /**< 0 */
  uint16_t Type;     /**< 1 icon, 2 cursor */
  uint16_t Count;    /**< number of entries, one a page */
} ICONDIR;
VX_STATIC_ASSERT(sizeof(ICONDIR) == 6, "an icon directory is 6 bytes");

/** One entry of the directory, as it stands in the file. Page p (from 1) has its entry at 16p - 10. */
typedef struct ICONDIRENTRY {
  uint8_t Width;        /**< pixels; 0 means 256 */
  uint8_t Height;       /**< pixels; 0 means 256 */
  uint8_t ColorCount;   /**< palette colours; 0 for 256 and more */
  uint8_t Reserved;     /**< 0 */
  uint16_t Planes;      /**< icons: colour planes; cursors: hot spot x */
  uint16_t BitCount;    /**< icons: bits per pixel, may be 0; cursors: hot spot y */
  uint32_t BytesInRes;  /**< length of the image body in bytes */
  uint32_t ImageOffset; /**< file offset of the image body */
} ICONDIRENTRY;
VX_STATIC_ASSERT(sizeof(ICONDIRENTRY) == 16, "a directory entry is 16 bytes");

/* ---- IMAGEINFO ---- */

/**
 * What a file (or one page of it) holds. The kernel clears it and sets StructSize; fltInfo fills it.
 * After a failure some fields may have been written and none means anything.
 */
typedef struct IMAGEINFO {
  unsigned int StructSize; /**< size of this record, 1668 */
  int Format;              /**< FMT_... */
  unsigned int Reserved1[2];
  int Width;        /**< pixels */
  int Height;       /**< pixels; the sign of the file's height is in Orientation */
  int BitsPerPixel; /**< 1, 4, 8, 16, 24 or 32 */
  unsigned int Reserved2;
  int DataSize;         /**< bytes of pixel data with rows padded to whole bytes only */
  char Compression[20]; /**< "Run Length", the kernel's word for a PNG page, or as supplied */
  int Orientation;      /**< ORIENT_... */
  int ColorOrder;       /**< ORDER_... */
  int PageNumber;       /**< page described, from 1 (icon and cursor files) */
  int TotalPages;       /**< pages in the file (icon and cursor files) */
  int XResolution;      /**< dots per inch; 96 where the file names none */
  int YResolution;      /**< dots per inch; 96 where the file names none */
  unsigned int Flags;   /**< 0x1000 from the moment a PNG page is decoded, else 0 */
  unsigned int Reserved3[396];
} IMAGEINFO;
VX_STATIC_ASSERT(sizeof(IMAGEINFO) == 1668, "IMAGEINFO is 1668 bytes at every width");

/* ---- _BITMAPHANDLE ---- */

/* A pointer that takes 8 bytes at every width, so that both have the same offsets. */
#if UINTPTR_MAX == 0xFFFFFFFFu
#define VX_WIDE_POINTER(type, name) \
  type* name;                       \
  unsigned int Reserved##name
#else
#define VX_WIDE_POINTER(type, name) type* name
#endif

/**
 * The kernel's bitmap record. Whoever needs one provides the memory; VX_InitBitmap makes it valid,
 * VX_AllocateBitmap gives it pixels, VX_FreeBitmap takes away everything the kernel attached.
 */
typedef struct _BITMAPHANDLE {
  unsigned int StructSize;                /**< size of this record, 216 */
  unsigned int AccessCount;               /**< the kernel's: row accesses open */
  VX_WIDE_POINTER(unsigned char, Pixels); /**< the kernel's: Height rows of BytesPerLine bytes */
  int Width;                              /**< pixels */
  int Height;                             /**< pixels */
  int BitsPerPixel;                       /**< 1, 4, 8, 16, 24 or 32 */
  int BytesPerLine;                       /**< bytes of one stored row; a multiple of 4 */
  VX_WIDE_POINTER(unsigned char, Region); /**< the kernel's: 1-bit plane, set inside; null: none */
  unsigned int Flags;                     /**< BITMAP_ALLOCATED and flags of the kernel's */
  int ColorCount;                         /**< number of palette entries */
  VX_WIDE_POINTER(RGBQUAD, Palette);      /**< ColorCount entries, the kernel's memory; null: none */
  int Orientation;                        /**< ORIENT_... */
  int ColorOrder;                         /**< ORDER_... */
  int RegionBytesPerLine;                 /**< the kernel's: bytes of one row of Region */
  unsigned int Reserved1;
  int XResolution; /**< dots per inch */
  int YResolution; /**< dots per inch */
  unsigned int Reserved2[34];
} _BITMAPHANDLE;
VX_STATIC_ASSERT(sizeof(_BITMAPHANDLE) == 216, "_BITMAPHANDLE is 216 bytes at every width");
VX_STATIC_ASSERT(offsetof(_BITMAPHANDLE, XResolution) == 72, "the same offsets at every width");

/* ---- Options ---- */

/** Options of a load or an identification. */
typedef struct LOADOPTIONS {
  unsigned int StructSize; /**< size of this record */
  unsigned int Flags;      /**< LOAD_ALLOW_TRUNCATED */
  unsigned int Reserved1;
  int PageNumber; /**< page wanted, from 1; fltInfo clamps it into the file and writes it back */
} LOADOPTIONS;

/** Page options of a save into an icon or cursor file. */
typedef struct SAVEOPTIONS {
  unsigned int StructSize; /**< size of this record */
  unsigned int Flags;      /**< SAVE_PAGE_REPLACE, SAVE_PAGE_INSERT */
  unsigned int Reserved1;
  int PageNumber; /**< page the flags speak of, from 1; -1 is the end of the directory */
} SAVEOPTIONS;

/** What BeginSave tells the writers about the converted image. The kernel's; filters only read it. */
typedef struct _SAVEFILESTRUCT {
  unsigned int StructSize; /**< size of this record */
  int ColorCount;          /**< palette entries in use */
  RGBQUAD Palette[256];    /**< 2^depth entries for depths up to 8 */
} _SAVEFILESTRUCT;

/* ---- Callbacks carried in the records ---- */

/**
 * Takes one decoded row.
 * row holds one row in the bitmap's layout, belongs to the filter and is valid during the call only.
 * rowNumber counts stored rows, from the band's first where a band was cut; lineCount is always 1.
 * The callback may change the row: what it leaves shows only where the next row comes short.
 * Anything but STATUS_OK stops the load and becomes its result.
 */
typedef int (*ROWCALLBACK)(IMAGEINFO* info, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                           int rowNumber, int lineCount, void* userData);

/**
 * Decodes the PNG stream of bufferSize bytes at buffer into bitmap, an empty record of
 * bitmapRecordSize bytes, at bitsPerPixel (0: the stream's own depth). The kernel marks it
 * BITMAP_ALLOCATED when it holds pixels; the filter then releases it with VX_FreeBitmap. A callback that
 * fails leaves nothing in the record: the filter does not free it.
 */
typedef int (*LOADPNGFROMMEMORY)(unsigned char* buffer, _BITMAPHANDLE* bitmap, unsigned int bitmapRecordSize,
                                 int bitsPerPixel, int reserved1, unsigned int bufferSize, int reserved0,
                                 IMAGEINFO* info);

/** Describes the PNG stream of bufferSize bytes at buffer in info: infoRecordSize bytes, cleared. */
typedef int (*GETPNGINFOFROMMEMORY)(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                                    unsigned int bufferSize, int reserved0, int reserved1);

/**
 * Prepares the conversion of bitmap to bitsPerPixel and answers with a record that describes the
 * converted image, a buffer for rowsPerCall converted rows, and the palette in saveFile.
 * A result below 1 is a failure; endSave is called all the same.
 */
typedef int (*BEGINSAVE)(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, int bitsPerPixel,
                         unsigned int* flags, unsigned char** rowBuffer, int rowsPerCall, int convertArg1,
                         int convertArg2, _SAVEFILESTRUCT** saveFile);

/** Puts rowCount converted rows, from stored row `row` of bitmap on, into rowBuffer. */
typedef int (*GETSAVEROW)(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* converted, unsigned char* rowBuffer, int row,
                          int rowCount, unsigned int flags, int convertArg1, int convertArg2,
                          _SAVEFILESTRUCT* saveFile);

/** Releases what BeginSave made; called once after every BeginSave. */
typedef int (*ENDSAVE)(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, unsigned int* flags,
                       unsigned char** rowBuffer, _SAVEFILESTRUCT** saveFile);

/**
 * Encodes bitmap in format at bitsPerPixel into a global memory block of *size bytes. The caller owns
 * the handle stored in *memory: WinGlobalLock shows its bytes, VX_OsFreeHandle frees it.
 */
typedef int (*SAVETOMEMORY)(void** memory, _BITMAPHANDLE* bitmap, int format, int bitsPerPixel, int reserved0,
                            unsigned int* size, int reserved1);

/* ---- Dispatch records: one for each entry point ---- */

/** Argument of fltLoad. */
typedef struct _LOADDISPATCH {
  const char* FileName;  /**< file to load; the filter opens it itself */
  _BITMAPHANDLE* Bitmap; /**< target, already given width, height and depth */
  unsigned int Reserved1;
  ROWCALLBACK RowCallback; /**< takes every decoded row */
  void* UserData;          /**< handed back to RowCallback */
  int ReadBufferSize;      /**< bytes of the decoder's read buffer; even, above 0 */
  unsigned int Reserved2;
  int BandEnabled;  /**< nonzero: only a band of rows; not honoured for run-length data */
  int BandFirstRow; /**< top-down targets: first stored row of the band */
  int BandTopRow;   /**< bottom-up targets: top row of the band, from the top of the image */
  unsigned int Reserved3;
  int BandRowCount; /**< rows in the band */
  unsigned int Reserved4[2];
  IMAGEINFO* FileInfo; /**< what fltInfo told; for raw data its Format alone */
  unsigned int Reserved5[2];
  int RawHasOffset; /**< raw data: nonzero when RawOffset is valid */
  unsigned int Reserved6[2];
  int RawOffset;           /**< raw data: file offset of the first pixel byte */
  unsigned int RawFlags;   /**< raw data: RAW_HAS_PALETTE, RAW_HAS_MASKS */
  RGBQUAD RawPalette[256]; /**< raw data: palette in place of the fixed one */
  unsigned int RedMask;    /**< bit-field masks: from the file, or the caller's for raw data */
  unsigned int GreenMask;
  unsigned int BlueMask;
  unsigned int Reserved7[2];
  LOADOPTIONS* LoadOptions; /**< page and flags */
  unsigned int Reserved8[2];
  LOADPNGFROMMEMORY LoadPngFromMemory;
} _LOADDISPATCH;

/** Argument of fltInfo. */
typedef struct _INFODISPATCH {
  unsigned int StructSize; /**< size of this record */
  unsigned int Reserved1;
  HANDLE File;         /**< open for reading; stays the kernel's and stays open */
  IMAGEINFO* FileInfo; /**< filled by fltInfo */
  unsigned int Reserved2[2];
  LOADOPTIONS* LoadOptions; /**< never null; PageNumber is clamped in place */
  unsigned int Reserved3[2];
  GETPNGINFOFROMMEMORY GetPngInfoFromMemory;
} _INFODISPATCH;

/** Argument of fltSave. */
typedef struct _SAVEDISPATCH {
  const char* FileName;  /**< file to write or to edit */
  _BITMAPHANDLE* Bitmap; /**< image to save */
  int BitsPerPixel;      /**< depth to write */
  int Format;            /**< FMT_...; FMT_BMP_RLE becomes FMT_BMP at 1 and 24 bits */
  unsigned int Flags;    /**< SAVE_...; the filter adds SAVE_ORDER_565 or SAVE_DIRECT_COLOR */
  int ConvertArg1;       /**< handed to BeginSave and GetSaveRow */
  int ConvertArg2;       /**< handed to BeginSave and GetSaveRow */
  unsigned int Reserved1[2];
  SAVEOPTIONS* SaveOptions; /**< page options of icon and cursor files */
  unsigned int Reserved2[2];
  BEGINSAVE BeginSave;
  ENDSAVE EndSave;
  GETSAVEROW GetSaveRow;
  void* Reserved3;
  void* Reserved4;
  SAVETOMEMORY SaveToMemory;
} _SAVEDISPATCH;

/** Argument of fltDeletePage. */
typedef struct _DELETEPAGEDISPATCH {
  const char* FileName; /**< icon or cursor file to edit in place */
  int PageNumber;       /**< page to remove, from 1 */
} _DELETEPAGEDISPATCH;

/* ---- Drawing ---- */

#define DISPLAY_AUTO 0    /* DISPLAYOPTIONS.Mode: the best that the terminal is known to take */
#define DISPLAY_SYMBOLS 1 /* coloured characters */
#define DISPLAY_SIXEL 2   /* pixels, in the coding of the VT340 */
#define DISPLAY_KITTY 3   /* pixels, by kitty's graphics protocol */

/** How a bitmap is drawn. */
typedef struct DISPLAYOPTIONS {
  unsigned int StructSize; /**< size of this record */
  int Mode;                /**< DISPLAY_... */
  int Columns;             /**< most character cells side by side, 1 and more */
  int Rows;                /**< most character cells one above the other, 1 and more */
  int CellWidth;           /**< pixels of a cell; 0 where that is not known */
  int CellHeight;          /**< pixels of a cell; 0 where that is not known */
  int Enlarge;             /**< nonzero: a small picture fills Columns or Rows */
} DISPLAYOPTIONS;

/**
 * Draws bitmap as text for a terminal, in its proportions. What is outside the region, or transparent by the
 * bitmap's alpha channel, shows the terminal's background. The environment tells what the terminal takes. The
 * caller frees *text, *size bytes without a closing 0, with VX_LocalFree.
 */
typedef int (*DISPLAYDRAW)(_BITMAPHANDLE* bitmap, const DISPLAYOPTIONS* options, char** text,
                           unsigned int* size);

/** The display dispatch: the functions of the display library. Filters only pass it on. */
typedef struct _DISDISPATCH {
  unsigned int StructSize; /**< size of this record */
  unsigned int Reserved1;
  DISPLAYDRAW Draw;
  void* Reserved2[15];
} _DISDISPATCH;

/** What the display library exports: fills the functions of the record. Its soname must be VXDIS.so. */
int disGetDispatch(_DISDISPATCH* dispatch);

/* ---- Entry points a filter exports ---- */

/** Identifies an open file. @return STATUS_OK, or the filter's or a callback's failure status. */
int fltInfo(_INFODISPATCH* dispatch);
/** Loads one image, row by row, into the callback of the record. */
int fltLoad(_LOADDISPATCH* dispatch);
/** Saves one image as a new file or as a page of an existing one. */
int fltSave(_SAVEDISPATCH* dispatch);
/** Removes one page of an icon or cursor file. */
int fltDeletePage(_DELETEPAGEDISPATCH* dispatch);
/*
 * A fifth one has a C++ name:
 *     int GetDisplayDispatch(_DISDISPATCH* dispatch, HANDLE& library);
 * It fills the record, loading the display library where that must be; the caller then owns library, which is
 * null otherwise, and gives it back through FreeLibrary.
 */

/* ---- Kernel services: files ---- */

#define VX_OPEN_READ 0          /* read only */
#define VX_OPEN_UPDATE 2        /* read and write; the file must exist */
#define VX_OPEN_CREATE 66       /* read and write, created when missing; never truncated */
#define VX_PERMISSION_READ 256  /* what filters pass for files that they read or edit */
#define VX_PERMISSION_WRITE 128 /* what filters pass for bitmap files that they write */
#define VX_SEEK_START 0         /* offset counts from the start, unsigned: 0 to 2^32-2 */
#define VX_SEEK_CURRENT 1       /* offset counts from the current position, signed */
#define VX_SEEK_END 2           /* offset counts from the end, signed */

/**
 * Opens a file: by the functions installed for this thread, or as a file of the system.
 * flags are VX_OPEN_...; permission is VX_PERMISSION_..., and does not matter (files are created with 0666
 * less the umask).
 * @return a handle, or VX_INVALID_HANDLE. The caller closes it with VX_RedirectedClose.
 */
HANDLE VX_RedirectedOpen(const char* fileName, int flags, int permission);
/** Reads up to count bytes. @return how many arrived; 0 at the end of the file; below 0 on an error. */
int VX_RedirectedRead(HANDLE file, void* buffer, unsigned int count);
/**
 * Writes count bytes; 0 bytes ends the file at the current position.
 * @return how many were stored: anything but count is a failure. Bytes may wait in memory: a failure
 * to store them later is kept on the handle and reported by the kernel's own save calls.
 */
int VX_RedirectedWrite(HANDLE file, const void* buffer, unsigned int count);
/** Moves the position (VX_SEEK_...). @return the new position as a 32-bit word, or -1 on failure. */
int VX_RedirectedSeek(HANDLE file, int offset, int origin);
/** Stores what still waits in memory, closes the file and ends the handle. */
int VX_RedirectedClose(HANDLE file);

/* ---- Kernel services: memory ---- */

/**
 * Allocates count elements of size bytes, tagged with the place that asked.
 * @return memory aligned for any type, never null for 0 bytes; null when the product overflows, the limit is
 * reached or memory runs out. Goes back through VX_LocalFree.
 */
void* VX_LocalAlloc(unsigned int count, unsigned int size, int line, const char* file);
/** As VX_LocalAlloc, with every byte 0. */
void* VX_LocalAllocInit(unsigned int count, unsigned int size, int line, const char* file);
/** Frees what the two above gave; null does nothing. */
void VX_LocalFree(void* memory, int line, const char* file);

/** Sets count bytes to value. */
void VX_MemorySet(void* destination, int value, unsigned int count);
/** Copies count bytes between ranges that do not overlap. */
void VX_MemoryCopy(void* destination, const void* source, unsigned int count);
/** Compares count bytes. @return 0 when the ranges are equal. */
int VX_MemoryCompare(const void* first, const void* second, unsigned int count);

/* ---- Kernel services: bitmaps ---- */

#define BITMAP_ALLOCATE_PIXELS 1 /* option of VX_AllocateBitmap */
#define BITMAP_ACCESS_ROWS 0     /* option of VX_IntAccessBitmap */
#define BITMAP_RELEASE_ROWS 1    /* option of VX_IntReleaseBitmap */
#define REGION_OPTION_NONE 0     /* option of VX_SetBitmapRgnFromMask */
#define REGION_COMBINE_SET 6     /* combine of it: the mask's region takes the place of any other */

/**
 * Makes bitmap an empty record (no pixels, no palette, bottom-up) of recordSize (216) bytes.
 * @return STATUS_OK, or STATUS_BAD_PARAMETER, STATUS_BAD_DIMENSIONS or STATUS_BAD_BPP.
 */
int VX_InitBitmap(_BITMAPHANDLE* bitmap, unsigned int recordSize, int width, int height, int bitsPerPixel);
/** Gives bitmap zeroed pixels; option is BITMAP_ALLOCATE_PIXELS. @return STATUS_OK or STATUS_NO_MEMORY. */
int VX_AllocateBitmap(_BITMAPHANDLE* bitmap, int option);
/** Releases pixels, palette and region. The record itself stays its owner's, empty again. */
void VX_FreeBitmap(_BITMAPHANDLE* bitmap);
/**
 * Opens bitmap for row access; option is BITMAP_ACCESS_ROWS. Every success is matched by one
 * VX_IntReleaseBitmap.
 */
int VX_IntAccessBitmap(_BITMAPHANDLE* bitmap, int option);
/**
 * Ends row access; option is BITMAP_RELEASE_ROWS. @return status as passed, unless ending the access itself
 * fails, or the kernel can do without the rows that status says are missing: then STATUS_OK.
 */
int VX_IntReleaseBitmap(_BITMAPHANDLE* bitmap, int option, int status);
/** Copies byteCount bytes of stored row `row` to buffer. @return bytes copied, or a failure status. */
int VX_GetBitmapRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned int byteCount);
/**
 * Writes stored row `row` as red, green, blue, alpha: 4 x Width bytes. Alpha is the bitmap's own channel
 * where it has one, else 0 outside the region and 255 inside. @return bytes written, or a failure status.
 */
int VX_GetBitmapColors(_BITMAPHANDLE* bitmap, unsigned char* rgba, int row);
/** Copies byteCount bytes from buffer to stored row `row`. @return bytes copied, or a failure status. */
int VX_PutBitmapRow(_BITMAPHANDLE* bitmap, const unsigned char* buffer, int row, unsigned int byteCount);

/** Fills palette with the 2^bitsPerPixel fixed colours of that depth (1, 4 or 8). */
void VX_GetFixedPalette(RGBQUAD* palette, int bitsPerPixel);
/** Gives bitmap a copy of the first count entries of palette; 0 takes its palette away. */
int VX_SetBitmapNewPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* palette, int count);

/**
 * Gives bitmap the region that a 1-bit AND mask of the same size describes: a set bit is transparent,
 * so outside. The mask's rows count in the bitmap's stored order. option is REGION_OPTION_NONE,
 * combine is REGION_COMBINE_SET.
 */
int VX_SetBitmapRgnFromMask(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine);
/**
 * Makes mask, a record of recordSize (216) bytes, a 1-bit bitmap with a set bit for every pixel inside
 * bitmap's region, rows in bitmap's stored order; a bitmap without a region gives every bit set.
 * The caller releases it with VX_FreeBitmap.
 */
int VX_CreateMaskFromBitmapRgn(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* mask, unsigned int recordSize);

/* ---- Kernel services: global memory blocks, display, libraries ---- */

/** Registers handle with the kernel's resource tracking under a kind (1 or 3). */
int VX_ResourceAdd(int kind, void* handle, int line, const char* file);
/** @return the address of the block's bytes, valid until WinGlobalUnlock; null for an unknown handle. */
void* WinGlobalLock(void* handle);
/** Ends the access that WinGlobalLock began. */
int WinGlobalUnlock(void* handle);
/** Frees a global memory block and takes it off the resource tracking. */
int VX_OsFreeHandle(void* handle, int line, const char* file);

/**
 * Fills the display dispatch. @return STATUS_OK; STATUS_NO_DISPLAY_LIBRARY while VXDIS.so is not loaded;
 * STATUS_BAD_PARAMETER for null or a record of another size; STATUS_NOT_SUPPORTED for a VXDIS.so that cannot
 * draw. The functions in the record stay valid: once they were handed out the library is not unloaded.
 */
int VX_GetDisDispatch(_DISDISPATCH* dispatch);
/**
 * Loads a library. A name without a slash is looked for in the kernel's own folder (vxkrn-18 beside it),
 * beside the kernel and then where the system looks. @return its handle, or null; goes back through
 * FreeLibrary.
 */
HANDLE LoadLibrary(const char* fileName);
/** Unloads a library. @return 1, or 0 when that is not possible. */
int FreeLibrary(HANDLE library);

#ifdef __cplusplus
}
#endif

#endif /* VXKRN_H */
