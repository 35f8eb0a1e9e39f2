// Identity columns, primary keys and unique keys.
//
// SQLite has one kind of column that numbers its rows, the rowid, and it is always the primary key. An identity column
// becomes it where the server keeps its values unique by themselves; elsewhere it is an ordinary integer. Everything
// that a foreign key may refer to must be a key in SQLite too, so a primary key beside the rowid lives on as a unique
// constraint.
#include "steps/host_import.hpp"

#include "defaults/host_second_default.hpp"
#include "tsql/host_server_spelling.hpp"

#include <algorithm>
#include <string_view>

#define KT_HERE "src/host/steps/host_keys"

const host_column *host_find_unprepared(const std::vector<const host_column *> &cols)
{
    const auto found = std::find_if(cols.begin(), cols.end(), [](const host_column *col) { return !col->prepared; });
    return found == cols.end() ? nullptr : *found;
}

// Whether the key holds in SQLite as it does on the server.
static bool my_is_kept(const host_key &key)
{
    return !key.is_disabled && !key.filter && !host_find_unprepared(key.cols);
}

static bool my_is_kept_on(const host_key &key, const host_column &col)
{
    return my_is_kept(key) && key.cols.size() == 1 && key.cols.front() == &col;
}

// The key that keeps an identity column unique, null when there is none.
static const host_key *my_find_identity_key(const host_table &table, const host_column &col)
{
    if (table.has_pk && my_is_kept_on(table.pk, col))
        return &table.pk;
    for (const host_key &key : table.uniques) {
        if (my_is_kept_on(key, col))
            return &key;
    }
    return nullptr;
}

static void my_report_numbering(KT_context *ctx, host_import &import, const host_table &table, const host_column &col)
{
    const std::string_view seed = col.identity.seed ? col.identity.seed : "1";
    const std::string_view increment = col.identity.increment ? col.identity.increment : "1";
    if (seed == "1" && increment == "1")
        return;
    const std::string host_text = "IDENTITY(" + std::string(seed) + ',' + std::string(increment) + ')';
    KT_TRY(import.findings.add(ctx, "identity-numbering", &table, &col, host_text.c_str(),
                               "SQLite numbers rows from 1, each with one more than the greatest"));
}

static const host_sequence *my_find_sequence(const host_catalogue &catalogue, std::string_view name)
{
    const auto &all = catalogue.sequences;
    const auto found = std::find_if(all.begin(), all.end(), [name](const host_sequence &sequence) {
        return host_same_text(host_bracketed(sequence.schema_name ? sequence.schema_name : "") + '.' +
                                  host_bracketed(sequence.name ? sequence.name : ""),
                              name);
    });
    return found == all.end() ? nullptr : &*found;
}

// The sole column of the primary key that takes its numbers from a sequence, null when there is none.
static host_column *my_find_sequence_key(host_table &table, std::string &expression, std::string_view &sequence)
{
    if (!table.has_pk || table.pk.cols.size() != 1 || !my_is_kept(table.pk))
        return nullptr;
    for (host_column &col : table.cols) {
        if (&col != table.pk.cols.front() || !col.defval || !col.defval->definition || !host_is_rowid_type(col))
            continue;
        expression = host_default_expression(*col.defval);
        return host_is_sequence_default(expression, sequence) ? &col : nullptr;
    }
    return nullptr;
}

// SQLite's own numbering takes the place of the sequence, as it does of an identity.
static void my_choose_sequence(KT_context *ctx, host_import &import, host_table &table)
{
    std::string expression;
    std::string_view name;
    host_column *col = my_find_sequence_key(table, expression, name);
    if (!col)
        return;
    col->rowid_key = &table.pk;
    table.has_rowid = true;
    const host_sequence *sequence = my_find_sequence(import.catalogue, name);
    std::string host_text = "SEQUENCE " + std::string(name);
    if (sequence && sequence->start && sequence->increment)
        host_text += std::string(" START WITH ") + sequence->start + " INCREMENT BY " + sequence->increment;
    KT_TRY(import.findings.add(ctx, "identity-numbering", &table, col, host_text.c_str(),
                               "SQLite numbers the rows of this table by themselves, from 1, each with one more than "
                               "the greatest"));
}

void host_choose_rowid(KT_context *ctx, host_import &import, host_table &table)
{
    for (host_column &col : table.cols) {
        if (!col.is_identity || !col.prepared)
            continue;
        if (!table.has_rowid && host_is_rowid_type(col))
            col.rowid_key = my_find_identity_key(table, col);
        if (col.rowid_key) {
            table.has_rowid = true;
            KT_TRY(my_report_numbering(ctx, import, table, col));
            continue;
        }
        KT_TRY(import.findings.add(ctx, "identity-as-integer", &table, &col, col.system_type,
                                   "kept as an ordinary number that SQLite does not fill in: only a column that is "
                                   "the whole of a key can number the rows"));
    }
    if (!table.has_rowid)
        KT_TRY(my_choose_sequence(ctx, import, table));
}

// Reports a key that cannot be carried over, and says whether it was one. One with a filter is an index, and reported
// with these.
static void my_report_left_out(KT_context *ctx, host_import &import, const host_table &table, const char *kind,
                               const host_key &key, bool &left_out)
{
    const host_column *unprepared = host_find_unprepared(key.cols);
    const std::string host_text = host_key_text(kind, key);
    if (key.is_disabled)
        KT_TRY(import.findings.add(ctx, "key-disabled", &table, nullptr, host_text.c_str(),
                                   "left out: it is disabled on the server"));
    else if (unprepared)
        KT_TRY(import.findings.add(ctx, "key-unprepared-column", &table, unprepared, host_text.c_str(),
                                   "left out: it uses a column that is left out of the table"));
    left_out = !my_is_kept(key);
}

std::string host_constraint_id(host_table &table, const char *name, const char *prefix,
                               const std::vector<const host_column *> &cols)
{
    if (name)
        return name;
    std::string id = prefix + ('_' + table.sqlite_name);
    for (const host_column *col : cols)
        id += std::string("_") + col->sqlite_name;
    const std::string first_choice = id;
    for (size_t n = 2; !table.constraint_ids.insert(id).second; n++)
        id = first_choice + '_' + std::to_string(n);
    return id;
}

static void my_add_unique(KT_context *ctx, host_import &import, host_table &table, const host_key &key,
                          const char *prefix)
{
    const std::string id = host_constraint_id(table, key.name, prefix, key.cols);
    for (const host_column *col : key.cols)
        KT_TRY(
            tov_schema__add_to_unique_constraint(ctx, import.schema, table.id_text.c_str(), col->id_text, id.c_str()));
    table.parent_keys.push_back(key.cols);
    import.compared_in_keys.insert(key.cols.begin(), key.cols.end());
}

// The server lets a unique key hold one NULL, SQLite any number. One finding for a key: it names the column where only
// one may be NULL.
static void my_report_nullable(KT_context *ctx, host_import &import, const host_table &table, const host_key &key)
{
    const auto is_nullable = [](const host_column *col) { return col->is_nullable; };
    const auto count = std::count_if(key.cols.begin(), key.cols.end(), is_nullable);
    if (count == 0)
        return;
    const host_column *first = *std::find_if(key.cols.begin(), key.cols.end(), is_nullable);
    KT_TRY(import.findings.add(ctx, "unique-nullable", &table, count == 1 ? first : nullptr,
                               host_key_text(key.is_index ? "UNIQUE INDEX" : "UNIQUE", key).c_str(),
                               "kept: SQLite treats NULLs as distinct and allows any number of them, unless the "
                               "database is created with the server's rules, which treat them as equal"));
}

static void my_add_pk(KT_context *ctx, host_import &import, host_table &table)
{
    const host_key &pk = table.pk;
    bool left_out = false;
    KT_TRY(my_report_left_out(ctx, import, table, "PRIMARY KEY", pk, left_out));
    if (left_out)
        return;
    KT_TRY(tov_schema__set_pk_name(ctx, import.schema, table.id_text.c_str(), pk.name));
    for (const host_column *col : pk.cols)
        KT_TRY(tov_schema__add_to_pk(ctx, import.schema, table.id_text.c_str(), col->id_text));
    if (!table.has_rowid || (pk.cols.size() == 1 && pk.cols.front()->rowid_key)) {
        table.parent_keys.push_back(pk.cols);
        import.compared_in_keys.insert(pk.cols.begin(), pk.cols.end());
        return;
    }
    KT_TRY(my_add_unique(ctx, import, table, pk, "PK"));
    KT_TRY(import.findings.add(ctx, "pk-as-unique", &table, nullptr, host_key_text("PRIMARY KEY", pk).c_str(),
                               "kept as a unique constraint: in SQLite the table's primary key is its identity "
                               "column"));
}

void host_add_keys(KT_context *ctx, host_import &import, host_table &table)
{
    if (table.has_pk)
        KT_TRY(my_add_pk(ctx, import, table));
    for (const host_key &key : table.uniques) {
        bool left_out = false;
        KT_TRY(my_report_left_out(ctx, import, table, key.is_index ? "UNIQUE INDEX" : "UNIQUE", key, left_out));
        if (left_out)
            continue;
        KT_TRY(my_add_unique(ctx, import, table, key, "UQ"));
        KT_TRY(my_report_nullable(ctx, import, table, key));
    }
}
