#include "document/tov_parse_defin_private.hpp"
#include "fk_plain.hpp"
#include "fk_random.hpp"
#include "fk_test.hpp"

#include <csignal>
#include <sys/time.h>

namespace {

struct order_case {
    const char *name;
    const char *tbls;     // see FkTest::tbls()
    const char *expected; // null: refused as a circle
};

const order_case order_cases[] = {
    {"a schema without tables has an empty order", "", ""},
    {"tables without references stand in schema order", "c a b", "c a b"},
    {"within a level the table that entered in an earlier pass comes first", "d>c c>a a e>a", "a e c d"},
    {"a table that waits comes after one that does not", "b>a a c", "a c b"},
    {"table-level keys count like column-level ones", "b=a a c", "a c b"},
    {"both kinds of key of one table count", "b>a a", "a b"},
    {"a table is one above the highest that it refers to", "a b>a c>a,b d>a", "a b d c"},
    {"a repeated reference counts once", "b>a,a,a a", "a b"},
    {"a table that refers only to itself is placed", "t1>t1", "t1"},
    {"but its entering is not a change, so one before it never enters", "t2>t1 t1>t1", nullptr},
    {"one after it enters in the same pass", "t1>t1 t2>t1", "t1 t2"},
    {"another table's entering lets the passes go on", "t2>t1 t1>t1 x", "t1 x t2"},
    {"a table raised above one that refers to itself lets them go on too", "t2>t1 t1>t1 t3>t1", "t1 t3 t2"},
    {"tables that refer to themselves keep schema order where the passes end at once", "t2>t1,t2 t1>t1", "t2 t1"},
    {"and are put in order where the passes go on", "t2>t1,t2 t1>t1 x", "t1 x t2"},
    {"a table that refers to itself and to another comes after that one", "a>a,b b", "b a"},
    {"a reference to itself may be in another letter case", "t1>T1", "t1"},
    {"a reference to another table may not", "b>A a", nullptr},
    {"a reference that leads nowhere keeps a table out", "a b>nowhere", nullptr},
    {"and every table that depends on it", "a b>nowhere c>b", nullptr},
    {"unless the table refers to itself", "a>nowhere,a", "a"},
    {"or also to a table that enters", "a b>nowhere,a", "a b"},
    {"two tables that refer to each other never enter", "a>b b>a", nullptr},
    {"nor does what depends on them, whatever else there is", "x a>b b>a c>b", nullptr},
    {"a chain against schema order takes a pass for each table", "e>d d>c c>b b>a a", "a b c d e"},
    {"levels within a pass build on each other", "a b>a c>b e>d d>c", "a b c d e"},
    {"a table that enters late by one reference keeps its place when raised by another", "r>q,x q>p p x", "p x q r"},
};

// Stops the process after a time, to show that a call does not come back.
void stop_after_milliseconds(int milliseconds)
{
    const itimerval timer = {{0, 0}, {0, milliseconds * 1000}};
    setitimer(ITIMER_REAL, &timer, nullptr);
}

} // namespace

TEST_F(FkTest, Order)
{
    for (const order_case &c : order_cases) {
        SCOPED_TRACE(c.name);
        reset_schema();
        tbls(c.tbls);
        KT_varray *order = nullptr;
        tov_schema__sort_by_references(ctx, schema, &order);
        if (c.expected) {
            EXPECT_OK(ctx);
            EXPECT_EQ(take(ctx, order), c.expected);
        } else {
            EXPECT_ERROR(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED,
                         "Foreign key constraints create a circular dependency among tables.");
            EXPECT_EQ(order, nullptr);
            reset();
        }
    }
}

TEST_F(FkTest, OrderNeverEndsWhereACircleHangsOnAPlacedTable)
{
    for (const char *text : {"x a>x,b b>a", "x b>a a>x,b", "x a>x,b b>a c>b d"}) {
        SCOPED_TRACE(text);
        reset_schema();
        tbls(text);
        KT_varray *order = nullptr;
        EXPECT_EXIT((stop_after_milliseconds(300), tov_schema__sort_by_references(ctx, schema, &order)),
                    ::testing::KilledBySignal(SIGALRM), "");
    }
}

TEST_F(FkTest, OrderFailsWithWhatItMeets)
{
    struct failure_case {
        const char *name;
        const char *document;
        uint64_t code;
        const char *description;
    };
    const failure_case cases[] = {
        {"a table-level key without a referenced table", R"({"tbls":{"a":{"foreignkeys":{"k":{}}}}})",
         KT_ERR_KEY_NOT_FOUND, "no key 'ref_tbl_id'"},
        {"a column-level key without a referenced table", R"({"tbls":{"a":{"cols":{"c":{"fk":{}}}}}})",
         KT_ERR_NOT_FOUND, "the reference of col id 'c' in tbl id 'a' names no table"},
        {"a table id that no lookup reaches", R"({"tbls":{"A":{}}})", KT_ERR_NOT_FOUND,
         "table id 'A' not found in schema"},
        {"tables that are no map", R"({"tbls":7})", KT_ERR_WRONG_TYPE, "key 'tbls' is not a map"},
    };
    for (const failure_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(c.document);
        auto *untouched = reinterpret_cast<KT_varray *>(this);
        KT_varray *order = untouched;
        tov_schema__sort_by_references(ctx, schema, &order);
        expect_failure(c.code, c.description);
        EXPECT_EQ(order, untouched);
    }
}

TEST_F(FkTest, OrderReportsMemoryThatRunsOut)
{
    tbls("d>c,d c>a a e=a f>e");
    KT_varray *order = nullptr;
    sweep_allocations(ctx, &order, [&] {
        schema->reference_change_count++; // or the order that is kept would be given
        tov_schema__sort_by_references(ctx, schema, &order);
    });
    EXPECT_EQ(take(ctx, order), "a e c d f");
    sweep_allocations(ctx, &order, [&] { tov_schema__sort_by_references(ctx, schema, &order); });
    EXPECT_EQ(take(ctx, order), "a e c d f");
}

TEST_F(FkTest, OrderOfALongChainAgainstSchemaOrder)
{
    const unsigned count = 100000;
    std::string document = R"({"tbls":{)";
    for (unsigned n = 0; n < count; n++) {
        // Each refers to the first one too, so that plain passes would raise each table again and again.
        document += joined({"\"", std::to_string(n), R"(":{"cols":{"a":{"fk":{"ref_tbl_id":")", std::to_string(count),
                            R"("}},"b":{"fk":{"ref_tbl_id":")", std::to_string(n + 1), R"("}}}},)"});
    }
    document += joined({"\"", std::to_string(count), R"(":{}}})"});
    load(document.c_str());
    KT_varray *order = nullptr;
    tov_schema__sort_by_references(ctx, schema, &order);
    ASSERT_OK(ctx);
    for (uint32_t n = 0; n <= count; n++) {
        const char *tbl_id = nullptr;
        KT_varray__get__sz(ctx, order, n, &tbl_id);
        ASSERT_EQ(tbl_id, std::to_string(count - n));
    }
    KT_varray__free(ctx, order);
}

TEST_F(FkTest, OrderIsThatOfThePlainPasses)
{
    int ordered = 0;
    int refused = 0;
    int endless = 0;
    for (uint32_t seed = 0; seed < 4000; seed++) {
        SCOPED_TRACE(seed);
        fk_random random{seed};
        load(random
                 .document({.tbls = 2 + seed % 9,
                            .cols = 3,
                            .fk_percent = 5 + seed % 50,
                            .keys = seed % 2,
                            .odd_percent = seed % 4 == 0 ? 8u : 0u})
                 .c_str());
        KT_varray *expected = nullptr;
        KT_varray *order = nullptr;
        bool ended = false;
        plain_sort_by_references(ctx, schema, 100, &ended, &expected);
        const uint64_t expected_code = KT_context__err_code(ctx);
        const std::string expected_description = KT_context__err_description(ctx);
        reset();
        if (!ended && !expected_code) {
            endless++;
            continue;
        }
        tov_schema__sort_by_references(ctx, schema, &order);
        ASSERT_EQ(KT_context__err_code(ctx), expected_code) << document();
        ASSERT_EQ(KT_context__err_description(ctx), expected_description) << document();
        reset();
        (expected ? ordered : refused)++;
        ASSERT_EQ(take(ctx, order), take(ctx, expected)) << document();
    }
    // All three ways to come out are among them.
    EXPECT_GT(ordered, 500);
    EXPECT_GT(refused, 500);
    EXPECT_GT(endless, 100);
}
