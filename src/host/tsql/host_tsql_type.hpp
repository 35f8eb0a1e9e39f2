// Types as scripts write them: varchar(10), [sys].[int], national character varying(20), dbo.Money.
#pragma once

#include "records/host_declared_type.hpp"
#include "tsql/host_tsql_cursor.hpp"

#include <cstdint>
#include <optional>

struct host_tsql_type {
    std::string schema;           // empty when it is left out
    std::string written;          // the name of a type that is not the server's
    std::string_view system_name; // of a type of the server, its first one: "int" for INTEGER
    bool is_max = false;
    std::optional<int64_t> first; // what is in the parentheses
    std::optional<int64_t> second;

    bool is_system() const
    {
        return !system_name.empty();
    }
    std::string_view name() const
    {
        return is_system() ? system_name : std::string_view(written);
    }
};

// The n-th of the names that the server knows for its types, first names and others; null past the last.
const char *host_nth_type_name(uint32_t n);

host_tsql_type host_read_type(host_tsql_cursor &cursor);

// The same for records; it borrows the type's name.
host_declared_type host_declared(const host_tsql_type &type);

// Reads a type and writes it as the server does: [varchar](10).
std::string host_read_type_spelling(host_tsql_cursor &cursor);
