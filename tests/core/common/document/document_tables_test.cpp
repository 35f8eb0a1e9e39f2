#include "document_support.hpp"

TEST_F(DocumentTest, TablesAreKeptInTheOrderOfAdding)
{
    tov_schema__add_tbl(ctx, schema, "Orders", "Orders", 42);
    tov_schema__add_tbl(ctx, schema, "CUSTOMERS", "dbo.Customers", -1);
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"compat_level":1,"tbls":{"orders":{"name":"Orders","txid":42},)"
                          R"("customers":{"name":"dbo.Customers","txid":-1}}})");
}

TEST_F(DocumentTest, ATakenTableIdKeepsItsTable)
{
    tov_schema__add_tbl(ctx, schema, "Orders", "first", 1);
    tov_schema__add_tbl(ctx, schema, "ORDERS", "second", 2);
    EXPECT_FAILED(ctx, KT_ERR_DUPLICATE_KEY);
    expect_module_frame();
    reset();
    EXPECT_EQ(document(), R"({"compat_level":1,"tbls":{"orders":{"name":"first","txid":1}}})");
}

TEST_F(DocumentTest, ANewTableNameKeepsItsPlace)
{
    load(one_col);
    tov_schema__set_tbl_name(ctx, schema, "T", "Renamed");
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"tbls":{"t":{"name":"Renamed","txid":1,"cols":{"c":{"name":"C"}}}}})");
}

TEST_F(DocumentTest, TransactionIdsOfTables)
{
    struct txid_case {
        const char *name;
        const char *document;
        int64_t txid;
    };
    static constexpr txid_case cases[] = {
        {"the recorded one", R"({"tbls":{"t":{"txid":42}}})", 42},
        {"the largest", R"({"tbls":{"t":{"txid":9223372036854775807}}})", INT64_MAX},
        {"none is recorded", R"({"tbls":{"t":{}}})", 0},
        {"a null counts as none", R"({"tbls":{"t":{"txid":null}}})", 0},
    };
    for (const txid_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(c.document);
        int64_t txid = 77;
        tov_schema__check_tbl_txid(ctx, schema, "T", &txid);
        EXPECT_OK(ctx);
        EXPECT_EQ(txid, c.txid);
    }
}

TEST_F(DocumentTest, TableOperationsFail)
{
    static constexpr char no_t[] = "table id 'T' not found in schema";
    static constexpr failure_case cases[] = {
        {"adding to tables of another type", R"({"tbls":1})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__add_tbl(c, s, "T", "T", 1))},
        {"naming an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__set_tbl_name(c, s, "T", "N"))},
        {"the transaction id of an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__check_tbl_txid(c, s, "T", &o.int64))},
        {"a transaction id of another type", R"({"tbls":{"t":{"txid":"1"}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__check_tbl_txid(c, s, "T", &o.int64))},
    };
    expect_failures(cases);
}

// So long a name takes a block of its own, after the record is there.
TEST_F(DocumentTest, ATableWhoseNameFindsNoMemoryIsNotThere)
{
    const std::string long_name(5000, 'n');
    const char *const before = R"({"tbls":{"a":{}}})";
    load(before);
    int failures = 0;
    for (kt_failing_alloc fault; fault.next(); failures++) {
        tov_schema__add_tbl(ctx, schema, "t", long_name.c_str(), 1);
        if (!fault.fired())
            break;
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        reset();
        fault.pause();
        EXPECT_EQ(document(), before);
    }
    EXPECT_OK(ctx);
    EXPECT_GT(failures, 0);
}

TEST_F(DocumentTest, TableOperationsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"adding a table", "{}", nullptr,
         CALL(tov_schema__add_tbl(c, s, "A_Table_Of_A_Long_Id", "A name that needs a block of its own", 1))},
        {"naming a table", one_col, nullptr,
         CALL(tov_schema__set_tbl_name(c, s, "t", "A name that needs a block of its own"))},
    };
    expect_survival(cases);
}
