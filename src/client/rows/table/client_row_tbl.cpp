#include "rows/table/client_row_tbl.hpp"

#include "kt_folded.hpp"

#include <algorithm>
#include <unordered_set>

#define KT_HERE "src/client/rows/table/client_row_tbl"

namespace {
// What an abstract type is called on the server, where the document does not say more.
struct abstract_base {
    const char *abstract_type;
    client_base base;
};
} // namespace

static constexpr abstract_base abstract_bases[] = {
    {"identity", client_base::bigint},  {"sint64", client_base::bigint},
    {"sint32", client_base::integer},   {"sint16", client_base::smallint},
    {"uint8", client_base::tinyint},    {"uint1", client_base::bit},
    {"loose/int", client_base::bigint}, {"real8", client_base::floating},
    {"real4", client_base::real},       {"loose/real", client_base::floating},
    {"decimal", client_base::decimal},  {"date", client_base::date},
    {"time", client_base::time},        {"datetime", client_base::datetime2},
    {"money8", client_base::money},     {"money4", client_base::smallmoney},
    {"text", client_base::nvarchar},    {"loose/text", client_base::nvarchar},
    {"blob", client_base::varbinary},   {"loose/blob", client_base::varbinary},
    {"guid", client_base::guid},
};

static client_base my_base_of_abstract(const char *abstract_type) noexcept
{
    for (const abstract_base &known : abstract_bases) {
        if (abstract_type && KT_stricmp(abstract_type, known.abstract_type) == 0)
            return known.base;
    }
    return client_base::nvarchar;
}

static client_base my_text_base(bool fixed, bool unicode) noexcept
{
    if (unicode)
        return fixed ? client_base::fixed_nchar : client_base::nvarchar;
    return fixed ? client_base::fixed_char : client_base::varchar;
}

// The server's own name of the type where the document has it, which need not be one of the server's: a type of the
// user's goes by its abstract type.
static void my_read_named_base(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                               client_base &base) noexcept
{
    const char *name = nullptr;
    KT_context__push_level(ctx);
    tov_schema__get_mssql_col_type_name(ctx, schema, tbl_id, col_id, &name);
    KT_context__pop_level(ctx);
    const client_base named = name ? client_find_base(name) : client_base::clr;
    if (named != client_base::clr)
        base = named;
}

static void my_read_abstract_type(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                                  client_row_col &col) noexcept
{
    const char *abstract_type = nullptr;
    KT_bool has = 0;
    KT_bool fixed = 0;
    KT_bool unicode = 1;
    int32_t precision = -1;
    int32_t scale = -1;
    KT_TRY(tov_schema__get_col_type(ctx, schema, tbl_id, col_id, &abstract_type, nullptr));
    KT_TRY(tov_schema__get_col_type__fixed_width(ctx, schema, tbl_id, col_id, &has, &fixed));
    KT_TRY(tov_schema__get_col_type__unicode(ctx, schema, tbl_id, col_id, &has, &unicode));
    KT_TRY(tov_schema__get_col_type__precision(ctx, schema, tbl_id, col_id, &precision));
    KT_TRY(tov_schema__get_col_type__scale(ctx, schema, tbl_id, col_id, &scale));
    KT_TRY(tov_schema__get_col_type__width(ctx, schema, tbl_id, col_id, &col.type.length));
    client_server_type &type = col.type;
    type.base = my_base_of_abstract(abstract_type);
    if (abstract_type && KT_stricmp(abstract_type, "text") == 0)
        type.base = my_text_base(fixed, unicode);
    if (type.base == client_base::varbinary && fixed)
        type.base = client_base::binary;
    KT_TRY(my_read_named_base(ctx, schema, tbl_id, col_id, type.base));
    const bool is_moment = client_is_moment(type.base) && type.base != client_base::date;
    type.precision = static_cast<uint8_t>(is_moment || precision < 0 ? 0 : precision);
    type.scale = static_cast<uint8_t>(is_moment && precision >= 0 ? precision : std::max(scale, 0));
    if (client_is_moment(type.base) && type.scale > 7)
        type.scale = 7;
    if (type.base == client_base::datetimeoffset) // a text, of which only the width is known
        type.scale = static_cast<uint8_t>(std::clamp(type.length - 27, 0, 7));
    col.rowid = abstract_type && KT_stricmp(abstract_type, "identity") == 0;
}

// What SQLite's table says of a column that it has.
static void my_read_stored(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, client_row_col &col) noexcept
{
    const char *id = col.col_id.c_str();
    KT_bool notnull = 0;
    KT_bool has_default = 0;
    KT_bool in_pk = 0;
    const char *ignored = nullptr;
    KT_TRY(tov_schema__get_colcon_notnull(ctx, schema, tbl.id.c_str(), id, &notnull, nullptr));
    KT_TRY(tov_schema__get_colcon_defval(ctx, schema, tbl.id.c_str(), id, &has_default, &ignored, &ignored));
    KT_TRY(tov_schema__is_col_id_in_pk(ctx, schema, tbl.id.c_str(), id, &in_pk));
    col.stored = true;
    col.has_default = has_default;
    const char *abstract_type = nullptr;
    KT_TRY(tov_schema__get_col_type(ctx, schema, tbl.id.c_str(), id, &abstract_type, nullptr));
    col.rowid = abstract_type && KT_stricmp(abstract_type, "identity") == 0;
    col.type.nullable = !notnull && !in_pk && !col.rowid;
}

static void my_read_plain_cols(KT_context *ctx, tov_schema *schema, client_row_tbl &tbl)
{
    uint32_t count = 0;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl.id.c_str(), &count));
    tbl.cols.assign(count, {}); // facts that are not used may have been read
    for (uint32_t n = 0; n < count; n++) {
        client_row_col &col = tbl.cols[n];
        const char *col_id = nullptr;
        const char *name = nullptr;
        KT_TRY(tov_schema__get_nth_col_id(ctx, schema, tbl.id.c_str(), n, &col_id));
        KT_TRY(tov_schema__get_col_name(ctx, schema, tbl.id.c_str(), col_id, &name));
        col.col_id = col_id;
        col.name = name ? name : "";
        KT_TRY(my_read_abstract_type(ctx, schema, tbl.id.c_str(), col_id, col));
        KT_TRY(my_read_stored(ctx, schema, tbl, col));
        col.server_type = col.type;
    }
}

static void my_read_number(KT_context *ctx, const KT_vhash *facts, const char *key, int64_t least, int64_t most,
                           int64_t &number) noexcept
{
    KT_TRY(KT_vhash__check__int64(ctx, facts, key, &number));
    if (number < least || number > most)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "\"%s\" of a column's facts about the server is out of range", key);
}

static bool my_is_counted_in_units(client_base base) noexcept
{
    return base == client_base::fixed_nchar || base == client_base::nvarchar;
}

static void my_read_fact_type(KT_context *ctx, const KT_vhash *facts, client_server_type &type) noexcept
{
    const char *name = nullptr;
    int64_t length = -1;
    int64_t precision = 0;
    int64_t scale = 0;
    int64_t code_page = 0;
    KT_bool nullable = 0;
    KT_TRY(KT_vhash__get__sz(ctx, facts, "type", &name));
    KT_TRY(my_read_number(ctx, facts, "length", -1, INT32_MAX, length));
    KT_TRY(my_read_number(ctx, facts, "precision", 0, 255, precision));
    KT_TRY(my_read_number(ctx, facts, "scale", 0, 38, scale));
    KT_TRY(my_read_number(ctx, facts, "code_page", 0, 65535, code_page));
    KT_TRY(KT_vhash__check__bool(ctx, facts, "nullable", &nullable));
    type.base = client_find_base(name);
    if (client_is_moment(type.base) && scale > 7)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "\"scale\" of a column's facts about the server is out of range");
    type.precision = static_cast<uint8_t>(precision);
    type.scale = static_cast<uint8_t>(scale);
    type.code_page = static_cast<uint16_t>(code_page);
    type.nullable = nullable;
    if (length > 0 && client_has_length(type.base))
        type.length = static_cast<int32_t>(my_is_counted_in_units(type.base) ? length / 2 : length);
}

static void my_read_fact_col(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, const KT_vhash *facts,
                             client_row_col &col)
{
    const char *name = nullptr;
    const char *id = nullptr;
    const char *computed = nullptr;
    const char *default_text = nullptr;
    const char *collation = nullptr;
    KT_varray *identity = nullptr;
    KT_bool has = 0;
    KT_TRY(KT_vhash__get__sz(ctx, facts, "name", &name));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "id", &id));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "computed", &computed));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "default", &default_text));
    KT_TRY(KT_vhash__check__sz(ctx, facts, "collation", &collation));
    KT_TRY(KT_vhash__check__varray(ctx, facts, "identity", &identity));
    KT_TRY(my_read_fact_type(ctx, facts, col.type));
    col.server_type = col.type;
    col.name = name;
    col.computed = computed;
    col.identity = identity;
    col.has_server_default = default_text;
    if (collation && client_is_text(col.type.base))
        col.collation = collation;
    if (id)
        KT_TRY(tov_schema__has_col_id(ctx, schema, tbl.id.c_str(), id, &has));
    if (!has)
        return;
    col.col_id = id;
    const char *stored_name = nullptr;
    KT_TRY(tov_schema__get_col_name(ctx, schema, tbl.id.c_str(), id, &stored_name));
    col.name = stored_name ? stored_name : "";
    KT_TRY(my_read_stored(ctx, schema, tbl, col));
}

static void my_read_fact_cols(KT_context *ctx, tov_schema *schema, const KT_varray *facts, client_row_tbl &tbl)
{
    uint32_t count = 0;
    KT_TRY(KT_varray__count(ctx, facts, &count));
    tbl.cols.resize(count);
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, facts, n, &record));
        KT_TRY(my_read_fact_col(ctx, schema, tbl, record, tbl.cols[n]));
    }
}

// Facts that miss a column of the table are older than the table, and those that name one twice are wrong: they are not
// used.
static void my_covers_all(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, bool &covers)
{
    uint32_t count = 0;
    uint32_t stored = 0;
    std::unordered_set<std::string> ids;
    KT_TRY(tov_schema__count_cols(ctx, schema, tbl.id.c_str(), &count));
    for (const client_row_col &col : tbl.cols) {
        if (!col.stored)
            continue;
        stored++;
        ids.insert(kt_folded(col.col_id));
    }
    covers = stored == count && ids.size() == count;
}

void client_read_row_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, client_row_tbl &tbl) noexcept
{
    kt_contain(ctx, [&] {
        const char *name = nullptr;
        const char *server_schema = nullptr;
        const char *server_name = nullptr;
        KT_vhash *facts = nullptr;
        KT_varray *cols = nullptr;
        KT_TRY(tov_schema__get_tbl_name(ctx, schema, tbl_id, &name));
        KT_TRY(tov_schema__check_tbl_server(ctx, schema, tbl_id, &facts));
        tbl.id = tbl_id;
        tbl.name = name ? name : "";
        tbl.server_name = tbl.name;
        int64_t temporal_type = 0;
        bool covers = false;
        if (facts) {
            KT_TRY(KT_vhash__check__sz(ctx, facts, "schema", &server_schema));
            KT_TRY(KT_vhash__check__sz(ctx, facts, "name", &server_name));
            KT_TRY(KT_vhash__check__varray(ctx, facts, "cols", &cols));
            KT_TRY(KT_vhash__check__int64(ctx, facts, "temporal_type", &temporal_type));
            tbl.is_history = temporal_type == 1;
            tbl.server_schema = server_schema ? server_schema : "";
            tbl.server_name = server_name ? server_name : tbl.name;
        }
        if (cols) {
            KT_TRY(my_read_fact_cols(ctx, schema, cols, tbl));
            KT_TRY(my_covers_all(ctx, schema, tbl, covers));
        }
        tbl.has_facts = covers;
        if (!covers)
            KT_TRY(my_read_plain_cols(ctx, schema, tbl));
    });
}

size_t client_find_row_col(const client_row_tbl &tbl, std::string_view name) noexcept
{
    size_t n = 0;
    while (n < tbl.cols.size() && !kt_equal_folded(tbl.cols[n].name, name))
        n++;
    return n;
}

std::string client_quoted(const std::string &name)
{
    return '"' + name + '"';
}

const client_row_col *client_find_stored_col(const client_row_tbl &tbl, const char *col_id) noexcept
{
    for (const client_row_col &col : tbl.cols) {
        if (col.stored && KT_stricmp(col.col_id.c_str(), col_id) == 0)
            return &col;
    }
    return nullptr;
}
