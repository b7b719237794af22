// The exported face of vxfbmp.so.18: the entry points that the kernel calls, and the functions behind
// them under their C++ names. Nothing else of the filter is visible outside, and nothing inside includes
// this.
#pragma once

#include <vxkrn.h>

#define VXBMP_EXPORT __attribute__((visibility("default")))

extern "C" {
// Each takes one record and returns a status: STATUS_BAD_PARAMETER for null, else its driver's.
VXBMP_EXPORT int fltInfo(_INFODISPATCH* dispatch);
VXBMP_EXPORT int fltLoad(_LOADDISPATCH* dispatch);
VXBMP_EXPORT int fltSave(_SAVEDISPATCH* dispatch);
VXBMP_EXPORT int fltDeletePage(_DELETEPAGEDISPATCH* dispatch);
}

/// Fills the display dispatch, loading the display library where the kernel asks for it.
/// @param library  the display library where it was loaded here, which the caller gives back through
///                 FreeLibrary; null otherwise, and after every failure
/// @return STATUS_OK; STATUS_FAILURE where VXDIS.so cannot be loaded, or what VX_GetDisDispatch answered
[[nodiscard]] VXBMP_EXPORT int GetDisplayDispatch(_DISDISPATCH* dispatch, HANDLE& library);

/// Identifies the open file of the record and fills its FileInfo; clamps LoadOptions->PageNumber.
/// @return STATUS_OK; STATUS_READ_ERROR, STATUS_BAD_FORMAT, STATUS_FAILURE, STATUS_NO_MEMORY, or what
/// GetPngInfoFromMemory answered
[[nodiscard]] VXBMP_EXPORT int fltInfoBMP(_INFODISPATCH* dispatch);

/// Loads the image that the record names, row by row, into its RowCallback. The file is closed on return.
/// @return STATUS_OK; STATUS_OPEN_ERROR, STATUS_BAD_BPP for a target of no known depth, STATUS_BAD_FORMAT,
/// STATUS_SEEK_ERROR, STATUS_READ_ERROR, STATUS_NO_MEMORY, or what a callback or a bitmap service answered
[[nodiscard]] VXBMP_EXPORT int fltLoadBMP(_LOADDISPATCH* dispatch);

/// Loads headerless data that the record and its bitmap describe. The file is closed on return.
/// @return as fltLoadBMP
[[nodiscard]] VXBMP_EXPORT int LoadRawData(_LOADDISPATCH* dispatch, int width, int height, int bitsPerPixel);

/// Decodes the pixel data at which `file` stands and delivers its rows. `file` stays open.
/// @param width        pixels of a stored row; not below the target's
/// @param height       stored rows
/// @param bitsPerPixel 1, 4, 8, 16, 24 or 32
/// @param compression  as in a bitmap header: 0 none, 1 RLE8, 2 RLE4, 3 bit fields
/// @param convert      nonzero: 16-bit pixels laid out by the record's masks become 5-5-5
/// @param signature    0 for an image inside an icon or cursor file, whose mask is then read too
/// @return STATUS_OK; STATUS_READ_ERROR for a row that ends early, STATUS_BAD_FORMAT for an unknown
/// compression, STATUS_NO_MEMORY, or what the callback or a bitmap service answered
[[nodiscard]] VXBMP_EXPORT int ReadRawData(_LOADDISPATCH* dispatch, HANDLE file, int width, int height,
                                           int bitsPerPixel, int compression, int convert,
                                           unsigned short signature);

/// Loads the page of `entry`, a PNG stream, through the kernel's decoder. `file` stays open.
/// @return STATUS_OK; STATUS_READ_ERROR, STATUS_NO_MEMORY, or what a callback answered
[[nodiscard]] VXBMP_EXPORT int ReadPngImage(_LOADDISPATCH* dispatch, HANDLE file, ICONDIRENTRY* entry);

// Answers to yes-or-no questions are whole ints (1 or 0), so that C callers need not know bool.

/// Reads the first `capacity` bytes of a header of `declaredSize` bytes, or all of a shorter one, and
/// leaves the file behind the header. @return 1, or 0 when the header is not there.
[[nodiscard]] VXBMP_EXPORT int ReadBMPHeader(HANDLE file, unsigned char* buffer, unsigned int capacity,
                                             unsigned int declaredSize);

/// Whether the 8 bytes are a PNG signature. @return 1 or 0
[[nodiscard]] VXBMP_EXPORT int IsPNGHeader(unsigned char* bytes);

/// Judges the masks (red, green, blue) of 16- or 32-bit pixels.
/// @param convert  set to 1 when 16-bit pixels must be converted to 5-5-5, to 0 when not
/// @param is565    set to 1 when they are 5-6-5, else to 0
/// @return STATUS_OK, or STATUS_BAD_FORMAT for masks and depths no reader takes
[[nodiscard]] VXBMP_EXPORT int VerifyColorMasks(unsigned int* masks, int* convert, int* is565,
                                                int bitsPerPixel);

/// Bytes of a stored row, padded to a multiple of 4; 0 for an unknown depth. The height is not looked at.
[[nodiscard]] VXBMP_EXPORT int GetBytesPerLine(int bitsPerPixel, int width, int height);

/// Saves the image of the record as a new file or, where the page options ask for that, as a page of an icon
/// or cursor file. An existing file is written over, not made shorter; on a failure it stays as far as it was
/// written. The record's Format and Flags change as documented there.
/// @return STATUS_OK; STATUS_NOT_SUPPORTED, STATUS_BAD_BPP or STATUS_BAD_DIMENSIONS before anything is
/// touched; STATUS_OPEN_WRITE_ERROR, STATUS_WRITE_ERROR, STATUS_NO_MEMORY, AddPage's, or what a callback
/// answered
[[nodiscard]] VXBMP_EXPORT int fltSaveBMP(_SAVEDISPATCH* dispatch);

/// Writes what stands before the rows of a new file, at the position of `file`, which stays open.
/// @param image        the converted image
/// @param bitsPerPixel its depth
/// @param kind         header kind, 1 to 6, that the save driver chose
/// @param saveFile     whose palette becomes the colour table
/// @return STATUS_OK or STATUS_WRITE_ERROR
[[nodiscard]] VXBMP_EXPORT int WriteBMPHeader(HANDLE file, _BITMAPHANDLE* image, int bitsPerPixel, int kind,
                                              _SAVEFILESTRUCT* saveFile);

/// Makes a 1-bit bitmap of bitmap's region, open for row access. @return null, or a mask that the caller
/// gives back through FreeMaskBitmap
[[nodiscard]] VXBMP_EXPORT _BITMAPHANDLE* CreateMaskBitmap(_BITMAPHANDLE* bitmap);

/// Frees a mask; null does nothing.
VXBMP_EXPORT void FreeMaskBitmap(_BITMAPHANDLE* mask);

/// Inverts every bit of `count` bytes.
VXBMP_EXPORT void InvertBuffer(unsigned char* buffer, unsigned int count);

/// Writes a new icon file whose one page is the image of the record as a PNG stream.
/// @return STATUS_OK; STATUS_OPEN_WRITE_ERROR, STATUS_WRITE_ERROR, or what SaveToMemory answered
[[nodiscard]] VXBMP_EXPORT int OverwriteVistaIcon(_SAVEDISPATCH* dispatch);

/// Makes the image of the record a page of the icon or cursor file that it names, as SaveOptions say: with a
/// new entry in the directory, or in the place of an old page. The body is appended, and no body is removed.
/// Nothing is rolled back on a failure.
/// @param kind not looked at
/// @return STATUS_OK; STATUS_OPEN_WRITE_ERROR where there is no file or an empty one, STATUS_BAD_FORMAT where
/// it ends in its first 6 bytes, STATUS_BAD_PAGE for a page below -1, for a page to replace that does not
/// exist, and where there are 65535 pages already, all with the file untouched; STATUS_WRITE_ERROR,
/// STATUS_NO_MEMORY, or what a callback answered
[[nodiscard]] VXBMP_EXPORT int AddPage(_SAVEDISPATCH* dispatch, int kind);

/// Writes the entry at `entryOffset` of an icon file, and the image of the record as a PNG stream at its end.
/// @param file open for reading and writing; closed here whatever happens
/// @return STATUS_OK, STATUS_WRITE_ERROR, or what SaveToMemory answered
[[nodiscard]] VXBMP_EXPORT int InsertVistaIcon(_SAVEDISPATCH* dispatch, HANDLE file,
                                               unsigned int entryOffset);

/// Removes a page of the icon or cursor file that the record names. Its body stays in the file. Nothing is
/// rolled back on a failure.
/// @return STATUS_OK; STATUS_OPEN_WRITE_ERROR, STATUS_BAD_PAGE, STATUS_LAST_PAGE for the only page, all with
/// the file untouched; STATUS_WRITE_ERROR
[[nodiscard]] VXBMP_EXPORT int fltDeletePageBMP(_DELETEPAGEDISPATCH* dispatch);
