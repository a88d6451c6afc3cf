# Run by CPack before it makes packages: compresses pages and changelogs, as Debian wants it.
file(GLOB_RECURSE files "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/man/*.[13]"
     "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog"
     "${CPACK_TEMPORARY_DIRECTORY}/*/usr/share/doc/*/changelog.Debian")
if(NOT files)
  message(FATAL_ERROR "there are no pages in ${CPACK_TEMPORARY_DIRECTORY}")
endif()
execute_process(COMMAND gzip -9n ${files} COMMAND_ERROR_IS_FATAL ANY)
