#include "migrate/client_carried.hpp"

#include <algorithm>

#define KT_HERE "src/client/migrate/client_carried"

// Values of a type of a program library are nothing to another one.
static bool my_is_another_library(const client_row_col &old_col, const client_part &old_part,
                                  const client_row_col &new_col, const client_part &new_part)
{
    const client_fact *old_type = client_find_fact(old_part.facts, client_fact_kind::type);
    const client_fact *new_type = client_find_fact(new_part.facts, client_fact_kind::type);
    return old_col.type.base == client_base::clr && new_col.type.base == client_base::clr && old_type && new_type &&
           old_type->meaning != new_type->meaning;
}

static void my_carry(const client_changed_tbl &changed, const client_pair &pair, client_carried_tbl &carried)
{
    const client_part &old_part = changed.old_tbl.cols[pair.old_at];
    const client_part &new_part = changed.new_tbl.cols[pair.new_at];
    const client_row_col *old_col = client_find_stored_col(carried.old_tbl, old_part.id.c_str());
    const client_row_col *new_col = client_find_stored_col(carried.new_tbl, new_part.id.c_str());
    if (old_col && !new_col)
        carried.dropped.push_back(&old_part);
    if (!old_col || !new_col)
        return;
    client_value_change change = client_changed_value(old_col->type, new_col->type, client_quoted(new_col->name));
    if (my_is_another_library(*old_col, old_part, *new_col, new_part))
        change = {client_carrying::impossible};
    carried.cols.push_back({old_col, new_col, changed.old_tbl.name + '.' + old_part.name, std::move(change)});
}

void client_read_carried(KT_context *ctx, const client_migration &migration, const client_changed_tbl &changed,
                         client_carried_tbl &carried)
{
    KT_TRY(client_read_row_tbl(ctx, migration.old_schema, changed.old_tbl.id.c_str(), carried.old_tbl));
    KT_TRY(client_read_row_tbl(ctx, migration.new_schema, changed.new_tbl.id.c_str(), carried.new_tbl));
    for (const client_pair &pair : changed.pair.cols) {
        const client_part *old_part = pair.old_at == client_nothing ? nullptr : &changed.old_tbl.cols[pair.old_at];
        if (pair.is_both())
            my_carry(changed, pair, carried);
        else if (old_part && client_find_stored_col(carried.old_tbl, old_part->id.c_str()))
            carried.dropped.push_back(old_part);
    }
    for (const client_row_col &col : carried.new_tbl.cols) {
        const bool is_carried = std::any_of(carried.cols.begin(), carried.cols.end(), [&](const auto &other) {
            return other.new_col == &col && other.change.how != client_carrying::impossible;
        });
        if (col.stored && !is_carried)
            carried.new_cols.push_back(&col);
    }
}
