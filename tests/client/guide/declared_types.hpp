// Types as the guide and its tests name them, of every base, with the sizes that make a difference.
#pragma once

#include "guide/client_guide.hpp"

#include <string>
#include <vector>

inline client_declared_type declared(client_base base, uint8_t precision = 0, uint8_t scale = 0, int32_t length = -1)
{
    return {{base, true, precision, scale, 1252, length}, ""};
}

inline client_declared_type clr(std::string_view name)
{
    return {{client_base::clr}, name};
}

inline std::vector<client_declared_type> all_declared_types()
{
    using base = client_base;
    return {declared(base::bit),
            declared(base::tinyint),
            declared(base::smallint),
            declared(base::integer),
            declared(base::bigint),
            declared(base::decimal, 9, 2),
            declared(base::decimal, 18, 0),
            declared(base::decimal, 38, 20),
            declared(base::money),
            declared(base::smallmoney),
            declared(base::floating, 53),
            declared(base::real, 24),
            declared(base::fixed_char, 0, 0, 5),
            declared(base::varchar, 0, 0, 20),
            declared(base::text),
            declared(base::fixed_nchar, 0, 0, 5),
            declared(base::nvarchar, 0, 0, 20),
            declared(base::nvarchar),
            declared(base::ntext),
            declared(base::xml),
            declared(base::binary, 0, 0, 4),
            declared(base::varbinary, 0, 0, 20),
            declared(base::image),
            declared(base::rowversion),
            declared(base::guid),
            declared(base::date),
            declared(base::time, 0, 0),
            declared(base::time, 0, 7),
            declared(base::smalldatetime),
            declared(base::datetime),
            declared(base::datetime2, 0, 0),
            declared(base::datetime2, 0, 1),
            declared(base::datetime2, 0, 2),
            declared(base::datetime2, 0, 3),
            declared(base::datetime2, 0, 7),
            declared(base::datetimeoffset, 0, 0),
            declared(base::datetimeoffset, 0, 1),
            declared(base::datetimeoffset, 0, 2),
            declared(base::datetimeoffset, 0, 7),
            clr("geography"),
            clr("geometry"),
            clr("hierarchyid"),
            declared(base::variant)};
}
