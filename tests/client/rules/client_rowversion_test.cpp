// Versions that the database gives rows.
#include "load_test.hpp"

namespace {

constexpr const char *versioned_document = R"json({"compat_level":1,"backend":{},"tbls":{
"1":{"name":"T","txid":0,"cols":{
 "1":{"name":"Id","type":{"name":"identity"},"notnull":{}},
 "2":{"name":"rowid","type":{"name":"sint32"}},
 "3":{"name":"V","type":{"name":"blob","fixed_width":true,"width":8},"notnull":{}}},
 "server":{"schema":"dbo","name":"T","cols":[
  {"name":"Id","id":"1","type":"int"},{"name":"rowid","id":"2","type":"int","nullable":true},
  {"name":"V","id":"3","type":"timestamp"}]}},
"2":{"name":"tov_U","txid":0,"cols":{
 "1":{"name":"k","type":{"name":"sint32"}},
 "2":{"name":"V","type":{"name":"blob","fixed_width":true,"width":8}}},
 "server":{"schema":"dbo","name":"tov_U","cols":[
  {"name":"k","id":"1","type":"int","nullable":true},{"name":"V","id":"2","type":"timestamp","nullable":true}]}}}})json";

class ClientRowversion : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        reset_schema_to(versioned_document);
        open();
    }
    std::string versions(const char *tbl)
    {
        return rows(connection, std::string("SELECT hex(V) FROM ") + tbl + " ORDER BY _rowid_");
    }
};

TEST_F(ClientRowversion, IsGivenToRowsThatComeWithoutOne)
{
    EXPECT_EQ(run(connection, "INSERT INTO T(rowid) VALUES(1),(2)"), "");
    EXPECT_EQ(run(connection, "INSERT INTO tov_U(k) VALUES(3); INSERT INTO tov_U(k) VALUES(4)"), "");
    EXPECT_EQ(versions("T"), "00000000000007D1 00000000000007D2");
    EXPECT_EQ(versions("tov_U"), "00000000000007D3 00000000000007D4");
    EXPECT_EQ(rows(connection, "SELECT DISTINCT typeof(V) FROM T"), "blob");
}

TEST_F(ClientRowversion, StaysNullWhereThatIsGiven)
{
    EXPECT_EQ(run(connection, "INSERT INTO tov_U VALUES(3, NULL)"), "");
    EXPECT_EQ(versions("tov_U"), "");
    EXPECT_NE(run(connection, "INSERT INTO T(V) VALUES(NULL)"), "");
}

TEST_F(ClientRowversion, ChangesWithTheRow)
{
    EXPECT_EQ(run(connection, "INSERT INTO T(rowid) VALUES(1),(2),(3)"), "");
    EXPECT_EQ(run(connection, "UPDATE T SET rowid = 9 WHERE Id = 2"), "");
    EXPECT_EQ(versions("T"), "00000000000007D1 00000000000007D4 00000000000007D3");
    EXPECT_EQ(run(connection, "UPDATE T SET Id = Id + 10"), "");
    EXPECT_EQ(versions("T"), "00000000000007D5 00000000000007D6 00000000000007D7");
    EXPECT_EQ(run(connection, "PRAGMA recursive_triggers=OFF; UPDATE T SET rowid = 0"), "");
    EXPECT_EQ(versions("T"), "00000000000007D8 00000000000007D9 00000000000007DA");
}

TEST_F(ClientRowversion, FollowsThoseThatAreGiven)
{
    EXPECT_EQ(run(connection, "INSERT INTO T(rowid, V) VALUES(1, x'00000000FFFFFFFF')"), "");
    EXPECT_EQ(run(connection, "INSERT INTO T(rowid) VALUES(2)"), "");
    EXPECT_EQ(run(connection, "INSERT INTO T(rowid, V) VALUES(3, x'0000000000000005')"), "");
    EXPECT_EQ(run(connection, "INSERT INTO T(rowid) VALUES(4)"), "");
    EXPECT_EQ(versions("T"), "00000000FFFFFFFF 0000000100000000 0000000000000005 0000000100000001");
    EXPECT_EQ(run(connection, "UPDATE T SET V = x'00FF00FF80817F00' WHERE rowid = 4"), "");
    EXPECT_EQ(run(connection, "UPDATE T SET rowid = 5 WHERE rowid = 4"), "");
    EXPECT_EQ(rows(connection, "SELECT hex(V) FROM T WHERE rowid = 5"), "00FF00FF80817F01");
    EXPECT_NE(run(connection, "INSERT INTO T(V) VALUES(x'01')"), "");
    EXPECT_NE(run(connection, "INSERT INTO T(V) VALUES('12345678')"), "");
}

TEST_F(ClientRowversion, IsTheWritersOwnAffairUnderBasicRules)
{
    const tov_client_create_options options = {0,
                                               nullptr,
                                               nullptr,
                                               TOV_CLIENT_RULES_BASIC,
                                               TOV_CLIENT_INDEXES_ALL,
                                               TOV_CLIENT_COLLATIONS_BUILTIN,
                                               0,
                                               TOV_CLIENT_CHECKS_CONSTRAINTS};
    KT_string *text = nullptr;
    tov_client__write_script__with(ctx, schema, &options, &text);
    EXPECT_EQ(take(ctx, text).find("rowversion"), std::string::npos);
}

TEST_F(ClientRowversion, FollowsThoseThatAreLoaded)
{
    create();
    const std::string file = write("T.dat", "1\t5\t0000000000001000\n2\t6\t0000000000000FFF\n");
    EXPECT_EQ(load({file}), "T 2 2 0");
    const std::string more = write("tov_U.csv", "k\n7\n8\n");
    tov_client_load_options options = {};
    options.format = "csv";
    EXPECT_EQ(load({more}, options), "tov_U 2 2 0");
    EXPECT_EQ(query("SELECT hex(V) FROM tov_U"), "0000000000001001 0000000000001002");
    sqlite3 *other = nullptr;
    ASSERT_EQ(sqlite3_open(path("db").c_str(), &other), SQLITE_OK);
    EXPECT_EQ(run(other, "INSERT INTO T(rowid) VALUES(9)"), "");
    EXPECT_EQ(rows(other, "SELECT hex(V) FROM T WHERE rowid = 9"), "0000000000001003");
    sqlite3_close(other);
}

// As on the server, where all tables of a database share the numbers.
TEST_F(ClientRowversion, OfALoadIsGivenOnceWhateverTheTable)
{
    const std::string script = write("rows.sql", "INSERT T (Id, rowid) VALUES (1, 1)\n"
                                                 "INSERT tov_U (k) VALUES (1)\n"
                                                 "INSERT T (Id, rowid) VALUES (2, 1)\n"
                                                 "INSERT T (Id, rowid, V) VALUES (3, 1, 0x00000000000007D4)\n"
                                                 "INSERT T (Id, rowid) VALUES (4, 1)\n"
                                                 "INSERT tov_U (k) VALUES (2)\n");
    for (const int32_t rules : {TOV_CLIENT_RULES_SERVER, TOV_CLIENT_RULES_BASIC}) {
        SCOPED_TRACE(rules);
        const tov_client_create_options options = {0,
                                                   nullptr,
                                                   nullptr,
                                                   rules,
                                                   TOV_CLIENT_INDEXES_ALL,
                                                   TOV_CLIENT_COLLATIONS_BUILTIN,
                                                   0,
                                                   TOV_CLIENT_CHECKS_CONSTRAINTS};
        std::remove(path("db").c_str());
        tov_client__create_database__with(ctx, schema, path("db").c_str(), &options);
        EXPECT_EQ(load({script}), "T 4 4 0; tov_U 2 2 0") << shown_remarks;
        EXPECT_EQ(query("SELECT hex(V) FROM T ORDER BY Id"),
                  "00000000000007D1 00000000000007D3 00000000000007D4 00000000000007D5");
        EXPECT_EQ(query("SELECT hex(V) FROM tov_U ORDER BY k"), "00000000000007D2 00000000000007D6");
    }
}

TEST_F(ClientRowversion, OfARefusedRowIsNotTheLast)
{
    create();
    const std::string file = write("T.dat", "1\t5\t0000000000001000\n1\t6\t000000000000FFFF\n");
    EXPECT_EQ(load({file}), "T 2 1 1");
    EXPECT_EQ(load({write("tov_U.csv", "k\n7\n")}), "tov_U 1 1 0");
    EXPECT_EQ(query("SELECT hex(V) FROM tov_U"), "0000000000001001");
}

} // namespace
