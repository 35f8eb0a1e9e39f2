#include "document_support.hpp"

TEST_F(DocumentTest, ServerFactsOfTheSchemaAreKeptAsTheyAreWritten)
{
    KT_vhash *server = nullptr;
    tov_schema__ensure_server(ctx, schema, &server);
    KT_vhash__update__string__sz(ctx, server, "database", "Shop");
    KT_vhash *again = nullptr;
    tov_schema__ensure_server(ctx, schema, &again);
    EXPECT_EQ(again, server);
    KT_vhash *found = nullptr;
    tov_schema__check_server(ctx, schema, &found);
    EXPECT_EQ(found, server);
    EXPECT_OK(ctx);
    EXPECT_EQ(document(), R"({"compat_level":1,"server":{"database":"Shop"}})");
}

TEST_F(DocumentTest, ServerFactsOfATableAreKeptAsTheyAreWritten)
{
    load(one_col);
    KT_vhash *server = nullptr;
    tov_schema__ensure_tbl_server(ctx, schema, "T", &server);
    KT_vhash__update__string__sz(ctx, server, "schema", "dbo");
    KT_vhash *again = nullptr;
    tov_schema__ensure_tbl_server(ctx, schema, "t", &again);
    EXPECT_EQ(again, server);
    KT_vhash *found = nullptr;
    tov_schema__check_tbl_server(ctx, schema, "t", &found);
    EXPECT_EQ(found, server);
    EXPECT_OK(ctx);
    EXPECT_EQ(document(),
              R"({"tbls":{"t":{"name":"T","txid":1,"cols":{"c":{"name":"C"}},"server":{"schema":"dbo"}}}})");
}

TEST_F(DocumentTest, ServerFactsThatAreAbsentAreNull)
{
    for (const char *json : {one_col, R"({"server":null,"tbls":{"t":{"server":null}}})"}) {
        SCOPED_TRACE(json);
        load(json);
        KT_vhash *server = reinterpret_cast<KT_vhash *>(ctx);
        tov_schema__check_server(ctx, schema, &server);
        EXPECT_EQ(server, nullptr);
        server = reinterpret_cast<KT_vhash *>(ctx);
        tov_schema__check_tbl_server(ctx, schema, "t", &server);
        EXPECT_EQ(server, nullptr);
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), json);
    }
}

TEST_F(DocumentTest, ServerFactsOfAnotherTypeOrAnUnknownTableFail)
{
    static constexpr char not_a_map[] = R"({"server":[],"tbls":{"t":{"server":"dbo"}}})";
    static constexpr failure_case cases[] = {
        {"ensure, not a map", not_a_map, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__ensure_server(c, s, &o.map))},
        {"check, not a map", not_a_map, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__check_server(c, s, &o.map))},
        {"ensure of a table, not a map", not_a_map, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__ensure_tbl_server(c, s, "t", &o.map))},
        {"check of a table, not a map", not_a_map, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__check_tbl_server(c, s, "t", &o.map))},
        {"ensure of an unknown table", one_col, nullptr, KT_ERR_NOT_FOUND, "table id 'X' not found in schema",
         CALL(tov_schema__ensure_tbl_server(c, s, "X", &o.map))},
        {"check of an unknown table", one_col, nullptr, KT_ERR_NOT_FOUND, "table id 'X' not found in schema",
         CALL(tov_schema__check_tbl_server(c, s, "X", &o.map))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, ServerFactsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"of the schema", "{}", nullptr, CALL(KT_vhash *server = nullptr; tov_schema__ensure_server(c, s, &server))},
        {"of a table", one_col, nullptr,
         CALL(KT_vhash *server = nullptr; tov_schema__ensure_tbl_server(c, s, "t", &server))},
    };
    expect_survival(cases);
}
