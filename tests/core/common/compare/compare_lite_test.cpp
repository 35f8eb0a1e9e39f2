// The lite schema: its text, its readers, and that the two agree for random schemas.
#include "failing_alloc.hpp"
#include "schema_test.hpp"

#include <algorithm>
#include <random>
#include <string_view>
#include <vector>

namespace {

constexpr const char *SCHEMA_FILE = "src/core/common/tov_parse_defin";

constexpr const char *TWO_TABLES = R"({"tbls":{)"
                                   R"("t1":{"name":"T","txid":42,"cols":{"c1":{"name":"Id"},"c2":{"name":"Title"}}},)"
                                   R"("t2":{"name":"U","cols":{}}}})";

class CompareLiteTest : public SchemaTest {
  protected:
    // The lite schema of some tables as text, "(null)" when it could not be made.
    std::string lite_of(const std::vector<const char *> &ids)
    {
        KT_nullhash *tbl_ids = nullptr;
        KT_nullhash__alloc(ctx, &tbl_ids);
        for (const char *id : ids)
            KT_nullhash__update(ctx, tbl_ids, id);
        KT_string *json = nullptr;
        tov_schema__lite(ctx, schema, tbl_ids, &json);
        KT_context__push_level(ctx);
        KT_nullhash__free(ctx, tbl_ids);
        std::string text = take(ctx, json);
        KT_context__pop_level(ctx);
        return text;
    }
    void expect_frames_of_module(uint32_t at_least)
    {
        const uint32_t count = KT_context__count_err_stackframes(ctx);
        ASSERT_GE(count, at_least);
        const char *file = nullptr;
        int32_t line = 0;
        KT_context__get_nth_err_stackframe(ctx, count - 1, &file, &line);
        EXPECT_STREQ(file, SCHEMA_FILE);
    }
};

struct lite_case {
    const char *name;
    const char *document;
    std::vector<const char *> tbl_ids;
    const char *expected;
};

const lite_case lite_cases[] = {
    {"an empty set has no tables", TWO_TABLES, {}, R"({"compat_level":1,"tbls":{}})"},
    {"a table has its txid and the names of its columns",
     TWO_TABLES,
     {"t1"},
     R"({"compat_level":1,"tbls":{"t1":{"txid":42,"cols":{"c1":{"name":"Id"},"c2":{"name":"Title"}}}}})"},
    {"a table without txid has 0, one without columns has none",
     TWO_TABLES,
     {"t2"},
     R"({"compat_level":1,"tbls":{"t2":{"txid":0,"cols":{}}}})"},
    {"a table without a record of columns has none",
     R"({"tbls":{"t":{}}})",
     {"t"},
     R"({"compat_level":1,"tbls":{"t":{"txid":0,"cols":{}}}})"},
    {"the set decides the order of the tables",
     R"({"tbls":{"a":{},"b":{},"c":{}}})",
     {"c", "a"},
     R"({"compat_level":1,"tbls":{"c":{"txid":0,"cols":{}},"a":{"txid":0,"cols":{}}}})"},
    {"a table stands under its id as the caller wrote it",
     R"({"tbls":{"t":{"txid":-9223372036854775808}}})",
     {"T"},
     R"({"compat_level":1,"tbls":{"T":{"txid":-9223372036854775808,"cols":{}}}})"},
    {"two spellings of a table are two members",
     R"({"tbls":{"t":{}}})",
     {"t", "T"},
     R"({"compat_level":1,"tbls":{"t":{"txid":0,"cols":{}},"T":{"txid":0,"cols":{}}}})"},
    {"the level of the schema does not matter", R"({"compat_level":7})", {}, R"({"compat_level":1,"tbls":{}})"},
    {"a column without a name has a null",
     R"({"tbls":{"t":{"cols":{"c":{}}}}})",
     {"t"},
     R"({"compat_level":1,"tbls":{"t":{"txid":0,"cols":{"c":{"name":null}}}}})"},
    {"a name is kept exactly",
     R"({"tbls":{"t":{"cols":{"c":{"name":"A \"b\" \u00e9\\"}}}}})",
     {"t"},
     "{\"compat_level\":1,\"tbls\":{\"t\":{\"txid\":0,\"cols\":{\"c\":{\"name\":\"A \\\"b\\\" \xC3\xA9\\\\\"}}}}}"},
};

TEST_F(CompareLiteTest, Lite)
{
    for (const lite_case &c : lite_cases) {
        SCOPED_TRACE(c.name);
        load(c.document);
        EXPECT_EQ(lite_of(c.tbl_ids), c.expected);
        EXPECT_OK(ctx);
    }
}

TEST_F(CompareLiteTest, UnpreparedColumnsAreNotListed)
{
    tov_schema__add_tbl(ctx, schema, "t", "T", 3);
    tov_schema__add_col(ctx, schema, "t", "U", "Unprepared", 0, 0, 0);
    EXPECT_EQ(lite_of({"t"}), R"({"compat_level":1,"tbls":{"t":{"txid":3,"cols":{}}}})");
    tov_schema__add_col(ctx, schema, "t", "C", "Prepared", 1, 0, 0);
    EXPECT_EQ(lite_of({"t"}), R"({"compat_level":1,"tbls":{"t":{"txid":3,"cols":{"c":{"name":"Prepared"}}}}})");
}

TEST_F(CompareLiteTest, LiteFailures)
{
    const struct {
        const char *name;
        const char *document;
        std::vector<const char *> tbl_ids;
        uint64_t code;
        const char *description; // null: the runtime's own
    } cases[] = {
        {"an unknown table", TWO_TABLES, {"t1", "T9"}, KT_ERR_NOT_FOUND, "table id 'T9' not found in schema"},
        {"a txid that is not a number", R"({"tbls":{"t":{"txid":"x"}}})", {"t"}, KT_ERR_WRONG_TYPE, nullptr},
        {"columns that are no object", R"({"tbls":{"t":{"cols":[]}}})", {"t"}, KT_ERR_WRONG_TYPE, nullptr},
        {"a column id in upper case, which no lookup finds",
         R"({"tbls":{"t":{"cols":{"C":{"name":"x"}}}}})",
         {"t"},
         KT_ERR_NOT_FOUND,
         "col id 'C' not found in tbl id 't' in schema"},
        {"a name that is not a string",
         R"({"tbls":{"t":{"cols":{"c":{"name":1}}}}})",
         {"t"},
         KT_ERR_WRONG_TYPE,
         nullptr},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        load(c.document);
        EXPECT_EQ(lite_of(c.tbl_ids), "(null)");
        EXPECT_FAILED(ctx, c.code);
        if (c.description) {
            EXPECT_STREQ(KT_context__err_description(ctx), c.description);
        }
        expect_frames_of_module(3);
        reset();
    }
}

TEST_F(CompareLiteTest, LiteSurvivesEveryFailingAllocation)
{
    load(TWO_TABLES);
    KT_nullhash *tbl_ids = nullptr;
    KT_nullhash__alloc(ctx, &tbl_ids);
    KT_nullhash__update(ctx, tbl_ids, "t1");
    KT_nullhash__update(ctx, tbl_ids, "t2");
    const std::string before = document();
    const std::string expected = lite_of({"t1", "t2"});
    uint32_t failures = 0;
    bool finished = false;
    for (kt_failing_alloc fault; !finished && fault.next(); KT_context__err_reset(ctx)) {
        KT_string *json = nullptr;
        tov_schema__lite(ctx, schema, tbl_ids, &json);
        finished = !fault.fired();
        if (KT_context__has_err(ctx)) {
            failures++;
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(json, nullptr);
        } else {
            // Maps may do without some of the memory that they ask for.
            EXPECT_EQ(take(ctx, json), expected);
        }
        EXPECT_EQ(fault.leaked(), 0u);
    }
    EXPECT_GT(failures, 5u);
    KT_nullhash__free(ctx, tbl_ids);
    EXPECT_EQ(document(), before);
}

// The readers, on one document that has everything and some things wrong.
class CompareLiteReaderTest : public ContextTest {
  protected:
    void SetUp() override
    {
        ContextTest::SetUp();
        KT_vhash__alloc__from_json__sz(ctx, &lite,
                                       R"({"compat_level":1,"tbls":{)"
                                       R"("T1":{"txid":42,"cols":{"c1":{"name":"Id"},"c2":{"name":"Title"}}},)"
                                       R"("t2":{"txid":-1,"cols":{}},)"
                                       R"("empty":{},)"
                                       R"("wrong":{"txid":"x","cols":{"c":{"name":7},"d":{},"e":1}},)"
                                       R"("flat":{"cols":3},)"
                                       R"("none":0}})");
        KT_vhash__alloc(ctx, &blank);
        ASSERT_OK(ctx);
    }
    void TearDown() override
    {
        KT_vhash__free(ctx, lite);
        KT_vhash__free(ctx, blank);
        ContextTest::TearDown();
    }
    // The call failed with this code, in the runtime, and passed through this many functions of the module.
    void expect_failed(uint64_t code, uint32_t depth)
    {
        EXPECT_FAILED(ctx, code);
        const uint32_t count = KT_context__count_err_stackframes(ctx);
        uint32_t frames_of_module = 0;
        for (uint32_t n = 0; n < count; n++) {
            const char *file = nullptr;
            int32_t line = 0;
            KT_context__get_nth_err_stackframe(ctx, n, &file, &line);
            frames_of_module += std::string_view(file) == SCHEMA_FILE;
        }
        EXPECT_EQ(frames_of_module, depth);
        EXPECT_GT(count, depth);
        reset();
    }

    KT_vhash *lite = nullptr;
    KT_vhash *blank = nullptr;
};

TEST_F(CompareLiteReaderTest, CountsTables)
{
    uint32_t count = 99;
    tov_schema_lite__count_tbls(ctx, lite, &count);
    EXPECT_OK(ctx);
    EXPECT_EQ(count, 6u);
    tov_schema_lite__count_tbls(ctx, blank, &count);
    expect_failed(KT_ERR_KEY_NOT_FOUND, 1);
    EXPECT_EQ(count, 6u);
}

TEST_F(CompareLiteReaderTest, GivesTheNthTable)
{
    const char *tbl_id = nullptr;
    tov_schema_lite__get_nth_tbl_id(ctx, lite, 0, &tbl_id);
    EXPECT_STREQ(tbl_id, "T1");
    tov_schema_lite__get_nth_tbl_id(ctx, lite, 1, &tbl_id);
    EXPECT_STREQ(tbl_id, "t2");
    EXPECT_OK(ctx);
    tov_schema_lite__get_nth_tbl_id(ctx, lite, 6, &tbl_id);
    expect_failed(KT_ERR_OUT_OF_RANGE, 1);
    tov_schema_lite__get_nth_tbl_id(ctx, blank, 0, &tbl_id);
    expect_failed(KT_ERR_KEY_NOT_FOUND, 1);
    EXPECT_STREQ(tbl_id, "t2");
}

TEST_F(CompareLiteReaderTest, GivesTheTxidOfATable)
{
    int64_t txid = 0;
    tov_schema_lite__get_tbl_txid(ctx, lite, "T1", &txid);
    EXPECT_EQ(txid, 42);
    tov_schema_lite__get_tbl_txid(ctx, lite, "t2", &txid);
    EXPECT_EQ(txid, -1);
    EXPECT_OK(ctx);
    const struct {
        const char *tbl_id;
        uint64_t code;
        uint32_t depth;
    } failures[] = {{"t1", KT_ERR_KEY_NOT_FOUND, 2},
                    {"T2", KT_ERR_KEY_NOT_FOUND, 2},
                    {"empty", KT_ERR_KEY_NOT_FOUND, 1},
                    {"wrong", KT_ERR_WRONG_TYPE, 1},
                    {"none", KT_ERR_WRONG_TYPE, 2}};
    for (const auto &f : failures) {
        SCOPED_TRACE(f.tbl_id);
        tov_schema_lite__get_tbl_txid(ctx, lite, f.tbl_id, &txid);
        expect_failed(f.code, f.depth);
        EXPECT_EQ(txid, -1);
    }
}

TEST_F(CompareLiteReaderTest, CountsColumns)
{
    uint32_t count = 99;
    tov_schema_lite__count_cols(ctx, lite, "t2", &count);
    EXPECT_EQ(count, 0u);
    tov_schema_lite__count_cols(ctx, lite, "T1", &count);
    EXPECT_EQ(count, 2u);
    EXPECT_OK(ctx);
    const struct {
        const char *tbl_id;
        uint64_t code;
        uint32_t depth;
    } failures[] = {
        {"t1", KT_ERR_KEY_NOT_FOUND, 3}, {"empty", KT_ERR_KEY_NOT_FOUND, 2}, {"flat", KT_ERR_WRONG_TYPE, 2}};
    for (const auto &f : failures) {
        SCOPED_TRACE(f.tbl_id);
        tov_schema_lite__count_cols(ctx, lite, f.tbl_id, &count);
        expect_failed(f.code, f.depth);
        EXPECT_EQ(count, 2u);
    }
}

TEST_F(CompareLiteReaderTest, GivesTheNthColumn)
{
    const char *col_id = nullptr;
    tov_schema_lite__get_nth_col_id(ctx, lite, "T1", 1, &col_id);
    EXPECT_STREQ(col_id, "c2");
    tov_schema_lite__get_nth_col_id(ctx, lite, "T1", 0, &col_id);
    EXPECT_STREQ(col_id, "c1");
    EXPECT_OK(ctx);
    const struct {
        const char *tbl_id;
        uint32_t n;
        uint64_t code;
        uint32_t depth;
    } failures[] = {{"T1", 2, KT_ERR_OUT_OF_RANGE, 1},
                    {"t2", 0, KT_ERR_OUT_OF_RANGE, 1},
                    {"no such table", 0, KT_ERR_KEY_NOT_FOUND, 3}};
    for (const auto &f : failures) {
        SCOPED_TRACE(f.tbl_id);
        tov_schema_lite__get_nth_col_id(ctx, lite, f.tbl_id, f.n, &col_id);
        expect_failed(f.code, f.depth);
        EXPECT_STREQ(col_id, "c1");
    }
}

TEST_F(CompareLiteReaderTest, GivesTheNameOfAColumn)
{
    const char *name = nullptr;
    tov_schema_lite__get_col_name(ctx, lite, "T1", "c1", &name);
    EXPECT_STREQ(name, "Id");
    tov_schema_lite__get_col_name(ctx, lite, "T1", "c2", &name);
    EXPECT_STREQ(name, "Title");
    EXPECT_OK(ctx);
    const struct {
        const char *tbl_id;
        const char *col_id;
        uint64_t code;
        uint32_t depth;
    } failures[] = {{"t1", "c1", KT_ERR_KEY_NOT_FOUND, 3}, {"T1", "C1", KT_ERR_KEY_NOT_FOUND, 1},
                    {"wrong", "c", KT_ERR_WRONG_TYPE, 1},  {"wrong", "d", KT_ERR_KEY_NOT_FOUND, 1},
                    {"wrong", "e", KT_ERR_WRONG_TYPE, 1},  {"empty", "c1", KT_ERR_KEY_NOT_FOUND, 2}};
    for (const auto &f : failures) {
        SCOPED_TRACE(std::string(f.tbl_id) + "." + f.col_id);
        tov_schema_lite__get_col_name(ctx, lite, f.tbl_id, f.col_id, &name);
        expect_failed(f.code, f.depth);
        EXPECT_STREQ(name, "Title");
    }
}

// Random schemas: what is built and parsed back answers as the schema does.

struct random_tbl {
    std::string id;
    int64_t txid;
    std::vector<std::pair<std::string, std::string>> cols; // id and name, prepared ones only
};

std::string random_text(std::mt19937_64 &random, size_t max_length)
{
    static const char *const pieces[] = {"a", "Z", "_", " ", "\"", "\\", "\n", "\xC3\xA9", "\xF0\x9F\x98\x80",
                                         "'", "0"};
    std::string text;
    for (uint64_t length = random() % (max_length + 1); text.size() < length;)
        text += pieces[random() % std::size(pieces)];
    return text;
}

class CompareLiteRandomTest : public CompareLiteTest {
  protected:
    void add_random_tbl(std::mt19937_64 &random, uint64_t number)
    {
        random_tbl tbl{"t" + std::to_string(number) + random_text(random, 12), 0, {}};
        if (random() % 4)
            tbl.txid = static_cast<int64_t>(random());
        tov_schema__add_tbl(ctx, schema, tbl.id.c_str(), "name", tbl.txid);
        for (uint64_t n = random() % 20; n > 0; n--) {
            const std::string col_id = "c" + std::to_string(n) + random_text(random, 6);
            const std::string name = random_text(random, 40);
            const bool prepared = random() % 5;
            tov_schema__add_col(ctx, schema, tbl.id.c_str(), col_id.c_str(), name.c_str(), prepared, 0, 0);
            if (prepared)
                tbl.cols.emplace_back(lower(col_id), name);
        }
        tbls.push_back(tbl);
    }
    static std::string lower(std::string text)
    {
        for (char &c : text)
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
        return text;
    }
    void expect_tbl(KT_vhash *lite, uint32_t n, const random_tbl &tbl)
    {
        const char *tbl_id = nullptr;
        int64_t txid = 0;
        uint32_t count = 0;
        tov_schema_lite__get_nth_tbl_id(ctx, lite, n, &tbl_id);
        tov_schema_lite__get_tbl_txid(ctx, lite, tbl.id.c_str(), &txid);
        tov_schema_lite__count_cols(ctx, lite, tbl.id.c_str(), &count);
        ASSERT_OK(ctx);
        EXPECT_EQ(tbl_id, tbl.id);
        EXPECT_EQ(txid, tbl.txid);
        ASSERT_EQ(count, tbl.cols.size());
        for (uint32_t i = 0; i < count; i++) {
            const char *col_id = nullptr;
            const char *name = nullptr;
            tov_schema_lite__get_nth_col_id(ctx, lite, tbl.id.c_str(), i, &col_id);
            tov_schema_lite__get_col_name(ctx, lite, tbl.id.c_str(), tbl.cols[i].first.c_str(), &name);
            ASSERT_OK(ctx);
            EXPECT_EQ(col_id, tbl.cols[i].first);
            EXPECT_EQ(name, tbl.cols[i].second);
        }
    }

    std::vector<random_tbl> tbls;
};

TEST_F(CompareLiteRandomTest, BuildingAndParsingBackGivesTheSame)
{
    for (uint64_t seed = 1; seed <= 50; seed++) {
        SCOPED_TRACE(seed);
        std::mt19937_64 random{seed};
        reset_schema();
        tbls.clear();
        for (uint64_t number = random() % 30; number > 0; number--)
            add_random_tbl(random, number);
        ASSERT_OK(ctx);
        std::shuffle(tbls.begin(), tbls.end(), random);
        std::vector<const char *> ids;
        for (const random_tbl &tbl : tbls)
            ids.push_back(tbl.id.c_str());

        KT_vhash *lite = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &lite, lite_of(ids).c_str());
        ASSERT_OK(ctx);
        uint32_t count = 0;
        tov_schema_lite__count_tbls(ctx, lite, &count);
        EXPECT_EQ(count, tbls.size());
        for (uint32_t n = 0; n < count; n++)
            expect_tbl(lite, n, tbls[n]);
        KT_vhash__free(ctx, lite);
    }
}

} // namespace
