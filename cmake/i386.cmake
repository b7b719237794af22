# A 32-bit build on a 64-bit machine. VX_I386_ROOT is a folder of unpacked i386 packages, which ./dev fills; PNG
# and zlib come from there and are linked statically, so that nothing 32-bit has to be installed to run.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VX_I386_ROOT)

# Arithmetic by SSE2: the old coprocessor's extra digits would make converted colours differ from those of the
# 64-bit build.
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")

set(PNG_PNG_INCLUDE_DIR ${VX_I386_ROOT}/usr/include)
set(PNG_LIBRARY ${VX_I386_ROOT}/usr/lib/i386-linux-gnu/libpng16.a)
set(ZLIB_INCLUDE_DIR ${VX_I386_ROOT}/usr/include)
set(ZLIB_LIBRARY ${VX_I386_ROOT}/usr/lib/i386-linux-gnu/libz.a)
