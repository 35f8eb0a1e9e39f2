// What the server's catalogue says of a column, worked out from a declaration: readers whose source has only the
// declaration give the records what an export would have given.
#pragma once

#include "records/host_catalogue.hpp"

#include <optional>

// A type as it was declared; what is absent has the server's default.
struct host_declared_type {
    std::string_view name;         // of one of the server's types, without schema, in any case
    std::optional<int64_t> length; // characters or bytes; -1: max
    std::optional<int64_t> precision;
    std::optional<int64_t> scale;
};

// Sets the column's type and sizes, and its user type unless it has one already (an alias). A type that is not known
// here keeps its name and has no sizes.
void host_set_declared_type(host_texts &texts, const host_declared_type &type, host_column &col);

// Sets collation, code page and comparison style of a column of texts; does nothing to one of another type. The type
// comes first.
void host_set_collation(const char *collation, host_column &col);

// What follows from a collation's name: the code page (0 where texts are Unicode only, and for a name that is not
// known) and the comparison style (negative without a name).
int32_t host_code_page(const char *collation);
int32_t host_comparison_style(const char *collation);
