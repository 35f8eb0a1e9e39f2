// Distinct schemas on distinct threads: each thread builds, changes, reads, compares and frees schemas of its own, and
// must find every time what one thread alone finds. What the threads share is the program, its tables of constants
// and the SQLite function table; ThreadSanitizer, in its build, watches them.
#include "document/document_operations.hpp"
#include "pair_of_tbls.hpp"
#include "read_everything.hpp"
#include "schema_test.hpp"

#include <thread>
#include <vector>

namespace {

constexpr int thread_count = 4;
constexpr int round_count = 300;

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
    add_pair_of_tbls(ctx, schema, own);
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

// One call of every exported operation, each on a stage of its own; tells what all of them left.
static std::string call_every_operation()
{
    std::string left;
    KT_context *ctx = nullptr;
    KT_context__alloc(&ctx);
    const auto make_tree = [&](const std::string &members) { return tree_of(ctx, "{" + members + "}"); };
    for (const operation &row : every_operation()) {
        stage s = make_stage(ctx, make_tree);
        outcome o;
        row.run(ctx, s, o);
        left += std::string(row.name) + KT_context__err_description(ctx) + "\n";
        KT_context__err_reset(ctx);
        left += written(ctx, s) + "\n";
        free_outcome(ctx, o);
        free_stage(ctx, s);
    }
    KT_context__free(ctx);
    return left;
}

TEST(Threads, CallEveryOperation)
{
    const std::string expected = call_every_operation();
    std::vector<int> differing(thread_count, 0);
    std::vector<std::thread> threads;
    for (size_t n = 0; n < thread_count; n++) {
        threads.emplace_back([&, n] {
            for (int round = 0; round < 10; round++)
                differing[n] += call_every_operation() != expected;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_EQ(differing, std::vector<int>(thread_count, 0));
}
