// The guide to the columns of tables, as maps: everything that a program which reads and writes rows has to know.
#include "guide/client_col_keys.hpp"
#include "guide/client_guide.hpp"
#include "rules/client_rowversion.hpp"

#define KT_HERE "src/client/guide/client_describe"

namespace {

// A column while it is described.
struct col_description {
    const client_versioned &versioned; // of its table
    const client_row_col &col;
    client_declared_type declared; // on the server
    const KT_vhash *facts;         // about the server; null where the document has none
    KT_vhash *record;
};

} // namespace

// A name may hold a quote here: nobody has checked the schema.
static std::string my_quoted(const std::string &name)
{
    std::string quoted = "\"";
    for (const char c : name) {
        quoted.push_back(c);
        if (c == '"')
            quoted.push_back(c);
    }
    return quoted + "\"";
}

static void my_add_text(KT_context *ctx, KT_vhash *record, const char *key, const std::string &text) noexcept
{
    if (!text.empty())
        KT_TRY(KT_vhash__add__string__sz(ctx, record, key, text.c_str()));
}

// A member of the facts about the server that is a string, if it is there.
static void my_copy_fact(KT_context *ctx, const col_description &it, const char *fact, const char *key) noexcept
{
    const char *text = nullptr;
    if (it.facts)
        KT_TRY(KT_vhash__check__sz(ctx, it.facts, fact, &text));
    if (text)
        KT_TRY(KT_vhash__add__string__sz(ctx, it.record, key, text));
}

static void my_add_identity(KT_context *ctx, const col_description &it)
{
    KT_varray *identity = nullptr;
    const char *seed = nullptr;
    const char *increment = nullptr;
    if (it.facts)
        KT_TRY(KT_vhash__check__varray(ctx, it.facts, "identity", &identity));
    if (!identity)
        return;
    KT_TRY(KT_varray__get__sz(ctx, identity, 0, &seed));
    KT_TRY(KT_varray__get__sz(ctx, identity, 1, &increment));
    KT_TRY(my_add_text(ctx, it.record, "identity", std::string(seed) + "," + increment));
}

static void my_add_form(KT_context *ctx, const col_description &it)
{
    const client_value_form form = client_form_of(it.declared);
    const client_server_type &type = it.declared.type;
    KT_TRY(KT_vhash__add__string__sz(ctx, it.record, "storage", form.storage ? form.storage : "TEXT"));
    KT_TRY(my_add_text(ctx, it.record, "form", form.form));
    KT_TRY(my_add_text(ctx, it.record, "example", form.example));
    KT_TRY(my_add_text(ctx, it.record, "stored_example", form.stored));
    KT_TRY(my_add_text(ctx, it.record, "show", client_showing_expression(type, my_quoted(it.col.name))));
    KT_TRY(my_add_text(ctx, it.record, "store", client_storing_expression(type, "?1")));
    KT_TRY(my_add_text(ctx, it.record, "store_text", client_storing_expression_of_text(type, "?1")));
    KT_TRY(my_add_text(ctx, it.record, "bind", form.bind));
}

static void my_add_default(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, const col_description &it)
{
    const char *expression = nullptr;
    const char *ignored = nullptr;
    KT_bool has = 0;
    KT_TRY(
        tov_schema__get_colcon_defval(ctx, schema, tbl.id.c_str(), it.col.col_id.c_str(), &has, &ignored, &expression));
    if (has && expression)
        KT_TRY(my_add_text(ctx, it.record, "default", expression));
    KT_TRY(my_copy_fact(ctx, it, "default", "server_default"));
    KT_TRY(my_add_identity(ctx, it));
}

static void my_add_keys(KT_context *ctx, const client_col_keys &keys, KT_vhash *record)
{
    if (keys.pk_position > 0)
        KT_TRY(KT_vhash__add__int64(ctx, record, "primary_key", keys.pk_position));
    if (keys.is_unique)
        KT_TRY(KT_vhash__add__bool(ctx, record, "unique", 1));
    KT_varray *references = nullptr;
    if (!keys.references.empty())
        KT_TRY(KT_vhash__addnew__varray(ctx, record, "references", &references));
    for (const client_col_reference &reference : keys.references) {
        KT_vhash *entry = nullptr;
        KT_TRY(KT_varray__appendnew__vhash(ctx, references, &entry));
        KT_TRY(my_add_text(ctx, entry, "table", reference.tbl));
        KT_TRY(my_add_text(ctx, entry, "column", reference.col));
    }
}

// Whether each INSERT has to give a value: the database has none of its own, and NULL does not do.
static bool my_is_required(const client_row_col &col, const client_versioned &versioned) noexcept
{
    return !col.type.nullable && !col.has_default && !col.rowid && col.col_id != versioned.col_id;
}

static void my_add_why_left_out(KT_context *ctx, const col_description &it)
{
    const char *why =
        it.col.type.base == client_base::variant ? "SQLite has no form for its values" : "the schema does not have it";
    int64_t generated = 0;
    if (it.facts)
        KT_TRY(KT_vhash__check__int64(ctx, it.facts, "generated", &generated));
    if (generated != 0)
        why = "the server writes its values";
    if (it.col.computed)
        why = "the server computes it";
    KT_TRY(my_add_text(ctx, it.record, "left_out", why));
    KT_TRY(my_copy_fact(ctx, it, "computed", "computed"));
}

static void my_describe_col(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl,
                            std::map<std::string, client_col_keys> &keys, const col_description &it)
{
    KT_TRY(KT_vhash__add__string__sz(ctx, it.record, "name", it.col.name.c_str()));
    KT_TRY(my_add_text(ctx, it.record, "server_type", client_declared_type_text(it.declared)));
    KT_TRY(my_copy_fact(ctx, it, "user_type", "user_type"));
    if (!it.col.stored) {
        KT_TRY(my_add_why_left_out(ctx, it));
        return;
    }
    KT_TRY(my_add_form(ctx, it));
    KT_TRY(KT_vhash__add__bool(ctx, it.record, "nullable", it.col.type.nullable));
    KT_TRY(KT_vhash__add__bool(ctx, it.record, "required", my_is_required(it.col, it.versioned)));
    KT_TRY(my_add_default(ctx, schema, tbl, it));
    KT_TRY(my_add_keys(ctx, keys[it.col.col_id], it.record));
}

// The n-th parameter is the value of the n-th column.
static std::string my_insert(const client_row_tbl &tbl)
{
    std::string names;
    std::string values;
    int count = 0;
    for (const client_row_col &col : tbl.cols) {
        if (!col.stored)
            continue;
        names += (count ? ", " : "") + my_quoted(col.name);
        values += (count ? ", " : "") + client_storing_expression(col.type, "?" + std::to_string(count + 1));
        count++;
    }
    return "INSERT INTO " + my_quoted(tbl.name) + " (" + names + ") VALUES (" + values + ")";
}

// The facts about the columns, in the order of the row table's; null where it was not read from them.
static void my_find_facts(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, KT_varray **facts)
{
    KT_vhash *server = nullptr;
    if (!tbl.has_facts)
        return;
    KT_TRY(tov_schema__check_tbl_server(ctx, schema, tbl.id.c_str(), &server));
    KT_TRY(KT_vhash__check__varray(ctx, server, "cols", facts));
}

static void my_describe_cols(KT_context *ctx, tov_schema *schema, const client_row_tbl &tbl, KT_varray *cols)
{
    std::map<std::string, client_col_keys> keys;
    const client_versioned versioned = client_find_version(tbl);
    KT_varray *facts = nullptr;
    KT_TRY(client_read_col_keys(ctx, schema, tbl.id.c_str(), keys));
    KT_TRY(my_find_facts(ctx, schema, tbl, &facts));
    for (size_t n = 0; n < tbl.cols.size(); n++) {
        KT_vhash *record = nullptr;
        KT_vhash *of_col = nullptr;
        const char *type_name = "";
        if (facts) {
            KT_TRY(KT_varray__get__vhash(ctx, facts, static_cast<uint32_t>(n), &of_col));
            KT_TRY(KT_vhash__get__sz(ctx, of_col, "type", &type_name));
        }
        KT_TRY(KT_varray__appendnew__vhash(ctx, cols, &record));
        KT_TRY(my_describe_col(ctx, schema, tbl, keys,
                               {versioned, tbl.cols[n], {tbl.cols[n].type, type_name}, of_col, record}));
    }
}

static void my_describe_tbl(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_varray *tbls)
{
    client_row_tbl tbl;
    KT_vhash *record = nullptr;
    KT_varray *cols = nullptr;
    KT_TRY(client_read_row_tbl(ctx, schema, tbl_id, tbl));
    KT_TRY(KT_varray__appendnew__vhash(ctx, tbls, &record));
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "table", tbl.name.c_str()));
    const std::string schema_name = tbl.server_schema.empty() ? "" : tbl.server_schema + ".";
    KT_TRY(KT_vhash__add__string__sz(ctx, record, "server_table", (schema_name + tbl.server_name).c_str()));
    KT_TRY(KT_vhash__addnew__varray(ctx, record, "columns", &cols));
    KT_TRY(my_describe_cols(ctx, schema, tbl, cols));
    KT_TRY(my_add_text(ctx, record, "insert", my_insert(tbl)));
}

void tov_client__describe_columns(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_vhash **guide) noexcept
{
    kt_contain(ctx, [&] {
        kt_owned_vhash map{ctx};
        KT_varray *tbls = nullptr;
        uint32_t count = 0;
        KT_TRY(KT_vhash__alloc(ctx, map.out()));
        KT_TRY(KT_vhash__addnew__varray(ctx, map, "tables", &tbls));
        KT_TRY(tov_schema__count_tbls(ctx, schema, &count));
        for (uint32_t n = 0; n < count && !tbl_id; n++) {
            const char *nth_id = nullptr;
            KT_TRY(tov_schema__get_nth_tbl_id(ctx, schema, n, &nth_id));
            KT_TRY(my_describe_tbl(ctx, schema, nth_id, tbls));
        }
        if (tbl_id)
            KT_TRY(my_describe_tbl(ctx, schema, tbl_id, tbls));
        map.move_to(guide);
    });
}
