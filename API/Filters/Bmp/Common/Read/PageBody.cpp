// Looks into the bodies of icon pages: tells PNG streams from bitmaps and reads the headers of the latter.
#include "Read/PageBody.h"

#include <algorithm>
#include <iterator>

#include "Kernel.h"
#include "format/IconDirectory.h"

namespace bmp {

bool IsPngSignature(const uint8_t* bytes) {
  return std::any_of(std::begin(kPngSignatures), std::end(kPngSignatures), [bytes](const auto& signature) {
    return VX_MemoryCompare(bytes, signature.data(), kPngSignatureSize) == 0;
  });
}

int ProbeBody(HANDLE file, const ICONDIRENTRY& entry, bool& isPng) {
  Block<kPngSignatureSize> signature{};
  GoTo(file, entry.ImageOffset);
  if (!ReadBlock(file, signature)) return STATUS_READ_ERROR;
  isPng = IsPngSignature(signature.data());
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
