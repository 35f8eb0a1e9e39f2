// Whether converting a field decides about its value what the column's checks would.
#pragma once

#include "rows/table/client_row_tbl.hpp"
#include "rules/client_constraints.hpp"

// Whether every value that conversion makes for the column passes the checks of its abstract type. Both are said by the
// document, each on its own, so one may allow what the other does not. Rules of the server go by the type that
// conversion goes by, and are always met.
bool client_conversion_decides(const client_checked_type &type, const client_row_col &col) noexcept;
