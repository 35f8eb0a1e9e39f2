// Distinct schemas on distinct threads: each thread builds, changes, reads, compares and frees schemas of its own, and
// must find every time what one thread alone finds. What the threads share is the program, its tables of constants
// and the SQLite function table; ThreadSanitizer, in its build, watches them.
#include "read_everything.h"
#include "schema_test.h"

#include <thread>
#include <vector>

namespace {

constexpr int thread_count = 4;
constexpr int round_count = 300;

void add_col(KT_context *ctx, tov_schema *schema, const char *tbl, const char *col, const char *type)
{
    tov_schema__add_col(ctx, schema, tbl, col, col, 1, 5, 6);
    if (std::string(type) == "identity")
        tov_schema__set_col_type_identity(ctx, schema, tbl, col, "PK");
    else
        tov_schema__set_col_type_simple(ctx, schema, tbl, col, type);
    tov_schema__set_mssql_col_type_name(ctx, schema, tbl, col, "int");
}

// A parent and a child table of ids that only this thread has, with a constraint of each kind.
void build(KT_context *ctx, tov_schema *schema, const std::string &own)
{
    const std::string parent = "parent_" + own;
    const std::string child = "child_" + own;
    const char *p = parent.c_str();
    const char *c = child.c_str();
    tov_schema__add_tbl(ctx, schema, c, c, 7);
    tov_schema__add_tbl(ctx, schema, p, p, 42);
    add_col(ctx, schema, p, "id", "identity");
    add_col(ctx, schema, p, "code", "sint32");
    add_col(ctx, schema, c, "id", "sint32");
    add_col(ctx, schema, c, "parent", "sint32");
    add_col(ctx, schema, c, "code", "sint64");
    tov_schema__add_col(ctx, schema, c, "later", own.c_str(), 0, 1, 1);
    tov_schema__set_col_type_text(ctx, schema, c, "code", "coll", "en", 0, 0, 1, 0, 0, 0, 1, 1, 10);
    tov_schema__set_pk_name(ctx, schema, c, "PK");
    tov_schema__add_to_pk(ctx, schema, c, "id");
    tov_schema__add_to_unique_constraint(ctx, schema, p, "code", "u");
    tov_schema__add_check_constraint(ctx, schema, p, "k", "Code>0");
    tov_schema__set_colcon_notnull(ctx, schema, c, "code", 1, "NN");
    tov_schema__set_colcon_defval(ctx, schema, c, "code", 1, "DF", "'x'");
    tov_schema__add_colcon_check(ctx, schema, c, "code", "CK", "(code<>'')");
    tov_schema__set_colcon_fk(ctx, schema, c, "parent", 1, "f1", "F1", p, "id", 0, "CASCADE", "NO ACTION", 2);
    tov_schema__create_foreignkey(ctx, schema, "f2", "F2", c, p, 1, "NO ACTION", "CASCADE", 4);
    tov_schema__add_to_foreignkey(ctx, schema, c, "f2", "id", "code");
    tov_schema__set_filter_id(ctx, schema, 3);
    tov_schema__set_backend_info__name(ctx, schema, own.c_str());
}

// The default as SQLite takes it, which is tried in a database of its own.
std::string default_of(KT_context *ctx, tov_schema *schema, const std::string &own, const char *col,
                       const char *host_text)
{
    char *result = nullptr;
    tov_schema__fix_mssql_defval(ctx, schema, ("child_" + own).c_str(), col, host_text, &result);
    std::string text = result ? result : KT_context__err_description(ctx);
    KT_context__err_reset(ctx);
    _kt_free(ctx, result);
    return text;
}

// The column texts and the order of the tables.
std::string texts_of(KT_context *ctx, tov_schema *schema, const std::string &own)
{
    std::string texts;
    for (const char *col : {"id", "parent", "code"}) {
        const char *defin = nullptr;
        tov_schema__get_col_defin(ctx, schema, ("child_" + own).c_str(), col, nullptr, &defin);
        texts += std::string(defin ? defin : "?") + "\n";
    }
    KT_varray *order = nullptr;
    tov_schema__sort_by_references(ctx, schema, &order);
    for (uint32_t n = 0; n < 2 && order; n++) {
        const char *tbl_id = nullptr;
        KT_varray__get__sz(ctx, order, n, &tbl_id);
        texts += std::string(tbl_id ? tbl_id : "?") + "\n";
    }
    KT_varray__free(ctx, order);
    return texts;
}

// One round on schemas of its own; tells all that it found.
std::string play(const std::string &own)
{
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    tov_schema *schema = nullptr;
    tov_schema *copy = nullptr;
    KT_string *json = nullptr;
    tov_schema__new(ctx, 1, &schema);
    build(ctx, schema, own);
    std::string found = KT_context__err_description(ctx);
    tov_schema__to_json(ctx, schema, &json);
    tov_schema__from_json(ctx, json ? KT_string__sz(json) : "", &copy);
    KT_varray *only_in_a = nullptr;
    KT_varray *only_in_b = nullptr;
    tov_schema__diff_tbls(ctx, schema, copy, &only_in_a, &only_in_b, nullptr, nullptr);
    found += KT_context__err_description(ctx);
    found += only_in_a || only_in_b ? "differs from its copy" : "";
    found += take(ctx, json) + texts_of(ctx, schema, own);
    found += default_of(ctx, schema, own, "code", "('abc')") + " " + default_of(ctx, schema, own, "parent", "('abc')");

    reading r{ctx, schema};
    read_everything(r);
    found += "\n" + std::to_string(r.answers) + " " + std::to_string(r.failures) + r.complaint;
    KT_varray__free(ctx, only_in_a);
    KT_varray__free(ctx, only_in_b);
    tov_schema__nullfree(ctx, &copy);
    tov_schema__nullfree(ctx, &schema);
    KT_context__free(ctx);
    return found;
}

} // namespace

TEST(Threads, FindOnSchemasOfTheirOwnWhatOneThreadFinds)
{
    std::vector<std::string> found_first(thread_count);
    std::vector<int> differing(thread_count, 0);
    std::vector<std::thread> threads;
    // The first rounds coincide too: what is set up once in the life of the process is set up by all at once.
    for (size_t n = 0; n < thread_count; n++) {
        threads.emplace_back([&, n] {
            const std::string own = std::to_string(n);
            found_first[n] = play(own);
            for (int round = 1; round < round_count; round++)
                differing[n] += play(own) != found_first[n];
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    for (size_t n = 0; n < thread_count; n++) {
        EXPECT_EQ(differing[n], 0);
        EXPECT_EQ(found_first[n], play(std::to_string(n)));
    }
    // A round did what it is there for.
    EXPECT_EQ(found_first[0].rfind(R"({"compat_level")", 0), 0u) << found_first[0];
    EXPECT_NE(found_first[0].find("parent_0\nchild_0\n'abc' constraint failed"), std::string::npos) << found_first[0];
}
