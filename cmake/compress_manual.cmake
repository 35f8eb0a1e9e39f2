# Debian wants manual pages compressed; cpack runs this on what it is about to pack.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}/*)
list(FILTER pages INCLUDE REGEX "/man/man[0-9]/[^/]*\\.[0-9]$")
if(pages)
    execute_process(COMMAND gzip -9nf ${pages} COMMAND_ERROR_IS_FATAL ANY)
endif()
