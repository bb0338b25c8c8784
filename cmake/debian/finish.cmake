# Before a package is packed: manual pages and change logs are compressed, as Debian wants them.
# Without names and times in them, the same files give the same package.
file(GLOB_RECURSE texts
  "${CPACK_TEMPORARY_DIRECTORY}/changelog.Debian" "${CPACK_TEMPORARY_DIRECTORY}/zvrsit.1")
foreach(text IN LISTS texts)
  execute_process(COMMAND gzip -9nf "${text}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
