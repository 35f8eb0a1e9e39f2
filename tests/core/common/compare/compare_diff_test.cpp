// Comparing schemas: the four categories of tables, the three of columns, and the lists they come in.
#include "compare/tov_compare_private.hpp"

#include "failing_alloc.hpp"
#include "schema_test.hpp"

namespace {

constexpr const char *SCHEMA_FILE = "src/core/common/tov_parse_defin";

// The texts of a list separated by blanks; "(null)" for no list. Takes the list over.
std::string take_ids(KT_context *ctx, KT_varray *list)
{
    if (!list)
        return "(null)";
    std::string ids;
    uint32_t count = 0;
    KT_varray__count(ctx, list, &count);
    for (uint32_t i = 0; i < count; i++) {
        const char *id = "(no text)";
        KT_varray__get__sz(ctx, list, i, &id);
        ids += (i ? " " : "") + std::string(id);
    }
    KT_varray__free(ctx, list);
    return ids;
}

class CompareDiffTest : public SchemaTest {
  protected:
    void TearDown() override
    {
        tov_schema__nullfree(ctx, &other);
        SchemaTest::TearDown();
    }
    // Replaces schemas a and b by ones read from JSON; null stands for no schema.
    void load_both(const char *a, const char *b)
    {
        tov_schema__nullfree(ctx, &schema);
        tov_schema__nullfree(ctx, &other);
        if (a)
            tov_schema__from_json(ctx, a, &schema);
        if (b)
            tov_schema__from_json(ctx, b, &other);
        ASSERT_OK(ctx);
    }
    // The context holds this error, and its outermost frame is the module's own.
    void expect_error_from_module(uint64_t code, const char *description)
    {
        EXPECT_ERROR(ctx, code, description);
        ASSERT_GE(KT_context__count_err_stackframes(ctx), 2u);
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, KT_context__count_err_stackframes(ctx) - 1, &file, &line);
        EXPECT_STREQ(file, SCHEMA_FILE);
        reset();
    }

    tov_schema *other = nullptr;
};

// One table, with some columns.
#define TBL(id, members, cols) "\"" id "\":{\"name\":\"" id "\"," members "\"cols\":{" cols "}}"
#define TXID(n) "\"txid\":" #n ","
#define COL(id) "\"" id "\":{\"name\":\"" id "\"}"
#define SCHEMA(tbls) "{\"compat_level\":1,\"tbls\":{" tbls "}}"

struct tbls_case {
    const char *name;
    const char *a;
    const char *b;
    const char *only_in_a;
    const char *only_in_b;
    const char *same;
    const char *changed;
};

constexpr const char *NONE = "(null)";

const tbls_case tbls_cases[] = {
    {"identical schemas with equal txids are the same", SCHEMA(TBL("t1", TXID(5), "") "," TBL("t2", TXID(6), "")),
     SCHEMA(TBL("t1", TXID(5), "") "," TBL("t2", TXID(6), "")), NONE, NONE, "t1 t2", NONE},
    {"two txids that differ mean changed", SCHEMA(TBL("t1", TXID(5), "")), SCHEMA(TBL("t1", TXID(7), "")), NONE, NONE,
     NONE, "t1"},
    {"an older txid is a change too", SCHEMA(TBL("t1", TXID(7), "")), SCHEMA(TBL("t1", TXID(5), "")), NONE, NONE, NONE,
     "t1"},
    {"a negative txid is a txid", SCHEMA(TBL("t1", TXID(-1), "")), SCHEMA(TBL("t1", TXID(5), "")), NONE, NONE, NONE,
     "t1"},
    {"a txid in a only says nothing", SCHEMA(TBL("t1", TXID(5), "")), SCHEMA(TBL("t1", "", "")), NONE, NONE, "t1",
     NONE},
    {"a txid in b only says nothing", SCHEMA(TBL("t1", "", "")), SCHEMA(TBL("t1", TXID(5), "")), NONE, NONE, "t1",
     NONE},
    {"a txid of 0 says nothing", SCHEMA(TBL("t1", TXID(0), "")), SCHEMA(TBL("t1", TXID(5), "")), NONE, NONE, "t1",
     NONE},
    {"no txid on either side says nothing", SCHEMA(TBL("t1", "", "")), SCHEMA(TBL("t1", "", "")), NONE, NONE, "t1",
     NONE},
    {"what a table holds is not compared", SCHEMA(TBL("t1", TXID(5), COL("c1"))), SCHEMA(TBL("t1", TXID(5), COL("c2"))),
     NONE, NONE, "t1", NONE},
    {"a null b leaves all to a", SCHEMA(TBL("t1", TXID(5), "") "," TBL("t2", TXID(6), "")), nullptr, "t1 t2", NONE,
     NONE, NONE},
    {"a null a leaves all to b", nullptr, SCHEMA(TBL("t1", TXID(5), "") "," TBL("t2", TXID(6), "")), NONE, "t1 t2",
     NONE, NONE},
    {"two null schemas give nothing", nullptr, nullptr, NONE, NONE, NONE, NONE},
    {"two schemas without tables give nothing", "{}", "{}", NONE, NONE, NONE, NONE},
    {"a table of b alone stands nowhere else", SCHEMA(TBL("t1", "", "")),
     SCHEMA(TBL("t1", "", "") "," TBL("t2", "", "")), NONE, "t2", "t1", NONE},
    {"each category has the order of the schema walked",
     SCHEMA(TBL("z", TXID(1), "") "," TBL("c", "", "") "," TBL("y", TXID(1), "") "," TBL("b", "", "")),
     SCHEMA(TBL("q", "", "") "," TBL("y", TXID(2), "") "," TBL("p", "", "") "," TBL("z", TXID(2), "")), "c b", "q p",
     NONE, "z y"},
};

TEST_F(CompareDiffTest, DiffTbls)
{
    for (const tbls_case &c : tbls_cases) {
        SCOPED_TRACE(c.name);
        load_both(c.a, c.b);
        KT_varray *only_in_a = nullptr;
        KT_varray *only_in_b = nullptr;
        KT_varray *same = nullptr;
        KT_varray *changed = nullptr;
        tov_schema__diff_tbls(ctx, schema, other, &only_in_a, &only_in_b, &same, &changed);
        EXPECT_OK(ctx);
        EXPECT_EQ(take_ids(ctx, only_in_a), c.only_in_a);
        EXPECT_EQ(take_ids(ctx, only_in_b), c.only_in_b);
        EXPECT_EQ(take_ids(ctx, same), c.same);
        EXPECT_EQ(take_ids(ctx, changed), c.changed);
    }
}

constexpr const char *FOUR_A = SCHEMA(TBL("a", "", "") "," TBL("s", "", "") "," TBL("c", TXID(1), ""));
constexpr const char *FOUR_B = SCHEMA(TBL("b", "", "") "," TBL("s", "", "") "," TBL("c", TXID(2), ""));

TEST_F(CompareDiffTest, EachCategoryOfTablesMayBeUnwanted)
{
    load_both(FOUR_A, FOUR_B);
    const char *expected[] = {"a", "b", "s", "c"};
    for (uint32_t wanted = 0; wanted < 16; wanted++) {
        SCOPED_TRACE(wanted);
        KT_varray *lists[4] = {};
        KT_varray **outputs[4] = {};
        for (uint32_t i = 0; i < 4; i++)
            outputs[i] = (wanted & (1u << i)) ? &lists[i] : nullptr;
        tov_schema__diff_tbls(ctx, schema, other, outputs[0], outputs[1], outputs[2], outputs[3]);
        EXPECT_OK(ctx);
        for (uint32_t i = 0; i < 4; i++)
            EXPECT_EQ(take_ids(ctx, lists[i]), outputs[i] ? expected[i] : NONE);
    }
}

TEST_F(CompareDiffTest, ListsThatAreThereAreAppendedTo)
{
    load_both(FOUR_A, FOUR_B);
    KT_varray *all = nullptr;
    KT_varray__alloc(ctx, &all);
    KT_varray__append__string__sz(ctx, all, "first");
    KT_varray *before = all;
    tov_schema__diff_tbls(ctx, schema, other, &all, &all, &all, &all);
    EXPECT_OK(ctx);
    EXPECT_EQ(all, before);
    EXPECT_EQ(take_ids(ctx, all), "first a s c b");
}

TEST_F(CompareDiffTest, AListForAnEmptyCategoryStaysAsItWas)
{
    load_both(FOUR_A, FOUR_A);
    KT_varray *only_in_a = nullptr;
    KT_varray__alloc(ctx, &only_in_a);
    tov_schema__diff_tbls(ctx, schema, other, &only_in_a, nullptr, nullptr, nullptr);
    EXPECT_OK(ctx);
    EXPECT_EQ(take_ids(ctx, only_in_a), "");
}

TEST_F(CompareDiffTest, ASchemaComparedWithItselfIsTheSame)
{
    load_both(FOUR_A, nullptr);
    KT_varray *lists[4] = {};
    tov_schema__diff_tbls(ctx, schema, schema, &lists[0], &lists[1], &lists[2], &lists[3]);
    EXPECT_OK(ctx);
    const char *expected[] = {NONE, NONE, "a s c", NONE};
    for (uint32_t i = 0; i < 4; i++)
        EXPECT_EQ(take_ids(ctx, lists[i]), expected[i]);
}

TEST_F(CompareDiffTest, TablesKeepWhatWasAppendedBeforeAFailure)
{
    load_both(SCHEMA(TBL("t1", TXID(5), "") "," TBL("t2", "\"txid\":\"six\",", "") "," TBL("t3", TXID(5), "")),
              SCHEMA(TBL("t0", "", "") "," TBL("t1", TXID(5), "") "," TBL("t2", "", "") "," TBL("t3", "", "")));
    KT_varray *lists[4] = {};
    tov_schema__diff_tbls(ctx, schema, other, &lists[0], &lists[1], &lists[2], &lists[3]);
    EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
    reset();
    const char *expected[] = {NONE, NONE, "t1", NONE};
    for (uint32_t i = 0; i < 4; i++)
        EXPECT_EQ(take_ids(ctx, lists[i]), expected[i]);
}

TEST_F(CompareDiffTest, ATxidOfBThatIsNoNumberFails)
{
    load_both(SCHEMA(TBL("t1", TXID(5), "")), SCHEMA(TBL("t1", "\"txid\":\"six\",", "")));
    KT_varray *same = nullptr;
    tov_schema__diff_tbls(ctx, schema, other, nullptr, nullptr, &same, nullptr);
    EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
    EXPECT_EQ(same, nullptr);
    reset();
}

// A document whose tables are no object fails on its own side of the walk; the other side's lists are filled first.
TEST_F(CompareDiffTest, TablesThatAreNoObjectFail)
{
    load_both(SCHEMA(TBL("t1", "", "")), "{\"tbls\":7}");
    KT_varray *only_in_a = nullptr;
    tov_schema__diff_tbls(ctx, schema, other, &only_in_a, nullptr, nullptr, nullptr);
    EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
    EXPECT_EQ(only_in_a, nullptr);
    reset();
    tov_schema__diff_tbls(ctx, nullptr, other, nullptr, nullptr, nullptr, nullptr);
    EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
    reset();
}

TEST_F(CompareDiffTest, ListTbls)
{
    load_both(SCHEMA(TBL("t2", "", "") "," TBL("t1", TXID(5), "")), nullptr);
    KT_varray *tbl_ids = nullptr;
    tov_schema__list_tbls(ctx, schema, &tbl_ids);
    tov_schema__list_tbls(ctx, schema, &tbl_ids);
    EXPECT_OK(ctx);
    EXPECT_EQ(take_ids(ctx, tbl_ids), "t2 t1 t2 t1");
}

TEST_F(CompareDiffTest, ListTblsOfNoSchemaOrNoTablesYieldsNothing)
{
    KT_varray *tbl_ids = nullptr;
    tov_schema__list_tbls(ctx, nullptr, &tbl_ids);
    EXPECT_OK(ctx);
    EXPECT_EQ(tbl_ids, nullptr);
    tov_schema__list_tbls(ctx, nullptr, nullptr);
    EXPECT_OK(ctx);
    tov_schema__list_tbls(ctx, schema, &tbl_ids);
    EXPECT_OK(ctx);
    EXPECT_EQ(tbl_ids, nullptr);
}

TEST_F(CompareDiffTest, ListTblsFailures)
{
    tov_schema__list_tbls(ctx, schema, nullptr);
    EXPECT_ERROR(ctx, KT_ERR_NULL_ARGUMENT, "tbl_ids is null");
    EXPECT_EQ(KT_context__count_err_stackframes(ctx), 1u);
    reset();
    load("{\"tbls\":[]}");
    KT_varray *tbl_ids = nullptr;
    tov_schema__list_tbls(ctx, schema, &tbl_ids);
    EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
    EXPECT_EQ(tbl_ids, nullptr);
    reset();
}

struct cols_case {
    const char *name;
    const char *a;
    const char *b;
    const char *only_in_a;
    const char *only_in_b;
    const char *both;
};

const cols_case cols_cases[] = {
    {"the same columns are in both", COL("c1") "," COL("c2"), COL("c1") "," COL("c2"), NONE, NONE, "c1 c2"},
    {"a column added in b is only in b", COL("c1"), COL("c1") "," COL("c2"), NONE, "c2", "c1"},
    {"a column dropped in b is only in a", COL("c1") "," COL("c2"), COL("c2"), "c1", NONE, "c2"},
    {"a column whose type changed is in both", "\"c\":{\"name\":\"C\",\"type\":{\"name\":\"sint32\"}}",
     "\"c\":{\"name\":\"C\",\"type\":{\"name\":\"text\",\"width\":9}}", NONE, NONE, "c"},
    {"each category has the order of the schema walked", COL("z") "," COL("c") "," COL("y") "," COL("b"),
     COL("q") "," COL("y") "," COL("p") "," COL("z"), "c b", "q p", "z y"},
    {"tables without columns have nothing to list", "", "", NONE, NONE, NONE},
    {"an id that a document has in upper case is looked for in lower case", COL("C"), COL("c"), NONE, "c", "C"},
};

TEST_F(CompareDiffTest, DiffCols)
{
    for (const cols_case &c : cols_cases) {
        SCOPED_TRACE(c.name);
        const std::string head = R"({"tbls":{"t":{"name":"T","cols":{)";
        load_both((head + c.a + "}}}}").c_str(), (head + c.b + "}}}}").c_str());
        KT_varray *only_in_a = nullptr;
        KT_varray *only_in_b = nullptr;
        KT_varray *both = nullptr;
        tov_schema__diff_cols(ctx, schema, other, "T", &only_in_a, &only_in_b, &both);
        EXPECT_OK(ctx);
        EXPECT_EQ(take_ids(ctx, only_in_a), c.only_in_a);
        EXPECT_EQ(take_ids(ctx, only_in_b), c.only_in_b);
        EXPECT_EQ(take_ids(ctx, both), c.both);
    }
}

TEST_F(CompareDiffTest, EachCategoryOfColumnsMayBeUnwantedOrAppendedTo)
{
    load_both(SCHEMA(TBL("t", "", COL("a") "," COL("s"))), SCHEMA(TBL("t", "", COL("s") "," COL("b"))));
    const char *expected[] = {"a", "b", "s"};
    for (uint32_t wanted = 0; wanted < 8; wanted++) {
        SCOPED_TRACE(wanted);
        KT_varray *lists[3] = {};
        KT_varray **outputs[3] = {};
        for (uint32_t i = 0; i < 3; i++)
            outputs[i] = (wanted & (1u << i)) ? &lists[i] : nullptr;
        tov_schema__diff_cols(ctx, schema, other, "t", outputs[0], outputs[1], outputs[2]);
        EXPECT_OK(ctx);
        for (uint32_t i = 0; i < 3; i++)
            EXPECT_EQ(take_ids(ctx, lists[i]), outputs[i] ? expected[i] : NONE);
    }
    KT_varray *all = nullptr;
    tov_schema__diff_cols(ctx, schema, other, "t", &all, &all, &all);
    EXPECT_OK(ctx);
    EXPECT_EQ(take_ids(ctx, all), "a s b");
}

TEST_F(CompareDiffTest, UnpreparedColumnsAreNotSeen)
{
    load_both(SCHEMA(TBL("t", "", COL("c1"))), SCHEMA(TBL("t", "", COL("c1"))));
    tov_schema__add_col(ctx, schema, "t", "u1", "U1", 0, 0, 0);
    tov_schema__add_col(ctx, other, "t", "u1", "U1", 0, 0, 0);
    tov_schema__add_col(ctx, schema, "t", "u2", "U2", 0, 0, 0);
    tov_schema__add_col(ctx, other, "t", "u2", "U2", 1, 0, 0);
    ASSERT_OK(ctx);
    KT_varray *lists[3] = {};
    tov_schema__diff_cols(ctx, schema, other, "t", &lists[0], &lists[1], &lists[2]);
    EXPECT_OK(ctx);
    const char *expected[] = {NONE, "u2", "c1"};
    for (uint32_t i = 0; i < 3; i++)
        EXPECT_EQ(take_ids(ctx, lists[i]), expected[i]);
}

TEST_F(CompareDiffTest, ColumnsOfATableThatOneSideLacksFail)
{
    const struct {
        const char *name;
        const char *a;
        const char *b;
    } cases[] = {
        {"missing from a", "{}", SCHEMA(TBL("t", "", COL("c1")))},
        {"missing from b", SCHEMA(TBL("t", "", COL("c1"))), "{}"},
        {"missing from b, without columns in a", SCHEMA(TBL("t", "", "")), "{}"},
        {"missing from both", "{}", "{}"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        load_both(c.a, c.b);
        KT_varray *lists[3] = {};
        tov_schema__diff_cols(ctx, schema, other, "T", &lists[0], &lists[1], &lists[2]);
        expect_error_from_module(KT_ERR_NOT_FOUND, "table id 'T' not found in schema");
        for (KT_varray *list : lists)
            EXPECT_EQ(list, nullptr);
    }
}

TEST_F(CompareDiffTest, TheWalksAloneSortIntoTheirLists)
{
    load_both(FOUR_A, FOUR_B);
    KT_varray *missing = nullptr;
    KT_varray *same = nullptr;
    KT_varray *changed = nullptr;
    _tov_diff_loop_tbls(ctx, schema, other, &missing, &same, &changed);
    EXPECT_OK(ctx);
    EXPECT_EQ(take_ids(ctx, missing), "a");
    EXPECT_EQ(take_ids(ctx, same), "s");
    EXPECT_EQ(take_ids(ctx, changed), "c");
}

// The one id of its category, or none where the failure came first; never an empty list.
void expect_kept(KT_context *ctx, KT_varray *list, const char *id, bool finished, uint32_t *kept)
{
    const bool there = list != nullptr;
    EXPECT_EQ(take_ids(ctx, list), there || finished ? id : NONE);
    *kept += there && !finished;
}

TEST_F(CompareDiffTest, EveryFailingAllocationLeavesWhatWasAppendedBefore)
{
    load_both(SCHEMA(TBL("a", "", "") "," TBL("s", "", COL("x") "," COL("y")) "," TBL("c", TXID(1), "")),
              SCHEMA(TBL("b", "", "") "," TBL("s", "", COL("y") "," COL("z")) "," TBL("c", TXID(2), "")));
    uint32_t kept_tbls = 0;
    uint32_t kept_cols = 0;
    bool finished = false;
    for (kt_failing_alloc fault; !finished && fault.next(); KT_context__err_reset(ctx)) {
        KT_varray *tbls[4] = {};
        KT_varray *cols[3] = {};
        tov_schema__diff_tbls(ctx, schema, other, &tbls[0], &tbls[1], &tbls[2], &tbls[3]);
        const bool tbls_finished = !KT_context__has_err(ctx);
        if (tbls_finished)
            tov_schema__diff_cols(ctx, schema, other, "s", &cols[0], &cols[1], &cols[2]);
        const bool cols_finished = !KT_context__has_err(ctx);
        EXPECT_FAILED(ctx, cols_finished ? 0 : KT_ERR_OUT_OF_MEMORY);
        KT_context__err_reset(ctx);
        finished = !fault.fired();
        const char *tbls_expected[] = {"a", "b", "s", "c"};
        for (uint32_t i = 0; i < 4; i++)
            expect_kept(ctx, tbls[i], tbls_expected[i], tbls_finished, &kept_tbls);
        const char *cols_expected[] = {"x", "z", "y"};
        for (uint32_t i = 0; i < 3; i++)
            expect_kept(ctx, cols[i], cols_expected[i], cols_finished, &kept_cols);
        EXPECT_EQ(fault.leaked(), 0u);
    }
    EXPECT_GT(kept_tbls, 0u);
    EXPECT_GT(kept_cols, 0u);
}

TEST_F(CompareDiffTest, AFirstIdThatCannotBeKeptLeavesNoList)
{
    const std::string long_id(100000, 'x');
    tov_schema__add_tbl(ctx, schema, long_id.c_str(), "T", 1);
    ASSERT_OK(ctx);
    uint32_t failures = 0;
    bool finished = false;
    for (kt_failing_alloc fault; !finished && fault.next(); KT_context__err_reset(ctx)) {
        KT_varray *tbl_ids = nullptr;
        tov_schema__list_tbls(ctx, schema, &tbl_ids);
        finished = !fault.fired();
        failures += KT_context__has_err(ctx) != 0;
        EXPECT_EQ(KT_context__has_err(ctx) != 0, tbl_ids == nullptr);
        KT_context__err_reset(ctx);
        KT_varray__free(ctx, tbl_ids);
        EXPECT_EQ(fault.leaked(), 0u);
    }
    EXPECT_GE(failures, 2u); // the list, and the text in it
}

} // namespace
