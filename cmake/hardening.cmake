# What makes a mistake in memory harder to use against its program, in optimised builds: addresses that differ in each
# run, tables of the linker that are read-only once the program runs, a guard value in stack frames, and checked forms
# of the C library's functions. Sanitizers replace these functions themselves.
option(TOV_SCHEMA_HARDEN "Harden optimised builds (RELRO, PIE, stack protector, _FORTIFY_SOURCE)" ${PROJECT_IS_TOP_LEVEL})
if(NOT TOV_SCHEMA_HARDEN OR TOV_SCHEMA_SANITIZE OR NOT CMAKE_SYSTEM_NAME STREQUAL Linux)
    return()
endif()

include(CheckPIESupported)
check_pie_supported() # else CMake compiles for PIE and leaves the linking to the compiler's default

set(tov_optimised "$<CONFIG:Release,RelWithDebInfo,MinSizeRel>")
add_compile_options(
    "$<${tov_optimised}:-fstack-protector-strong>"
    "$<${tov_optimised}:-fstack-clash-protection>"
    "$<${tov_optimised}:-U_FORTIFY_SOURCE>"
    "$<${tov_optimised}:-D_FORTIFY_SOURCE=2>")
add_link_options("$<${tov_optimised}:LINKER:-z,relro,-z,now,-z,noexecstack>")
