# A 32-bit build on a 64-bit machine with g++-multilib. VX_I386_ROOT is a folder of unpacked i386 packages, which
# ./dev fills. PNG and zlib are linked statically from there; what the display library needs is found there at run
# time, so that no i386 package has to be installed.
set(VX_I386_LIBDIR ${VX_I386_ROOT}/usr/lib/i386-linux-gnu)
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES VX_I386_ROOT)

# Arithmetic by SSE2: the old coprocessor's extra digits would make converted colours differ from those of the
# 64-bit build.
set(CMAKE_C_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")
set(CMAKE_CXX_FLAGS_INIT "-m32 -msse2 -mfpmath=sse")

set(PNG_PNG_INCLUDE_DIR ${VX_I386_ROOT}/usr/include)
set(PNG_LIBRARY ${VX_I386_LIBDIR}/libpng16.a)
set(ZLIB_INCLUDE_DIR ${VX_I386_ROOT}/usr/include)
set(ZLIB_LIBRARY ${VX_I386_LIBDIR}/libz.a)

# pkg-config answers for the unpacked packages alone.
set(ENV{PKG_CONFIG_LIBDIR} ${VX_I386_LIBDIR}/pkgconfig:${VX_I386_ROOT}/usr/share/pkgconfig)
set(ENV{PKG_CONFIG_SYSROOT_DIR} ${VX_I386_ROOT})
# An RPATH of the old kind also counts for the libraries that a library needs.
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-Wl,--disable-new-dtags,-rpath,${VX_I386_LIBDIR},-rpath-link,${VX_I386_LIBDIR}")
