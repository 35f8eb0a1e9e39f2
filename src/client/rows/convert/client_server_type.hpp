// What the server says of a column's type, as far as the forms of its values depend on it.
#pragma once

#include <cstdint>
#include <string_view>

enum class client_base : uint8_t {
    bit,
    tinyint,
    smallint,
    integer,
    bigint,
    decimal,
    money,
    smallmoney,
    real,
    floating,
    fixed_char,
    varchar,
    text,
    fixed_nchar,
    nvarchar,
    ntext,
    xml,
    binary,
    varbinary,
    image,
    rowversion,
    guid,
    date,
    time,
    smalldatetime,
    datetime,
    datetime2,
    datetimeoffset,
    clr,
    variant,
};

struct client_server_type {
    client_base base = client_base::variant;
    bool nullable = true;
    uint8_t precision = 0;
    uint8_t scale = 0;
    uint16_t code_page = 0; // of char, varchar and text; 0 when it is not known
    int32_t length = -1;    // the most: UTF-16 units, or bytes of the code page or of a binary; -1 without limit
};

// The type of a name in lower case, e.g. "nvarchar"; a name that is not known is a type of a program library (clr).
client_base client_find_base(std::string_view name) noexcept;

// Whether a name in lower case is that of a type that every server has, one with methods (geography) included.
bool client_is_server_type(std::string_view name) noexcept;

// The server's name for it; "clr" for types that have names of their own.
const char *client_base_name(client_base base) noexcept;

// Whether values are texts: of a code page, or of UTF-16.
bool client_is_text(client_base base) noexcept;
bool client_is_unicode(client_base base) noexcept;
bool client_is_binary(client_base base) noexcept;

bool client_is_number(client_base base) noexcept;

// Whether values are dates, times of day or both.
bool client_is_moment(client_base base) noexcept;

// Whether types of the base are declared with a length, which may be max.
bool client_has_length(client_base base) noexcept;
