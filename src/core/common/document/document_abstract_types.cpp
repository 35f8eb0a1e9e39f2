// The table of abstract types.
//
// The declared type decides SQLite's affinity and, for "identity", makes the column the rowid. Fixed-point values
// (decimal, money) are scaled integers, dates and times are text, so none of them is declared as what it looks like.
// An integer column is declared "int", but SQLite calls its values "integer".

#include "tov_abstract_types.h"

#include <cstring>
#include <iterator>

// clang-format off
static constexpr tov_abstract_type my_abstract_types[] = {
//   name          declared as            typeof     fields                     kind               checked, key
    {"identity",   "integer primary key", "integer", "constraint_name",         TOV_KIND_IDENTITY, 0, 0, INT64_MIN, INT64_MAX},
    {"sint64",     "int",                 "integer", "",                        TOV_KIND_INTEGER,  1, 1, INT64_MIN, INT64_MAX},
    {"sint32",     "int",                 "integer", "",                        TOV_KIND_INTEGER,  1, 1, INT32_MIN, INT32_MAX},
    {"sint16",     "int",                 "integer", "",                        TOV_KIND_INTEGER,  1, 1, INT16_MIN, INT16_MAX},
    {"uint8",      "int",                 "integer", "",                        TOV_KIND_INTEGER,  1, 1, 0, UINT8_MAX},
    {"uint1",      "int",                 "integer", "",                        TOV_KIND_BIT,      1, 0, 0, 1},
    {"loose/int",  "int",                 "integer", "",                        TOV_KIND_INTEGER,  0, 0, INT64_MIN, INT64_MAX},
    {"real8",      "real",                "real",    "",                        TOV_KIND_REAL,     1, 0, INT64_MIN, INT64_MAX},
    {"real4",      "real",                "real",    "",                        TOV_KIND_REAL,     1, 0, INT64_MIN, INT64_MAX},
    {"loose/real", "real",                "real",    "",                        TOV_KIND_REAL,     0, 0, INT64_MIN, INT64_MAX},
    {"decimal",    "int",                 "integer", "precision scale",         TOV_KIND_DECIMAL,  1, 0, INT64_MIN, INT64_MAX},
    {"money8",     "int",                 "integer", "",                        TOV_KIND_MONEY,    1, 0, INT64_MIN, INT64_MAX},
    {"money4",     "int",                 "integer", "",                        TOV_KIND_MONEY,    1, 0, INT32_MIN, INT32_MAX},
    {"date",       "text",                "text",    "",                        TOV_KIND_DATE,     1, 0, INT64_MIN, INT64_MAX},
    {"time",       "text",                "text",    "precision",               TOV_KIND_TIME,     1, 0, INT64_MIN, INT64_MAX},
    {"datetime",   "text",                "text",    "precision",               TOV_KIND_DATETIME, 1, 0, INT64_MIN, INT64_MAX},
    {"text",       "text",                "text",
        "fixed_width locale binary noaccent nocase _KS _WS _SC unicode width",  TOV_KIND_TEXT,     1, 0, INT64_MIN, INT64_MAX},
    {"loose/text", "text",                "text",    "",                        TOV_KIND_TEXT,     0, 0, INT64_MIN, INT64_MAX},
    {"blob",       "blob",                "blob",    "fixed_width width",       TOV_KIND_BLOB,     1, 0, INT64_MIN, INT64_MAX},
    {"loose/blob", "blob",                "blob",    "",                        TOV_KIND_BLOB,     0, 0, INT64_MIN, INT64_MAX},
    {"guid",       "blob",                "blob",    "",                        TOV_KIND_GUID,     1, 0, INT64_MIN, INT64_MAX},
};
// clang-format on

const tov_abstract_type *tov_find_abstract_type(const char *name) noexcept
{
    if (!name)
        return nullptr;
    for (const tov_abstract_type &type : my_abstract_types)
        if (*type.name == *name && std::strcmp(type.name, name) == 0)
            return &type;
    return nullptr;
}

const tov_abstract_type *tov_get_nth_abstract_type(uint32_t n) noexcept
{
    return n < std::size(my_abstract_types) ? &my_abstract_types[n] : nullptr;
}
