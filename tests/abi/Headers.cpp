// Both public headers in one C++ program; what the contract fixes beyond its own assertions.
#include <vx/vx.h>
#include <vxkrn.h>

#include <type_traits>

static_assert(offsetof(ICONDIRENTRY, BytesInRes) == 8 && offsetof(ICONDIRENTRY, ImageOffset) == 12);
static_assert(offsetof(RGBQUAD, Blue) == 0 && offsetof(RGBQUAD, Red) == 2);
static_assert(offsetof(_SAVEFILESTRUCT, Palette) == 2 * sizeof(int));
static_assert(std::is_same_v<HANDLE, tagHANDLE*>);
static_assert(sizeof(IMAGEINFO::Compression) == 20 && sizeof(_LOADDISPATCH::RawPalette) == 1024);
