// The database that the scripts built becomes catalogue records.
#include "script/host_script_reader.hpp"

#include "records/host_declared_type.hpp"

#include <algorithm>
#include <array>

#define KT_HERE "src/host/script/host_script_catalogue"

namespace {

// Collation, code page and comparison style, worked out once for each name.
struct host_collations {
    host_script_state &state;
    std::unordered_map<std::string_view, host_column> known;

    void set(const char *collation, host_column &col)
    {
        if (!collation || !my_is_text(col))
            return;
        const host_column &sample = find(collation);
        col.collation = sample.collation;
        col.code_page = sample.code_page;
        col.comparison_style = sample.comparison_style;
    }

  private:
    static bool my_is_text(const host_column &col)
    {
        static constexpr std::array<std::string_view, 6> texts{"nvarchar", "varchar", "nchar", "char", "ntext", "text"};
        return col.system_type && std::find(texts.begin(), texts.end(), col.system_type) != texts.end();
    }
    const host_column &find(const char *collation)
    {
        auto [found, is_new] = known.try_emplace(collation);
        if (is_new) {
            found->second.system_type = "nvarchar";
            host_set_collation(collation, found->second);
        }
        return found->second;
    }
};

} // namespace

static void my_add_columns(host_collations &collations, host_script_table &from, int64_t &next_id, host_table &table)
{
    table.cols.reserve(from.cols.size());
    for (host_script_column *col : from.cols) {
        host_column &record = table.cols.emplace_back(*col->record);
        record.name = col->name;
        record.defval = col->defval;
        record.id = static_cast<int64_t>(table.cols.size());
        collations.set(col->collation ? col->collation : collations.state.collation, record);
        if (record.defval && record.defval->id == 0)
            record.defval->id = next_id++;
    }
}

static std::vector<const char *> my_names(const std::vector<const host_script_column *> &cols)
{
    std::vector<const char *> names;
    names.reserve(cols.size());
    for (const host_script_column *col : cols)
        names.push_back(col->name);
    return names;
}

static void my_fill_index(const host_script_key &from, host_index &index)
{
    index.name = from.name;
    index.is_disabled = from.is_disabled;
    index.is_clustered = from.is_clustered;
    index.kind = from.index_kind;
    index.filter = from.filter;
    index.col_names = my_names(from.cols);
    index.descending = from.descending;
    index.included_names = my_names(from.included);
}

static void my_fill_key(const host_script_key &from, host_key &key)
{
    my_fill_index(from, key);
    key.is_system_named = !from.name;
    key.is_index = from.kind == host_script_key_kind::unique_index;
}

static void my_add_keys(const host_script_table &from, host_table &table)
{
    for (const host_script_key &key : from.keys) {
        switch (key.kind) {
        case host_script_key_kind::primary:
            table.has_pk = true;
            my_fill_key(key, table.pk);
            break;
        case host_script_key_kind::unique:
        case host_script_key_kind::unique_index:
            my_fill_key(key, table.uniques.emplace_back());
            break;
        case host_script_key_kind::index:
            my_fill_index(key, table.indexes.emplace_back());
            break;
        }
    }
}

// What was not there yet when the reference was made is there now, or nowhere.
static void my_find_parent(host_script_session &session, const host_script_table &table, host_script_fk &fk)
{
    host_script_state &state = session.state;
    if (!fk.parent)
        fk.parent = state.find_table(fk.parent_schema, fk.parent_name);
    if (!fk.parent || !fk.parent_cols.empty())
        return;
    if (fk.parent_col_names.empty()) {
        if (const host_script_key *pk = fk.parent->find_pk())
            fk.parent_cols = pk->cols;
        return;
    }
    for (const char *name : fk.parent_col_names) {
        if (const host_script_column *col = fk.parent->find_col(name))
            fk.parent_cols.push_back(col);
        else if (session.errors.size() < 50)
            session.errors.push_back(host_place_of(table) + ": table " + table.schema + '.' + table.name +
                                     " refers to column " + name + ", which " + fk.parent->schema + '.' +
                                     fk.parent->name + " lacks");
    }
    session.error_count += fk.parent_col_names.size() - fk.parent_cols.size();
}

// A schema as it was made, or as it was first written when the script does not make it.
static const char *my_schema(host_script_state &state, const char *name)
{
    return state.schemas.try_emplace(host_folded(name), name).first->second;
}

static void my_add_fks(host_script_session &session, host_script_table &from, int64_t &next_id, host_table &table)
{
    for (host_script_fk &fk : from.fks) {
        host_foreignkey &record = table.fks.emplace_back(std::move(fk.record));
        my_find_parent(session, from, fk);
        record.id = next_id++;
        const bool is_there = fk.parent && !fk.parent->is_opaque;
        record.ref_schema = my_schema(session.state, is_there ? fk.parent->schema : fk.parent_schema);
        record.ref_table = is_there ? fk.parent->name : fk.parent_name;
        for (size_t n = 0; n < fk.cols.size(); n++) {
            const char *ref_col = n < fk.parent_cols.size() ? fk.parent_cols[n]->name : "";
            if (fk.parent_cols.empty() && n < fk.parent_col_names.size())
                ref_col = fk.parent_col_names[n];
            record.col_names.emplace_back(fk.cols[n]->name, ref_col);
        }
    }
}

static void my_add_table(host_script_session &session, host_collations &collations, host_script_table &from,
                         int64_t &next_id, host_catalogue &catalogue)
{
    host_table &table = catalogue.tables.emplace_back();
    table.cols = host_columns{host_arena_allocator<host_column>{catalogue.col_records}};
    table.id = static_cast<int64_t>(catalogue.tables.size());
    table.schema_name = my_schema(session.state, from.schema);
    table.name = from.name;
    table.description = from.description;
    constexpr int64_t history_table = 1, with_history = 2;
    table.temporal_type = from.is_history ? history_table : from.is_temporal ? with_history : 0;
    table.is_memory_optimized = from.is_memory_optimized;
    table.is_external = from.is_external;
    table.is_node = from.is_node;
    table.is_edge = from.is_edge;
    my_add_columns(collations, from, next_id, table);
    my_add_keys(from, table);
    for (const host_script_check &check : from.checks)
        table.checks.push_back(check.record);
    my_add_fks(session, from, next_id, table);
}

static void my_report_opaque(KT_context *ctx, host_script_session &session, const host_script_table &table)
{
    const std::string text = std::string("SELECT ... INTO ") + table.schema + '.' + table.name;
    KT_TRY(session.findings.add_at(ctx, "statement-not-read", host_place_of(table).c_str(), text.c_str(),
                                   "not followed: the columns of the table that it makes are those of a query"));
}

void host_fill_catalogue(host_script_session &session, host_catalogue &catalogue)
{
    KT_context *ctx = session.ctx;
    host_script_state &state = session.state;
    host_collations collations{state, {}};
    catalogue.name = state.database.empty() ? nullptr : state.keep(state.database);
    catalogue.collation = state.collation;
    catalogue.code_page = host_code_page(state.collation);
    catalogue.tables.reserve(state.tables.size());
    // Default objects have ids of their own already; those of constraints and references follow.
    int64_t next_id = state.next_id + static_cast<int64_t>(state.tables.size());
    for (const auto &table : state.tables) {
        if (table->is_opaque)
            KT_TRY(my_report_opaque(ctx, session, *table));
        else
            my_add_table(session, collations, *table, next_id, catalogue);
    }
    for (const auto &[key, sequence] : state.sequences)
        catalogue.sequences.push_back(sequence);
    std::sort(catalogue.sequences.begin(), catalogue.sequences.end(), [](const auto &a, const auto &b) {
        return std::string_view(a.schema_name) != b.schema_name ? std::string_view(a.schema_name) < b.schema_name
                                                                : std::string_view(a.name) < b.name;
    });
}
