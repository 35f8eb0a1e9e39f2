// Rows with a key that an earlier row has.
//
// Whether there are any is asked first, which an index can answer; then they are counted within each key, in the order
// of the rows.
#include "verify/client_verify_keys.hpp"

#include "create/client_index_parts.hpp"
#include "kt_folded.hpp"

#define KT_HERE "src/client/verify/client_verify_keys"

namespace {

struct asked_key {
    std::vector<std::string> ids;
    bool nulls_are_equal;
    std::string where; // of a filtered index
};

} // namespace

// The moment in UTC: minutes are as far apart in SQLite as on the server, and the seconds stay as they are.
static std::string my_utc(const std::string &value)
{
    return "coalesce(strftime('%Y-%m-%d %H:%M',substr(" + value + ",1,16)||substr(" + value + ",-6))||substr(" + value +
           ",17,length(" + value + ")-23)," + value + ")";
}

std::string client_key_value(const client_verify &run, const client_verify_col &col, const std::string &value)
{
    if (col.row_col->type.base == client_base::datetimeoffset && run.options.rules == TOV_CLIENT_RULES_SERVER)
        return my_utc(value);
    if (KT_stricmp(col.type, "text") != 0)
        return value;
    if (!col.key_collation.empty())
        return value + " COLLATE " + client_quoted(col.key_collation);
    const bool is_servers = run.options.rules == TOV_CLIENT_RULES_SERVER;
    return (is_servers ? "rtrim(" + value + ")" : value) + " COLLATE " + col.collation;
}

bool client_find_key_cols(const client_verify_tbl &tbl, const std::vector<std::string> &ids,
                          std::vector<const client_verify_col *> &cols)
{
    for (const std::string &id : ids)
        cols.push_back(client_find_verify_col(tbl, id.c_str()));
    return std::find(cols.begin(), cols.end(), nullptr) == cols.end();
}

std::string client_joined_names(const std::vector<const client_verify_col *> &cols)
{
    std::string names;
    for (const client_verify_col *col : cols)
        names += (names.empty() ? "" : ", ") + col->row_col->name;
    return names;
}

std::string client_joined_results(const client_verify &run, sqlite3_stmt *statement, int first, size_t count)
{
    std::string results;
    for (size_t n = 0; n < count; n++)
        results += (n ? ", " : "") + client_shown_result(run, statement, first + static_cast<int>(n));
    return results;
}

void client_read_ids(KT_context *ctx, const KT_vhash *key, const char *member, std::vector<std::string> &ids)
{
    KT_varray *list = nullptr;
    uint32_t count = 0;
    KT_TRY(KT_vhash__check__varray(ctx, key, member, &list));
    if (list)
        KT_TRY(KT_varray__count(ctx, list, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, list, n, &id));
        ids.emplace_back(id);
    }
}

// The rows that have a key at all: a NULL in a primary key is told otherwise.
static std::string my_where(const asked_key &key, const std::vector<const client_verify_col *> &cols)
{
    std::string where = key.where.empty() ? "" : "(" + key.where + "\n)";
    for (const client_verify_col *col : cols) {
        if (!key.nulls_are_equal)
            where += (where.empty() ? "" : " AND ") + col->raw + " IS NOT NULL";
    }
    return where.empty() ? "" : " WHERE " + where;
}

static std::string my_parts(const client_verify &run, const std::vector<const client_verify_col *> &cols)
{
    std::string parts;
    for (const client_verify_col *col : cols)
        parts += (parts.empty() ? "" : ",") + client_key_value(run, *col, col->raw);
    return parts;
}

static void my_has_duplicates(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl,
                              const std::string &parts, const std::string &where, bool &has)
{
    kt_owned_statement statement{run.database.functions};
    bool ok = false;
    has = false;
    KT_TRY(client_verify__prepare(
        ctx, run, tbl, "SELECT 1 FROM " + tbl.source + where + " GROUP BY " + parts + " HAVING count(*) > 1 LIMIT 1",
        statement, ok));
    if (ok)
        KT_TRY(client_verify__step(ctx, run, tbl, statement, has));
}

static std::string my_statement(const client_verify_tbl &tbl, const std::string &parts, const std::string &where,
                                const std::vector<const client_verify_col *> &cols)
{
    std::string inner = client_verify_rowid;
    for (const std::string &value : tbl.key_values)
        inner += "," + value;
    for (const client_verify_col *col : cols)
        inner += "," + col->raw;
    const std::string number = "row_number() OVER (PARTITION BY " + parts +
                               (tbl.found->rowid.empty() ? "" : std::string(" ORDER BY ") + client_verify_rowid) + ")";
    std::string results = client_row_results(tbl);
    for (const client_verify_col *col : cols)
        results += "," + client_short_value(col->raw);
    return "SELECT " + results + " FROM (SELECT " + inner + "," + number + " AS \"number'\" FROM " + tbl.source +
           where + ") WHERE \"number'\" > 1";
}

static void my_look(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, const asked_key &key)
{
    kt_owned_statement statement{run.database.functions};
    std::vector<const client_verify_col *> cols;
    bool ok = false;
    bool has = false;
    if (!client_find_key_cols(tbl, key.ids, cols)) {
        KT_TRY(client_verify__report_tbl(
            ctx, run, tbl.tbl.name.c_str(),
            {client_violation_code("not-checked").kind, "a key: the table lacks a column of it", "", ""}));
        return;
    }
    const std::string parts = my_parts(run, cols);
    const std::string where = my_where(key, cols);
    KT_TRY(my_has_duplicates(ctx, run, tbl, parts, where, has));
    if (!has)
        return;
    KT_TRY(client_verify__prepare(ctx, run, tbl, my_statement(tbl, parts, where, cols), statement, ok));
    if (!ok)
        return;
    KT_TRY(client_verify__step(ctx, run, tbl, statement, has));
    while (has) {
        const std::string value = client_joined_results(run, statement, client_count_row_results(tbl), cols.size());
        KT_TRY(client_verify__report_row(ctx, run, tbl, statement,
                                         {client_violation_code("duplicate-key").kind,
                                          "an earlier row has the same key", client_joined_names(cols), value}));
        KT_TRY(client_verify__step(ctx, run, tbl, statement, has));
    }
}

// The rowid is its own key.
static bool my_is_rowid(const client_verify_tbl &tbl, const std::vector<std::string> &ids)
{
    const client_verify_col *col = ids.size() == 1 ? client_find_verify_col(tbl, ids[0].c_str()) : nullptr;
    return col && kt_equal_folded(tbl.found->rowid_col, col->row_col->name);
}

static void my_look_at_keys(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl)
{
    kt_owned_varray keys{ctx};
    uint32_t count = 0;
    KT_TRY(tov_schema__list_keys(ctx, run.schema, tbl.tbl.id.c_str(), TOV_KEYS_PRIMARY | TOV_KEYS_UNIQUE, keys.out()));
    if (keys)
        KT_TRY(KT_varray__count(ctx, keys, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *record = nullptr;
        const char *id = nullptr;
        asked_key key;
        KT_TRY(KT_varray__get__vhash(ctx, keys, n, &record));
        KT_TRY(KT_vhash__check__sz(ctx, record, "id", &id)); // of a unique key
        KT_TRY(client_read_ids(ctx, record, "cols", key.ids));
        key.nulls_are_equal = id && run.nulls_are_equal;
        if (!my_is_rowid(tbl, key.ids))
            KT_TRY(my_look(ctx, run, tbl, key));
    }
}

static void my_look_at_index(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl, const KT_vhash *facts)
{
    client_server_index index;
    KT_TRY(client_read_server_index(ctx, run.schema, tbl.tbl.id.c_str(), facts, index));
    if (!index.unique || index.cols.empty())
        return;
    asked_key key{{}, run.nulls_are_equal, index.where};
    for (const client_index_col &col : index.cols)
        key.ids.emplace_back(col.id);
    KT_TRY(my_look(ctx, run, tbl, key));
}

// The unique indexes of the server that hold for some rows only.
static void my_look_at_indexes(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl)
{
    KT_vhash *facts = nullptr;
    KT_varray *indexes = nullptr;
    uint32_t count = 0;
    KT_TRY(tov_schema__check_tbl_server(ctx, run.schema, tbl.tbl.id.c_str(), &facts));
    if (facts)
        KT_TRY(KT_vhash__check__varray(ctx, facts, "indexes", &indexes));
    if (indexes)
        KT_TRY(KT_varray__count(ctx, indexes, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *index = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, indexes, n, &index));
        KT_TRY(my_look_at_index(ctx, run, tbl, index));
    }
}

void client_verify__keys(KT_context *ctx, client_verify &run, const client_verify_tbl &tbl)
{
    KT_TRY(my_look_at_keys(ctx, run, tbl));
    if (run.options.rules == TOV_CLIENT_RULES_SERVER)
        KT_TRY(my_look_at_indexes(ctx, run, tbl));
}
