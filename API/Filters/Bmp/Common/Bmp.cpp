// The coat: every exported name, turned into a call of the room that does the work. It translates types and
// decides nothing but that a record must be there.
#include "Bmp.h"

#include "Drivers/DeletePage.h"
#include "Drivers/Display.h"
#include "Drivers/Identify.h"
#include "Drivers/Load.h"
#include "Drivers/Save.h"
#include "Pages/AddPage.h"
#include "Pages/PngPage.h"
#include "Read/HeaderReader.h"
#include "Read/PageBody.h"
#include "Read/PngEntry.h"
#include "Read/RawData.h"
#include "Read/RowDecoder.h"
#include "Write/HeaderWriter.h"
#include "Write/IconMasks.h"
#include "format/BitmapHeader.h"
#include "format/Geometry.h"

int fltInfo(_INFODISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : bmp::Identify(*dispatch);
}
int fltLoad(_LOADDISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : bmp::Load(*dispatch);
}
int fltSave(_SAVEDISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : bmp::Save(*dispatch);
}
int fltDeletePage(_DELETEPAGEDISPATCH* dispatch) {
  return dispatch == nullptr ? STATUS_BAD_PARAMETER : bmp::DeletePage(*dispatch);
}
int GetDisplayDispatch(_DISDISPATCH* dispatch, HANDLE& library) {
  return bmp::GetDisplay(dispatch, library);
}

int fltInfoBMP(_INFODISPATCH* dispatch) {
  return bmp::Identify(*dispatch);
}
int fltLoadBMP(_LOADDISPATCH* dispatch) {
  return bmp::Load(*dispatch);
}
int fltSaveBMP(_SAVEDISPATCH* dispatch) {
  return bmp::Save(*dispatch);
}
int fltDeletePageBMP(_DELETEPAGEDISPATCH* dispatch) {
  return bmp::DeletePage(*dispatch);
}

int LoadRawData(_LOADDISPATCH* dispatch, int width, int height, int bitsPerPixel) {
  return bmp::LoadRaw(*dispatch, width, height, bitsPerPixel);
}
int ReadRawData(_LOADDISPATCH* dispatch, HANDLE file, int width, int height, int bitsPerPixel,
                int compression, int convert, unsigned short signature) {
  return bmp::DecodeRows(*dispatch, file,
                         {.width = width,
                          .height = height,
                          .bitsPerPixel = bitsPerPixel,
                          .compression = compression,
                          .needsConversion = convert != 0,
                          .hasIconMask = signature == bmp::kIconSignature});
}
int ReadPngImage(_LOADDISPATCH* dispatch, HANDLE file, ICONDIRENTRY* entry) {
  return bmp::LoadPngEntry(*dispatch, file, *entry);
}
int ReadBMPHeader(HANDLE file, unsigned char* buffer, unsigned int capacity, unsigned int declaredSize) {
  return bmp::ReadHeader(file, buffer, capacity, declaredSize) ? 1 : 0;
}
int IsPNGHeader(unsigned char* bytes) {
  return bmp::IsPngSignature(bytes) ? 1 : 0;
}
int VerifyColorMasks(unsigned int* masks, int* convert, int* is565, int bitsPerPixel) {
  const bmp::MaskVerdict verdict =
      bmp::JudgeMasks({.red = masks[0], .green = masks[1], .blue = masks[2]}, bitsPerPixel);
  *is565 = verdict.is565 ? 1 : 0;
  if (bitsPerPixel == 16) *convert = verdict.needsConversion ? 1 : 0;  // callers ask this of 16 bits only
  return verdict.isUsable ? STATUS_OK : STATUS_BAD_FORMAT;
}
int GetBytesPerLine(int bitsPerPixel, int width, int /*height*/) {
  return bmp::WrappedStride(bitsPerPixel, width);
}

int WriteBMPHeader(HANDLE file, _BITMAPHANDLE* image, int bitsPerPixel, int kind, _SAVEFILESTRUCT* saveFile) {
  return bmp::WriteHeaders(file, *image, bitsPerPixel, kind, *saveFile);
}
_BITMAPHANDLE* CreateMaskBitmap(_BITMAPHANDLE* bitmap) {
  return bmp::MakeMask(bitmap);
}
void FreeMaskBitmap(_BITMAPHANDLE* mask) {
  bmp::FreeMask(mask);
}
void InvertBuffer(unsigned char* buffer, unsigned int count) {
  bmp::Invert(buffer, count);
}
int OverwriteVistaIcon(_SAVEDISPATCH* dispatch) {
  return bmp::WriteNewPngIcon(*dispatch);
}
int AddPage(_SAVEDISPATCH* dispatch, int /*kind*/) {
  return bmp::AddPage(*dispatch);
}
int InsertVistaIcon(_SAVEDISPATCH* dispatch, HANDLE file, unsigned int entryOffset) {
  return bmp::InsertPngPage(*dispatch, file, entryOffset);
}
