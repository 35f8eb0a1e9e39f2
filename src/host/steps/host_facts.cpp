// What the server knows and the schema has no use for, kept beside it in the document: docs/document.md describes the
// members. Rules that the client adds, and rows that are converted, need the server's own types.
//
// A member that says nothing (false, zero, absent) is left out.
#include "steps/host_import.hpp"

#include "steps/host_bound_default.hpp"
#include "steps/host_members.hpp"

#include <algorithm>
#include <array>
#include <string_view>

#define KT_HERE "src/host/steps/host_facts"

static constexpr int64_t facts_version = 1;

static void my_add_number(KT_context *ctx, KT_vhash *map, const char *key, int64_t number)
{
    if (number != 0)
        KT_TRY(KT_vhash__add__int64(ctx, map, key, number));
}

// Which sizes a declaration of a type may give.
struct host_sizes {
    std::string_view type;
    bool length;
    bool precision;
    bool scale;
};

static constexpr host_sizes sized_types[] = {
    {"nvarchar", true, false, false},  {"varchar", true, false, false},        {"nchar", true, false, false},
    {"char", true, false, false},      {"varbinary", true, false, false},      {"binary", true, false, false},
    {"decimal", false, true, true},    {"numeric", false, true, true},         {"time", false, false, true},
    {"datetime2", false, false, true}, {"datetimeoffset", false, false, true},
};

static void my_add_sizes(KT_context *ctx, KT_vhash *facts, const host_column &col, std::string_view type)
{
    for (const host_sizes &sizes : sized_types) {
        if (sizes.type != type)
            continue;
        if (sizes.length)
            KT_TRY(KT_vhash__add__int64(ctx, facts, "length", col.max_length));
        if (sizes.precision)
            KT_TRY(KT_vhash__add__int64(ctx, facts, "precision", col.precision));
        if (sizes.scale)
            KT_TRY(KT_vhash__add__int64(ctx, facts, "scale", col.scale));
    }
}

// The type without aliases in the server's catalogue's spelling, and the alias it was declared with.
static void my_add_type(KT_context *ctx, KT_vhash *facts, const host_column &col)
{
    const std::string written = host_folded(host_type_name(col));
    const std::string type = written == "rowversion" ? "timestamp" : written;
    KT_TRY(KT_vhash__add__string__sz(ctx, facts, "type", type.c_str()));
    const std::string user_type = col.user_type ? col.user_type : type;
    const std::string folded = host_folded(user_type);
    if (folded != type && folded != "rowversion") {
        const std::string qualified = (col.user_type_schema ? std::string(col.user_type_schema) + '.' : "") + user_type;
        KT_TRY(KT_vhash__add__string__sz(ctx, facts, "user_type", qualified.c_str()));
    }
    KT_TRY(my_add_sizes(ctx, facts, col, type));
}

static void my_add_identity(KT_context *ctx, KT_vhash *facts, const host_column &col)
{
    if (!col.is_identity)
        return;
    KT_varray *numbering = nullptr;
    KT_TRY(KT_vhash__addnew__varray(ctx, facts, "identity", &numbering));
    KT_TRY(KT_varray__append__string__sz(ctx, numbering, col.identity.seed ? col.identity.seed : "1"));
    KT_TRY(KT_varray__append__string__sz(ctx, numbering, col.identity.increment ? col.identity.increment : "1"));
}

static void my_add_col(KT_context *ctx, KT_vhash *facts, const host_column &col)
{
    KT_TRY(KT_vhash__add__string__sz(ctx, facts, "name", col.name));
    KT_TRY(host_add_text(ctx, facts, "id", col.prepared ? col.id_text : nullptr));
    KT_TRY(my_add_type(ctx, facts, col));
    KT_TRY(host_add_text(ctx, facts, "collation", col.collation));
    KT_TRY(my_add_number(ctx, facts, "code_page", col.collation ? col.code_page : 0));
    KT_TRY(host_add_flag(ctx, facts, "nullable", col.is_nullable));
    KT_TRY(my_add_identity(ctx, facts, col));
    KT_TRY(host_add_text(ctx, facts, "computed", col.is_computed ? col.computed : nullptr));
    KT_TRY(my_add_number(ctx, facts, "generated", col.generated_always_type));
    KT_TRY(host_add_flag(ctx, facts, "hidden", col.is_hidden));
    if (col.defval && col.defval->definition)
        KT_TRY(host_add_text(ctx, facts, "default", host_default_expression(*col.defval).c_str()));
    KT_TRY(host_add_flag(ctx, facts, "rowguidcol", col.is_rowguidcol));
    KT_TRY(host_add_flag(ctx, facts, "sparse", col.is_sparse));
    KT_TRY(host_add_text(ctx, facts, "description", col.description));
}

static void my_add_cols(KT_context *ctx, KT_vhash *facts, const host_table &table)
{
    KT_varray *cols = nullptr;
    KT_TRY(KT_vhash__addnew__varray(ctx, facts, "cols", &cols));
    for (const host_column &col : table.cols) {
        KT_vhash *one = nullptr;
        KT_TRY(KT_varray__appendnew__vhash(ctx, cols, &one));
        KT_TRY(my_add_col(ctx, one, col));
    }
}

void host_add_table_facts(KT_context *ctx, host_import &import, const host_table &table)
{
    KT_vhash *facts = nullptr;
    KT_TRY(tov_schema__ensure_tbl_server(ctx, import.schema, table.id_text.c_str(), &facts));
    KT_TRY(host_add_text(ctx, facts, "schema", table.schema_name));
    KT_TRY(host_add_text(ctx, facts, "name", table.name));
    KT_TRY(host_add_text(ctx, facts, "description", table.description));
    KT_TRY(my_add_number(ctx, facts, "temporal_type", table.temporal_type));
    if (table.row_count >= 0)
        KT_TRY(KT_vhash__add__int64(ctx, facts, "row_count", table.row_count));
    KT_TRY(my_add_cols(ctx, facts, table));
}

static void my_add_sequences(KT_context *ctx, KT_vhash *facts, const host_catalogue &catalogue)
{
    KT_varray *list = nullptr;
    if (catalogue.sequences.empty())
        return;
    KT_TRY(KT_vhash__addnew__varray(ctx, facts, "sequences", &list));
    for (const host_sequence &sequence : catalogue.sequences) {
        KT_vhash *one = nullptr;
        KT_TRY(KT_varray__appendnew__vhash(ctx, list, &one));
        KT_TRY(host_add_text(ctx, one, "schema", sequence.schema_name));
        KT_TRY(host_add_text(ctx, one, "name", sequence.name));
        KT_TRY(host_add_text(ctx, one, "type", sequence.system_type));
        KT_TRY(host_add_text(ctx, one, "start", sequence.start));
        KT_TRY(host_add_text(ctx, one, "increment", sequence.increment));
    }
}

void host_add_database_facts(KT_context *ctx, host_import &import)
{
    const host_catalogue &catalogue = import.catalogue;
    KT_vhash *facts = nullptr;
    KT_TRY(tov_schema__ensure_server(ctx, import.schema, &facts));
    KT_TRY(KT_vhash__add__int64(ctx, facts, "version", facts_version));
    KT_TRY(host_add_text(ctx, facts, "database", catalogue.name));
    KT_TRY(host_add_text(ctx, facts, "collation", catalogue.collation));
    KT_TRY(my_add_number(ctx, facts, "code_page", catalogue.code_page));
    KT_TRY(my_add_sequences(ctx, facts, catalogue));
}
