// What a document says is nothing but text until it has been through here.
//
// The check walks the document along the shape that the schema module gives, so no string that a statement may hold
// is left out. Keys are held to existing, prepared columns, so that no name that was not looked at can come in through
// one. In each record strings come first: what a key refers to is known to be there before its columns are looked up.
#include "check/client_strings.hpp"

#define KT_HERE "src/client/check/client_texts"

static void my_walk(KT_context *ctx, const client_walk &w, const client_record &at) noexcept;

// The columns of a key: the keys of a map, of this table, and for a foreign key its values, of the referenced one.
static void my_check_key_cols(KT_context *ctx, const client_walk &w, const client_place &place, const KT_vhash *cols,
                              const char *ref_tbl_id) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *col_id = nullptr;
        const char *ref_col_id = nullptr;
        if (ref_tbl_id)
            KT_TRY(KT_vhash__get_nth_pair__sz(ctx, cols, n, &col_id, &ref_col_id));
        else
            KT_TRY(KT_vhash__get_nth_pair(ctx, cols, n, &col_id, nullptr));
        KT_TRY(client_check_key_col(ctx, w, place, w.tbl.id, col_id));
        if (ref_tbl_id)
            KT_TRY(client_check_key_col(ctx, w, place, ref_tbl_id, ref_col_id));
    }
}

static void my_refuse_empty_key(KT_context *ctx, const client_place &place, const KT_vhash *cols) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, cols, &count));
    if (count == 0)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "a key without columns");
}

static void my_check_col_pairs(KT_context *ctx, const client_walk &w, const client_record &at,
                               const KT_vhash *cols) noexcept
{
    const char *ref_tbl_id = nullptr;
    KT_TRY(client_find_string(ctx, at, TOV_ROLE_TBL_ID, &ref_tbl_id));
    KT_TRY(my_refuse_empty_key(ctx, at.place, cols));
    KT_TRY(my_check_key_cols(ctx, w, at.place, cols, ref_tbl_id));
}

// A record that names itself is known by its name, any other by its id.
static bool my_names_itself(const tov_shape &shape) noexcept
{
    for (uint32_t n = 0; n < shape.count; n++) {
        if (shape.members[n].role == TOV_ROLE_NAME && !shape.members[n].label)
            return true;
    }
    return false;
}

// A record under an id. What names itself here is a column.
static void my_check_one(KT_context *ctx, const client_walk &w, const char *id, const client_record &at) noexcept
{
    client_record one = at;
    one.place.part_name = id;
    if (!my_names_itself(*at.shape))
        return my_walk(ctx, w, one);
    const char *name = nullptr;
    KT_TRY(client_find_string(ctx, at, TOV_ROLE_NAME, &name));
    if (name)
        one.place.part_name = name;
    KT_TRY(client_check_name(ctx, one.place, name));
    KT_TRY(client_check_id(ctx, one.place, id));
    KT_TRY(client_check_distinct(ctx, one.place, w.tbl.col_names, name));
    KT_TRY(my_walk(ctx, w, one));
}

// The values of a map that is keyed by ids: records, or sets of columns.
static void my_check_each(KT_context *ctx, const client_walk &w, const tov_member &member, const KT_vhash *map) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, map, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *value = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, map, n, &id, &value));
        const client_place place{w.tbl.name, member.label, id};
        if (member.shape) {
            KT_TRY(my_check_one(ctx, w, id, {value, member.shape, place}));
            continue;
        }
        KT_TRY(my_refuse_empty_key(ctx, place, value));
        KT_TRY(my_check_key_cols(ctx, w, place, value, nullptr));
    }
}

static void my_check_list(KT_context *ctx, const client_walk &w, const client_record &at,
                          const tov_member &member) noexcept
{
    KT_varray *list = nullptr;
    KT_TRY(KT_vhash__check__varray(ctx, at.record, member.key, &list));
    uint32_t count = 0;
    if (list)
        KT_TRY(KT_varray__count(ctx, list, &count));
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *one = nullptr;
        KT_TRY(KT_varray__get__vhash(ctx, list, n, &one));
        KT_TRY(my_walk(ctx, w, {one, member.shape, at.place}));
    }
}

static void my_check_map(KT_context *ctx, const client_walk &w, const client_record &at,
                         const tov_member &member) noexcept
{
    KT_vhash *map = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, at.record, member.key, &map));
    const client_place place = client_at(at.place, member.label);
    if (!map && member.is_required)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, place, "no %s", member.label);
    if (!map)
        return;
    if (member.type == TOV_MEMBER_RECORD)
        KT_TRY(my_walk(ctx, w, {map, member.shape, at.place}));
    else if (member.type == TOV_MEMBER_COL_SET)
        KT_TRY(my_check_key_cols(ctx, w, place, map, nullptr));
    else if (member.type == TOV_MEMBER_COL_PAIRS)
        KT_TRY(my_check_col_pairs(ctx, w, at, map));
    else
        KT_TRY(my_check_each(ctx, w, member, map));
}

static bool my_is_map(const tov_member &member) noexcept
{
    return member.type == TOV_MEMBER_RECORD || member.type == TOV_MEMBER_RECORDS || member.type == TOV_MEMBER_COL_SET ||
           member.type == TOV_MEMBER_COL_SETS || member.type == TOV_MEMBER_COL_PAIRS;
}

static void my_walk(KT_context *ctx, const client_walk &w, const client_record &at) noexcept
{
    for (uint32_t n = 0; n < at.shape->count; n++) {
        if (at.shape->members[n].type == TOV_MEMBER_STRING)
            KT_TRY(client_check_string(ctx, w, at, at.shape->members[n]));
    }
    for (uint32_t n = 0; n < at.shape->count; n++) {
        const tov_member &member = at.shape->members[n];
        if (member.type == TOV_MEMBER_LIST)
            KT_TRY(my_check_list(ctx, w, at, member));
        else if (my_is_map(member))
            KT_TRY(my_check_map(ctx, w, at, member));
    }
}

// The names of all columns, in quotes.
static void my_list_cols(KT_context *ctx, const client_tbl_check &tbl, KT_string *list) noexcept
{
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, tbl.col_names, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *name = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__sz(ctx, tbl.col_names, n, nullptr, &name));
        KT_TRY(KT_string__append__format(ctx, list, "%s\"%s\"", n ? "," : "", name));
    }
}

static void my_compile_checks(KT_context *ctx, client_text_check &check, const client_tbl_check &tbl) noexcept
{
    if (tbl.checks.empty())
        return;
    kt_owned_string columns{ctx};
    KT_TRY(KT_string__alloc(ctx, columns.out()));
    KT_TRY(my_list_cols(ctx, tbl, columns));
    KT_TRY(client_scratch__check_checks(ctx, check.scratch, tbl.name, KT_string__sz(columns), tbl.checks));
}

static void my_check_tbl_name(KT_context *ctx, const client_walk &w, const client_record &at) noexcept
{
    KT_TRY(client_check_name(ctx, at.place, w.tbl.name));
    KT_TRY(client_check_id(ctx, at.place, w.tbl.id));
    if (KT_strnicmp(w.tbl.name, "sqlite_", 7) == 0)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, at.place, "SQLite keeps names that begin with sqlite_ for itself");
    KT_TRY(client_check_distinct(ctx, at.place, w.check.tbl_names, w.tbl.name));
}

static void my_check_tbl(KT_context *ctx, client_text_check &check, const char *id, const KT_vhash *record,
                         const tov_shape *shape) noexcept
{
    client_tbl_check tbl{ctx};
    const client_walk w{check, tbl};
    client_record at{record, shape, {id}};
    tbl.id = id;
    KT_TRY(client_find_string(ctx, at, TOV_ROLE_NAME, &tbl.name));
    if (tbl.name)
        at.place.tbl = tbl.name;
    KT_TRY(my_check_tbl_name(ctx, w, at));
    KT_TRY(KT_vhash__alloc(ctx, tbl.col_names.out()));
    KT_TRY(my_walk(ctx, w, at));
    KT_TRY(client_check_tbl_facts(ctx, w, record));
    KT_TRY(client_check_conditions(ctx, w, record));
    uint32_t count = 0;
    KT_TRY(KT_vhash__count(ctx, tbl.col_names, &count));
    if (count == 0)
        CLIENT_FAIL(KT_ERR_SCHEMA_NOT_SUPPORTED, at.place, "no column that is prepared");
    KT_TRY(my_compile_checks(ctx, check, tbl));
}

static void my_check_tbls(KT_context *ctx, client_text_check &check, const KT_vhash *document,
                          const tov_member &member) noexcept
{
    KT_vhash *tbls = nullptr;
    KT_TRY(KT_vhash__check__vhash(ctx, document, member.key, &tbls));
    uint32_t count = 0;
    if (tbls)
        KT_TRY(KT_vhash__count(ctx, tbls, &count));
    for (uint32_t n = 0; n < count; n++) {
        const char *id = nullptr;
        KT_vhash *record = nullptr;
        KT_TRY(KT_vhash__get_nth_pair__vhash(ctx, tbls, n, &id, &record));
        KT_TRY(my_check_tbl(ctx, check, id, record, member.shape));
    }
}

// Of the document itself only the tables come into statements. What else is wrong with its shape would be found when it
// is compared or reported, with the database already there.
void tov_client__check_texts(KT_context *ctx, tov_schema *schema) noexcept
{
    client_text_check check{ctx};
    check.schema = schema;
    KT_TRY(KT_vhash__alloc(ctx, check.tbl_names.out()));
    KT_TRY(client_scratch__open(ctx, check.scratch));
    const KT_vhash *document = nullptr;
    KT_TRY(tov_schema__get_document(ctx, schema, &document));
    const tov_shape *shape = tov_get_document_shape();
    for (uint32_t n = 0; n < shape->count; n++) {
        if (shape->members[n].type == TOV_MEMBER_RECORDS)
            KT_TRY(my_check_tbls(ctx, check, document, shape->members[n]));
    }
    KT_TRY(tov_schema__check_shape(ctx, schema));
    KT_TRY(client_check_server_facts(ctx, schema));
}
