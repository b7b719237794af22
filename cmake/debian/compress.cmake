# Run by cpack before it packs: manual pages and changelogs are compressed in Debian.
set(tree ${CPACK_TEMPORARY_DIRECTORY}/*/usr/share)
file(GLOB_RECURSE files ${tree}/man/* ${tree}/doc/changelog*)
foreach(file ${files})
  execute_process(COMMAND gzip -9n ${file} COMMAND_ERROR_IS_FATAL ANY)
endforeach()
