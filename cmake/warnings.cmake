# One set of warnings for all of our own code. They are errors in our presets only: a newer compiler, or the flags of a
# project that embeds this one, may know warnings that we have not met.
add_library(tov_warnings INTERFACE)
target_compile_options(tov_warnings INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual -Wformat=2
    -Wundef -Wvla -Wwrite-strings
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wextra-semi>
    $<$<COMPILE_LANGUAGE:C>:-Wstrict-prototypes -Wmissing-prototypes>)
if(TOV_SCHEMA_WERROR)
    target_compile_options(tov_warnings INTERFACE -Werror)
endif()

# g++ 12 sees an overlap that cannot be in "text" + std::string() (its bug 105651).
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    target_compile_options(tov_warnings INTERFACE $<$<COMPILE_LANGUAGE:CXX>:-Wno-restrict>)
endif()

# Among a sanitizer's checks g++ loses sight of what initialises an object; the build without them looks.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU AND TOV_SCHEMA_SANITIZE)
    target_compile_options(tov_warnings INTERFACE -Wno-maybe-uninitialized)
endif()
