# Debian packages, one for each component of an installation: cpack -G DEB, or ./dev package, which also sees to
# the folders of the system.
set(VX_MAINTAINER "The vxbmp developers <maintainers@vxbmp.invalid>" CACHE STRING "Who answers for the packages")

set(CPACK_PACKAGE_NAME vxbmp)
set(CPACK_PACKAGE_VENDOR "The vxbmp developers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # every package has its own
set(CPACK_PACKAGE_CONTACT "${VX_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
# What the packages need: each other in the same version, and whatever the binaries are linked to.
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/debian/compress.cmake)

string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(WRITE ${PROJECT_BINARY_DIR}/install/changelog.Debian
     "vxbmp (${PROJECT_VERSION}-1) unstable; urgency=medium\n\n"
     "  * As built from its sources, which say in changelog.gz what is new.\n\n"
     " -- ${VX_MAINTAINER}  ${date}\n")

# vx_package COMPONENT NAME SECTION SUMMARY DESCRIPTION
function(vx_package component name section summary description)
  string(TOUPPER ${component} key)
  set(CPACK_DEBIAN_${key}_PACKAGE_NAME ${name} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_PACKAGE_SECTION ${section} PARENT_SCOPE)
  set(CPACK_DEBIAN_${key}_DESCRIPTION "${summary}\n${description}" PARENT_SCOPE)
  set(CPACK_COMPONENTS_ALL ${CPACK_COMPONENTS_ALL} ${component} PARENT_SCOPE)
  # An installation as a whole has a licence file of its own.
  set(documents ${CMAKE_INSTALL_DATADIR}/doc/${name})
  install(FILES ${PROJECT_BINARY_DIR}/install/changelog.Debian
          DESTINATION ${documents} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_SOURCE_DIR}/LICENSE RENAME copyright
          DESTINATION ${documents} COMPONENT ${component} EXCLUDE_FROM_ALL)
  install(FILES ${PROJECT_SOURCE_DIR}/CHANGELOG.md RENAME changelog
          DESTINATION ${documents} COMPONENT ${component} EXCLUDE_FROM_ALL)
endfunction()

set(library libvxkrn${VX_SOVERSION})
vx_package(runtime ${library} libs "Windows and OS/2 bitmaps, icons and cursors: library"
  "Reads, writes and edits bitmaps, icons and cursors of all kinds: every header
since OS/2 1.x, run-length data, bit fields, bitmap arrays, icon files of many
pages with PNG among them, pixel data without a header. Damaged files come out
as far as they go.

This package holds the library and the filter that it loads.")
vx_package(development libvxkrn-dev libdevel "Windows and OS/2 bitmaps, icons and cursors: development files"
  "Reads, writes and edits bitmaps, icons and cursors of all kinds.

This package holds what is needed to build programs with the library, in C and
C++, and filters for it.")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
if(VX_BUILD_CLI)
  vx_package(commandline vxbmp graphics "looks into and converts Windows and OS/2 bitmaps, icons and cursors"
    "Says what is in bitmaps, icons and cursors of all kinds, converts them to each
other and from and to PNG, makes icons of pictures, and adds, replaces and
deletes pages of icon and cursor files. Damaged files come out as far as they
go, and pixel data without a header can be read as well.")
  set(CPACK_COMPONENT_COMMANDLINE_DEPENDS runtime)
endif()

# Programs linked to the library need this version or a later one; the linker is to learn of the library.
file(WRITE ${PROJECT_BINARY_DIR}/install/shlibs "libvxkrn ${VX_SOVERSION} ${library} (>= ${PROJECT_VERSION})\n")
file(WRITE ${PROJECT_BINARY_DIR}/install/triggers "activate-noawait ldconfig\n")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_BINARY_DIR}/install/shlibs ${PROJECT_BINARY_DIR}/install/triggers)

include(CPack)
