# Compares what the built filter exports and needs with what it promises.
# Variables: NM, READELF, FILTER (the module), EXPORTS (the list of promised names).
cmake_minimum_required(VERSION 3.25)
function(fail_unless_equal what actual expected)
  if(NOT actual STREQUAL expected)
    list(JOIN actual "\n  " actual)
    list(JOIN expected "\n  " expected)
    message(FATAL_ERROR "${what} of ${FILTER}:\n  ${actual}\nexpected:\n  ${expected}")
  endif()
endfunction()

execute_process(COMMAND ${NM} -D -C --defined-only --format=posix ${FILTER}
                OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "(@@[A-Za-z0-9_.]+)? [A-Z] [0-9a-f]+ [0-9a-f]*\n" ";" symbols "${symbols}")
list(REMOVE_ITEM symbols "")
list(SORT symbols)
file(STRINGS ${EXPORTS} promised)
list(SORT promised)
fail_unless_equal("Exports" "${symbols}" "${promised}")

execute_process(COMMAND ${READELF} -d ${FILTER} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCH "soname: \\[[^]]*" soname "${dynamic}")
fail_unless_equal("Soname" "${soname}" "soname: [vxfbmp.so.18")
if(NOT dynamic MATCHES "NEEDED[^\n]*\\[libvxkrn\\.so\\.18\\]")
  message(FATAL_ERROR "${FILTER} does not need libvxkrn.so.18:\n${dynamic}")
endif()
if(dynamic MATCHES "libstdc\\+\\+")
  message(FATAL_ERROR "${FILTER} needs the C++ library:\n${dynamic}")
endif()
