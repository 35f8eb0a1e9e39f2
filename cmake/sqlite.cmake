# SQLite: the installed library, or one that is made of the amalgamation in TOV_SQLITE_SOURCE, for machines whose own is
# too old, for other machines (scripts/cross), and for tests against other versions (scripts/sqlite_versions).
set(TOV_SQLITE_SOURCE "" CACHE PATH "Folder with sqlite3.c and sqlite3.h to build with, instead of the installed SQLite")

# Found by trying: the oldest version under which the whole suite passes. Before it SQLite writes years before 0 with
# three digits, and date() of an impossible date in one of them is left as it is.
set(tov_minimum_sqlite 3.38)

# The other variables are what an installed tree says about it (cmake/package.cmake).
if(NOT TOV_SQLITE_SOURCE)
    find_package(SQLite3 ${tov_minimum_sqlite} REQUIRED)
    set(tov_sqlite_dependency "find_dependency(SQLite3 ${tov_minimum_sqlite})")
    set(tov_sqlite_pc_requires "sqlite3 >= ${tov_minimum_sqlite}")
    set(tov_sqlite_pc_libs "")
    return()
endif()

file(STRINGS ${TOV_SQLITE_SOURCE}/sqlite3.h tov_sqlite_version REGEX "^#define SQLITE_VERSION ")
string(REGEX REPLACE ".*\"(.*)\"" "\\1" tov_sqlite_version "${tov_sqlite_version}")
if(tov_sqlite_version VERSION_LESS tov_minimum_sqlite)
    message(FATAL_ERROR "SQLite ${tov_sqlite_version} in ${TOV_SQLITE_SOURCE} is older than ${tov_minimum_sqlite}")
endif()
find_package(Threads REQUIRED)
add_library(tov_sqlite_amalgamation STATIC ${TOV_SQLITE_SOURCE}/sqlite3.c)
add_library(SQLite::SQLite3 ALIAS tov_sqlite_amalgamation)
target_compile_options(tov_sqlite_amalgamation PRIVATE -w)
target_include_directories(tov_sqlite_amalgamation SYSTEM PUBLIC $<BUILD_INTERFACE:${TOV_SQLITE_SOURCE}>)
target_link_libraries(tov_sqlite_amalgamation PUBLIC Threads::Threads ${CMAKE_DL_LIBS} m)
install(TARGETS tov_sqlite_amalgamation EXPORT tov_schema_targets ARCHIVE COMPONENT development)
set(tov_sqlite_dependency "find_dependency(Threads)")
set(tov_sqlite_pc_requires "")
set(tov_sqlite_pc_libs " -ltov_sqlite_amalgamation -lpthread -ldl -lm")
