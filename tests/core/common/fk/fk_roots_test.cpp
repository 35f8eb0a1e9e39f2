#include "fk_plain.hpp"
#include "fk_test.hpp"

#include <csignal>
#include <cstdlib>
#include <sys/time.h>
#include <unistd.h>

namespace {

struct root {
    const char *tbl_id = "untouched";
    const char *col_id = "untouched";
};

} // namespace

class RootsTest : public FkTest {
  protected:
    // Table p with the identity column id; a, b, c with id and ref of type sint32.
    void SetUp() override
    {
        FkTest::SetUp();
        tbl("p");
        col("p", "id");
        tov_schema__set_col_type_identity(ctx, schema, "p", "id", nullptr);
        for (const char *tbl_id : {"a", "b", "c"}) {
            tbl(tbl_id);
            col(tbl_id, "id");
            col(tbl_id, "ref");
        }
    }
    // "table.column", "none".
    std::string find(const char *tbl_id, const char *col_id)
    {
        root r;
        tov_schema__find_ipk_root_column(ctx, schema, tbl_id, col_id, &r.tbl_id, &r.col_id);
        EXPECT_OK(ctx);
        EXPECT_EQ(r.tbl_id == nullptr, r.col_id == nullptr);
        return r.tbl_id ? joined({r.tbl_id, ".", r.col_id}) : "none";
    }
    std::string condition(const char *tbl_id, uint32_t left_mode, uint32_t right_mode)
    {
        KT_string *text = nullptr;
        tov_schema__get_on_pk_col_names(ctx, schema, tbl_id, "l", "r", left_mode, right_mode, &text);
        EXPECT_OK(ctx);
        return take(ctx, text);
    }
    void pk(const char *tbl_id, std::initializer_list<const char *> col_ids)
    {
        tov_schema__set_pk_name(ctx, schema, tbl_id, "pk");
        for (const char *col_id : col_ids)
            tov_schema__add_to_pk(ctx, schema, tbl_id, col_id);
        ASSERT_OK(ctx);
    }
};

TEST_F(RootsTest, AnIdentityColumnIsItsOwnRootUnderTheIdsGiven)
{
    root r;
    const char *tbl_id = "P";
    const char *col_id = "Id";
    tov_schema__find_ipk_root_column(ctx, schema, tbl_id, col_id, &r.tbl_id, &r.col_id);
    EXPECT_EQ(r.tbl_id, tbl_id);
    EXPECT_EQ(r.col_id, col_id);
}

TEST_F(RootsTest, AColumnLevelKeyLeadsToARoot)
{
    refer("a", "ref", "P", "ID");
    EXPECT_EQ(find("a", "ref"), "P.ID") << "as the key names it";
    EXPECT_EQ(find("A", "REF"), "P.ID");
}

TEST_F(RootsTest, AChainLeadsToARootThroughEveryIntegerType)
{
    for (const char *type : {"sint64", "sint32", "sint16", "uint8"}) {
        SCOPED_TRACE(type);
        tov_schema__set_col_type_simple(ctx, schema, "b", "ref", type);
        refer("a", "ref", "b", "ref");
        refer("b", "ref", "p", "id");
        EXPECT_EQ(find("a", "ref"), "p.id");
    }
}

TEST_F(RootsTest, ColumnsWithoutARoot)
{
    EXPECT_EQ(find("a", "ref"), "none") << "no reference";
    refer("a", "ref", "b", "ref");
    EXPECT_EQ(find("a", "ref"), "none") << "a chain that ends";
    refer("b", "ref", "p", "id");
    for (const char *type : {"uint1", "text", "decimal", "loose/int", "Identity", "SINT32", "sint"}) {
        SCOPED_TRACE(type);
        tov_schema__set_col_type_simple(ctx, schema, "b", "ref", type);
        EXPECT_EQ(find("a", "ref"), "none") << "a chain through another type";
        EXPECT_EQ(find("b", "ref"), "none") << "a column of another type";
    }
}

TEST_F(RootsTest, AColumnIsFollowedThroughItsPlaceInAKey)
{
    key("k", "a", "p", {{"id", "nothing"}, {"ref", "id"}});
    EXPECT_EQ(find("a", "ref"), "p.id");
    EXPECT_EQ(find("a", "REF"), "none") << "its id in a key is compared exactly";
}

TEST_F(RootsTest, TheFirstRootFoundIsTheAnswer)
{
    tbl("q");
    col("q", "id");
    tov_schema__set_col_type_identity(ctx, schema, "q", "id", nullptr);
    key("k1", "a", "b", {{"ref", "id"}}); // no root
    key("k2", "a", "q", {{"ref", "id"}});
    key("k3", "a", "p", {{"ref", "id"}});
    EXPECT_EQ(find("a", "ref"), "q.id") << "keys in their order";
    refer("a", "ref", "p", "id");
    EXPECT_EQ(find("a", "ref"), "p.id") << "the column-level key first";
    refer("a", "ref", "c", "id");
    EXPECT_EQ(find("a", "ref"), "q.id") << "then the others, when it leads to none";
    key("k", "c", "p", {{"id", "id"}});
    EXPECT_EQ(find("a", "ref"), "p.id") << "a root further down is found before the next key is tried";
}

TEST_F(RootsTest, UnpreparedColumnsAreFollowed)
{
    tov_schema__add_col(ctx, schema, "b", "u", "u", 0, 0, 0);
    tov_schema__set_col_type_simple(ctx, schema, "b", "u", "sint32");
    refer("b", "u", "p", "id");
    refer("a", "ref", "b", "u");
    EXPECT_EQ(find("a", "ref"), "p.id");
}

TEST_F(RootsTest, TheColumnOutputIsOptional)
{
    const char *tbl_id = nullptr;
    refer("a", "ref", "p", "id");
    tov_schema__find_ipk_root_column(ctx, schema, "a", "ref", &tbl_id, nullptr);
    EXPECT_STREQ(tbl_id, "p");
    tov_schema__find_ipk_root_column(ctx, schema, "a", "id", &tbl_id, nullptr);
    EXPECT_EQ(tbl_id, nullptr);
    EXPECT_OK(ctx);
}

TEST_F(RootsTest, FailuresLeaveTheOutputsAsLastWritten)
{
    struct failure_case {
        const char *name;
        const char *document;
        uint64_t code;
        const char *description;
        bool untouched;
    };
    const failure_case cases[] = {
        {"an unknown table", R"({})", KT_ERR_NOT_FOUND, "table id 'a' not found in schema", true},
        {"an unknown column", R"({"tbls":{"a":{}}})", KT_ERR_NOT_FOUND, "col id 'c' not found in tbl id 'a' in schema",
         true},
        {"a column without a type", R"({"tbls":{"a":{"cols":{"c":{}}}}})", KT_ERR_KEY_NOT_FOUND, "no key 'type'", true},
        {"a reference to an unknown table",
         R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"B","ref_col_id":"c"}}}}}})",
         KT_ERR_NOT_FOUND, "table id 'B' not found in schema", false},
        {"a reference to an unknown column",
         R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"a","ref_col_id":"D"}}}}}})",
         KT_ERR_NOT_FOUND, "col id 'D' not found in tbl id 'a' in schema", false},
        {"a reference without a column",
         R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"a"}}}}}})", KT_ERR_NOT_FOUND,
         "the reference of col id 'c' in tbl id 'a' names no column", false},
        {"a reference without a table", R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"},"fk":{}}}}}})",
         KT_ERR_NOT_FOUND, "the reference of col id 'c' in tbl id 'a' names no table", false},
        {"a key without a table",
         R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"}}},"foreignkeys":{"k":{"cols":{}}}}}})",
         KT_ERR_KEY_NOT_FOUND, "no key 'ref_tbl_id'", false},
        {"a key without columns",
         R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"}}},"foreignkeys":{"k":{"ref_tbl_id":"a"}}}}})",
         KT_ERR_KEY_NOT_FOUND, "no key 'cols'", false},
        {"a pair without a referenced column",
         R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"}}},)"
         R"("foreignkeys":{"k":{"ref_tbl_id":"a","cols":{"c":null}}}}}})",
         KT_ERR_WRONG_TYPE, "key 'c' is not a string", false},
    };
    for (const failure_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(c.document);
        root r;
        tov_schema__find_ipk_root_column(ctx, schema, "a", "c", &r.tbl_id, &r.col_id);
        expect_failure(c.code, c.description);
        EXPECT_STREQ(r.tbl_id, c.untouched ? "untouched" : nullptr);
        EXPECT_STREQ(r.col_id, c.untouched ? "untouched" : nullptr);
    }
}

TEST_F(RootsTest, ARootIsFoundBeforeAMalformedKeyIsRead)
{
    load(R"({"tbls":{"a":{"cols":{"c":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":"a","ref_col_id":"i"}},)"
         R"("i":{"type":{"name":"identity"}}},"foreignkeys":7}}})");
    EXPECT_EQ(find("a", "c"), "a.i");
}

TEST_F(RootsTest, ALongChainIsFollowed)
{
    // By column-level keys, by the first column of keys of two, and by the last.
    for (const char *middle : {R"(,"fk":{"ref_tbl_id":"%","ref_col_id":"c"}}}})",
                               R"(}},"foreignkeys":{"k":{"ref_tbl_id":"%","cols":{"c":"c","d":"d"}}}})",
                               R"(}},"foreignkeys":{"k":{"ref_tbl_id":"%","cols":{"d":"d","c":"c"}}}})"}) {
        const unsigned count = 100000;
        const std::string pattern = middle;
        const size_t hole = pattern.find('%');
        std::string text = R"({"tbls":{)";
        for (unsigned n = 0; n < count; n++)
            text += joined({"\"", std::to_string(n), R"(":{"cols":{"c":{"type":{"name":"sint32"})",
                            pattern.substr(0, hole), std::to_string(n + 1), pattern.substr(hole + 1), ","});
        text += joined({"\"", std::to_string(count), R"(":{"cols":{"c":{"type":{"name":"identity"}}}}}})"});
        load(text.c_str());
        EXPECT_EQ(find("0", "c"), joined({std::to_string(count), ".c"}));
    }
}

// Every column refers to the next one in three ways, so that there are 3^200 of them to its end.
TEST_F(RootsTest, ManyWaysToAColumnAreSearchedOnce)
{
    const int count = 200;
    std::string text = R"({"tbls":{)";
    for (int n = 0; n < count; n++) {
        const std::string to = std::to_string(n + 1);
        text += joined({"\"", std::to_string(n), R"(":{"cols":{"c":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":")", to,
                        R"(","ref_col_id":"c"}}},"foreignkeys":{"k":{"ref_tbl_id":")", to,
                        R"(","cols":{"c":"c"}},"l":{"ref_tbl_id":")", to, R"(","cols":{"c":"C"}}}},)"});
    }
    const std::string end = joined({"\"", std::to_string(count), R"(":{"cols":{"c":{"type":{"name":)"});
    load(joined({text, end, R"("text"}}}}}})"}).c_str());
    EXPECT_EQ(find("0", "c"), "none");
    // The last way of all is the one to a root.
    load(joined({text, end, R"("sint32"}}},"foreignkeys":{"k":{"ref_tbl_id":"p","cols":{"C":"id"}}}},)",
                 R"("p":{"cols":{"id":{"type":{"name":"identity"}}}}}})"})
             .c_str());
    EXPECT_EQ(find("0", "c"), "p.id");
}

// Takes no more than a megabyte in all: the process ends at what goes beyond it.
static const KT_allocator narrow_allocator = {
    [](void *, size_t size) {
        static size_t taken = 0;
        taken += size;
        if (taken > 1 << 20)
            _exit(3);
        return std::malloc(size);
    },
    [](void *, void *block, size_t, size_t new_size) { return std::realloc(block, new_size); },
    [](void *, void *block) { std::free(block); },
    nullptr,
};

TEST_F(RootsTest, ACycleIsFollowedWithoutEndAndWithoutGrowing)
{
    refer("a", "id", "b", "id");
    refer("b", "id", "a", "id");
    key("k", "b", "a", {{"id", "id"}});
    root r;
    const itimerval timer = {{0, 0}, {0, 300000}};
    EXPECT_EXIT((KT_memory__set_allocator(&narrow_allocator), setitimer(ITIMER_REAL, &timer, nullptr),
                 tov_schema__find_ipk_root_column(ctx, schema, "a", "id", &r.tbl_id, &r.col_id)),
                ::testing::KilledBySignal(SIGALRM), "");
}

TEST_F(RootsTest, MemoryThatRunsOutIsReported)
{
    key("k", "a", "b", {{"ref", "id"}});
    key("k2", "a", "p", {{"ref", "id"}});
    root r;
    int failures = 0;
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        r = {};
        tov_schema__find_ipk_root_column(ctx, schema, "a", "ref", &r.tbl_id, &r.col_id);
        EXPECT_EQ(fault.leaked(), 0u);
        if (!fault.fired())
            break;
        failures++;
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
    }
    EXPECT_OK(ctx);
    EXPECT_GT(failures, 0);
    EXPECT_STREQ(r.tbl_id, "p");
}

TEST_F(RootsTest, RootsAreThoseOfThePlainSearch)
{
    int found = 0;
    int failed = 0;
    int endless = 0;
    for (uint32_t seed = 0; seed < 1500; seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        load(random
                 .document({.tbls = 4,
                            .cols = 3,
                            .fk_percent = seed % 100,
                            .keys = seed % 3,
                            .odd_percent = seed % 2 ? 0u : 4u})
                 .c_str());
        for (int asked = 0; asked < 10; asked++) {
            const std::string tbl_id = random.tbl_id();
            const std::string col_id = random.col_id();
            root plain;
            root r;
            bool ended = true;
            plain_find_ipk_root_column(ctx, schema, tbl_id.c_str(), col_id.c_str(), 60, &ended, &plain.tbl_id,
                                       &plain.col_id);
            const uint64_t code = KT_context__err_code(ctx);
            const std::string description = KT_context__err_description(ctx);
            reset();
            if (!ended) {
                endless++;
                continue;
            }
            tov_schema__find_ipk_root_column(ctx, schema, tbl_id.c_str(), col_id.c_str(), &r.tbl_id, &r.col_id);
            ASSERT_EQ(KT_context__err_code(ctx), code) << document();
            ASSERT_EQ(KT_context__err_description(ctx), description) << document();
            reset();
            // The very same texts, and untouched ones where nothing was written.
            ASSERT_STREQ(r.tbl_id, plain.tbl_id) << document();
            ASSERT_STREQ(r.col_id, plain.col_id) << document();
            found += !code && r.tbl_id;
            failed += code != 0;
        }
    }
    EXPECT_GT(found, 1000);
    EXPECT_GT(failed, 1000);
    EXPECT_GT(endless, 100);
}

// The same at the end of a chain so long that columns are taken note of by then.
TEST_F(RootsTest, RootsAtTheEndOfALongChainAreThoseOfThePlainSearch)
{
    const int length = 80;
    int found = 0;
    int failed = 0;
    int none = 0;
    for (uint32_t seed = 0; seed < 4000; seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        std::string text =
            random.document({.tbls = 4, .cols = 3, .fk_percent = 60, .keys = 3, .odd_percent = seed % 4 ? 0u : 4u});
        std::string chain;
        for (int n = 0; n < length; n++) {
            const bool last = n + 1 == length;
            chain +=
                joined({"\"x", std::to_string(n), R"(":{"cols":{"c":{"type":{"name":"sint32"},"fk":{"ref_tbl_id":")",
                        last ? random.tbl_id() : joined({"x", std::to_string(n + 1)}), R"(","ref_col_id":")",
                        last ? random.col_id() : "c", "\"}}}},"});
        }
        load(text.insert(text.find(R"("tbls":{)") + 8, chain).c_str());
        root plain;
        root r;
        bool ended = true;
        plain_find_ipk_root_column(ctx, schema, "x0", "c", length + 60, &ended, &plain.tbl_id, &plain.col_id);
        const uint64_t code = KT_context__err_code(ctx);
        const std::string description = KT_context__err_description(ctx);
        reset();
        if (!ended)
            continue;
        tov_schema__find_ipk_root_column(ctx, schema, "x0", "c", &r.tbl_id, &r.col_id);
        ASSERT_EQ(KT_context__err_code(ctx), code) << document();
        ASSERT_EQ(KT_context__err_description(ctx), description) << document();
        reset();
        ASSERT_STREQ(r.tbl_id, plain.tbl_id) << document();
        ASSERT_STREQ(r.col_id, plain.col_id) << document();
        found += !code && r.tbl_id;
        none += !code && !r.tbl_id;
        failed += code != 0;
    }
    EXPECT_GT(found, 200);
    EXPECT_GT(none, 200);
    EXPECT_GT(failed, 200);
}

TEST_F(RootsTest, ConditionOfATableWithoutPrimaryKeyIsEmpty)
{
    EXPECT_EQ(condition("a", 0, 0), "");
    EXPECT_EQ(condition("a", 1, 2), "");
}

TEST_F(RootsTest, ConditionConvertsTheColumnsThatHaveARoot)
{
    struct condition_case {
        uint32_t left;
        uint32_t right;
        const char *expected;
    };
    const condition_case cases[] = {
        {0, 0, R"("l"."the ref"="r"."the ref" AND "l"."the id"="r"."the id")"},
        {1, 0, R"((CAST(SUBSTRING("l"."the ref",3,25) AS bigint))="r"."the ref" AND "l"."the id"="r"."the id")"},
        {0, 1, R"("l"."the ref"=(CAST(SUBSTRING("r"."the ref",3,25) AS bigint)) AND "l"."the id"="r"."the id")"},
        {2, 0, R"(('S:' + CAST("l"."the ref" AS varchar(25)))="r"."the ref" AND "l"."the id"="r"."the id")"},
        {2, 1,
         R"(('S:' + CAST("l"."the ref" AS varchar(25)))=(CAST(SUBSTRING("r"."the ref",3,25) AS bigint)) AND )"
         R"("l"."the id"="r"."the id")"},
        {3, 4294967295u, R"("l"."the ref"="r"."the ref" AND "l"."the id"="r"."the id")"},
    };
    pk("a", {"ref", "id"});
    refer("a", "ref", "p", "id");
    for (const condition_case &c : cases)
        EXPECT_EQ(condition("a", c.left, c.right), c.expected) << c.left << " " << c.right;
}

TEST_F(RootsTest, ConditionOfAnIdentityColumn)
{
    EXPECT_EQ(condition("p", 0, 2), R"("l"."the id"=('S:' + CAST("r"."the id" AS varchar(25))))");
}

TEST_F(RootsTest, ConditionTakesNamesAsTheyStand)
{
    KT_string *text = nullptr;
    pk("a", {"id"});
    tov_schema__set_col_name(ctx, schema, "a", "id", "a\"b");
    tov_schema__get_on_pk_col_names(ctx, schema, "a", "100%s", "y\"", 0, 0, &text);
    EXPECT_EQ(take(ctx, text), R"("100%s"."a"b"="y""."a"b")");
}

TEST_F(RootsTest, ConditionLooksForRootsOnlyWhereASideConverts)
{
    pk("a", {"ref"});
    refer("a", "ref", "nowhere", "id");
    EXPECT_EQ(condition("a", 0, 0), R"("l"."the ref"="r"."the ref")");
    auto *untouched = reinterpret_cast<KT_string *>(this);
    for (const auto &[left, right] : {std::pair{1u, 0u}, {0u, 2u}, {7u, 0u}}) {
        KT_string *text = untouched;
        tov_schema__get_on_pk_col_names(ctx, schema, "a", "l", "r", left, right, &text);
        expect_failure(KT_ERR_NOT_FOUND, "table id 'nowhere' not found in schema");
        EXPECT_EQ(text, untouched);
    }
}

TEST_F(RootsTest, ConditionNeedsNames)
{
    load(R"({"tbls":{"a":{"cols":{"id":{"type":{"name":"identity"}}}}}})");
    KT_string *text = nullptr;
    tov_schema__get_on_pk_col_names(ctx, schema, "a", "l", "r", 0, 0, &text);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'name'");
    tov_schema__get_on_pk_col_names(ctx, schema, "b", "l", "r", 0, 0, &text);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'b' not found in schema");
    EXPECT_EQ(text, nullptr);
}

TEST_F(RootsTest, ConditionReportsMemoryThatRunsOut)
{
    KT_string *text = nullptr;
    pk("a", {"ref", "id"});
    refer("a", "ref", "p", "id");
    sweep_allocations(ctx, &text, [&] { tov_schema__get_on_pk_col_names(ctx, schema, "a", "l", "r", 1, 2, &text); });
    EXPECT_EQ(take(ctx, text), R"((CAST(SUBSTRING("l"."the ref",3,25) AS bigint))=)"
                               R"(('S:' + CAST("r"."the ref" AS varchar(25))) AND "l"."the id"="r"."the id")");
}
