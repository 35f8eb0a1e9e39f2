# The command as one file that needs nothing of the machine it runs on: every library is linked in, the C library too.
# scripts/release builds it so, and makes those libraries first of which Debian has no static form.
option(TOV_SCHEMA_STANDALONE "Link the command with static libraries alone (scripts/release)" OFF)
if(NOT TOV_SCHEMA_STANDALONE)
    return()
endif()

set(CMAKE_FIND_LIBRARY_SUFFIXES .a)
set(OPENSSL_USE_STATIC_LIBS ON)
set(CMAKE_C_LINK_OPTIONS_PIE -static-pie)
set(CMAKE_CXX_LINK_OPTIONS_PIE -static-pie)

# What the shared forms of these libraries ask for by themselves.
function(tov_complete_static_libraries)
    find_package(ICU REQUIRED COMPONENTS data)
    find_package(ZLIB REQUIRED)
    target_link_libraries(ICU::i18n INTERFACE ICU::uc)
    target_link_libraries(ICU::uc INTERFACE ICU::data)
    target_link_libraries(PkgConfig::LIBZIP INTERFACE ZLIB::ZLIB)
    target_link_libraries(SQLite::SQLite3 INTERFACE m)
endfunction()
