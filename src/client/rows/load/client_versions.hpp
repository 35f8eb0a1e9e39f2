// Rowversions of rows that come without one.
#pragma once

#include "rows/load/client_connection.hpp"

#include <array>
#include <cstdint>
#include <string>

// The rowversions of a load. As on the server, all tables of the database share the numbers.
struct client_versions {
    uint64_t last = 2000; // the greatest that was met; the next one that is made follows it
    std::string counter;  // the table of the database's own last one, if it has one
    bool is_told = true;  // whether that table knows of the last
};

// The highest byte first, so that versions compare as their numbers do.
using client_version_bytes = std::array<char, 8>;
client_version_bytes client_bytes_of_version(uint64_t number) noexcept;
uint64_t client_number_of_version(std::string_view bytes) noexcept;

// Goes on after the greatest version of a column, and after the last one of the database.
void client_versions__follow(KT_context *ctx, client_connection &database, const std::string &tbl,
                             const std::string &col, client_versions &versions);

// Takes note of the version of a row that was put in.
void client_versions__note(client_versions &versions, uint64_t version) noexcept;

// Tells the database of the last version.
void client_versions__tell(KT_context *ctx, client_connection &database, client_versions &versions);
