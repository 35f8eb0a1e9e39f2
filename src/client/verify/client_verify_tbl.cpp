// A table as the schema and the database have it, side by side, and the rows in a form that fits both.
//
// The rows come from a subquery that SQLite merges into the statement around it. It gives each column twice: raw, for
// the rules of its type, without what the database's own declaration of it would add to a comparison; and under its
// name, with the affinity and collation that it has in a created database, because the schema's checks compare so.
#include "verify/client_verify.hpp"

#include "kt_folded.hpp"
#include "tov_abstract_types.h"

#include <algorithm>

#define KT_HERE "src/client/verify/client_verify_tbl"

static const char *my_storage_of(const char *abstract_type) noexcept
{
    const tov_abstract_type *type = tov_find_abstract_type(abstract_type);
    return type ? type->sqlite_typeof : "";
}

// The record of the column's type. Ids are in lower case there.
static void my_find_type(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, const client_verify_col &col,
                         KT_vhash **type)
{
    const KT_vhash *document = nullptr;
    KT_vhash *record = nullptr;
    KT_TRY(tov_schema__get_document(ctx, schema, &document));
    KT_TRY(KT_vhash__get__vhash(ctx, document, "tbls", &record));
    KT_TRY(KT_vhash__get__vhash(ctx, record, kt_folded(tbl.id).c_str(), &record));
    KT_TRY(KT_vhash__get__vhash(ctx, record, "cols", &record));
    KT_TRY(KT_vhash__get__vhash(ctx, record, kt_folded(col.row_col->col_id).c_str(), &record));
    KT_TRY(KT_vhash__get__vhash(ctx, record, "type", type));
}

// As the schema module declares it.
static void my_read_collation(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, client_verify_col &col)
{
    KT_vhash *type = nullptr;
    KT_bool nocase = 0;
    KT_bool is_fixed = 0;
    col.collation = "BINARY";
    if (KT_stricmp(col.type, "text") != 0)
        return;
    KT_TRY(my_find_type(ctx, schema, tbl, col, &type));
    KT_TRY(KT_vhash__check__bool(ctx, type, "nocase", &nocase));
    KT_TRY(KT_vhash__check__bool(ctx, type, "fixed_width", &is_fixed));
    if (nocase || is_fixed)
        col.collation = nocase ? "NOCASE" : "RTRIM";
}

// Of the facts about the server; null where they do not say.
static void my_find_server_collation(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl,
                                     const client_row_col &col, const char **name)
{
    KT_vhash *facts = nullptr;
    KT_varray *cols = nullptr;
    uint32_t count = 0;
    KT_TRY(tov_schema__check_tbl_server(ctx, schema, tbl.id.c_str(), &facts));
    if (facts)
        KT_TRY(KT_vhash__check__varray(ctx, facts, "cols", &cols));
    if (cols)
        KT_TRY(KT_varray__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        const char *id = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, cols, n, &record));
        KT_TRY(KT_vhash__check__sz(ctx, record, "id", &id));
        if (id && KT_stricmp(id, col.col_id.c_str()) == 0)
            KT_TRY(KT_vhash__check__sz(ctx, record, "collation", name));
    }
}

static bool my_may_be_in_collation(char c) noexcept
{
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

// Whether the connection has a collation, which it may make when it is first asked for.
static bool my_knows(client_verify &run, const std::string &collation)
{
    const auto place = run.collations.find(collation);
    if (place != run.collations.end())
        return place->second;
    kt_owned_statement statement{run.database.functions};
    const std::string sql = "SELECT '' = '' COLLATE " + client_quoted(collation);
    const bool knows = client_verify__try(run, sql, statement) == SQLITE_OK;
    run.collations[collation] = knows;
    return knows;
}

// A collation whose name begins with SQL_ compares strings of a code page by other rules than Unicode, which
// libtov_sqlite has under a name of their own.
static void my_read_key_collation(KT_context *ctx, client_verify &run, const client_row_tbl &tbl,
                                  client_verify_col &col)
{
    const char *name = nullptr;
    if (run.options.rules != TOV_CLIENT_RULES_SERVER || !tbl.has_facts || !client_is_text(col.row_col->type.base))
        return;
    KT_TRY(my_find_server_collation(ctx, run.schema, tbl, *col.row_col, &name));
    const std::string_view text = name ? name : "";
    if (text.empty() || !std::all_of(text.begin(), text.end(), my_may_be_in_collation))
        return;
    std::string collation(text);
    if (collation.starts_with("SQL_") && !client_is_unicode(col.row_col->type.base))
        collation += ".varchar";
    if (my_knows(run, collation))
        col.key_collation = collation;
}

static void my_read_col(KT_context *ctx, client_verify &run, const client_row_col &row_col, client_verify_tbl &tbl)
{
    const std::vector<std::string> &found = tbl.found->cols;
    if (!row_col.stored || std::find(found.begin(), found.end(), kt_folded(row_col.name)) == found.end())
        return;
    client_verify_col col;
    col.row_col = &row_col;
    col.raw = "\"" + std::to_string(tbl.cols.size()) + "'\"";
    KT_TRY(tov_schema__get_col_type(ctx, run.schema, tbl.tbl.id.c_str(), row_col.col_id.c_str(), &col.type, nullptr));
    col.cast_to = my_storage_of(col.type);
    KT_TRY(my_read_collation(ctx, run.schema, tbl.tbl, col));
    KT_TRY(my_read_key_collation(ctx, run, tbl.tbl, col));
    tbl.cols.push_back(std::move(col));
}

static std::string my_source(const client_verify_tbl &tbl, const std::string &own_key)
{
    std::string source = "(SELECT ";
    source += tbl.found->rowid.empty() ? "NULL" : tbl.found->rowid;
    source += std::string(" AS ") + client_verify_rowid + own_key;
    for (const client_verify_col &col : tbl.cols) {
        const std::string plain = client_quoted(col.row_col->name) + " COLLATE BINARY";
        source += ", +" + plain + " AS " + col.raw + ", ";
        source += col.cast_to.empty() ? plain : "CAST(" + plain + " AS " + col.cast_to + ")";
        source += " COLLATE " + col.collation + " AS " + client_quoted(col.row_col->name);
    }
    return source + " FROM " + client_quoted(tbl.tbl.name) + ")";
}

const client_verify_col *client_find_verify_col(const client_verify_tbl &tbl, const char *col_id) noexcept
{
    for (const client_verify_col &col : tbl.cols) {
        if (KT_stricmp(col.row_col->col_id.c_str(), col_id) == 0)
            return &col;
    }
    return nullptr;
}

static void my_add_key_col(client_verify_tbl &tbl, const char *col_id)
{
    const client_verify_col *col = client_find_verify_col(tbl, col_id);
    if (!col)
        return;
    tbl.key_names.push_back(col->row_col->name);
    tbl.key_values.push_back(col->raw);
}

static void my_read_key(KT_context *ctx, client_verify &run, client_verify_tbl &tbl)
{
    kt_owned_varray keys{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_keys(ctx, run.schema, tbl.tbl.id.c_str(), TOV_KEYS_PRIMARY, keys.out()));
    if (!keys)
        return;
    KT_vhash *key = nullptr;
    KT_varray *ids = nullptr;
    KT_TRY(KT_varray__get__vhash(ctx, keys, 0, &key));
    KT_TRY(KT_vhash__get__varray(ctx, key, "cols", &ids));
    KT_TRY(KT_varray__count(ctx, ids, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, ids, n, &id));
        my_add_key_col(tbl, id);
    }
}

// The database's names are anything.
static std::string my_quoted_foreign(const std::string &name)
{
    std::string quoted = "\"";
    for (const char byte : name)
        quoted += byte == '"' ? std::string(2, byte) : std::string(1, byte);
    return quoted + "\"";
}

// Rows that have neither a rowid nor the schema's key are known by the database's own.
static std::string my_take_own_key(client_verify_tbl &tbl)
{
    std::string results;
    if (!tbl.found->rowid.empty() || !tbl.key_values.empty())
        return results;
    for (const std::string &name : tbl.found->pk) {
        const std::string value = "\"key" + std::to_string(tbl.key_values.size()) + "'\"";
        results += ", +" + my_quoted_foreign(name) + " COLLATE BINARY AS " + value;
        tbl.key_names.push_back(name);
        tbl.key_values.push_back(value);
    }
    return results;
}

void client_verify__read_tbl(KT_context *ctx, client_verify &run, const char *tbl_id, client_verify_tbl &tbl)
{
    KT_TRY(client_read_row_tbl(ctx, run.schema, tbl_id, tbl.tbl));
    KT_TRY(client_verify__find_tbl(ctx, run, tbl.tbl.name, &tbl.found));
    if (!tbl.found || !tbl.found->is_tbl)
        return;
    for (const client_row_col &col : tbl.tbl.cols)
        KT_TRY(my_read_col(ctx, run, col, tbl));
    KT_TRY(my_read_key(ctx, run, tbl));
    tbl.source = my_source(tbl, my_take_own_key(tbl));
}
