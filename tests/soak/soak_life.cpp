#include "soak_life.hpp"

#include "pair_of_tbls.hpp"
#include "read_everything.hpp"

#include <cstdio>
#include <cstdlib>

void stop(const std::string &why)
{
    std::fprintf(stderr, "soak: %s\n", why.c_str());
    std::exit(1);
}

namespace {

// Schemas of so many pairs of tables are read by every operation there is.
constexpr unsigned small = 3;

// A text's digest (FNV-1a) joined to what was found before it.
uint64_t digested(uint64_t digest, const char *text)
{
    for (; *text; text++)
        digest = (digest ^ static_cast<unsigned char>(*text)) * 0x100000001b3;
    return digest;
}

void expect_ok(KT_context *ctx, const char *what)
{
    if (KT_context__has_err(ctx))
        stop(std::string(what) + ": " + KT_context__err_description(ctx));
}

std::string taken(KT_context *ctx, KT_string *text)
{
    const std::string result = text ? KT_string__sz(text) : "";
    KT_string__free(ctx, text);
    return result;
}

std::string json_of(KT_context *ctx, tov_schema *schema)
{
    KT_string *json = nullptr;
    tov_schema__to_json(ctx, schema, &json);
    expect_ok(ctx, "writing");
    return taken(ctx, json);
}

void change(const life &l, const std::string &own)
{
    const std::string parent = "parent_" + own;
    const std::string child = "child_" + own;
    tov_schema__set_tbl_name(l.ctx, l.schema, parent.c_str(), ("A longer name of " + parent).c_str());
    tov_schema__set_col_name(l.ctx, l.schema, child.c_str(), "code", "another name");
    tov_schema__create_foreignkey(l.ctx, l.schema, "passing", "P", child.c_str(), parent.c_str(), 0, "CASCADE",
                                  "CASCADE", 4);
    tov_schema__add_to_foreignkey(l.ctx, l.schema, child.c_str(), "passing", "code", "code");
    tov_schema__nevermind_foreignkey(l.ctx, l.schema, child.c_str(), "passing");
    tov_schema__set_colcon_defval(l.ctx, l.schema, child.c_str(), "code", 1, "DF2", "'changed'");
    expect_ok(l.ctx, "changing");
}

// Reads the document back as JSON: it must not differ.
void expect_same_when_read(const life &l, const std::string &json)
{
    tov_schema *copy = nullptr;
    KT_varray *only_in_a = nullptr;
    KT_varray *only_in_b = nullptr;
    KT_varray *changed = nullptr;
    tov_schema__from_json(l.ctx, json.c_str(), &copy);
    tov_schema__diff_tbls(l.ctx, l.schema, copy, &only_in_a, &only_in_b, nullptr, &changed);
    expect_ok(l.ctx, "comparing");
    if (only_in_a || only_in_b || changed || json_of(l.ctx, copy) != json)
        stop("a schema differs from its copy");
    tov_schema__nullfree(l.ctx, &copy);
}

uint64_t digested_order(const life &l, uint64_t digest)
{
    KT_varray *order = nullptr;
    uint32_t count = 0;
    tov_schema__sort_by_references(l.ctx, l.schema, &order);
    KT_varray__count(l.ctx, order, &count);
    for (uint32_t n = 0; n < count; n++) {
        const char *tbl_id = nullptr;
        KT_varray__get__sz(l.ctx, order, n, &tbl_id);
        digest = digested(digest, tbl_id);
    }
    expect_ok(l.ctx, "ordering");
    KT_varray__free(l.ctx, order);
    return digest;
}

// The definition of a column and a default that SQLite is asked about.
uint64_t digested_texts(const life &l, uint64_t digest)
{
    const char *defin = nullptr;
    char *defval = nullptr;
    tov_schema__get_col_defin(l.ctx, l.schema, "child_0", "code", nullptr, &defin);
    expect_ok(l.ctx, "a column's definition");
    digest = digested(digest, defin);
    // Only SQLite can tell whether a number with a blank behind its sign is one.
    tov_schema__fix_mssql_defval(l.ctx, l.schema, "child_0", "parent", "((- 42))", &defval);
    expect_ok(l.ctx, "a default");
    if (!defval)
        stop("a default was dropped");
    digest = digested(digest, defval);
    _kt_free(l.ctx, defval);
    return digest;
}

uint64_t digested_everything(const life &l, uint64_t digest)
{
    reading r{l.ctx, l.schema};
    read_everything(r);
    if (!r.complaint.empty())
        stop(r.complaint);
    return digested(digest, (std::to_string(r.answers) + " " + std::to_string(r.failures)).c_str());
}

// All that a schema says. Reading comes first: some questions leave an empty entry where they looked.
uint64_t digest_of(const life &l)
{
    uint64_t digest = 0xcbf29ce484222325;
    if (l.pairs <= small)
        digest = digested_everything(l, digest);
    const std::string json = json_of(l.ctx, l.schema);
    expect_same_when_read(l, json);
    return digested_texts(l, digested_order(l, digested(digest, json.c_str())));
}

} // namespace

life begin_life(unsigned pairs)
{
    life l{.pairs = pairs};
    KT_context__alloc(&l.ctx);
    tov_schema__new(l.ctx, 1, &l.schema);
    for (unsigned n = 0; n < pairs; n++)
        add_pair_of_tbls(l.ctx, l.schema, std::to_string(n));
    expect_ok(l.ctx, "building");
    for (unsigned n = 0; n < pairs; n += 1 + pairs / 10)
        change(l, std::to_string(n));
    l.digest = digest_of(l);
    return l;
}

void end_life(life &l)
{
    if (digest_of(l) != l.digest)
        stop("a schema changed while it lay there");
    tov_schema__nullfree(l.ctx, &l.schema);
    KT_context__free(l.ctx);
}
