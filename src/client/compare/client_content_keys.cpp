// Keys of a table, and what the readers of its other parts need to name its columns.
#include "compare/client_content_parts.hpp"
#include "kt_folded.hpp"

#define KT_HERE "src/client/compare/client_content_keys"

static std::string my_name_of(const client_tbl_reading &reading, const char *col_id)
{
    const auto known = reading.col_names.find(kt_folded(col_id));
    return known == reading.col_names.end() ? col_id : known->second;
}

static std::string my_renamed(const client_tbl_reading &reading, const std::string &col_name)
{
    const client_name_meaning rename = reading.names();
    const std::string folded = kt_folded(col_name);
    return rename ? rename(folded) : folded;
}

void client_find_col_names(KT_context *ctx, const client_tbl_reading &reading, const KT_varray *ids,
                           std::vector<std::string> &names)
{
    uint32_t count = 0;
    if (ids)
        KT_TRY(KT_varray__count(ctx, ids, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_TRY(KT_varray__get__sz(ctx, ids, n, &id));
        names.push_back(my_name_of(reading, id));
    }
}

static bool my_is_set(const KT_variant *flag)
{
    return flag->type == KT_VARIANT_BOOL && flag->as.boolean;
}

// A comma may be part of a name, a line end may not.
void client_add_cols(KT_context *ctx, const client_tbl_reading &reading, const std::vector<std::string> &names,
                     const KT_varray *descending, std::vector<client_fact> &facts, client_fact_kind kind)
{
    std::string shown;
    std::string meaning;
    uint32_t flag_count = 0;
    if (descending)
        KT_TRY(KT_varray__count(ctx, descending, &flag_count));
    for (size_t n = 0; n < names.size(); n++) {
        const KT_variant *flag = nullptr;
        if (n < flag_count)
            KT_TRY(KT_varray__get_nth(ctx, descending, static_cast<uint32_t>(n), &flag));
        const char *order = flag && my_is_set(flag) ? " DESC" : "";
        shown += (n ? ", " : "") + names[n] + order;
        meaning += my_renamed(reading, names[n]) + '\n' + order + '\n';
    }
    client_add_fact(facts, kind, shown, meaning);
}

// The columns referred to, by name; those of the primary key where the key names none.
static void my_ref_names(KT_context *ctx, const client_tbl_reading &reading, const char *ref_tbl_id,
                         const KT_varray *ids, std::vector<std::string> &names)
{
    uint32_t count = 0;
    uint32_t pk_count = 0;
    KT_TRY(KT_varray__count(ctx, ids, &count));
    if (count == 0)
        KT_TRY(tov_schema__count_pk_cols(ctx, reading.schema, ref_tbl_id, &pk_count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        const char *name = nullptr;
        KT_bool has = 0;
        KT_TRY(KT_varray__get__sz(ctx, ids, n, &id));
        KT_TRY(tov_schema__has_col_id(ctx, reading.schema, ref_tbl_id, id, &has));
        if (has)
            KT_TRY(tov_schema__get_col_name(ctx, reading.schema, ref_tbl_id, id, &name));
        names.emplace_back(name ? name : id);
    }
    for (uint32_t n = 0; n < pk_count; n++) {
        const char *name = nullptr;
        KT_TRY(tov_schema__get_nth_pk_col(ctx, reading.schema, ref_tbl_id, n, nullptr, &name));
        names.emplace_back(name ? name : "");
    }
}

static std::string my_joined(const std::vector<std::string> &names)
{
    std::string text;
    for (const std::string &name : names)
        text += (text.empty() ? "" : ", ") + name;
    return text;
}

static const std::string *my_find(const std::map<std::string, std::string> &names, const std::string &name)
{
    const auto found = names.find(name);
    return found == names.end() ? nullptr : &found->second;
}

// Names of the other schema's where it has others.
static std::string my_target_meaning(const client_renaming &renaming, const std::string &tbl_id,
                                     const std::string &tbl_name, const std::vector<std::string> &cols)
{
    const std::string *tbl = my_find(renaming.tbls, tbl_id);
    const auto renamed = renaming.cols.find(tbl_id);
    std::string meaning = tbl ? *tbl : kt_folded(tbl_name);
    for (const std::string &col : cols) {
        const std::string folded = kt_folded(col);
        const std::string *name = renamed == renaming.cols.end() ? nullptr : my_find(renamed->second, folded);
        meaning += '\n' + (name ? *name : folded);
    }
    return meaning;
}

static void my_add_target(KT_context *ctx, const client_tbl_reading &reading, const KT_vhash *key, client_part &part)
{
    const char *ref_tbl_id = nullptr;
    const char *tbl_name = nullptr;
    KT_varray *ids = nullptr;
    KT_bool has = 0;
    std::vector<std::string> cols;
    KT_TRY(KT_vhash__get__sz(ctx, key, "ref-tbl", &ref_tbl_id));
    KT_TRY(KT_vhash__get__varray(ctx, key, "ref-cols", &ids));
    KT_TRY(tov_schema__has_tbl_id(ctx, reading.schema, ref_tbl_id, &has));
    if (has) {
        KT_TRY(tov_schema__get_tbl_name(ctx, reading.schema, ref_tbl_id, &tbl_name));
        KT_TRY(my_ref_names(ctx, reading, ref_tbl_id, ids, cols));
    }
    const std::string name = tbl_name ? tbl_name : ref_tbl_id;
    client_add_fact(part.facts, client_fact_kind::refers_to, name + " (" + my_joined(cols) + ')',
                    my_target_meaning(reading.renaming, kt_folded(ref_tbl_id), name, cols));
}

static void my_add_reference(KT_context *ctx, const client_tbl_reading &reading, const KT_vhash *key, client_part &part)
{
    KT_TRY(my_add_target(ctx, reading, key, part));
    KT_TRY(client_add_text_of(ctx, key, "on-delete", part.facts, client_fact_kind::on_delete));
    KT_TRY(client_add_text_of(ctx, key, "on-update", part.facts, client_fact_kind::on_update));
    KT_TRY(client_add_flag_of(ctx, key, "deferred", part.facts, client_fact_kind::deferred));
    for (client_fact &fact : part.facts) {
        if (fact.kind == client_fact_kind::on_delete || fact.kind == client_fact_kind::on_update)
            fact.meaning = kt_folded(fact.meaning);
    }
}

namespace {

// A kind of key: what lists of keys call it, and what the names that imports make for it begin with.
struct key_kind {
    std::string_view word;
    client_part_kind kind;
    const char *letters;
    const char *name; // the member that has its name
};

} // namespace

static constexpr key_kind key_kinds[] = {
    {"primary", client_part_kind::primary_key, "PK", "name"},
    {"unique", client_part_kind::unique_key, "UQ", "id"},
    {"foreign", client_part_kind::foreign_key, "FK", "name"},
};

static void my_read_key(KT_context *ctx, client_tbl_reading &reading, const KT_vhash *key, const key_kind &kind)
{
    const char *name = nullptr;
    KT_varray *ids = nullptr;
    std::vector<std::string> cols;
    client_part part{kind.kind, "", ""};
    KT_TRY(KT_vhash__check__sz(ctx, key, kind.name, &name));
    KT_TRY(KT_vhash__get__varray(ctx, key, "cols", &ids));
    KT_TRY(client_find_col_names(ctx, reading, ids, cols));
    client_name_part(reading, kind.letters, cols, name, part);
    KT_TRY(client_add_cols(ctx, reading, cols, nullptr, part.facts, client_fact_kind::cols));
    if (kind.kind == client_part_kind::foreign_key)
        KT_TRY(my_add_reference(ctx, reading, key, part));
    reading.tbl.parts.push_back(std::move(part));
}

void client_read_keys(KT_context *ctx, client_tbl_reading &reading)
{
    kt_owned_varray keys{ctx};
    uint32_t count = 0;
    constexpr uint32_t all = TOV_KEYS_PRIMARY | TOV_KEYS_UNIQUE | TOV_KEYS_FOREIGN;
    KT_TRY(tov_schema__list_keys(ctx, reading.schema, reading.tbl.id.c_str(), all, keys.out()));
    if (keys)
        KT_TRY(KT_varray__count(ctx, keys, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *key = nullptr;
        const char *word = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, keys, n, &key));
        KT_TRY(KT_vhash__get__sz(ctx, key, "kind", &word));
        for (const key_kind &kind : key_kinds) {
            if (kind.word == word)
                KT_TRY(my_read_key(ctx, reading, key, kind));
        }
    }
}
