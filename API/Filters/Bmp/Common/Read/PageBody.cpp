// Looks into the bodies of icon pages: tells PNG streams from bitmaps and reads the headers of the latter.
#include "PageBody.h"

#include "../Bmp.h"
#include "../Format/IconDirectory.h"
#include "../Resources.h"

namespace bmp {

int ProbeBody(HANDLE file, const ICONDIRENTRY& entry, bool& isPng) {
  Block<kPngSignatureSize> signature{};
  GoTo(file, entry.ImageOffset);
  if (!ReadBlock(file, signature)) return STATUS_READ_ERROR;
  isPng = IsPNGHeader(signature.data()) != 0;
  return STATUS_OK;
}

bool ReadBodyHeader(HANDLE file, const ICONDIRENTRY& entry, ImageHeader& header) {
  Block<kInfoHeaderSize> bytes{};
  GoTo(file, entry.ImageOffset);
  if (!ReadBlock(file, bytes)) return false;
  header = DecodeInfoHeader(bytes);
  return true;
}

}  // namespace bmp

int IsPNGHeader(unsigned char* bytes) {
  for (const auto& signature : bmp::kPngSignatures) {
    if (VX_MemoryCompare(bytes, signature.data(), bmp::kPngSignatureSize) == 0) return 1;
  }
  return 0;
}
