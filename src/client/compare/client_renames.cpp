#include "compare/client_renames.hpp"

#include "kt_folded.hpp"

#define KT_HERE "src/client/compare/client_renames"

// The last part of a name; names with a dot in them are known as a whole.
static std::string_view my_last_part(std::string_view name)
{
    const size_t dot = name.rfind('.');
    return dot == std::string_view::npos ? name : name.substr(dot + 1);
}

static size_t my_find_tbl(const client_content &content, std::string_view name)
{
    for (size_t n = 0; n < content.tbls.size(); n++) {
        if (kt_equal_folded(content.tbls[n].name, name) || kt_equal_folded(content.tbls[n].sqlite_name, name))
            return n;
    }
    return client_nothing;
}

static size_t my_find_col(const client_tbl_content &tbl, std::string_view name)
{
    for (size_t n = 0; n < tbl.cols.size(); n++) {
        if (kt_equal_folded(tbl.cols[n].name, name))
            return n;
    }
    return client_nothing;
}

// A new name may be given without the schema, which then is the old one's.
static size_t my_find_new_tbl(const client_content &content, std::string_view old_name, std::string_view new_name)
{
    const size_t found = my_find_tbl(content, new_name);
    const size_t dot = old_name.rfind('.');
    if (found != client_nothing || dot == std::string_view::npos)
        return found;
    return my_find_tbl(content, std::string(old_name.substr(0, dot + 1)).append(new_name));
}

static void my_read_tbl(KT_context *ctx, const client_comparison &comparison, size_t old_tbl, std::string_view new_name,
                        client_renames &renames)
{
    client_pair pair{old_tbl};
    if (!new_name.empty()) {
        const std::string &old_name = comparison.old_content.tbls[old_tbl].name;
        pair.new_at = my_find_new_tbl(comparison.new_content, old_name, new_name);
        if (pair.new_at == client_nothing)
            KT_FAIL(KT_ERR_NOT_FOUND, "there is no table '%s' in the new schema", std::string(new_name).c_str());
    }
    renames.tbls.push_back(pair);
}

static void my_read_one(KT_context *ctx, const client_comparison &comparison, std::string_view rename,
                        client_renames &renames)
{
    const size_t equals = rename.find('=');
    if (equals == 0 || equals == std::string_view::npos)
        KT_FAIL(KT_ERR_UNEXPECTED_VALUE, "'%s' is not OLD=NEW", std::string(rename).c_str());
    const std::string_view old_name = rename.substr(0, equals);
    const std::string_view new_name = rename.substr(equals + 1);
    const size_t old_tbl = my_find_tbl(comparison.old_content, old_name);
    if (old_tbl != client_nothing)
        return my_read_tbl(ctx, comparison, old_tbl, new_name, renames);
    // A column's name may hold dots as well.
    for (size_t dot = old_name.find('.'); dot != std::string_view::npos; dot = old_name.find('.', dot + 1)) {
        const size_t tbl = my_find_tbl(comparison.old_content, old_name.substr(0, dot));
        const size_t col = tbl == client_nothing
                               ? client_nothing
                               : my_find_col(comparison.old_content.tbls[tbl], old_name.substr(dot + 1));
        if (col != client_nothing) {
            renames.cols.push_back({tbl, col, std::string(new_name)});
            return;
        }
    }
    KT_FAIL(KT_ERR_NOT_FOUND, "there is no table or column '%s' in the old schema", std::string(old_name).c_str());
}

// A column's new name is looked for in the table that its own became.
void client_check_renamed_cols(KT_context *ctx, const client_comparison &comparison, const client_renames &renames)
{
    for (const client_renames::col &rename : renames.cols) {
        for (const client_tbl_pair &pair : comparison.tbls) {
            if (pair.tbl.old_at != rename.old_tbl || !pair.tbl.is_both() || rename.new_name.empty())
                continue;
            const client_tbl_content &tbl = comparison.new_content.tbls[pair.tbl.new_at];
            if (client_find_renamed_col(tbl, rename.new_name) == client_nothing)
                KT_FAIL(KT_ERR_NOT_FOUND, "there is no column '%s' in the new table %s", rename.new_name.c_str(),
                        tbl.name.c_str());
        }
    }
}

void client_read_renames(KT_context *ctx, const tov_client_compare_options &options,
                         const client_comparison &comparison, client_renames &renames)
{
    for (uint32_t n = 0; n < options.rename_count; n++)
        KT_TRY(my_read_one(ctx, comparison, options.renames[n], renames));
}

size_t client_find_renamed_col(const client_tbl_content &tbl, const std::string &new_name)
{
    const size_t whole = my_find_col(tbl, new_name);
    return whole != client_nothing ? whole : my_find_col(tbl, my_last_part(new_name));
}
