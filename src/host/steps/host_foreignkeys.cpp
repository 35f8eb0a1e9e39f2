// Foreign keys.
//
// SQLite takes a foreign key only when the referenced columns are together a primary or unique key; otherwise every
// write to the table fails. So a key is left out, with its full text, when what it refers to did not come over.
#include "steps/host_import.hpp"

#include <algorithm>
#include <string_view>

#define KT_HERE "src/host/steps/host_foreignkeys"

// What takes part in deciding about one key: its table, and the column that already refers to another, if any.
struct host_fk_problem {
    host_finding_code code;
    const host_column *col = nullptr;
    std::string reason;
};

static bool my_same_set(const std::vector<const host_column *> &a, const std::vector<const host_column *> &b)
{
    return a.size() == b.size() && std::is_permutation(a.begin(), a.end(), b.begin());
}

static bool my_is_parent_key(const host_foreignkey &fk)
{
    const auto &keys = fk.ref_tbl->parent_keys;
    return std::any_of(keys.begin(), keys.end(), [&fk](const auto &key) { return my_same_set(key, fk.ref_cols); });
}

// Whether the two say the same: the same columns in pairs, whatever their order, and the same actions.
static bool my_is_duplicate(const host_foreignkey &a, const host_foreignkey &b)
{
    using pair = std::pair<const host_column *, const host_column *>;
    const auto pairs = [](const host_foreignkey &fk) {
        std::vector<pair> all;
        for (size_t n = 0; n < fk.cols.size(); n++)
            all.emplace_back(fk.cols[n], fk.ref_cols[n]);
        std::sort(all.begin(), all.end());
        return all;
    };
    return a.ref_tbl == b.ref_tbl && std::string_view(a.on_delete) == b.on_delete &&
           std::string_view(a.on_update) == b.on_update && a.cols.size() == b.cols.size() && pairs(a) == pairs(b);
}

static bool my_is_skipped(const host_catalogue &catalogue, const host_foreignkey &fk)
{
    const std::string label =
        std::string(fk.ref_schema ? fk.ref_schema : "") + '.' + (fk.ref_table ? fk.ref_table : "");
    return catalogue.skipped_labels.count(host_folded(label)) != 0;
}

// Why a key is left out; the code stays null when it is not.
static host_fk_problem my_find_problem(const host_import &import, const host_foreignkey &fk,
                                       const std::vector<const host_foreignkey *> &kept)
{
    if (fk.is_disabled)
        return {"fk-disabled", nullptr, "left out: it is disabled on the server"};
    if (!fk.ref_tbl && my_is_skipped(import.catalogue, fk))
        return {"fk-parent-skipped", nullptr, "left out: the table it refers to was not to be imported"};
    if (!fk.ref_tbl)
        return {"fk-parent-missing", nullptr, "left out: the table it refers to is not in the source"};
    if (fk.ref_tbl->is_left_out)
        return {"fk-parent-missing", nullptr, "left out: the table it refers to is left out"};
    if (const host_column *col = host_find_unprepared(fk.cols))
        return {"fk-unprepared-column", col, "left out: it uses a column that is left out of the table"};
    if (const host_column *col = host_find_unprepared(fk.ref_cols))
        return {"fk-unprepared-column", nullptr,
                "left out: it refers to column " + fk.ref_tbl->label + '.' + col->name + ", which is left out"};
    if (!my_is_parent_key(fk))
        return {"fk-parent-key-missing", nullptr,
                "left out: the columns it refers to are not a primary or unique key in SQLite"};
    for (const host_foreignkey *other : kept) {
        if (my_is_duplicate(fk, *other))
            return {"fk-duplicate", nullptr,
                    "left out: it says the same as " + (other->name ? other->name : host_foreignkey_text(*other))};
    }
    return {};
}

// A column can carry one reference of its own. It cannot carry one to its own table where a rowid numbers the rows.
static bool my_fits_column(const host_table &table, const host_foreignkey &fk,
                           const std::vector<const host_column *> &taken)
{
    return fk.cols.size() == 1 && std::find(taken.begin(), taken.end(), fk.cols.front()) == taken.end() &&
           !(fk.ref_tbl == &table && table.has_rowid);
}

static void my_add_to_column(KT_context *ctx, host_import &import, const host_table &table, const host_foreignkey &fk)
{
    KT_TRY(tov_schema__set_colcon_fk(ctx, import.schema, table.id_text.c_str(), fk.cols.front()->id_text, 1,
                                     fk.id_text.c_str(), fk.name, fk.ref_tbl->id_text.c_str(),
                                     fk.ref_cols.front()->id_text, 0, fk.on_delete, fk.on_update, 0));
}

// Who lists the keys that refer to a table asks each key of a table for its name, so one that has none gets one.
static void my_add_to_table(KT_context *ctx, host_import &import, host_table &table, const host_foreignkey &fk)
{
    const std::string name = host_constraint_id(table, fk.name, "FK", fk.cols);
    KT_TRY(tov_schema__create_foreignkey(ctx, import.schema, fk.id_text.c_str(), name.c_str(), table.id_text.c_str(),
                                         fk.ref_tbl->id_text.c_str(), 0, fk.on_delete, fk.on_update, 0));
    for (size_t n = 0; n < fk.cols.size(); n++)
        KT_TRY(tov_schema__add_to_foreignkey(ctx, import.schema, table.id_text.c_str(), fk.id_text.c_str(),
                                             fk.cols[n]->id_text, fk.ref_cols[n]->id_text));
}

void host_add_foreignkeys(KT_context *ctx, host_import &import, host_table &table)
{
    std::vector<const host_foreignkey *> kept;
    std::vector<const host_column *> taken;
    for (const host_foreignkey &fk : table.fks) {
        const host_fk_problem problem = my_find_problem(import, fk, kept);
        if (problem.code.kind) {
            KT_TRY(import.findings.add(ctx, problem.code, &table, problem.col, host_foreignkey_text(fk).c_str(),
                                       problem.reason));
            continue;
        }
        if (my_fits_column(table, fk, taken)) {
            KT_TRY(my_add_to_column(ctx, import, table, fk));
            taken.push_back(fk.cols.front());
        } else {
            KT_TRY(my_add_to_table(ctx, import, table, fk));
        }
        kept.push_back(&fk);
        if (fk.is_not_trusted)
            KT_TRY(import.findings.add(ctx, "fk-untrusted", &table, nullptr, host_foreignkey_text(fk).c_str(),
                                       "kept: the server has not checked the rows that are there, so some may break "
                                       "it"));
    }
}
