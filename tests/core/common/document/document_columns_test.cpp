#include "document_support.hpp"

TEST_F(DocumentTest, PreparedColumnsGoToTheirTable)
{
    load(R"({"tbls":{"t":{"name":"T","txid":1}}})");
    tov_schema__add_col(ctx, schema, "T", "ColA", "Col A", 1, 0, 0);
    tov_schema__add_col(ctx, schema, "t", "ColB", "Col B", 2, 0, 0);
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"tbls":{"t":{"name":"T","txid":1,"cols":{"cola":{"name":"Col A"},)"
                          R"("colb":{"name":"Col B"}}}}})");
    EXPECT_EQ(host_internals(), "null");
}

TEST_F(DocumentTest, UnpreparedColumnsGoBesideTheirTable)
{
    load(R"({"tbls":{"tbl":{}}})");
    tov_schema__add_col(ctx, schema, "Tbl", "ColA", "Col A", 0, 0, 0);
    // The column is under the id as passed, and so it is found by that id alone.
    EXPECT_OK(ctx);
    EXPECT_EQ(host_internals(), R"({"unprep-cols":{"Tbl":{"cola":{"name":"Col A"}}}})");
    KT_bool unprepared = 77;
    tov_schema__is_col_unprepared(ctx, schema, "Tbl", "COLA", &unprepared);
    EXPECT_EQ(unprepared, 1);
    tov_schema__is_col_unprepared(ctx, schema, "tbl", "ColA", &unprepared);
    EXPECT_EQ(unprepared, 0);
    uint32_t count = 77;
    tov_schema__count_cols(ctx, schema, "tbl", &count);
    EXPECT_EQ(count, 0u);
    const char *col_id = nullptr;
    tov_schema__find_col_by_name(ctx, schema, "Tbl", "Col A", &col_id);
    EXPECT_STREQ(col_id, "cola");
    EXPECT_OK(ctx);
}

TEST_F(DocumentTest, EveryColumnOperationFindsAnUnpreparedColumn)
{
    load_trees(R"({"tbls":{"t":{}}})", R"({"unprep-cols":{"t":{"c":{}}}})");
    tov_schema__set_col_name(ctx, schema, "t", "C", "Name");
    tov_schema__set_col_type_decimal(ctx, schema, "t", "C", 9, 2);
    tov_schema__set_mssql_col_type_name(ctx, schema, "t", "C", "decimal");
    tov_schema__set_colcon_notnull(ctx, schema, "t", "C", 1, nullptr);
    tov_schema__set_colcon_defval(ctx, schema, "t", "C", 1, nullptr, "0");
    tov_schema__add_colcon_check(ctx, schema, "t", "C", nullptr, "c > 0");
    tov_schema__set_colcon_fk(ctx, schema, "t", "C", 1, "F", nullptr, "u", nullptr, 0, nullptr, nullptr, 0);
    const char *name = nullptr;
    tov_schema__get_col_name(ctx, schema, "t", "c", &name);
    int32_t scale = 77;
    tov_schema__get_col_type__scale(ctx, schema, "t", "c", &scale);
    EXPECT_OK(ctx);
    EXPECT_STREQ(name, "Name");
    EXPECT_EQ(scale, 2);
    EXPECT_EQ(host_internals(),
              R"({"unprep-cols":{"t":{"c":{"name":"Name","type":{"name":"decimal","precision":9,"scale":2},)"
              R"("mssql_col_data_type":"decimal","notnull":{},"defval":{"expr":"0"},"check":[{"expr":"c > 0"}],)"
              R"("fk":{"ref_tbl_id":"u","deferred":false}}}}})");
}

TEST_F(DocumentTest, AnUnpreparedColumnWithAPreparedOnesIdRenamesThatOne)
{
    load(one_col);
    tov_schema__add_col(ctx, schema, "t", "c", "other", 0, 0, 0);
    EXPECT_OK(ctx);
    EXPECT_EQ(col_record(), R"({"name":"other"})");
    EXPECT_EQ(host_internals(), R"({"unprep-cols":{"t":{"c":{}}}})");
}

TEST_F(DocumentTest, AnUnpreparedColumnOfAnUnknownTableLeavesANamelessRecord)
{
    const uint64_t before = schema->change_count;
    tov_schema__add_col(ctx, schema, "NoTbl", "ColA", "Col A", 0, 9, 9);
    EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "table id 'NoTbl' not found in schema");
    expect_module_frame();
    reset();
    EXPECT_EQ(host_internals(), R"({"unprep-cols":{"NoTbl":{"cola":{}}}})");
    EXPECT_GT(schema->change_count, before);
}

TEST_F(DocumentTest, ATakenColumnIdKeepsItsColumn)
{
    load_trees(one_col, R"({"unprep-cols":{"t":{"u":{"name":"U"}}}})");
    tov_schema__add_col(ctx, schema, "t", "C", "second", 1, 9, 9);
    EXPECT_FAILED(ctx, KT_ERR_DUPLICATE_KEY);
    expect_module_frame();
    reset();
    tov_schema__add_col(ctx, schema, "t", "U", "second", 0, 9, 9);
    EXPECT_FAILED(ctx, KT_ERR_DUPLICATE_KEY);
    reset();
    EXPECT_EQ(document(), one_col);
    EXPECT_EQ(host_internals(), R"({"unprep-cols":{"t":{"u":{"name":"U"}}}})");
}

TEST_F(DocumentTest, DumpNumbersAreKeptTogetherOrNotAtAll)
{
    struct dump_case {
        const char *name;
        int64_t txid;
        int64_t generation;
        const char *host;
    };
    static constexpr dump_case cases[] = {
        {"both are kept", 9, 7, R"({"col-dump-txids":{"T":{"ColA":9}},"col-dump-gen":{"T":{"ColA":7}}})"},
        {"any generation is kept", 1, -7, R"({"col-dump-txids":{"T":{"ColA":1}},"col-dump-gen":{"T":{"ColA":-7}}})"},
        {"a transaction id of 0 keeps neither", 0, 7, "null"},
        {"a negative transaction id keeps neither", -9, 7, "null"},
    };
    for (const dump_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(R"({"tbls":{"t":{}}})");
        tov_schema__add_col(ctx, schema, "T", "ColA", "A", 1, c.txid, c.generation);
        EXPECT_OK(ctx);
        EXPECT_EQ(host_internals(), c.host);
        const bool is_kept = c.txid > 0;
        int64_t txid = 77;
        int64_t generation = 77;
        tov_schema__get_col_dump_txid(ctx, schema, "T", "ColA", &txid);
        tov_schema__get_col_dump_generation(ctx, schema, "T", "ColA", &generation);
        EXPECT_OK(ctx);
        EXPECT_EQ(txid, is_kept ? c.txid : 0);
        EXPECT_EQ(generation, is_kept ? c.generation : 0);
    }
}

TEST_F(DocumentTest, DumpNumbersAnswerToTheIdsAsTheyStand)
{
    load(R"({"tbls":{"t":{}}})");
    tov_schema__add_col(ctx, schema, "t", "ColA", "A", 1, 9, 7);
    int64_t txid = 77;
    int64_t generation = 77;
    for (const char *ids : {"t/cola", "T/ColA", "x/ColA"}) {
        SCOPED_TRACE(ids);
        const std::string tbl_id(ids, 1);
        tov_schema__get_col_dump_txid(ctx, schema, tbl_id.c_str(), ids + 2, &txid);
        tov_schema__get_col_dump_generation(ctx, schema, tbl_id.c_str(), ids + 2, &generation);
        EXPECT_OK(ctx);
        EXPECT_EQ(txid, 0);
        EXPECT_EQ(generation, 0);
    }
    const char *name = nullptr;
    tov_schema__get_col_name(ctx, schema, "T", "cola", &name);
    EXPECT_STREQ(name, "A");
}

TEST_F(DocumentTest, LaterDumpNumbersReplaceEarlierOnes)
{
    load_trees(R"({"tbls":{"t":{}}})", R"({"col-dump-txids":{"t":{"a":1,"b":2}},"col-dump-gen":{"t":{"a":3}}})");
    tov_schema__add_col(ctx, schema, "t", "a", "A", 1, 9, 7);
    EXPECT_OK(ctx);
    EXPECT_EQ(host_internals(), R"({"col-dump-txids":{"t":{"a":9,"b":2}},"col-dump-gen":{"t":{"a":7}}})");
}

TEST_F(DocumentTest, AskingForUnpreparedColumnsCreatesNothing)
{
    struct unprepared_case {
        const char *host;
        KT_bool expected;
    };
    static constexpr unprepared_case cases[] = {
        {nullptr, 0},
        {"{}", 0},
        {R"({"unprep-cols":{}})", 0},
        {R"({"unprep-cols":{"t":{}}})", 0},
        {R"({"unprep-cols":{"t":{"c":{}}}})", 1},
        {R"({"unprep-cols":{"t":{"C":{}}}})", 0},
    };
    for (const unprepared_case &c : cases) {
        SCOPED_TRACE(c.host ? c.host : "no host internals");
        load_trees("{}", c.host);
        KT_bool unprepared = 77;
        tov_schema__is_col_unprepared(ctx, schema, "t", "C", &unprepared);
        EXPECT_OK(ctx);
        EXPECT_EQ(unprepared, c.expected);
        EXPECT_EQ(document(), "{}");
        EXPECT_EQ(host_internals(), c.host ? c.host : "null");
    }
}

TEST_F(DocumentTest, ANewColumnNameKeepsItsPlace)
{
    load(R"({"tbls":{"t":{"cols":{"c":{"name":"C","type":{"name":"guid"}}}}}})");
    tov_schema__set_col_name(ctx, schema, "T", "C", "Renamed");
    EXPECT_OK(ctx);
    EXPECT_EQ(col_record(), R"({"name":"Renamed","type":{"name":"guid"}})");
}

TEST_F(DocumentTest, ColumnOperationsFail)
{
    static constexpr char no_t[] = "table id 'T' not found in schema";
    static constexpr failure_case cases[] = {
        {"adding to an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__add_col(c, s, "T", "C", "N", 1, 0, 0))},
        {"adding to columns of another type", R"({"tbls":{"t":{"cols":[]}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__add_col(c, s, "T", "C", "N", 1, 0, 0))},
        {"adding dump numbers to a map of another type", one_col, R"({"col-dump-txids":1})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__add_col(c, s, "t", "d", "N", 1, 1, 0))},
        {"naming a column of an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__set_col_name(c, s, "T", "C", "N"))},
        {"naming an unknown column", one_col, nullptr, KT_ERR_NOT_FOUND, "col id 'X' not found in tbl id 'T' in schema",
         CALL(tov_schema__set_col_name(c, s, "T", "X", "N"))},
        {"unprepared columns of another type", "{}", R"({"unprep-cols":{"t":1}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__is_col_unprepared(c, s, "t", "c", &o.flag))},
        {"a dump transaction id of another type", "{}", R"({"col-dump-txids":{"t":{"c":"9"}}})", KT_ERR_WRONG_TYPE,
         nullptr, CALL(tov_schema__get_col_dump_txid(c, s, "t", "c", &o.int64))},
        {"a dump generation of another type", "{}", R"({"col-dump-gen":{"t":{"c":true}}})", KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_col_dump_generation(c, s, "t", "c", &o.int64))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, ColumnOperationsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"adding a prepared column", R"({"tbls":{"t":{}}})", "{}",
         CALL(
             tov_schema__add_col(c, s, "t", "A_Column_Of_A_Long_Id", "A name that needs a block of its own", 1, 9, 7))},
        {"adding an unprepared column", R"({"tbls":{"t":{}}})", nullptr,
         CALL(
             tov_schema__add_col(c, s, "t", "A_Column_Of_A_Long_Id", "A name that needs a block of its own", 0, 9, 7))},
        {"naming a column", one_col, nullptr,
         CALL(tov_schema__set_col_name(c, s, "t", "c", "A name that needs a block of its own"))},
    };
    expect_survival(cases);
}
