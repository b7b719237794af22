/*
 * A kernel in plain C, as small as one can be, for whoever writes one. It serves the contract (vxkrn.h) from
 * the C library, opens the filter and drives its entry points through one story: a bitmap saved, identified
 * and loaded; an icon made, given a second page, and relieved of its first. Ends with 1 at the first thing
 * that is not as promised.
 *
 *   kernel FILTER FOLDER     FILTER is vxfbmp.so.18; in FOLDER, c.bmp and c.ico are made
 *
 *   cc -I host examples/kernel.c -o kernel -rdynamic -ldl
 *
 * -rdynamic is what makes it a kernel: the filter then finds the services below before those of
 * libvxkrn.so.18. It leaves out palettes, PNG pages, headerless data and bands.
 */
#define _XOPEN_SOURCE 700
#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>
#include <vxkrn.h>

/* A kernel would answer with a status instead, which the filter passes on as the result of its call. */
#define EXPECT(condition)                                                     \
  do {                                                                        \
    if (!(condition)) {                                                       \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      exit(1);                                                                \
    }                                                                         \
  } while (0)

/* What the filter holds: nothing between calls, whatever has failed. */
static int g_files, g_blocks, g_bitmaps, g_saves;

/* ---- Services: files ---- */

/* The kernel's own affair: the filter only hands it back. None is VX_INVALID_HANDLE, not NULL. */
struct tagHANDLE {
  int descriptor;
};

HANDLE VX_RedirectedOpen(const char* fileName, int flags, int permission) {
  (void)permission; /* the contract's own numbers for it; a new file's mode is ours to choose */
  const int descriptor = open(fileName, flags, 0666);
  if (descriptor < 0) return VX_INVALID_HANDLE;
  HANDLE file = malloc(sizeof *file);
  EXPECT(file != NULL);
  file->descriptor = descriptor;
  ++g_files;
  return file;
}

/* Fewer bytes than asked for are what tells the filter that a file ends or cannot be read. */
int VX_RedirectedRead(HANDLE file, void* buffer, unsigned int count) {
  return (int)read(file->descriptor, buffer, count);
}
/* A write of 0 bytes ends the file where it is; pages that are deleted leave their place so. */
int VX_RedirectedWrite(HANDLE file, const void* buffer, unsigned int count) {
  if (count == 0) return ftruncate(file->descriptor, lseek(file->descriptor, 0, SEEK_CUR));
  return (int)write(file->descriptor, buffer, count);
}
/* Positions are unsigned words from the start (VX_SEEK_START), though they come and go as int. */
int VX_RedirectedSeek(HANDLE file, int offset, int origin) {
  return (int)lseek(file->descriptor, origin == VX_SEEK_START ? (off_t)(unsigned)offset : offset, origin);
}
int VX_RedirectedClose(HANDLE file) {
  close(file->descriptor);
  free(file);
  --g_files;
  return STATUS_OK;
}

/* ---- Services: memory ----
 * `line` and `file` tell who asks: a kernel may keep books by them. No memory is NULL, and STATUS_NO_MEMORY
 * follows. */

void* VX_LocalAllocInit(unsigned int count, unsigned int size, int line, const char* file) {
  EXPECT(line > 0 && strcmp(file, "API/Filters/Bmp/Common/Bmp") == 0);
  ++g_blocks;
  return calloc(count, size);
}
void* VX_LocalAlloc(unsigned int count, unsigned int size, int line, const char* file) {
  return VX_LocalAllocInit(count, size, line, file);
}
void VX_LocalFree(void* memory, int line, const char* file) {
  (void)line, (void)file;
  if (memory != NULL) --g_blocks;
  free(memory);
}
void VX_MemorySet(void* destination, int value, unsigned int count) {
  memset(destination, value, count);
}
void VX_MemoryCopy(void* destination, const void* source, unsigned int count) {
  memcpy(destination, source, count);
}
int VX_MemoryCompare(const void* first, const void* second, unsigned int count) {
  return memcmp(first, second, count);
}

/* ---- Services: bitmaps ----
 * Here of 1 and 24 bits, bottom-up. The record is the contract's and of the caller; pixels and region are the
 * kernel's. A mask of an icon is a bitmap of 1 bit, which the filter makes through these functions. */

static unsigned char* Row(const _BITMAPHANDLE* bitmap, int row) {
  return bitmap->Pixels + (size_t)row * (size_t)bitmap->BytesPerLine;
}

int VX_InitBitmap(_BITMAPHANDLE* bitmap, unsigned int recordSize, int width, int height, int bitsPerPixel) {
  EXPECT(recordSize == sizeof *bitmap);
  memset(bitmap, 0, sizeof *bitmap);
  bitmap->StructSize = recordSize;
  bitmap->Width = width;
  bitmap->Height = height;
  bitmap->BitsPerPixel = bitsPerPixel;
  bitmap->BytesPerLine = (width * bitsPerPixel + 31) / 32 * 4;
  bitmap->Orientation = ORIENT_BOTTOM_UP;
  bitmap->ColorOrder = bitsPerPixel > 8 ? ORDER_BGR : ORDER_RGB;
  bitmap->XResolution = bitmap->YResolution = 96;
  return STATUS_OK;
}
int VX_AllocateBitmap(_BITMAPHANDLE* bitmap, int option) {
  EXPECT(option == 1);
  bitmap->Pixels = calloc((size_t)bitmap->Height, (size_t)bitmap->BytesPerLine);
  bitmap->Flags |= BITMAP_ALLOCATED;
  ++g_bitmaps;
  return STATUS_OK;
}
void VX_FreeBitmap(_BITMAPHANDLE* bitmap) {
  if (bitmap->Pixels != NULL) --g_bitmaps;
  free(bitmap->Pixels);
  free(bitmap->Region);
  bitmap->Pixels = bitmap->Region = NULL;
}

/* Between access and release the pixels must stay where they are. What release answers is what becomes of the
 * call: it is told STATUS_READ_ERROR where rows of a mask are missing, and may know better. */
int VX_IntAccessBitmap(_BITMAPHANDLE* bitmap, int option) {
  EXPECT(option == 0);
  ++bitmap->AccessCount;
  return STATUS_OK;
}
int VX_IntReleaseBitmap(_BITMAPHANDLE* bitmap, int option, int status) {
  EXPECT(option == 1 && bitmap->AccessCount > 0);
  --bitmap->AccessCount;
  return status;
}
int VX_GetBitmapRow(_BITMAPHANDLE* bitmap, unsigned char* buffer, int row, unsigned int byteCount) {
  memcpy(buffer, Row(bitmap, row), byteCount);
  return (int)byteCount;
}
int VX_PutBitmapRow(_BITMAPHANDLE* bitmap, const unsigned char* buffer, int row, unsigned int byteCount) {
  memcpy(Row(bitmap, row), buffer, byteCount);
  return (int)byteCount;
}
int VX_SetBitmapNewPalette(_BITMAPHANDLE* bitmap, const RGBQUAD* palette, int count) {
  (void)bitmap, (void)palette, (void)count; /* nothing here has one */
  return STATUS_OK;
}

static size_t MaskSize(const _BITMAPHANDLE* bitmap) {
  return (size_t)bitmap->Height * (size_t)((bitmap->Width + 31) / 32 * 4);
}

/* A region is kept as its mask: a set bit inside. Masks in files are the other way round. */
int VX_SetBitmapRgnFromMask(_BITMAPHANDLE* bitmap, int option, _BITMAPHANDLE* mask, int combine) {
  EXPECT(option == 0 && combine == 6 && mask->BitsPerPixel == 1);
  bitmap->Region = malloc(MaskSize(mask));
  for (size_t i = 0; i < MaskSize(mask); ++i) bitmap->Region[i] = (unsigned char)~mask->Pixels[i];
  return STATUS_OK;
}
int VX_CreateMaskFromBitmapRgn(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* mask, unsigned int recordSize) {
  VX_InitBitmap(mask, recordSize, bitmap->Width, bitmap->Height, 1);
  VX_AllocateBitmap(mask, 1);
  memcpy(mask->Pixels, bitmap->Region, MaskSize(mask));
  return STATUS_OK;
}

/* ---- Services: the display, which this kernel does not have ----
 * The filter then looks for a display library, and gets none. */

int VX_GetDisDispatch(_DISDISPATCH* dispatch) {
  (void)dispatch;
  return STATUS_NO_DISPLAY_LIBRARY;
}
HANDLE LoadLibrary(const char* fileName) {
  EXPECT(strcmp(fileName, "VXDIS.so") == 0);
  return NULL;
}

/* ---- Callbacks ----
 * They travel in the records, so a kernel may use others for every call. */

/* A row has arrived, numbered as it is stored. The buffer is the filter's and holds the next row at once
 * after. Any answer but STATUS_OK ends the load, and is its result. */
static int PutRow(IMAGEINFO* info, _BITMAPHANDLE* bitmap, unsigned char* row, unsigned int flags,
                  int rowNumber, int lineCount, void* userData) {
  EXPECT(info->Width == bitmap->Width && lineCount == 1 && userData == bitmap);
  EXPECT(((flags & ROW_FLAG_FIRST) != 0) == (rowNumber == 0));
  EXPECT(((flags & ROW_FLAG_LAST) != 0) == (rowNumber == bitmap->Height - 1));
  memcpy(Row(bitmap, rowNumber), row, (size_t)bitmap->BytesPerLine);
  return STATUS_OK;
}
/* Asked only about pages that are PNG streams, which this kernel cannot decode. */
static int NoPngInfo(unsigned char* buffer, IMAGEINFO* info, unsigned int infoRecordSize,
                     unsigned int bufferSize, int reserved0, int reserved1) {
  (void)buffer, (void)info, (void)infoRecordSize, (void)bufferSize, (void)reserved0, (void)reserved1;
  return STATUS_NOT_SUPPORTED;
}

/* A save begins: which bitmap stands for the converted one (its sizes and its resolution go into the
 * headers), a buffer for its rows, and the palette. The file has the bitmap's own depth, so a converted row
 * is a copy. */
static int BeginSave(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, int bitsPerPixel, unsigned int* flags,
                     unsigned char** rowBuffer, int rowsPerCall, int convertArg1, int convertArg2,
                     _SAVEFILESTRUCT** saveFile) {
  static _SAVEFILESTRUCT noPalette;
  EXPECT(bitsPerPixel == bitmap->BitsPerPixel && *flags == SAVE_DIRECT_COLOR && rowsPerCall == 1);
  EXPECT(convertArg1 == 11 && convertArg2 == 22);
  *converted = bitmap;
  *rowBuffer = malloc((size_t)bitmap->BytesPerLine);
  *saveFile = &noPalette;
  ++g_saves;
  return STATUS_OK;
}
/* The filter asks for rows in the order in which the file has them. */
static int GetSaveRow(_BITMAPHANDLE* bitmap, _BITMAPHANDLE* converted, unsigned char* rowBuffer, int row,
                      int rowCount, unsigned int flags, int convertArg1, int convertArg2,
                      _SAVEFILESTRUCT* saveFile) {
  (void)flags, (void)convertArg1, (void)convertArg2;
  EXPECT(converted == bitmap && rowCount == 1 && saveFile != NULL);
  memcpy(rowBuffer, Row(bitmap, row), (size_t)bitmap->BytesPerLine);
  return STATUS_OK;
}
/* Comes once for every BeginSave, whatever has failed, when the filter has released everything else. */
static int EndSave(_BITMAPHANDLE* bitmap, _BITMAPHANDLE** converted, unsigned int* flags,
                   unsigned char** rowBuffer, _SAVEFILESTRUCT** saveFile) {
  (void)bitmap, (void)converted, (void)flags, (void)saveFile;
  free(*rowBuffer);
  --g_saves;
  return STATUS_OK;
}

/* ---- The filter ----
 * A module with entry points under C names. Reserved fields are 0, so every record begins as all zeros. */

static struct {
  int (*info)(_INFODISPATCH*);
  int (*load)(_LOADDISPATCH*);
  int (*save)(_SAVEDISPATCH*);
  int (*deletePage)(_DELETEPAGEDISPATCH*);
  int (*display)(_DISDISPATCH*, HANDLE*); /* a reference is a pointer to C */
} g_filter;

static void Find(void* module, const char* name, void* function) {
  void* symbol = dlsym(module, name);
  EXPECT(symbol != NULL);
  memcpy(function, &symbol, sizeof symbol);
}
static void OpenFilter(const char* path) {
  void* module = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (module == NULL) fprintf(stderr, "%s\n", dlerror());
  EXPECT(module != NULL);
  Find(module, "fltInfo", &g_filter.info);
  Find(module, "fltLoad", &g_filter.load);
  Find(module, "fltSave", &g_filter.save);
  Find(module, "fltDeletePage", &g_filter.deletePage);
  Find(module, "_Z18GetDisplayDispatchP12_DISDISPATCHRP9tagHANDLE", &g_filter.display);
}

static void ExpectNothingHeld(int bitmaps) {
  EXPECT(g_files == 0 && g_blocks == 0 && g_saves == 0 && g_bitmaps == bitmaps);
}

/* The kernel opens the file, and closes it afterwards. A page that the file does not have is brought into
 * range. */
static IMAGEINFO Identify(const char* name, int page) {
  IMAGEINFO info = {.StructSize = sizeof info};
  LOADOPTIONS options = {.StructSize = sizeof options, .PageNumber = page};
  _INFODISPATCH dispatch = {.StructSize = sizeof dispatch,
                            .File = VX_RedirectedOpen(name, VX_OPEN_READ, 256),
                            .FileInfo = &info,
                            .LoadOptions = &options,
                            .GetPngInfoFromMemory = NoPngInfo};
  EXPECT(dispatch.File != VX_INVALID_HANDLE);
  EXPECT(g_filter.info(&dispatch) == STATUS_OK);
  EXPECT(g_files == 1); /* open, as it was */
  VX_RedirectedClose(dispatch.File);
  return info;
}

/* The target is made from what was identified; then the filter opens the file itself, by name, and delivers
 * rows. The record is large (it has room for a palette), hence not on the stack. */
static void Load(const char* name, int page, _BITMAPHANDLE* bitmap) {
  IMAGEINFO info = Identify(name, page);
  VX_InitBitmap(bitmap, sizeof *bitmap, info.Width, info.Height, info.BitsPerPixel);
  VX_AllocateBitmap(bitmap, 1);
  bitmap->Orientation = info.Orientation;
  LOADOPTIONS options = {.StructSize = sizeof options, .PageNumber = info.PageNumber};
  static _LOADDISPATCH dispatch;
  dispatch = (_LOADDISPATCH){.FileName = name,
                             .Bitmap = bitmap,
                             .RowCallback = PutRow,
                             .UserData = bitmap,
                             .ReadBufferSize = 4096,
                             .FileInfo = &info,
                             .LoadOptions = &options};
  EXPECT(g_filter.load(&dispatch) == STATUS_OK);
}

/* `page` says whether a new file is written or a page of an old one. The two arguments of the conversion
 * reach the callbacks untouched. */
static int Save(const char* name, int format, _BITMAPHANDLE* bitmap, SAVEOPTIONS page) {
  _SAVEDISPATCH dispatch = {.FileName = name,
                            .Bitmap = bitmap,
                            .BitsPerPixel = bitmap->BitsPerPixel,
                            .Format = format,
                            .ConvertArg1 = 11,
                            .ConvertArg2 = 22,
                            .SaveOptions = &page,
                            .BeginSave = BeginSave,
                            .EndSave = EndSave,
                            .GetSaveRow = GetSaveRow};
  return g_filter.save(&dispatch);
}

/* ---- The story ---- */

/* Every byte tells its picture, row and place; padding is 0. The left pixel of every row is transparent. */
static void Paint(_BITMAPHANDLE* bitmap, int width, int height, int seed) {
  VX_InitBitmap(bitmap, sizeof *bitmap, width, height, 24);
  VX_AllocateBitmap(bitmap, 1);
  for (int row = 0; row < height; ++row) {
    for (int i = 0; i < 3 * width; ++i) Row(bitmap, row)[i] = (unsigned char)(seed + 37 * row + i);
  }
  bitmap->Region = malloc(MaskSize(bitmap));
  for (size_t i = 0; i < MaskSize(bitmap); ++i) bitmap->Region[i] = i % 4 == 0 ? 0x7F : 0xFF;
}

static void ExpectSame(const _BITMAPHANDLE* one, const _BITMAPHANDLE* other, int withRegion) {
  EXPECT(one->Width == other->Width && one->Height == other->Height);
  for (int row = 0; row < one->Height; ++row) {
    EXPECT(memcmp(Row(one, row), Row(other, row), (size_t)one->Width * 3) == 0);
    if (!withRegion) continue;
    EXPECT(one->Region[4 * row] == 0x7F && other->Region[4 * row] == 0x7F);
  }
}

static void ExpectLoads(const char* name, int page, const _BITMAPHANDLE* picture, int withRegion) {
  _BITMAPHANDLE loaded;
  Load(name, page, &loaded);
  ExpectSame(picture, &loaded, withRegion);
  VX_FreeBitmap(&loaded);
}

int main(int argc, char** argv) {
  EXPECT(argc == 3); /* the filter, and a folder for files */
  OpenFilter(argv[1]);
  EXPECT(chdir(argv[2]) == 0);
  remove("c.bmp");
  remove("c.ico");
  EXPECT(g_filter.info(NULL) == STATUS_BAD_PARAMETER && g_filter.load(NULL) == STATUS_BAD_PARAMETER);
  EXPECT(g_filter.save(NULL) == STATUS_BAD_PARAMETER && g_filter.deletePage(NULL) == STATUS_BAD_PARAMETER);

  _BITMAPHANDLE first;
  _BITMAPHANDLE second;
  Paint(&first, 8, 5, 1);
  Paint(&second, 13, 7, 100);
  const SAVEOPTIONS newFile = {.StructSize = sizeof newFile};
  const SAVEOPTIONS inFront = {.StructSize = sizeof inFront, .Flags = SAVE_PAGE_INSERT, .PageNumber = 1};

  EXPECT(Save("c.bmp", FMT_BMP, &first, newFile) == STATUS_OK);
  ExpectNothingHeld(2);
  const IMAGEINFO info = Identify("c.bmp", 1);
  EXPECT(info.Format == FMT_BMP && info.Width == 8 && info.Height == 5 && info.BitsPerPixel == 24);
  EXPECT(info.DataSize == 5 * 24 && info.Orientation == ORIENT_BOTTOM_UP && info.ColorOrder == ORDER_BGR);
  ExpectLoads("c.bmp", 1, &first, 0);

  EXPECT(Save("c.ico", FMT_ICO, &first, newFile) == STATUS_OK);
  EXPECT(Save("c.ico", FMT_ICO, &second, inFront) == STATUS_OK);
  ExpectNothingHeld(2);
  EXPECT(Identify("c.ico", 9).PageNumber == 2 && Identify("c.ico", 1).TotalPages == 2);
  ExpectLoads("c.ico", 1, &second, 1);
  ExpectLoads("c.ico", 2, &first, 1);

  _DELETEPAGEDISPATCH page = {.FileName = "c.ico", .PageNumber = 1};
  EXPECT(g_filter.deletePage(&page) == STATUS_OK);
  EXPECT(g_filter.deletePage(&page) == STATUS_LAST_PAGE);
  ExpectLoads("c.ico", 1, &first, 1);
  EXPECT(Save("c.bmp", FMT_RAW, &first, newFile) == STATUS_NOT_SUPPORTED);
  HANDLE library = VX_INVALID_HANDLE;
  _DISDISPATCH display = {.StructSize = sizeof display};
  EXPECT(g_filter.display(&display, &library) == STATUS_FAILURE && library == NULL);

  VX_FreeBitmap(&first);
  VX_FreeBitmap(&second);
  ExpectNothingHeld(0);
  puts("all as promised");
  return 0;
}
