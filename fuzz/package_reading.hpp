// What must hold of any package: it is read or refused in order, a catalogue that comes out of it is whole, and so is
// the database that is created of it.
#pragma once

#include "package/host_package.hpp"
#include "watched_import.hpp"

#include "tov_row_parts.h"

#define KT_HERE "fuzz"

inline void check_key(const host_key &key, bool may_be_nameless)
{
    check(key.name || (may_be_nameless && key.is_system_named), "a key without a name");
    check(key.descending.size() == key.col_names.size(), "directions");
    for (const char *col : key.col_names)
        check(col != nullptr, "a key's column");
}

inline void check_col(const host_column &col, int64_t id)
{
    check(col.id == id && col.name && *col.name, "a column's name and id");
    check(col.is_computed || col.user_type, "a column's type");
    check(!col.is_identity || (col.identity.seed && col.identity.increment), "an identity's numbers");
    check(!col.defval || col.defval->name || col.defval->is_system_named, "a default's name");
    check((col.collation == nullptr) == (col.comparison_style < 0), "a collation's style");
}

inline void check_table(const host_table &table, int64_t id)
{
    check(table.id == id && table.schema_name && table.name && !table.label.empty(), "a table's name and id");
    for (size_t n = 0; n < table.cols.size(); n++)
        check_col(table.cols[n], static_cast<int64_t>(n + 1));
    if (table.has_pk)
        check_key(table.pk, true);
    for (const host_key &key : table.uniques)
        check_key(key, true);
    for (const host_foreignkey &fk : table.fks) {
        check(fk.ref_schema && fk.ref_table && fk.on_delete && fk.on_update, "what a foreign key refers to");
        check(fk.name || fk.is_system_named, "a foreign key's name");
        for (const auto &[col, ref_col] : fk.col_names)
            check(col && ref_col, "a foreign key's columns");
    }
    for (const host_check &each : table.checks)
        check(each.name || each.is_system_named, "a check's name");
}

inline void take_rows(KT_context *, void *data, const tov_host_row_part *part, const char *, size_t size)
{
    auto &taken = *static_cast<uint64_t *>(data);
    check(part->schema_name && part->tbl_name, "a part's table");
    taken += size;
    if (size > 0)
        return;
    check(taken == part->size, "a part's size");
    taken = 0;
}

inline void read_watched(std::string_view bytes)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    {
        host_catalogue catalogue;
        host_findings findings{ctx};
        kt_contain(ctx, [&] { host_read_package(ctx, bytes, findings, catalogue); });
        const bool is_read = ended_well(ctx);
        for (size_t n = 0; is_read && n < catalogue.tables.size(); n++)
            check_table(catalogue.tables[n], static_cast<int64_t>(n + 1));
        uint64_t taken = 0;
        tov_host__read_row_parts(ctx, bytes.data(), bytes.size(), take_rows, &taken);
        ended_well(ctx);
        int64_t count = 0;
        tov_host__count_packed_rows(ctx, bytes.data(), bytes.size(), &count);
        ended_well(ctx);
    }
    tov_host_options options{};
    options.source = TOV_HOST_SOURCE_PACKAGE;
    import_watched(ctx, {{"source.dacpac", bytes.data(), bytes.size()}}, options);
    KT_context__free(ctx);
}
