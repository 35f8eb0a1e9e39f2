// SQL Server's types become abstract types.
//
// A column whose values cannot be held, or that nobody may write to, is kept as an unprepared one: known to the host
// side, no part of the synchronised table.
#include "steps/host_import.hpp"

#include "steps/host_collation.hpp"
#include "steps/host_moment_literal.hpp"

#include <algorithm>
#include <string_view>

#define KT_HERE "src/host/steps/host_types"

enum class host_type_kind { simple, decimal, time, datetime, offset, text, blob };

// How wide a text or blob is: without limit, max_length in bytes, or max_length in units of two bytes.
enum class host_width { unbounded, bytes, byte_pairs };

struct host_type {
    std::string_view host_name;
    host_type_kind kind;
    const char *abstract_type = nullptr;
    host_width width = host_width::unbounded;
    bool fixed_width = false;
    bool unicode = false;
    bool is_row_version = false; // the server writes a new value with every change of the row
};

static constexpr host_type types[] = {
    {"int", host_type_kind::simple, "sint32"},
    {"bigint", host_type_kind::simple, "sint64"},
    {"smallint", host_type_kind::simple, "sint16"},
    {"tinyint", host_type_kind::simple, "uint8"},
    {"bit", host_type_kind::simple, "uint1"},
    {"float", host_type_kind::simple, "real8"},
    {"real", host_type_kind::simple, "real4"},
    {"money", host_type_kind::simple, "money8"},
    {"smallmoney", host_type_kind::simple, "money4"},
    {"date", host_type_kind::simple, "date"},
    {"uniqueidentifier", host_type_kind::simple, "guid"},
    {"decimal", host_type_kind::decimal},
    {"numeric", host_type_kind::decimal},
    {"time", host_type_kind::time},
    {"datetime", host_type_kind::datetime},
    {"datetime2", host_type_kind::datetime},
    {"smalldatetime", host_type_kind::datetime},
    {"datetimeoffset", host_type_kind::offset},
    {"nvarchar", host_type_kind::text, nullptr, host_width::byte_pairs, false, true},
    {"nchar", host_type_kind::text, nullptr, host_width::byte_pairs, true, true},
    {"varchar", host_type_kind::text, nullptr, host_width::bytes, false, false},
    {"char", host_type_kind::text, nullptr, host_width::bytes, true, false},
    {"ntext", host_type_kind::text, nullptr, host_width::unbounded, false, true},
    {"text", host_type_kind::text},
    {"xml", host_type_kind::text, nullptr, host_width::unbounded, false, true},
    {"varbinary", host_type_kind::blob, nullptr, host_width::bytes},
    {"binary", host_type_kind::blob, nullptr, host_width::bytes, true},
    {"image", host_type_kind::blob},
    {"timestamp", host_type_kind::blob, nullptr, host_width::bytes, true, false, true},
    {"rowversion", host_type_kind::blob, nullptr, host_width::bytes, true, false, true},
    {"geography", host_type_kind::blob},
    {"geometry", host_type_kind::blob},
    {"hierarchyid", host_type_kind::blob},
};

// A type that a program library brought to the server; what is stored of it is bytes.
static constexpr host_type clr_type{"", host_type_kind::blob};

// The most decimal digits that are sure to fit a 64-bit integer.
static constexpr int64_t max_decimal_digits = 18;

const char *host_type_name(const host_column &col)
{
    if (col.system_type)
        return col.system_type;
    return col.user_type ? col.user_type : "";
}

// Null for a type that no column of the schema can hold.
static const host_type *my_find_type(const host_column &col)
{
    const std::string_view name = host_type_name(col);
    for (const host_type &type : types) {
        if (type.host_name == name)
            return &type;
    }
    return col.is_assembly_type ? &clr_type : nullptr;
}

const char *host_abstract_type(const host_column &col)
{
    static constexpr const char *by_kind[] = {nullptr, "decimal", "time", "datetime", "text", "text", "blob"};
    const host_type *type = my_find_type(col);
    if (!type)
        return nullptr;
    return type->abstract_type ? type->abstract_type : by_kind[static_cast<size_t>(type->kind)];
}

bool host_is_row_version(const host_column &col)
{
    const host_type *type = my_find_type(col);
    return type && type->is_row_version;
}

bool host_is_rowid_type(const host_column &col)
{
    const host_type *type = my_find_type(col);
    if (!type || !col.prepared)
        return false;
    if (type->kind == host_type_kind::decimal)
        return col.scale == 0 && col.precision <= max_decimal_digits;
    const tov_abstract_type *abstract_type = tov_find_abstract_type(type->abstract_type);
    return type->kind == host_type_kind::simple && abstract_type && abstract_type->is_integer_key;
}

// Why a column is unprepared.
struct host_exclusion {
    bool (*applies)(const host_column &col);
    host_finding_code code;
    const char *reason;
};

static constexpr host_exclusion exclusions[] = {
    {[](const host_column &col) { return col.graph_type != 0; }, "column-graph",
     "left out of the table: the server keeps a graph's nodes and edges in it"},
    {[](const host_column &col) { return col.is_computed; }, "column-computed",
     "left out of the table: the server computes its values"},
    {[](const host_column &col) { return col.is_column_set; }, "column-set",
     "left out of the table: it is a view of the sparse columns"},
    {[](const host_column &col) { return col.is_filestream; }, "column-filestream",
     "left out of the table: its values lie in files of the server"},
    {[](const host_column &col) { return col.encryption_type != 0; }, "column-encrypted",
     "left out of the table: its values are encrypted"},
    {[](const host_column &col) { return col.generated_always_type != 0; }, "column-generated",
     "left out of the table: the server writes its values (period or ledger column)"},
    {[](const host_column &col) { return col.is_hidden; }, "column-hidden",
     "left out of the table: the server hides it"},
    {[](const host_column &col) { return !my_find_type(col); }, "type-unsupported",
     "left out of the table: no column of the schema can hold this type"},
};

void host_classify_columns(KT_context *ctx, host_import &import, host_table &table)
{
    for (host_column &col : table.cols) {
        if (!col.prepared)
            continue;
        for (const host_exclusion &exclusion : exclusions) {
            if (!exclusion.applies(col))
                continue;
            col.prepared = false;
            const char *host_text = col.is_computed ? col.computed : host_type_name(col);
            KT_TRY(import.findings.add(ctx, exclusion.code, &table, &col, host_text, exclusion.reason));
            break;
        }
    }
}

static uint32_t my_width(const host_column &col, host_width width)
{
    if (width == host_width::unbounded || col.max_length < 0)
        return 0;
    return static_cast<uint32_t>(width == host_width::bytes ? col.max_length : col.max_length / 2);
}

static std::string my_declared_type(const host_column &col, const char *sizes)
{
    return std::string(host_type_name(col)) + '(' + sizes + ')';
}

// The greatest 64-bit integer with its last digits after the point.
static std::string my_greatest_decimal(uint8_t scale)
{
    std::string digits = std::to_string(INT64_MAX);
    const size_t after_point = scale;
    if (after_point == 0)
        return digits;
    if (digits.size() <= after_point)
        digits.insert(0, after_point + 1 - digits.size(), '0');
    return digits.insert(digits.size() - after_point, 1, '.');
}

static void my_add_decimal(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    KT_TRY(tov_schema__set_col_type_decimal(ctx, import.schema, table.id_text.c_str(), col.id_text,
                                            static_cast<uint8_t>(col.precision), static_cast<uint8_t>(col.scale)));
    if (col.prepared && col.precision > max_decimal_digits) {
        const std::string sizes = std::to_string(col.precision) + ',' + std::to_string(col.scale);
        KT_TRY(import.findings.add(ctx, "decimal-too-wide", &table, &col, my_declared_type(col, sizes.c_str()).c_str(),
                                   "kept as a scaled 64-bit integer: values beyond " +
                                       my_greatest_decimal(static_cast<uint8_t>(col.scale)) + " are refused"));
    }
}

static void my_add_text(KT_context *ctx, host_import &import, const host_table &table, const host_column &col,
                        const host_type &type)
{
    const host_collation_rules rules = host_read_collation(col.collation, col.comparison_style);
    const uint32_t width = my_width(col, type.width);
    KT_TRY(tov_schema__set_col_type_text(ctx, import.schema, table.id_text.c_str(), col.id_text, col.collation,
                                         rules.locale.empty() ? nullptr : rules.locale.c_str(), rules.binary,
                                         rules.noaccent, rules.nocase, rules.ks, rules.ws, rules.sc, type.fixed_width,
                                         type.unicode, width));
    if (col.prepared && width > 0 && type.width == host_width::bytes && host_is_multibyte(col.code_page))
        KT_TRY(import.findings.add(ctx, "width-in-bytes", &table, &col,
                                   my_declared_type(col, std::to_string(width).c_str()).c_str(),
                                   "kept with its width in characters: the server counts bytes of code page " +
                                       std::to_string(col.code_page) + ", so fewer characters may fit there"));
}

// The local time and its offset, as the server prints them: a text of ASCII that is compared byte by byte.
static void my_add_offset(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    const int digits = host_fraction_digits("datetimeoffset", col.scale);
    const auto width = static_cast<uint32_t>(digits ? 27 + digits : 26);
    KT_TRY(tov_schema__set_col_type_text(ctx, import.schema, table.id_text.c_str(), col.id_text, nullptr, nullptr, 1, 0,
                                         0, 0, 0, 0, 0, 0, width));
    if (col.prepared)
        KT_TRY(import.findings.add(ctx, "type-as-text", &table, &col, host_type_name(col),
                                   "kept as a text of the local time and its offset: SQLite takes one moment with two "
                                   "offsets for two"));
}

static void my_add_blob(KT_context *ctx, host_import &import, const host_table &table, const host_column &col,
                        const host_type &type)
{
    KT_TRY(tov_schema__set_col_type_blob(ctx, import.schema, table.id_text.c_str(), col.id_text, type.fixed_width,
                                         my_width(col, type.width)));
    if (type.is_row_version && col.prepared)
        KT_TRY(import.findings.add(ctx, "rowversion-as-bytes", &table, &col, host_type_name(col),
                                   "kept as 8 bytes, which a database with the server's rules numbers itself"));
    if (&type == &clr_type && col.prepared)
        KT_TRY(import.findings.add(ctx, "type-as-bytes", &table, &col, host_type_name(col),
                                   "kept as the bytes that the server stores: their meaning is not known here"));
}

void host_add_type(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    const host_type *type = my_find_type(col);
    const char *tbl_id = table.id_text.c_str();
    const char *col_id = col.id_text;
    if (!type) {
        KT_TRY(tov_schema__set_col_type_unsuported(ctx, import.schema, tbl_id, col_id, host_type_name(col)));
        return;
    }
    switch (type->kind) {
    case host_type_kind::simple:
        KT_TRY(tov_schema__set_col_type_simple(ctx, import.schema, tbl_id, col_id, type->abstract_type));
        return;
    case host_type_kind::decimal:
        KT_TRY(my_add_decimal(ctx, import, table, col));
        return;
    case host_type_kind::time:
        KT_TRY(tov_schema__set_col_type_time(ctx, import.schema, tbl_id, col_id, static_cast<uint8_t>(col.scale)));
        return;
    case host_type_kind::datetime:
        KT_TRY(tov_schema__set_col_type_datetime(ctx, import.schema, tbl_id, col_id, static_cast<uint8_t>(col.scale),
                                                 host_type_name(col)));
        return;
    case host_type_kind::offset:
        KT_TRY(my_add_offset(ctx, import, table, col));
        return;
    case host_type_kind::text:
        KT_TRY(my_add_text(ctx, import, table, col, *type));
        return;
    case host_type_kind::blob:
        KT_TRY(my_add_blob(ctx, import, table, col, *type));
        return;
    }
}
