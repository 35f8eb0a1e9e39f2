// Any sequence of operations that change a schema, done to a schema and to the plain model of one: after each of them
// both failed with the same code or neither did, and both hold the same trees. Each byte picks an operation or one of
// its arguments, which come from a handful of ids and texts so that operations meet.
#include "read_everything.hpp"
#include "schema_model.hpp"

#include <cstdio>
#include <cstdlib>
#include <iterator>

namespace {

void check(bool holds, const std::string &why)
{
    if (holds)
        return;
    std::fprintf(stderr, "wrong: %s\n", why.c_str());
    std::abort();
}

constexpr const char *tbl_ids[] = {"t", "T", "u", "Other", ""};
constexpr const char *col_ids[] = {"a", "A", "b", "c", ""};
constexpr const char *other_ids[] = {"f", "F", "g", "a"};
constexpr const char *names[] = {"Name", "t", "A", ""};
constexpr const char *optional_texts[] = {nullptr, "datetime2", "x", "NO ACTION", "CASCADE", ""};
constexpr const char *types[] = {"sint32", "identity", "text", "loose/text", "no such type"};
constexpr int64_t numbers[] = {0, 1, -1, 7, INT64_MAX, INT64_MIN};
constexpr int32_t codes[] = {0, 3, -1, INT32_MIN};
constexpr KT_bool flags[] = {0, 1, 2, 256, 257, -1};

struct run {
    KT_context *ctx;
    const uint8_t *at;
    const uint8_t *end;
    tov_schema *schema = nullptr;
    schema_model model = {};

    // One of the values, or the first one when the bytes are used up.
    template <class T, size_t Count> T pick(const T (&values)[Count])
    {
        return values[at < end ? *at++ % Count : 0];
    }
    uint8_t byte()
    {
        return at < end ? *at++ : 0;
    }
};

bool is_one(KT_bool flag)
{
    return (flag & 0xff) == 1;
}

// Does to the model what was done to the schema, and compares how it ended.
template <class Change> void expect(run &r, Change change)
{
    const uint64_t code = KT_context__err_code(r.ctx);
    uint64_t expected = 0;
    try {
        change(r.model);
    } catch (const model_error &error) {
        expected = error.code;
    }
    check(code == expected, "ended with " + std::to_string(code) + ", not " + std::to_string(expected) + ": " +
                                KT_context__err_description(r.ctx));
    KT_context__err_reset(r.ctx);
}

void add_tbl(run &r)
{
    const char *tbl = r.pick(tbl_ids), *name = r.pick(names);
    const int64_t txid = r.pick(numbers);
    tov_schema__add_tbl(r.ctx, r.schema, tbl, name, txid);
    expect(r, [&](schema_model &m) { model_add_tbl(m, tbl, name, txid); });
}

void set_tbl_name(run &r)
{
    const char *tbl = r.pick(tbl_ids), *name = r.pick(names);
    tov_schema__set_tbl_name(r.ctx, r.schema, tbl, name);
    expect(r, [&](schema_model &m) { model_set(model_tbl(m, tbl), "name", model_text(name)); });
}

void add_col(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *name = r.pick(names);
    const KT_bool prepared = r.pick(flags);
    const int64_t txid = r.pick(numbers), generation = r.pick(numbers);
    tov_schema__add_col(r.ctx, r.schema, tbl, col, name, prepared, txid, generation);
    expect(r, [&](schema_model &m) { model_add_col(m, tbl, col, name, prepared != 0, txid, generation); });
}

void set_col_name(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *name = r.pick(names);
    tov_schema__set_col_name(r.ctx, r.schema, tbl, col, name);
    expect(r, [&](schema_model &m) { model_set(model_col(m, tbl, col), "name", model_text(name)); });
}

void set_filter_id(run &r)
{
    const int64_t id = r.pick(numbers);
    tov_schema__set_filter_id(r.ctx, r.schema, id);
    expect(r, [&](schema_model &m) { model_set(m.document, "filter_id", model_int(id)); });
}

void set_backend(run &r)
{
    const char *name = r.pick(names), *api = r.pick(names);
    const KT_bool flag = r.pick(flags);
    switch (r.byte() % 3) {
    case 0:
        tov_schema__set_backend_info__name(r.ctx, r.schema, name);
        return expect(
            r, [&](schema_model &m) { model_set(model_ensure(m.document, "backend"), "name", model_text(name)); });
    case 1:
        tov_schema__set_backend_info__api(r.ctx, r.schema, api);
        return expect(r,
                      [&](schema_model &m) { model_set(model_ensure(m.document, "backend"), "api", model_text(api)); });
    default:
        tov_schema__set_backend_info__indistinct_unique_nulls(r.ctx, r.schema, flag);
        return expect(r, [&](schema_model &m) {
            model_set(model_ensure(m.document, "backend"), "indistinct_unique_nulls", model_bool(flag != 0));
        });
    }
}

void set_identity(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *name = r.pick(optional_texts);
    tov_schema__set_col_type_identity(r.ctx, r.schema, tbl, col, name);
    model_node type;
    model_add(type, "name", model_text("identity"));
    model_set_if_given(type, "constraint_name", name);
    expect(r, [&](schema_model &m) { model_set_type(m, tbl, col, type); });
}

void set_simple(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *name = r.pick(types);
    const bool is_unsupported = r.byte() % 2 == 1;
    model_node type;
    if (is_unsupported) {
        tov_schema__set_col_type_unsuported(r.ctx, r.schema, tbl, col, name);
        type = {{}, false, {{"name", model_text("host")}, {"host_type", model_text(name)}}};
    } else {
        tov_schema__set_col_type_simple(r.ctx, r.schema, tbl, col, name);
        type = {{}, false, {{"name", model_text(name)}}};
    }
    expect(r, [&](schema_model &m) { model_set_type(m, tbl, col, type); });
}

void set_decimal(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids);
    const uint8_t precision = r.byte(), scale = r.byte();
    tov_schema__set_col_type_decimal(r.ctx, r.schema, tbl, col, precision, scale);
    const model_node type{
        {}, false, {{"name", model_text("decimal")}, {"precision", model_int(precision)}, {"scale", model_int(scale)}}};
    expect(r, [&](schema_model &m) { model_set_type(m, tbl, col, type); });
}

void set_blob(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids);
    const KT_bool fixed = r.pick(flags);
    const auto width = static_cast<uint32_t>(r.pick(numbers));
    tov_schema__set_col_type_blob(r.ctx, r.schema, tbl, col, fixed, width);
    const model_node type{
        {},
        false,
        {{"name", model_text("blob")}, {"fixed_width", model_bool(is_one(fixed))}, {"width", model_int(width)}}};
    expect(r, [&](schema_model &m) { model_set_type(m, tbl, col, type); });
}

void set_time(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids);
    const uint8_t precision = r.byte();
    tov_schema__set_col_type_time(r.ctx, r.schema, tbl, col, precision);
    const model_node type{{}, false, {{"name", model_text("time")}, {"precision", model_int(precision)}}};
    expect(r, [&](schema_model &m) { model_set_type(m, tbl, col, type); });
}

void set_datetime(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *host_type = r.pick(optional_texts);
    const uint8_t precision = r.byte();
    tov_schema__set_col_type_datetime(r.ctx, r.schema, tbl, col, precision, host_type);
    const model_node type{{}, false, {{"name", model_text("datetime")}, {"precision", model_int(precision)}}};
    expect(r, [&](schema_model &m) {
        model_set_type(m, tbl, col, type);
        if (host_type && std::string(host_type) != "datetime2")
            model_set_host_text(m, "collations", tbl, col, host_type);
    });
}

void set_text(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids);
    const char *collation = r.pick(optional_texts), *locale = r.pick(optional_texts);
    const KT_bool binary = r.pick(flags), noaccent = r.pick(flags), nocase = r.pick(flags);
    const KT_bool ks = r.pick(flags), ws = r.pick(flags), sc = r.pick(flags);
    const KT_bool fixed = r.pick(flags), unicode = r.pick(flags);
    const auto width = static_cast<uint32_t>(r.pick(numbers));
    tov_schema__set_col_type_text(r.ctx, r.schema, tbl, col, collation, locale, binary, noaccent, nocase, ks, ws, sc,
                                  fixed, unicode, width);
    model_node type;
    model_add(type, "name", model_text("text"));
    model_add(type, "fixed_width", model_bool(is_one(fixed)));
    model_set_if_given(type, "locale", locale);
    if (binary) {
        model_add(type, "binary", model_bool(true));
    } else {
        model_add(type, "noaccent", model_bool(is_one(noaccent)));
        model_add(type, "nocase", model_bool(is_one(nocase)));
        for (const auto &[key, flag] : {std::pair{"_KS", ks}, {"_WS", ws}, {"_SC", sc}}) {
            if (flag)
                model_add(type, key, model_bool(true));
        }
    }
    model_add(type, "unicode", model_bool(is_one(unicode)));
    model_add(type, "width", model_int(width));
    expect(r, [&](schema_model &m) {
        model_set_type(m, tbl, col, type);
        model_set_host_text(m, "collations", tbl, col, collation);
    });
}

void set_host_text(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *text = r.pick(optional_texts);
    switch (r.byte() % 3) {
    case 0:
        tov_schema__set_host_collation(r.ctx, r.schema, tbl, col, text);
        return expect(r, [&](schema_model &m) { model_set_host_text(m, "collations", tbl, col, text); });
    case 1:
        tov_schema__set_host_defval(r.ctx, r.schema, tbl, col, text);
        return expect(r, [&](schema_model &m) { model_set_host_text(m, "defvals", tbl, col, text); });
    default:
        tov_schema__set_mssql_col_type_name(r.ctx, r.schema, tbl, col, text);
        return expect(r, [&](schema_model &m) { model_set_host_type_name(m, tbl, col, text); });
    }
}

void set_colcon(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *name = r.pick(optional_texts);
    const char *expr = r.pick(names);
    const KT_bool has = r.pick(flags);
    switch (r.byte() % 3) {
    case 0:
        tov_schema__set_colcon_notnull(r.ctx, r.schema, tbl, col, has, name);
        return expect(r, [&](schema_model &m) { model_set_colcon(m, "notnull", tbl, col, has != 0, name, nullptr); });
    case 1:
        tov_schema__set_colcon_defval(r.ctx, r.schema, tbl, col, has, name, expr);
        return expect(r, [&](schema_model &m) { model_set_colcon(m, "defval", tbl, col, has != 0, name, expr); });
    default:
        tov_schema__add_colcon_check(r.ctx, r.schema, tbl, col, name, expr);
        return expect(r, [&](schema_model &m) { model_add_colcon_check(m, tbl, col, name, expr); });
    }
}

void set_pk_name(run &r)
{
    const char *tbl = r.pick(tbl_ids), *name = r.pick(names);
    tov_schema__set_pk_name(r.ctx, r.schema, tbl, name);
    expect(r, [&](schema_model &m) { model_set(model_ensure(model_tbl(m, tbl), "pk"), "name", model_text(name)); });
}

void add_to_pk(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids);
    tov_schema__add_to_pk(r.ctx, r.schema, tbl, col);
    expect(r, [&](schema_model &m) {
        model_add(model_ensure(model_get(model_tbl(m, tbl), "pk"), "cols"), col, model_null());
    });
}

void add_to_unique(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *unique = r.pick(other_ids);
    tov_schema__add_to_unique_constraint(r.ctx, r.schema, tbl, col, unique);
    expect(r, [&](schema_model &m) {
        model_add(model_ensure(model_ensure(model_tbl(m, tbl), "uniques"), unique), col, model_null());
    });
}

void add_check(run &r)
{
    const char *tbl = r.pick(tbl_ids), *id = r.pick(other_ids), *expr = r.pick(names);
    tov_schema__add_check_constraint(r.ctx, r.schema, tbl, id, expr);
    expect(r, [&](schema_model &m) {
        model_set(model_ensure(model_ensure(model_tbl(m, tbl), "check"), id), "expr", model_text(expr));
    });
}

void create_foreignkey(run &r)
{
    const char *fk = r.pick(other_ids), *name = r.pick(optional_texts);
    const char *tbl = r.pick(tbl_ids), *ref_tbl = r.pick(tbl_ids);
    const KT_bool deferred = r.pick(flags);
    const char *on_delete = r.pick(optional_texts), *on_update = r.pick(optional_texts);
    const int32_t violation = r.pick(codes);
    tov_schema__create_foreignkey(r.ctx, r.schema, fk, name, tbl, ref_tbl, deferred, on_delete, on_update, violation);
    expect(r, [&](schema_model &m) {
        model_create_foreignkey(m, fk, name, tbl, ref_tbl, deferred != 0, on_delete, on_update, violation);
    });
}

void add_to_foreignkey(run &r)
{
    const char *tbl = r.pick(tbl_ids), *fk = r.pick(other_ids);
    const char *col = r.pick(col_ids), *ref_col = r.pick(col_ids);
    tov_schema__add_to_foreignkey(r.ctx, r.schema, tbl, fk, col, ref_col);
    expect(r, [&](schema_model &m) { model_add_to_foreignkey(m, tbl, fk, col, ref_col); });
}

void nevermind_foreignkey(run &r)
{
    const char *tbl = r.pick(tbl_ids), *fk = r.pick(other_ids);
    tov_schema__nevermind_foreignkey(r.ctx, r.schema, tbl, fk);
    expect(r, [&](schema_model &m) { model_nevermind_foreignkey(m, tbl, fk); });
}

void set_colcon_fk(run &r)
{
    const char *tbl = r.pick(tbl_ids), *col = r.pick(col_ids), *fk = r.pick(other_ids);
    const KT_bool has = r.pick(flags), deferred = r.pick(flags);
    const char *name = r.pick(optional_texts), *ref_tbl = r.pick(tbl_ids), *ref_col = r.pick(optional_texts);
    const char *on_delete = r.pick(optional_texts), *on_update = r.pick(optional_texts);
    const int32_t violation = r.pick(codes);
    tov_schema__set_colcon_fk(r.ctx, r.schema, tbl, col, has, fk, name, ref_tbl, ref_col, deferred, on_delete,
                              on_update, violation);
    expect(r, [&](schema_model &m) {
        model_set_colcon_fk(m, tbl, col, has != 0, fk, name, ref_tbl, ref_col, deferred != 0, on_delete, on_update,
                            violation);
    });
}

// Reads that leave empty records behind.
void count(run &r)
{
    const char *tbl = r.pick(tbl_ids);
    uint32_t count = 0;
    size_t expected = 0;
    switch (r.byte() % 3) {
    case 0:
        tov_schema__count_tbls(r.ctx, r.schema, &count);
        expect(r, [&](schema_model &m) { expected = model_ensure(m.document, "tbls").members.size(); });
        break;
    case 1:
        tov_schema__count_cols(r.ctx, r.schema, tbl, &count);
        expect(r, [&](schema_model &m) { expected = model_cols(m, tbl).members.size(); });
        break;
    default:
        tov_schema__count_checks(r.ctx, r.schema, tbl, &count);
        expect(r, [&](schema_model &m) { expected = model_ensure(model_tbl(m, tbl), "check").members.size(); });
    }
    check(count == expected, "counted " + std::to_string(count) + ", not " + std::to_string(expected));
}

void new_schema(run &r, uint32_t compat_level)
{
    tov_schema__nullfree(r.ctx, &r.schema);
    tov_schema__new(r.ctx, compat_level, &r.schema);
    r.model = {};
    model_add(r.model.document, "compat_level", model_int(compat_level));
}

std::string taken(run &r, KT_string *text)
{
    check(!KT_context__has_err(r.ctx), KT_context__err_description(r.ctx));
    std::string result = KT_string__sz(text);
    KT_string__free(r.ctx, text);
    return result;
}

// Through JSON text, which carries the document only.
void reload(run &r)
{
    KT_string *json = nullptr;
    tov_schema__to_json(r.ctx, r.schema, &json);
    const std::string text = taken(r, json);
    tov_schema__nullfree(r.ctx, &r.schema);
    tov_schema__from_json(r.ctx, text.c_str(), &r.schema);
    check(!KT_context__has_err(r.ctx), text);
    r.model.host_internals.reset();
}

std::string trees(run &r)
{
    KT_vhash *both = nullptr;
    KT_string *json = nullptr;
    KT_vhash__alloc(r.ctx, &both);
    tov_schema__copy_into_vhash(r.ctx, r.schema, both, 1);
    KT_string__alloc(r.ctx, &json);
    KT_vhash__to_json(r.ctx, both, json);
    KT_vhash__free(r.ctx, both);
    return taken(r, json);
}

void compare(run &r)
{
    const std::string actual = trees(r);
    const std::string expected = model_json(r.model);
    check(actual == expected, "\n" + actual + "\nexpected:\n" + expected);
}

constexpr void (*operations[])(run &r) = {
    add_tbl,
    add_col,
    add_col,
    set_tbl_name,
    set_col_name,
    set_filter_id,
    set_backend,
    set_identity,
    set_simple,
    set_decimal,
    set_blob,
    set_time,
    set_datetime,
    set_text,
    set_colcon,
    set_pk_name,
    add_to_pk,
    add_to_unique,
    add_check,
    set_host_text,
    create_foreignkey,
    count,
    set_colcon_fk,
    add_to_foreignkey,
    nevermind_foreignkey,
    reload,
};

void read_all(run &r)
{
    reading reads{r.ctx, r.schema};
    read_everything(reads);
    check(reads.complaint.empty(), reads.complaint);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    run r{nullptr, data, data + size};
    KT_context__alloc(&r.ctx);
    new_schema(r, 5);
    while (r.at < r.end) {
        r.pick(operations)(r);
        compare(r);
    }
    read_all(r);
    tov_schema__nullfree(r.ctx, &r.schema);
    KT_context__free(r.ctx);
    return 0;
}
