#include "create/client_statements.hpp"

#include "client_test.hpp"
#include "failing_alloc.hpp"

class ClientStatements : public ClientTest {
  protected:
    // The text of each statement, in order, whose name is given; "" when there is none.
    std::string statement(const char *name)
    {
        client_plan plan;
        plan.with_constraints = false;
        client_make_plan(ctx, schema, plan);
        EXPECT_OK(ctx);
        search_ = name;
        found_ = "";
        client_each_statement(ctx, schema, plan, note, this);
        EXPECT_OK(ctx);
        return found_;
    }
    // Kinds and names of all statements in order, as "kind name" joined by commas.
    std::string names()
    {
        client_plan plan;
        plan.with_constraints = false;
        client_make_plan(ctx, schema, plan);
        EXPECT_OK(ctx);
        names_ = "";
        count_ = 0;
        client_each_name(ctx, plan, note, this);
        EXPECT_OK(ctx);
        EXPECT_EQ(client_count_statements(plan), count_);
        return names_;
    }

  private:
    static void note(KT_context *, void *data, const client_statement &statement) noexcept
    {
        auto *self = static_cast<ClientStatements *>(data);
        self->names_ += (self->count_++ ? "," : "") + std::string(statement.name) + " on " + statement.tbl;
        if (self->search_ == statement.name)
            self->found_ += statement.sql;
    }
    std::string search_, found_, names_;
    uint32_t count_ = 0;
};

TEST_F(ClientStatements, KnowTheOptionsThatTheyAreMadeWith)
{
    make_one_tbl();
    const struct {
        int32_t rules;
        int32_t indexes;
        const char *message;
        int32_t checks = TOV_CLIENT_CHECKS_CONSTRAINTS;
    } cases[] = {
        {2, TOV_CLIENT_INDEXES_ALL, "the option \"rules\" cannot be 2"},
        {-1, TOV_CLIENT_INDEXES_ALL, "the option \"rules\" cannot be -1"},
        {TOV_CLIENT_RULES_BASIC, 3, "the option \"indexes\" cannot be 3"},
        {TOV_CLIENT_RULES_BASIC, -1, "the option \"indexes\" cannot be -1"},
        {TOV_CLIENT_RULES_BASIC, TOV_CLIENT_INDEXES_ALL, "the option \"checks\" cannot be 2", 2},
        {TOV_CLIENT_RULES_BASIC, TOV_CLIENT_INDEXES_ALL, "the option \"checks\" cannot be -1", -1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.message);
        const tov_client_create_options options = {0, nullptr, nullptr, c.rules, c.indexes, 0, 0, c.checks};
        KT_string *text = nullptr;
        tov_client__write_script__with(ctx, schema, &options, &text);
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        EXPECT_STREQ(KT_context__err_description(ctx), c.message);
        EXPECT_EQ(text, nullptr);
        KT_context__err_reset(ctx);
        tov_client__create_database__with(ctx, schema, "/nowhere/db", &options);
        EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
        KT_context__err_reset(ctx);
    }
}

TEST_F(ClientStatements, AreHandedOutOneAfterAnother)
{
    struct taken {
        std::string text;
        int left; // calls until an error
    };
    const auto take = [](KT_context *c, void *data, const char *text) {
        auto *all = static_cast<taken *>(data);
        all->text += text;
        if (--all->left == 0)
            KT_context__err__generic(c, KT_ERR_UNEXPECTED_VALUE, "here", 1);
    };
    make_one_tbl();
    add_text_col("t", "b", "B", true);
    KT_string *script = nullptr;
    tov_client__write_script(ctx, schema, &script);
    ASSERT_OK(ctx);
    const std::string whole = KT_string__sz(script);
    KT_string__free(ctx, script);

    taken all{"", -1};
    tov_client__stream_script(ctx, schema, nullptr, take, &all);
    EXPECT_OK(ctx);
    EXPECT_EQ(all.text, whole);
    EXPECT_LT(all.left, -10) << "in parts";

    taken some{"", 5};
    tov_client__stream_script(ctx, schema, nullptr, take, &some);
    EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
    EXPECT_EQ(some.left, 0);
    EXPECT_EQ(whole.find(some.text), 0u);
    EXPECT_LT(some.text.size(), whole.size());
    KT_context__err_reset(ctx);
}

TEST_F(ClientStatements, LayATableOutForAReader)
{
    make_one_tbl();
    add_text_col("t", "b", "B", true);
    tov_schema__add_to_unique_constraint(ctx, schema, "t", "b", "uq");
    tov_schema__create_foreignkey(ctx, schema, "fk", "FK", "t", "t", 1, "CASCADE", "NO ACTION", 0);
    tov_schema__add_to_foreignkey(ctx, schema, "t", "fk", "b", "a");
    tov_schema__add_check_constraint(ctx, schema, "t", "ck", "[A] > 0");
    EXPECT_EQ(statement("T"), "CREATE TABLE \"T\" (\n"
                              "    \"A\" int NOT NULL,\n"
                              "    \"B\" text COLLATE NOCASE,\n"
                              "    PRIMARY KEY (\"A\"),\n"
                              "    UNIQUE (\"B\"),\n"
                              "    FOREIGN KEY (\"B\") REFERENCES \"T\" (\"A\") ON UPDATE NO ACTION DEFERRABLE "
                              "INITIALLY DEFERRED,\n"
                              "    CHECK ([A] > 0)\n"
                              ")");
}

TEST_F(ClientStatements, WriteNoKeyClauseForAnIntegerPrimaryKey)
{
    make_one_tbl();
    add_col("t", "i", "I", "identity");
    EXPECT_EQ(statement("T"), "CREATE TABLE \"T\" (\n    \"A\" int,\n    \"I\" integer primary key\n)");
}

TEST_F(ClientStatements, WriteNoKeyClauseForAKeyWithoutColumns)
{
    load(
        R"({"compat_level":1,"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"sint32"}}},"pk":{"cols":{}}}}})");
    EXPECT_EQ(statement("T"), "CREATE TABLE \"T\" (\n    \"A\" int\n)");
}

TEST_F(ClientStatements, CheckTheValuesOfEveryColumn)
{
    make_one_tbl();
    add_col("t", "b", "B", "loose/int");
    const std::string body = "BEGIN\n"
                             "-- sint32\nSELECT CASE\nWHEN (NEW.\"A\" IS NULL) THEN 1\n"
                             "WHEN (typeof(NEW.\"A\")!='integer') THEN RAISE(ABORT, '[A] constraint violation: type "
                             "mismatch: sint32(integer)')\n"
                             "WHEN ( (NEW.\"A\" < -2147483648) OR (NEW.\"A\" > 2147483647) ) THEN RAISE(ABORT, '[A] "
                             "constraint violation: out of range: sint32')\n"
                             "ELSE 1\nEND;\n"
                             "-- loose/int\nSELECT CASE\nWHEN (NEW.\"B\" IS NULL) THEN 1\nELSE 1\nEND;\n"
                             "END";
    EXPECT_EQ(statement("tov_insert_T"), "CREATE TRIGGER \"tov_insert_T\" BEFORE INSERT ON \"T\"\n"
                                         "WHEN NOT (\n(NEW.\"A\"|0=NEW.\"A\") AND "
                                         "(NEW.\"A\" BETWEEN -2147483648 AND 2147483647))\n" +
                                             body);
    EXPECT_EQ(statement("tov_update_T"), "CREATE TRIGGER \"tov_update_T\" BEFORE UPDATE OF \"A\" ON \"T\"\n"
                                         "WHEN NOT (\n(NEW.\"A\" COLLATE BINARY IS OLD.\"A\" OR "
                                         "(NEW.\"A\"|0=NEW.\"A\") AND "
                                         "(NEW.\"A\" BETWEEN -2147483648 AND 2147483647)))\n" +
                                             body);
}

// SQLite takes trees of 1000 levels.
TEST_F(ClientStatements, CheckTheValuesOfVeryManyColumns)
{
    add_tbl("t", "T");
    for (int n = 0; n < 1500; n++)
        add_col("t", ("c" + std::to_string(n)).c_str(), ("C" + std::to_string(n)).c_str());
    open(&with_triggers);
    EXPECT_EQ(run(connection, "INSERT INTO T(C0, C1499) VALUES(1, 2)"), "");
    EXPECT_EQ(run(connection, "INSERT INTO T(C1499) VALUES('x')"),
              "[C1499] constraint violation: type mismatch: sint32(integer)");
    EXPECT_EQ(run(connection, "UPDATE T SET C1498 = 0.5"),
              "[C1498] constraint violation: type mismatch: sint32(integer)");
}

// A value that was bad before triggers were there is in nobody's way until it changes, if only by what a collation
// does not see.
TEST_F(ClientStatements, CheckAfterAnUpdateWhatItChanged)
{
    make_one_tbl();
    add_text_col("t", "b", "B", true);
    open(&with_triggers);
    run(connection, "DROP TRIGGER tov_insert_T; INSERT INTO T VALUES('bad', x'00')");
    EXPECT_EQ(run(connection, "UPDATE T SET B = 'good'"), "");
    EXPECT_EQ(run(connection, "UPDATE T SET A = 'worse'"), "[A] constraint violation: type mismatch: sint32(integer)");
    EXPECT_EQ(run(connection, "UPDATE T SET A = 'BAD'"), "[A] constraint violation: type mismatch: sint32(integer)");
    EXPECT_EQ(rows(connection, "SELECT A, B FROM T"), "bad|good");
}

TEST_F(ClientStatements, CreateAllTablesBeforeTheFirstTrigger)
{
    make_one_tbl();
    add_tbl("u", "U");
    add_col("u", "a", "A");
    set_fk("u", "a", "t", "a", "CASCADE");
    EXPECT_EQ(names(), "T on T,U on U,ix_U_A on U,tov_insert_T on T,tov_insert_U on U,tov_update_T on T,"
                       "tov_update_U on U,tov_delete_T on T");
}

TEST_F(ClientStatements, NameTriggersLikeNoTable)
{
    make_one_tbl();
    add_tbl("u", "TOV_insert_T");
    add_col("u", "a", "A");
    add_tbl("v", "tov2_");
    add_col("v", "a", "A");
    EXPECT_EQ(names(), "T on T,TOV_insert_T on TOV_insert_T,tov2_ on tov2_,"
                       "tov3_insert_T on T,tov3_insert_TOV_insert_T on TOV_insert_T,tov3_insert_tov2_ on tov2_,"
                       "tov3_update_T on T,tov3_update_TOV_insert_T on TOV_insert_T,tov3_update_tov2_ on tov2_");
    open(&with_triggers);
    EXPECT_EQ(rows(connection, "SELECT count(*), count(DISTINCT lower(name)) FROM sqlite_master WHERE sql IS NOT NULL"),
              "9|9");
}

TEST_F(ClientStatements, CreateTablesThatReferToEachOther)
{
    make_one_tbl();
    add_col("t", "b", "B");
    add_tbl("u", "U");
    add_col("u", "a", "A");
    set_pk("u", "a");
    set_fk("t", "b", "u", "a", "CASCADE");
    set_fk("u", "a", "t", "a", "CASCADE");
    open();
    EXPECT_EQ(run(connection, "BEGIN; INSERT INTO T VALUES(1,1); INSERT INTO U VALUES(1); COMMIT"), "");
    EXPECT_EQ(run(connection, "DELETE FROM U"), "");
    EXPECT_EQ(rows(connection, "SELECT count(*) FROM T"), "0");
}

namespace {
struct value_case {
    const char *type;
    const char *value;
    const char *message; // empty: accepted
};
} // namespace

// One row for each kind of check; what each type takes in full is the matter of the expressions' own tests.
static const value_case value_cases[] = {
    {"sint16", "32767", ""},
    {"sint16", "32768", "[X] constraint violation: out of range: sint16"},
    {"sint16", "'x'", "[X] constraint violation: type mismatch: sint16(integer)"},
    {"uint1", "2", "[X] constraint violation: out of range: uint1"},
    {"real8", "3", ""},
    {"date", "'2024-02-29'", ""},
    {"date", "'2024-02-30'", "[X] constraint violation: invalid date (YYYY-MM-DD)"},
    {"guid", "x'00'", "[X] constraint violation: must be 16 bytes (uniqueidentifier)"},
    {"guid", "NULL", ""},
};

TEST_F(ClientStatements, MakeSqliteRefuseWhatTheHostWould)
{
    for (const value_case &c : value_cases) {
        SCOPED_TRACE(std::string(c.type) + " " + c.value);
        make_one_tbl();
        add_col("t", "x", "X", c.type);
        open(&with_triggers);
        EXPECT_EQ(run(connection, "INSERT INTO T(A, X) VALUES(1, " + std::string(c.value) + ")"), c.message);
        EXPECT_EQ(run(connection, "INSERT OR REPLACE INTO T(A) VALUES(2)"), "");
        EXPECT_EQ(run(connection, "UPDATE T SET X = " + std::string(c.value) + " WHERE A = 2"), c.message);
    }
}

TEST_F(ClientStatements, AreTheSameInTheScript)
{
    make_one_tbl();
    EXPECT_EQ(script(&with_triggers), "PRAGMA foreign_keys=ON;\nPRAGMA recursive_triggers=ON;\nBEGIN IMMEDIATE;\n" +
                                          statement("T") + ";\n" + statement("tov_insert_T") + ";\n" +
                                          statement("tov_update_T") + ";\nCOMMIT;\n");
}

TEST_F(ClientStatements, OfNoTablesAreAnEmptyTransaction)
{
    EXPECT_EQ(script(), "PRAGMA foreign_keys=ON;\nPRAGMA recursive_triggers=ON;\nBEGIN IMMEDIATE;\nCOMMIT;\n");
}

TEST_F(ClientStatements, AreCompleteForAShellThatReadsLines)
{
    make_one_tbl();
    add_col("t", "x", "X", "datetime");
    const std::string text = script(&with_triggers);
    std::string line;
    int statements = 0;
    for (char c : text) {
        line += c;
        if (c == '\n' && sqlite3_complete(line.c_str())) {
            statements++;
            line.clear();
        }
    }
    EXPECT_EQ(statements, 7);
    EXPECT_EQ(line, "");
}

TEST_F(ClientStatements, SurviveFailingAllocations)
{
    make_one_tbl();
    add_text_col("t", "b", "B", true);
    tov_schema__add_to_unique_constraint(ctx, schema, "t", "b", "uq");
    set_fk("t", "b", "t", "a", "SET DEFAULT");
    const std::string expected = script();
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_string *text = nullptr;
        tov_client__write_script__with(ctx, schema, &without_record, &text);
        if (KT_context__has_err(ctx)) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(text, nullptr);
            continue; // texts that the schema's pool keeps are no leak
        }
        EXPECT_EQ(take(ctx, text), expected);
        if (!fault.fired())
            break;
    }
}
