# What an installation holds and where. Three components, after what people do with them:
#   runtime      the library and its modules: what programs need to run
#   development  headers, pkg-config and CMake files, manual pages of functions: what building programs needs
#   commandline  vxbmp, its manual pages and its completions
# The tree works wherever it is moved: every path in it is relative to the file that names it. Only what goes into
# the system's own folders stays there.
include(CMakePackageConfigHelpers)

set(VX_ZSH_COMPLETIONS_DIR ${CMAKE_INSTALL_DATADIR}/zsh/site-functions CACHE STRING
    "Folder of the completions for zsh, below the prefix")

# ---- runtime

set_target_properties(vxkrn PROPERTIES VERSION ${PROJECT_VERSION} INSTALL_RPATH "")
install(TARGETS vxkrn vx_application vx_contract EXPORT vxkrn
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS vxfbmp LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${VX_FILTER_SUBDIR} COMPONENT runtime)
if(TARGET vxdis)
  install(TARGETS vxdis LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/${VX_PRIVATE_SUBDIR} COMPONENT runtime)
endif()

# installed_path_is TARGET PATH: where the target looks for the library once it is installed.
function(installed_path_is target path)
  get_target_property(built ${target} INSTALL_RPATH)
  if(NOT path STREQUAL built)
    set_target_properties(${target} PROPERTIES INSTALL_RPATH "${path}" BUILD_WITH_INSTALL_RPATH OFF)
  endif()
endfunction()

# The linker looks into its own folders anyway; from elsewhere, programs need the way to the library.
if(CMAKE_INSTALL_FULL_LIBDIR IN_LIST CMAKE_CXX_IMPLICIT_LINK_DIRECTORIES)
  set(VX_PC_PREFIX ${CMAKE_INSTALL_PREFIX})  # below which pkg-config knows what needs no option
  set(way_to_library "")
  foreach(module vxfbmp vxdis)
    if(TARGET ${module})
      installed_path_is(${module} "")
    endif()
  endforeach()
else()
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig
             OUTPUT_VARIABLE VX_PC_PREFIX)
  string(PREPEND VX_PC_PREFIX "\${pcfiledir}/")
  cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_FULL_BINDIR}
             OUTPUT_VARIABLE way_to_library)
  string(PREPEND way_to_library "\$ORIGIN/")
endif()

# ---- development

# Applications include <vx/vx.h>. Authors of filters include "vxkrn.h", from a folder they ask for: what is in
# it belongs to one version of the contract.
set(VX_CONTRACT_INCLUDEDIR ${CMAKE_INSTALL_INCLUDEDIR}/vxkrn-${VX_SOVERSION})
install(DIRECTORY ${PROJECT_SOURCE_DIR}/include/vx DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/host/ DESTINATION ${VX_CONTRACT_INCLUDEDIR} COMPONENT development
        FILES_MATCHING PATTERN "*.h")
target_include_directories(vx_application INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_include_directories(vx_contract INTERFACE $<INSTALL_INTERFACE:${VX_CONTRACT_INCLUDEDIR}>)
set_target_properties(vx_application PROPERTIES EXPORT_NAME application)
set_target_properties(vx_contract PROPERTIES EXPORT_NAME contract)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/vxkrn)
install(EXPORT vxkrn NAMESPACE vxkrn:: FILE vxkrnTargets.cmake DESTINATION ${package_dir} COMPONENT development)
configure_package_config_file(${CMAKE_CURRENT_LIST_DIR}/vxkrnConfig.cmake.in
  ${PROJECT_BINARY_DIR}/install/vxkrnConfig.cmake INSTALL_DESTINATION ${package_dir}
  PATH_VARS CMAKE_INSTALL_LIBDIR)
write_basic_package_version_file(${PROJECT_BINARY_DIR}/install/vxkrnConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/install/vxkrnConfig.cmake
              ${PROJECT_BINARY_DIR}/install/vxkrnConfigVersion.cmake
        DESTINATION ${package_dir} COMPONENT development)

configure_file(${CMAKE_CURRENT_LIST_DIR}/vxkrn.pc.in ${PROJECT_BINARY_DIR}/install/vxkrn.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/install/vxkrn.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT development)

# ---- command line

if(VX_BUILD_CLI)
  installed_path_is(vxbmp "${way_to_library}")
  install(TARGETS vxbmp RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT commandline)
endif()

# install_completions SHELL FOLDER NAME: vxbmp writes them itself.
function(install_completions shell folder name)
  set(script ${PROJECT_BINARY_DIR}/install/${shell}/${name})
  add_custom_command(OUTPUT ${script}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${PROJECT_BINARY_DIR}/install/${shell}
    COMMAND vxbmp completions ${shell} > ${script}
    DEPENDS vxbmp VERBATIM)
  add_custom_target(${shell}_completions ALL DEPENDS ${script})
  install(FILES ${script} DESTINATION ${folder} COMPONENT commandline)
endfunction()

if(VX_BUILD_CLI)
  install_completions(bash ${CMAKE_INSTALL_DATADIR}/bash-completion/completions vxbmp)
  install_completions(zsh ${VX_ZSH_COMPLETIONS_DIR} _vxbmp)
  install_completions(fish ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d vxbmp.fish)
endif()

# ---- manual pages, documents and licence

# install_manual COMPONENT PATTERN... takes what is there.
function(install_manual component)
  foreach(section 1 3 5 7)
    set(patterns ${ARGN})
    list(TRANSFORM patterns REPLACE "(.+)" "${PROJECT_SOURCE_DIR}/docs/man/\\1.${section}")
    file(GLOB pages CONFIGURE_DEPENDS ${patterns})
    install(FILES ${pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man${section} COMPONENT ${component})
  endforeach()
endfunction()

if(VX_BUILD_CLI)
  install_manual(commandline vxbmp*)
endif()
install_manual(development vx_* vxkrn* libvx*)
install(FILES ${PROJECT_SOURCE_DIR}/LICENSE ${PROJECT_SOURCE_DIR}/CHANGELOG.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT licence)
install(FILES ${PROJECT_SOURCE_DIR}/docs/abi.md ${PROJECT_SOURCE_DIR}/docs/errors.md ${PROJECT_SOURCE_DIR}/docs/formats.md
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
install(DIRECTORY ${PROJECT_SOURCE_DIR}/docs/tutorial DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT development)
