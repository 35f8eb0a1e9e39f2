// Validation statements: a SELECT CASE for the body of a trigger that rejects what the host would reject.
//
// SQLite runs the WHEN lines from the top and stops at the first that holds, so each may rely on what those before it
// let through: null is always accepted here (NOT NULL is declared by the column), then the storage class is settled,
// then the value is looked at. The layout is part of the contract, line feeds that are not there included.

#include "ddl/ddl_text.hpp"

namespace {

// What all lines of one statement share.
struct my_statement {
    KT_string *text;
    KT_piece type;                  // the abstract type
    const tov_abstract_type *facts; // null for a name of no type
    KT_piece sqlite_typeof;         // what typeof() must say
    KT_piece col_name;
    KT_piece value;    // NEW."column"
    int32_t width;     // longest value, in characters or bytes; unbounded when not above 0
    int32_t precision; // most digits
};

using my_pieces = std::initializer_list<KT_piece>;

} // namespace

// The end of a WHEN line. Lines of some types follow one another without a line feed.
static void my_append_rejection(KT_context *ctx, const my_statement &s, my_pieces message, KT_piece end) noexcept
{
    KT_TRY(ddl_append(ctx, s.text, {") THEN RAISE(ABORT, '[", s.col_name, "] constraint violation: "}));
    KT_TRY(ddl_append(ctx, s.text, message));
    KT_TRY(ddl_append(ctx, s.text, {"')", end}));
}

// One line that rejects a value when the condition holds.
static void my_append_check(KT_context *ctx, const my_statement &s, my_pieces condition, my_pieces message,
                            KT_piece end = "\n") noexcept
{
    KT_TRY(ddl_append(ctx, s.text, {"WHEN ("}));
    KT_TRY(ddl_append(ctx, s.text, condition));
    KT_TRY(my_append_rejection(ctx, s, message, end));
}

static void my_append_type_check(KT_context *ctx, const my_statement &s) noexcept
{
    if (s.facts && !s.facts->is_checked)
        return;
    const my_pieces message = {"type mismatch: ", s.type, "(", s.sqlite_typeof, ")"};
    if (std::strcmp(s.sqlite_typeof.text, "real") != 0) {
        KT_TRY(my_append_check(ctx, s, {"typeof(", s.value, ")!='", s.sqlite_typeof, "'"}, message));
        return;
    }
    // An integer is a real too, unless a real cannot hold its value.
    KT_TRY(my_append_check(ctx, s,
                           {" (typeof(", s.value, ")!='real') AND ( (typeof(", s.value, ")!='integer') OR (", s.value,
                            "!=CAST(", s.value, " AS real)) ) "},
                           message));
}

static void my_append_range_check(KT_context *ctx, const my_statement &s) noexcept
{
    if (!s.facts || s.facts->low == INT64_MIN)
        return;
    char low[21];
    char high[21];
    KT_TRY(my_append_check(ctx, s,
                           {" (", s.value, " < ", KT_int64_to_sz(s.facts->low, low), ") OR (", s.value, " > ",
                            KT_int64_to_sz(s.facts->high, high), ") "},
                           {"out of range: ", s.type}));
}

static void my_append_width_check(KT_context *ctx, const my_statement &s) noexcept
{
    if (s.width <= 0)
        return;
    char digits[21];
    const char *width = KT_int64_to_sz(s.width, digits);
    KT_TRY(my_append_check(ctx, s, {" length(", s.value, ") > ", width, " "}, {"width exceeded: ", width}));
}

// The scaled integer may not have more digits than the decimal; its sign is none.
static void my_append_decimal_check(KT_context *ctx, const my_statement &s) noexcept
{
    char digits[21];
    const char *precision = KT_int64_to_sz(s.precision, digits);
    KT_TRY(my_append_check(ctx, s, {" (length(CAST (abs(", s.value, ") AS TEXT)) > ", precision, ") "},
                           {"precision exceeded (", precision, ")"}));
}

static void my_append_guid_check(KT_context *ctx, const my_statement &s) noexcept
{
    KT_TRY(my_append_check(ctx, s, {" length(", s.value, ") != 16 "}, {"must be 16 bytes (uniqueidentifier)"}));
}

static void my_append_date_check(KT_context *ctx, const my_statement &s) noexcept
{
    KT_TRY(my_append_check(ctx, s,
                           {" (length(", s.value, ")!=10) OR (date(", s.value, ") != ", s.value, ") OR (date(", s.value,
                            ") < date('0001-01-01') ) "},
                           {"invalid date (YYYY-MM-DD)"}));
}

static void my_append_time_checks(KT_context *ctx, const my_statement &s) noexcept
{
    static constexpr struct {
        const char *before;
        const char *after;
        const char *end;
    } conditions[] = {
        {"length(", ")<8", "\n"},
        {"length(", ")>16", ""},
        {"substr(", ",3,1)!=':'", ""},
        {"substr(", ",6,1)!=':'", ""},
        {"cast(substr(", ",1,2) as integer)>23", ""},
        {"cast(substr(", ",4,2) as integer)>59", ""},
        {"cast(substr(", ",7,2) as integer)>59", ""},
    };
    for (const auto &c : conditions)
        KT_TRY(my_append_check(ctx, s, {c.before, s.value, c.after}, {"invalid time"}, c.end));
    KT_TRY(my_append_check(
        ctx, s, {"substr(strftime('%H:%M:%f', ", s.value, "),1,length(", s.value, ")) != substr(", s.value, ",1,12)"},
        {"invalid time"}, ""));
}

// A datetime is accepted in nine forms, each when SQLite writes the value back as it was (trailing blanks aside). Of
// the longest two, with four to seven digits of fraction, only the part up to the second is compared.
static void my_append_datetime_forms(KT_context *ctx, const my_statement &s) noexcept
{
    static constexpr struct {
        const char *length;
        const char *format;
    } forms[] = {
        {"10", "%Y-%m-%d"},          {"16", "%Y-%m-%d %H:%M"},    {"16", "%Y-%m-%dT%H:%M"},
        {"19", "%Y-%m-%d %H:%M:%S"}, {"19", "%Y-%m-%dT%H:%M:%S"}, {"23", "%Y-%m-%d %H:%M:%f"},
        {"23", "%Y-%m-%dT%H:%M:%f"},
    };
    for (const auto &form : forms)
        KT_TRY(
            ddl_append(ctx, s.text,
                       {&form == forms ? "" : "OR ", "((length(rtrim(", s.value, ")) = ", form.length,
                        ") AND (coalesce(strftime('", form.format, "', ", s.value, "), '') = rtrim(", s.value, ")))"}));

    for (const char *format : {"%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"})
        KT_TRY(ddl_append(ctx, s.text,
                          {"OR ((length(rtrim(", s.value, ")) > 23) AND (length(rtrim(", s.value,
                           ")) <= 27) AND (coalesce(strftime('", format, "', ", s.value, "), '') = substr(rtrim(",
                           s.value, "),1,19)))"}));
}

static void my_append_datetime_check(KT_context *ctx, const my_statement &s) noexcept
{
    KT_TRY(KT_string__append__sz(ctx, s.text, "WHEN (CAST( ("));
    KT_TRY(my_append_datetime_forms(ctx, s));
    KT_TRY(KT_string__append__sz(ctx, s.text, ") AS integer) = 0"));
    KT_TRY(my_append_rejection(ctx, s, {"invalid datetime"}, ""));
}

// What a value must be besides its storage class and range; a type that is not here has nothing more to say.
static void my_append_value_check(KT_context *ctx, const my_statement &s) noexcept
{
    static constexpr struct {
        tov_type_kind kind;
        void (*append_check)(KT_context *ctx, const my_statement &s) noexcept;
    } checks[] = {
        {TOV_KIND_TEXT, my_append_width_check},      {TOV_KIND_BLOB, my_append_width_check},
        {TOV_KIND_GUID, my_append_guid_check},       {TOV_KIND_DATE, my_append_date_check},
        {TOV_KIND_TIME, my_append_time_checks},      {TOV_KIND_DATETIME, my_append_datetime_check},
        {TOV_KIND_DECIMAL, my_append_decimal_check},
    };
    if (!s.facts || !s.facts->is_checked)
        return;
    for (const auto &check : checks)
        if (s.facts->kind == check.kind)
            KT_TRY(check.append_check(ctx, s));
}

void tov_schema__get_validation_expression(KT_context *ctx, const char *abstract_type, int32_t width, int32_t precision,
                                           int32_t /*scale*/, KT_bool /*notnull*/, const char *col_name,
                                           KT_string **result) noexcept
{
    kt_owned_string value{ctx};
    KT_TRY(KT_string__alloc(ctx, value.out()));
    KT_TRY(ddl_append(ctx, value, {"NEW.\"", col_name, "\""}));
    kt_owned_string text{ctx};
    KT_TRY(KT_string__alloc(ctx, text.out()));

    const tov_abstract_type *facts = tov_find_abstract_type(abstract_type);
    const my_statement s = {text,     abstract_type,        facts, facts ? facts->sqlite_typeof : "",
                            col_name, KT_string__sz(value), width, precision};
    KT_TRY(ddl_append(ctx, text, {"-- ", s.type, "\nSELECT CASE\nWHEN (", s.value, " IS NULL) THEN 1\n"}));
    KT_TRY(my_append_type_check(ctx, s));
    KT_TRY(my_append_range_check(ctx, s));
    KT_TRY(my_append_value_check(ctx, s));
    KT_TRY(KT_string__append__sz(ctx, text, "ELSE 1\nEND"));
    text.move_to(result);
}

void tov_schema__get_col_validation_expression(KT_context *ctx, tov_schema *schema, const char *tbl_id,
                                               const char *col_id, KT_string **result) noexcept
{
    KT_vhash *col = nullptr;
    KT_vhash *type = nullptr;
    KT_bool notnull = 0;
    const char *col_name = nullptr;
    const char *abstract_type = nullptr;
    KT_TRY(_tov_schema__get_col(ctx, schema, tbl_id, col_id, &col));
    KT_TRY(ddl_get_col_name(ctx, col, &col_name));
    KT_TRY(KT_vhash__get__vhash(ctx, col, "type", &type));
    KT_TRY(KT_vhash__get__sz(ctx, type, "name", &abstract_type));
    KT_TRY(_tov_col__get_notnull(ctx, col, &notnull, nullptr));

    int32_t width = -1;
    int32_t precision = -1;
    int32_t scale = -1;
    if (ddl_is_type(abstract_type, "text") || ddl_is_type(abstract_type, "blob")) {
        KT_TRY(KT_vhash__get__int32(ctx, type, "width", &width));
    } else if (ddl_is_type(abstract_type, "decimal")) {
        KT_TRY(KT_vhash__get__int32(ctx, type, "precision", &precision));
        KT_TRY(KT_vhash__get__int32(ctx, type, "scale", &scale));
    }
    KT_TRY(
        tov_schema__get_validation_expression(ctx, abstract_type, width, precision, scale, notnull, col_name, result));
}
