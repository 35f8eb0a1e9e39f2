// Indexes beside those of keys: which there are, what they are called, and what they refuse.
#include "create/client_indexes.hpp"

#include "client_test.hpp"
#include "failing_alloc.hpp"

class ClientIndexes : public ClientTest {
  protected:
    // The statements that create indexes, a line for each.
    std::string indexes(int32_t which = TOV_CLIENT_INDEXES_ALL, bool with_rules = true)
    {
        client_plan plan;
        plan.indexes = which;
        plan.with_rules = with_rules;
        client_make_plan(ctx, schema, plan);
        EXPECT_OK(ctx);
        std::string all;
        for (const client_tbl &tbl : plan.tbls) {
            for (const client_index &index : tbl.indexes)
                all += (all.empty() ? "" : "\n") + client_index_statement(tbl, index);
        }
        return all;
    }
    // A table T of five columns: A (its key), B and C (integers), N (a nullable text), M (a nullable integer). More
    // members of its record follow, and the facts about its indexes.
    void load_tbl(const std::string &more, const std::string &facts)
    {
        load(document(more, facts).c_str());
        ASSERT_OK(ctx);
    }
    static std::string document(const std::string &more, const std::string &facts)
    {
        const std::string type = R"(,"type":{"name":"sint32"})";
        return R"({"compat_level":1,"backend":{"indistinct_unique_nulls":true},"tbls":{"t":{"name":"T","cols":{)"
               R"("a":{"name":"A")" +
               type + R"(},"b":{"name":"B","notnull":{})" + type + R"(},"c":{"name":"C","notnull":{})" + type +
               R"(},"n":{"name":"N","type":{"name":"text","nocase":true,"unicode":true,"width":9}},"m":{"name":"M")" +
               type + R"(}},"pk":{"name":"PK","cols":{"a":null}})" + more + R"(,"server":{"indexes":[)" + facts +
               "]}}}}";
    }
};

namespace {
struct index_case {
    const char *name;
    const char *more;
    const char *facts;
    const char *expected;
};
} // namespace

static const index_case index_cases[] = {
    {"one of the server", "", R"({"name":"IX","cols":["b","c"]})", R"(CREATE INDEX "IX" ON "T" ("B", "C"))"},
    {"with an order", "", R"({"name":"IX","cols":["b","c"],"descending":[false,true]})",
     R"(CREATE INDEX "IX" ON "T" ("B", "C" DESC))"},
    {"with a condition", "", R"x({"name":"IX","cols":["b"],"filter":"([C]>(0))","where":"([C]>(0))"})x",
     R"x(CREATE INDEX "IX" ON "T" ("B") WHERE ([C]>(0)))x"},
    {"for all rows where SQLite cannot have the condition", "", R"x({"name":"IX","cols":["b"],"filter":"(f([C])=1)"})x",
     R"(CREATE INDEX "IX" ON "T" ("B"))"},
    {"columns that it carries along are its last", "", R"({"name":"IX","cols":["b"],"included":["c","gone"]})",
     R"(CREATE INDEX "IX" ON "T" ("B", "C"))"},
    {"a unique one with a condition", "",
     R"({"name":"UX","unique":true,"cols":["b"],"included":["c"],"where":"[C]>0"})",
     R"(CREATE UNIQUE INDEX "UX" ON "T" ("B") WHERE [C]>0)"},
    {"none that is a constraint already", "", R"({"name":"UX","unique":true,"cols":["b"]})", ""},
    {"none that the import left out", "", R"({"name":"IX","left_out":true,"cols":["b"]})", ""},
    {"none that is disabled", "", R"({"name":"IX","disabled":true,"cols":["b"]})", ""},
    {"none of another kind", "", R"({"name":"IX","kind":"XML","cols":["b"]})", ""},
    {"none of columns that are not there", "", R"({"name":"IX","cols":["b","gone"]},{"name":"IY","cols":[]})", ""},
    {"a key whose name SQLite would keep for itself", R"(,"uniques":{"sqlite_u":{"b":null,"n":null}})", "",
     R"(CREATE UNIQUE INDEX "ix_T_B_N_nulls" ON "T" ("B") WHERE "N" IS NULL)"},
    {"NULLs are not excluded by the text of a string", "",
     R"({"name":"UX","unique":true,"cols":["n"],"where":"[C]='[N]'"})",
     "CREATE UNIQUE INDEX \"UX\" ON \"T\" (\"N\") WHERE [C]='[N]'\n"
     "CREATE UNIQUE INDEX \"UX_nulls\" ON \"T\" (\"N\" IS NULL) WHERE ([C]='[N]') AND (\"N\" IS NULL)"},
    {"NULLs are excluded whatever the strings hold", "",
     R"({"name":"UX","unique":true,"cols":["n"],"where":"[N]='a''[N] IS NULL or b'"})",
     R"(CREATE UNIQUE INDEX "UX" ON "T" ("N") WHERE [N]='a''[N] IS NULL or b')"},
    {"a name that no statement can have", "", R"({"name":"I\"X","cols":["b","c"]})",
     R"(CREATE INDEX "ix_T_B_C" ON "T" ("B", "C"))"},
    {"names that are taken", "",
     R"({"name":"t","cols":["b"]},{"name":"v_T","cols":["c"]},{"name":"tov_insert_T","cols":["m"]})",
     "CREATE INDEX \"T.t\" ON \"T\" (\"B\")\nCREATE INDEX \"T.v_T\" ON \"T\" (\"C\")\n"
     "CREATE INDEX \"T.tov_insert_T\" ON \"T\" (\"M\")"},
    {"one name for two", "", R"({"name":"IX","cols":["b"]},{"name":"ix","cols":["c"]})",
     "CREATE INDEX \"T.IX\" ON \"T\" (\"B\")\nCREATE INDEX \"T.ix_2\" ON \"T\" (\"C\")"},
    {"a foreign key gets one", R"(,"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t","cols":{"b":"a"}}})", "",
     R"(CREATE INDEX "ix_T_B" ON "T" ("B"))"},
    {"none for a foreign key that an index begins with",
     R"(,"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t","cols":{"b":"a"}}})", R"({"name":"IX","cols":["b","c"]})",
     R"(CREATE INDEX "IX" ON "T" ("B", "C"))"},
    {"one more than an index that holds some of the rows",
     R"(,"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t","cols":{"b":"a"}}})",
     R"({"name":"IX","cols":["b"],"where":"[B]>0"})",
     "CREATE INDEX \"IX\" ON \"T\" (\"B\") WHERE [B]>0\nCREATE INDEX \"ix_T_B\" ON \"T\" (\"B\")"},
    {"none for a foreign key that is the primary key",
     R"(,"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t","cols":{"a":"a"}}})", "", ""},
    {"none for a foreign key whose columns a unique key begins with, in whatever order",
     R"(,"uniques":{"UQ":{"c":null,"b":null}},"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t",)"
     R"("cols":{"b":"b","c":"c"}}})",
     "", ""},
    {"one for two foreign keys of the same columns",
     R"(,"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t","cols":{"b":"a"}},)"
     R"("g":{"name":"FG","ref_tbl_id":"t","cols":{"b":"a"}}})",
     "", R"(CREATE INDEX "ix_T_B" ON "T" ("B"))"},
    {"NULL only once in a key of one column", R"(,"uniques":{"UQ":{"n":null}})", "",
     R"(CREATE UNIQUE INDEX "UQ_nulls" ON "T" ("N" IS NULL) WHERE "N" IS NULL)"},
    {"NULL only once beside another column", R"(,"uniques":{"UQ":{"b":null,"n":null}})", "",
     R"(CREATE UNIQUE INDEX "UQ_nulls" ON "T" ("B") WHERE "N" IS NULL)"},
    {"NULLs in several columns", R"(,"uniques":{"UQ":{"n":null,"b":null,"m":null}})", "",
     R"(CREATE UNIQUE INDEX "UQ_nulls" ON "T" ("N" IS NULL, ifnull("N", 0) COLLATE NOCASE, "B", "M" IS NULL, )"
     R"(ifnull("M", 0)) WHERE "N" IS NULL OR "M" IS NULL)"},
    {"NULLs under a condition", "", R"x({"name":"UX","unique":true,"cols":["n"],"where":"([C]>(0))"})x",
     "CREATE UNIQUE INDEX \"UX\" ON \"T\" (\"N\") WHERE ([C]>(0))\n"
     "CREATE UNIQUE INDEX \"UX_nulls\" ON \"T\" (\"N\" IS NULL) WHERE (([C]>(0))) AND (\"N\" IS NULL)"},
    {"no NULL under a condition that excludes it", "",
     R"x({"name":"UX","unique":true,"cols":["n"],"where":"([n] IS NOT NULL)"})x",
     R"(CREATE UNIQUE INDEX "UX" ON "T" ("N") WHERE ([n] IS NOT NULL))"},
};

TEST_F(ClientIndexes, OfATable)
{
    for (const index_case &c : index_cases) {
        SCOPED_TRACE(c.name);
        load_tbl(c.more, c.facts);
        EXPECT_EQ(indexes(), c.expected);
        open(); // SQLite takes them
    }
}

TEST_F(ClientIndexes, AsManyAsAreAskedFor)
{
    load_tbl(R"(,"uniques":{"UQ":{"n":null}},"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t","cols":{"b":"a"}}})",
             R"({"name":"IX","cols":["b"]},{"name":"UX","unique":true,"cols":["c"],"where":"[C]>0"})");
    const std::string rules = "CREATE UNIQUE INDEX \"UQ_nulls\" ON \"T\" (\"N\" IS NULL) WHERE \"N\" IS NULL\n";
    const std::string unique = "CREATE UNIQUE INDEX \"UX\" ON \"T\" (\"C\") WHERE [C]>0";
    EXPECT_EQ(indexes(TOV_CLIENT_INDEXES_ALL), rules + "CREATE INDEX \"IX\" ON \"T\" (\"B\")\n" + unique);
    EXPECT_EQ(indexes(TOV_CLIENT_INDEXES_REFERENCES), rules + unique + "\nCREATE INDEX \"ix_T_B\" ON \"T\" (\"B\")");
    EXPECT_EQ(indexes(TOV_CLIENT_INDEXES_NONE), rules + unique);
    EXPECT_EQ(indexes(TOV_CLIENT_INDEXES_NONE, false), "");
    EXPECT_EQ(indexes(TOV_CLIENT_INDEXES_ALL, false), R"(CREATE INDEX "IX" ON "T" ("B"))");
}

// A name belongs to a table on the server, and to the database in SQLite.
TEST_F(ClientIndexes, TablesMayNameThemAlike)
{
    load(R"({"compat_level":1,"tbls":{)"
         R"("t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"sint32"}}},)"
         R"("server":{"indexes":[{"name":"IX","cols":["a"]},{"name":"U.IX","cols":["a"]}]}},)"
         R"("u":{"name":"U","cols":{"a":{"name":"A","type":{"name":"sint32"}}},)"
         R"("server":{"indexes":[{"name":"ix","cols":["a"]}]}}}})");
    EXPECT_EQ(indexes(), "CREATE INDEX \"T.IX\" ON \"T\" (\"A\")\nCREATE INDEX \"U.IX\" ON \"T\" (\"A\")\n"
                         "CREATE INDEX \"U.ix_2\" ON \"U\" (\"A\")");
    open();
}

TEST_F(ClientIndexes, KeepNullsApartAsTheServerDoes)
{
    load_tbl(R"(,"uniques":{"U1":{"m":null},"U2":{"n":null,"c":null}})", "");
    open();
    const auto insert = [this](const char *values) {
        return run(connection, std::string("INSERT INTO T(A, B, C, N, M) VALUES") + values);
    };
    EXPECT_EQ(insert("(1, 0, 0, 'x', 1)"), "");
    EXPECT_EQ(insert("(2, 0, 1, 'x', NULL)"), "");
    EXPECT_EQ(insert("(3, 0, 2, 'x', NULL)"), "UNIQUE constraint failed: index 'U1_nulls'");
    EXPECT_EQ(insert("(4, 0, 2, NULL, 2), (5, 0, 3, NULL, 3)"), "");
    EXPECT_EQ(insert("(6, 0, 2, NULL, 4)"), "UNIQUE constraint failed: T.C");
    EXPECT_EQ(insert("(7, 0, 1, 'X', 5)"), "UNIQUE constraint failed: T.N, T.C");
    EXPECT_EQ(run(connection, "UPDATE T SET M = NULL WHERE A = 1"), "UNIQUE constraint failed: index 'U1_nulls'");
}

TEST_F(ClientIndexes, TellSeveralNullsFromEveryValue)
{
    load_tbl(R"(,"uniques":{"U":{"n":null,"m":null}})", "");
    open();
    const auto insert = [this](int id, const char *values) {
        return run(connection, "INSERT INTO T(A, B, C, N, M) VALUES(" + std::to_string(id) + ", 0, 0, " + values + ")");
    };
    EXPECT_EQ(insert(1, "NULL, NULL"), "");
    EXPECT_EQ(insert(2, "NULL, 0"), "");
    EXPECT_EQ(insert(3, "'a', NULL"), "");
    EXPECT_EQ(insert(4, "'0', NULL"), "");
    EXPECT_EQ(insert(5, "NULL, NULL"), "UNIQUE constraint failed: index 'U_nulls'");
    EXPECT_EQ(insert(6, "NULL, 0"), "UNIQUE constraint failed: index 'U_nulls'");
    EXPECT_EQ(insert(7, "'A', NULL"), "UNIQUE constraint failed: index 'U_nulls'"); // the column ignores case
}

// The database looks for rows that refer to a deleted one in the index of the reference.
TEST_F(ClientIndexes, ServeReferences)
{
    make_one_tbl();
    add_tbl("u", "U");
    add_col("u", "a", "A");
    set_fk("u", "a", "t", "a", "CASCADE");
    open();
    sqlite3_db_config(connection, SQLITE_DBCONFIG_TRIGGER_EQP, 1, nullptr); // what triggers do is explained too
    EXPECT_NE(rows(connection, "EXPLAIN QUERY PLAN DELETE FROM T").find("ix_U_A"), std::string::npos);
    EXPECT_EQ(run(connection, "INSERT INTO T VALUES(1); INSERT INTO U VALUES(1), (1); DELETE FROM T"), "");
    EXPECT_EQ(rows(connection, "SELECT count(*) FROM U"), "0");
}

TEST_F(ClientIndexes, ConditionsAreLookedAtBeforeTheyReachSqlite)
{
    const std::pair<const char *, const char *> cases[] = {
        {"1); DROP TABLE T; --", "table \"T\", index \"IX\", condition: unmatched \")\""},
        {"gone > 0", "table \"T\", index \"IX\", condition: no such column: gone"},
        {"load_extension('x')", "table \"T\", index \"IX\", condition: not authorized to use function: load_extension"},
        {"(SELECT 1)", "table \"T\", index \"IX\", condition: subqueries prohibited in CHECK constraints"},
    };
    for (const auto &[where, message] : cases) {
        SCOPED_TRACE(where);
        load_tbl("", R"({"name":"IX","cols":["b"],"where":")" + std::string(where) + "\"}");
        tov_client__check_texts(ctx, schema);
        EXPECT_FAILED(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED);
        EXPECT_STREQ(KT_context__err_description(ctx), message);
        KT_context__err_reset(ctx);
    }
}

// What keeps an index out of the database keeps its condition out of every statement.
TEST_F(ClientIndexes, ConditionsOfIndexesThatAreNotCreatedMayBeAnything)
{
    for (const char *facts : {R"("cols":["b"],"disabled":true)", R"("cols":["b"],"left_out":true)",
                              R"("cols":["b"],"kind":"XML")", R"("cols":["b","gone"])", R"("cols":[])"}) {
        SCOPED_TRACE(facts);
        load_tbl("", R"({"name":"IX","where":"1); DROP TABLE T; --",)" + std::string(facts) + "}");
        EXPECT_EQ(indexes(), "");
    }
}

TEST_F(ClientIndexes, FailInOrderWithoutMemory)
{
    load_tbl(R"(,"uniques":{"UQ":{"n":null,"m":null}},"foreignkeys":{"f":{"name":"FK","ref_tbl_id":"t",)"
             R"("cols":{"b":"a"}}})",
             R"({"name":"IX","cols":["b","c"],"descending":[true,false],"where":"[C]>0"})");
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_string *text = nullptr;
        tov_client__write_script(ctx, schema, &text);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            KT_string__free(ctx, text);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(text, nullptr);
    }
}
