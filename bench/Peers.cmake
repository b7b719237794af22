# The peers that are installed; the others are named. Each is a library of its own, so that nobody's flags reach another.
find_package(PkgConfig REQUIRED)

# peer(NAME SOURCE FOUND LIBRARY...)
function(peer name source found)
  if(NOT ${found})
    message(STATUS "bench: ${name} is missing, and not measured")
    return()
  endif()
  string(TOUPPER ${source} define)
  add_library(vxbench_${source} OBJECT peers/${source}.cpp)
  target_link_libraries(vxbench_${source} PRIVATE vxbench_contest vx_warnings ${ARGN})
  target_compile_definitions(vxbench PRIVATE BENCH_${define})
  target_link_libraries(vxbench PRIVATE vxbench_${source})
endfunction()

pkg_check_modules(SDL2 IMPORTED_TARGET sdl2)
peer("SDL 2" Sdl SDL2_FOUND PkgConfig::SDL2)

find_path(FREEIMAGE_INCLUDE_DIR FreeImage.h)
find_library(FREEIMAGE_LIBRARY freeimage)
peer(FreeImage FreeImage FREEIMAGE_LIBRARY ${FREEIMAGE_LIBRARY})

find_package(Qt6 QUIET COMPONENTS Gui)
peer("Qt 6" Qt Qt6_FOUND Qt6::Gui)

pkg_check_modules(GDK_PIXBUF IMPORTED_TARGET gdk-pixbuf-2.0)
peer(gdk-pixbuf GdkPixbuf GDK_PIXBUF_FOUND PkgConfig::GDK_PIXBUF)

pkg_search_module(MAGICK IMPORTED_TARGET MagickWand MagickWand-6.Q16)
peer("ImageMagick's library" Magick MAGICK_FOUND PkgConfig::MAGICK)

find_path(STB_INCLUDE_DIR stb/stb_image.h)
find_library(STB_LIBRARY NAMES libstb.a stb)
peer(stb Stb STB_LIBRARY ${STB_LIBRARY} m)

find_program(BENCH_PYTHON NAMES python3 PATHS /usr/bin NO_DEFAULT_PATH)
if(BENCH_PYTHON)
  execute_process(COMMAND ${BENCH_PYTHON} -c "import PIL" RESULT_VARIABLE pillow_failed ERROR_QUIET)
endif()
if(BENCH_PYTHON AND NOT pillow_failed)
  set(PILLOW_FOUND TRUE)
endif()
peer(Pillow Pillow PILLOW_FOUND)
if(PILLOW_FOUND)
  target_compile_definitions(vxbench_Pillow PRIVATE
    BENCH_PYTHON="${BENCH_PYTHON}" BENCH_PILLOW_SCRIPT="${CMAKE_CURRENT_SOURCE_DIR}/peers/pillow.py")
endif()

find_program(BENCH_ICOTOOL icotool)
if(BENCH_ICOTOOL)
  target_compile_definitions(vxbench PRIVATE BENCH_ICOTOOL="${BENCH_ICOTOOL}")
else()
  message(STATUS "bench: icotool is missing, and not measured")
endif()
