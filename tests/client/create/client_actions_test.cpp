#include "client_test.hpp"

class ClientActions : public ClientTest {
  protected:
    // Parent P(K integer key) and child C(I integer key, F integer with the reference to P.K).
    void make_family(const char *action)
    {
        reset_schema();
        add_tbl("p", "P");
        add_col("p", "k", "K");
        set_pk("p", "k");
        add_tbl("c", "C");
        add_col("c", "i", "I");
        set_pk("c", "i");
        add_col("c", "f", "F");
        set_fk("c", "f", "p", "k", action);
    }
    void expect(const char *sql, const char *message)
    {
        EXPECT_EQ(run(connection, sql), message) << sql;
        if (!sqlite3_get_autocommit(connection))
            run(connection, "ROLLBACK");
    }
    void expect_rows(const char *sql, const char *expected)
    {
        EXPECT_EQ(rows(connection, sql), expected) << sql;
    }
};

static constexpr const char *fk_failed = "FOREIGN KEY constraint failed";

TEST_F(ClientActions, NoActionRefusesAtCommit)
{
    make_family("NO ACTION");
    open();
    expect("INSERT INTO P VALUES(1),(2); INSERT INTO C VALUES(1,1),(2,NULL)", "");
    expect("DELETE FROM P WHERE K=1", fk_failed);
    expect("BEGIN; DELETE FROM P WHERE K=1; DELETE FROM C WHERE F=1; COMMIT", "");
    expect_rows("SELECT * FROM P", "2");
    expect_rows("SELECT count(*) FROM sqlite_master WHERE name LIKE 'tov_delete%'", "0");
}

TEST_F(ClientActions, CascadeDeletesTheChildren)
{
    make_family("cascade");
    open();
    expect("INSERT INTO P VALUES(1),(2); INSERT INTO C VALUES(1,1),(2,2),(3,NULL),(4,1)", "");
    expect("DELETE FROM P WHERE K=1", "");
    expect_rows("SELECT * FROM C", "2|2 3|NULL");
}

TEST_F(ClientActions, SetNullMakesChildrenReferToNothing)
{
    make_family("SET NULL");
    open();
    expect("INSERT INTO P VALUES(1),(2); INSERT INTO C VALUES(1,1),(2,2)", "");
    expect("DELETE FROM P WHERE K=1", "");
    expect_rows("SELECT * FROM C", "1|NULL 2|2");
}

TEST_F(ClientActions, SetNullFailsWhereNullIsNotAllowed)
{
    make_family("SET NULL");
    tov_schema__set_colcon_notnull(ctx, schema, "c", "f", 1, nullptr);
    open();
    expect("INSERT INTO P VALUES(1); INSERT INTO C VALUES(1,1)", "");
    expect("DELETE FROM P", "NOT NULL constraint failed: C.F");
    expect_rows("SELECT * FROM P", "1");
}

TEST_F(ClientActions, SetDefaultMakesChildrenReferToTheirDefault)
{
    make_family("SET DEFAULT");
    tov_schema__set_colcon_defval(ctx, schema, "c", "f", 1, nullptr, "(1+1)");
    open();
    expect("INSERT INTO P VALUES(1),(2); INSERT INTO C VALUES(1,1)", "");
    expect("DELETE FROM P WHERE K=1", "");
    expect_rows("SELECT * FROM C", "1|2");
    // The default's own parent: nothing is left to refer to.
    expect("DELETE FROM P WHERE K=2", fk_failed);
    expect_rows("SELECT * FROM P", "2");
}

TEST_F(ClientActions, SetDefaultWithoutADefaultIsNull)
{
    make_family("SET DEFAULT");
    open();
    expect("INSERT INTO P VALUES(1); INSERT INTO C VALUES(1,1)", "");
    expect("DELETE FROM P", "");
    expect_rows("SELECT * FROM C", "1|NULL");
}

TEST_F(ClientActions, SetDefaultIsCheckedLikeAnyUpdate)
{
    make_family("SET DEFAULT");
    tov_schema__set_colcon_defval(ctx, schema, "c", "f", 1, nullptr, "'x'");
    open();
    expect("INSERT INTO P VALUES(1); INSERT INTO C VALUES(1,1)", "");
    expect("DELETE FROM P", "CHECK constraint failed: [F] constraint violation: type mismatch: sint32(integer)");
    expect_rows("SELECT * FROM P", "1");
}

TEST_F(ClientActions, ReachThroughSeveralTables)
{
    make_family("CASCADE");
    add_tbl("d", "D");
    add_col("d", "i", "I");
    add_col("d", "f", "F");
    set_fk("d", "f", "c", "i", "SET NULL");
    open();
    expect("INSERT INTO P VALUES(1); INSERT INTO C VALUES(7,1); INSERT INTO D VALUES(1,7)", "");
    expect("DELETE FROM P", "");
    expect_rows("SELECT * FROM D", "1|NULL");
}

TEST_F(ClientActions, CompareAsTheParentColumnDoes)
{
    for (bool parent_nocase : {true, false}) {
        SCOPED_TRACE(parent_nocase);
        reset_schema();
        add_tbl("p", "P");
        add_text_col("p", "k", "K", parent_nocase);
        set_pk("p", "k");
        add_tbl("c", "C");
        add_text_col("c", "f", "F", !parent_nocase);
        set_fk("c", "f", "p", "k", "CASCADE");
        open();
        expect("INSERT INTO P VALUES('a')", "");
        expect("INSERT INTO C VALUES('A')", parent_nocase ? "" : fk_failed);
        if (!parent_nocase)
            expect("INSERT INTO P VALUES('A'); INSERT INTO C VALUES('A')", "");
        expect("DELETE FROM P WHERE K='a' COLLATE BINARY", "");
        expect_rows("SELECT count(*) FROM C", parent_nocase ? "0" : "1");
    }
}

TEST_F(ClientActions, IgnoreBlanksAtTheEndWhereTheParentIsOfFixedWidth)
{
    reset_schema();
    add_tbl("p", "P");
    tov_schema__add_col(ctx, schema, "p", "k", "K", 1, 0, 0);
    tov_schema__set_col_type_text(ctx, schema, "p", "k", nullptr, nullptr, 0, 0, 0, 0, 0, 0, /* fixed width */ 1, 1, 5);
    set_pk("p", "k");
    add_tbl("c", "C");
    add_text_col("c", "f", "F", false);
    set_fk("c", "f", "p", "k", "CASCADE");
    open();
    expect("INSERT INTO P VALUES('a  '),('A'); INSERT INTO C VALUES('a'),('a '),('A ')", "");
    expect("DELETE FROM P WHERE K='a'", "");
    expect_rows("SELECT quote(F) FROM C", "'A '");
}

TEST_F(ClientActions, LeaveTheChecksToTheCommit)
{
    make_family("SET DEFAULT");
    tov_schema__set_colcon_defval(ctx, schema, "c", "f", 1, nullptr, "9");
    open();
    expect("INSERT INTO P VALUES(1); INSERT INTO C VALUES(1,1)", "");
    expect("BEGIN; DELETE FROM P; COMMIT", fk_failed);
    expect_rows("SELECT * FROM C", "1|1");
    // The default's parent comes before the commit.
    expect("BEGIN; DELETE FROM P; INSERT INTO P VALUES(9); COMMIT", "");
    expect_rows("SELECT * FROM C", "1|9");
}

// Rows of E that the deletion reaches through C and through D, through C alone, and through D alone.
TEST_F(ClientActions, ReachARowByMoreThanOneWay)
{
    struct way_case {
        const char *through_d;
        const char *message;
        const char *left;
    };
    for (const way_case &c : {way_case{"CASCADE", "", "2|2"}, way_case{"SET NULL", "", "2|NULL 2|2"},
                              way_case{"NO ACTION", fk_failed, "1|1 1|2 1|NULL 2|1 2|2"}}) {
        SCOPED_TRACE(c.through_d);
        make_family("CASCADE");
        add_tbl("d", "D");
        add_col("d", "i", "I");
        set_pk("d", "i");
        add_col("d", "f", "F");
        set_fk("d", "f", "p", "k", "CASCADE");
        add_tbl("e", "E");
        add_col("e", "c", "C");
        add_col("e", "d", "D");
        set_fk("e", "c", "c", "i", "CASCADE");
        set_fk("e", "d", "d", "i", c.through_d);
        open();
        expect("INSERT INTO P VALUES(1),(2); INSERT INTO C VALUES(1,1),(2,2); INSERT INTO D VALUES(1,1),(2,2);"
               "INSERT INTO E VALUES(1,1),(1,2),(1,NULL),(2,1),(2,2)",
               "");
        expect("DELETE FROM P WHERE K=1", c.message);
        expect_rows("SELECT * FROM E", c.left);
    }
}

TEST_F(ClientActions, FollowKeysThatShareAColumn)
{
    reset_schema();
    for (const char *id : {"p", "q"}) {
        add_tbl(id, id);
        add_col(id, "a", "A");
        add_col(id, "b", "B");
        set_pk(id, "a");
        tov_schema__add_to_pk(ctx, schema, id, "b");
    }
    add_tbl("c", "C");
    for (const char *id : {"x", "y", "z"})
        add_col("c", id, id);
    tov_schema__create_foreignkey(ctx, schema, "fk1", "FK1", "c", "p", 1, "CASCADE", "NO ACTION", 0);
    tov_schema__add_to_foreignkey(ctx, schema, "c", "fk1", "x", "a");
    tov_schema__add_to_foreignkey(ctx, schema, "c", "fk1", "y", "b");
    tov_schema__create_foreignkey(ctx, schema, "fk2", "FK2", "c", "q", 1, "SET NULL", "NO ACTION", 0);
    tov_schema__add_to_foreignkey(ctx, schema, "c", "fk2", "y", "a");
    tov_schema__add_to_foreignkey(ctx, schema, "c", "fk2", "z", "b");
    open();
    expect("INSERT INTO p VALUES(1,1),(1,2); INSERT INTO q VALUES(1,1),(2,2);"
           "INSERT INTO C VALUES(1,1,1),(1,2,2),(1,2,NULL)",
           "");
    expect("DELETE FROM q WHERE A=2", "");
    expect_rows("SELECT * FROM C", "1|1|1 1|NULL|NULL 1|2|NULL");
    expect("DELETE FROM p", "");
    expect_rows("SELECT * FROM C", "1|NULL|NULL");
}

TEST_F(ClientActions, TakeCompositeKeysAsAWhole)
{
    for (const char *action : {"CASCADE", "SET NULL", "SET DEFAULT"}) {
        SCOPED_TRACE(action);
        reset_schema();
        add_tbl("p", "P");
        add_col("p", "a", "A");
        add_text_col("p", "b", "B", true);
        set_pk("p", "a");
        tov_schema__add_to_pk(ctx, schema, "p", "b");
        add_tbl("c", "C");
        add_col("c", "i", "I");
        add_col("c", "x", "X");
        add_text_col("c", "y", "Y", false);
        tov_schema__set_colcon_defval(ctx, schema, "c", "x", 1, nullptr, "9");
        tov_schema__set_colcon_defval(ctx, schema, "c", "y", 1, nullptr, "'z'");
        // The key's id and the table's are written in another case than the table's own.
        tov_schema__create_foreignkey(ctx, schema, "fk", "FK", "c", "P", 1, action, "NO ACTION", 0);
        tov_schema__add_to_foreignkey(ctx, schema, "c", "fk", "x", "a");
        tov_schema__add_to_foreignkey(ctx, schema, "c", "fk", "y", "b");
        open();
        expect("INSERT INTO P VALUES(1,'b'),(1,'c'),(9,'z');"
               "INSERT INTO C VALUES(1,1,'B'),(2,1,'c'),(3,NULL,'b'),(4,1,NULL)",
               "");
        expect("DELETE FROM P WHERE A=1 AND B='b'", "");
        const bool cascade = std::string("CASCADE") == action;
        const char *first = cascade ? "" : std::string("SET NULL") == action ? "1|NULL|NULL " : "1|9|z ";
        expect_rows("SELECT * FROM C", (first + std::string("2|1|c 3|NULL|b 4|1|NULL")).c_str());
    }
}

TEST_F(ClientActions, FollowATableThatRefersToItself)
{
    reset_schema();
    add_tbl("t", "T");
    add_col("t", "i", "I");
    add_col("t", "p", "P");
    set_pk("t", "i");
    set_fk("t", "p", "t", "i", "CASCADE");
    open();
    expect("INSERT INTO T VALUES(1,NULL),(2,1),(3,2),(4,4),(5,1)", "");
    expect("DELETE FROM T WHERE I=2", "");
    expect_rows("SELECT * FROM T", "1|NULL 4|4 5|1");
    expect("DELETE FROM T WHERE I=4", "");
    // Rows that refer to each other in a cycle go together.
    expect("BEGIN; INSERT INTO T VALUES(6,7),(7,8),(8,6); COMMIT; DELETE FROM T WHERE I=7", "");
    expect_rows("SELECT * FROM T", "1|NULL 5|1");
    // A row that is replaced is deleted.
    expect("INSERT OR REPLACE INTO T VALUES(1,NULL)", "");
    expect_rows("SELECT * FROM T", "1|NULL");
}

TEST_F(ClientActions, ReachAsDeepAsSqliteLetsTriggers)
{
    reset_schema();
    add_tbl("t", "T");
    add_col("t", "i", "I");
    add_col("t", "p", "P");
    set_pk("t", "i");
    set_fk("t", "p", "t", "i", "CASCADE");
    open();
    const auto chain_of = [](int length) {
        return "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE i<" + std::to_string(length) +
               ") INSERT INTO T SELECT i, nullif(i-1, 0) FROM n";
    };
    expect(chain_of(1000).c_str(), "");
    expect("DELETE FROM T WHERE I=1", "");
    expect_rows("SELECT count(*) FROM T", "0");
    expect(chain_of(1001).c_str(), "");
    const std::string message = run(connection, "DELETE FROM T WHERE I=1");
    EXPECT_TRUE(message == "too many levels of trigger recursion" || message == "triggers nested too deep") << message;
    expect_rows("SELECT count(*) FROM T", "1001");
}

// A row that is to go and a reset that would take it out of the deletion's sight.
TEST_F(ClientActions, DeleteBeforeTheyReset)
{
    reset_schema();
    add_tbl("p", "P");
    add_col("p", "a", "A");
    add_col("p", "b", "B");
    set_pk("p", "a");
    tov_schema__add_to_unique_constraint(ctx, schema, "p", "a", "uq");
    tov_schema__add_to_unique_constraint(ctx, schema, "p", "b", "uq");
    add_tbl("c", "C");
    add_col("c", "x", "X");
    add_col("c", "y", "Y");
    set_fk("c", "x", "p", "a", "SET NULL");
    tov_schema__create_foreignkey(ctx, schema, "fk", "FK", "c", "p", 1, "CASCADE", "NO ACTION", 0);
    tov_schema__add_to_foreignkey(ctx, schema, "c", "fk", "x", "a");
    tov_schema__add_to_foreignkey(ctx, schema, "c", "fk", "y", "b");
    open();
    expect("INSERT INTO P VALUES(1,1); INSERT INTO C VALUES(1,1),(1,NULL)", "");
    expect("DELETE FROM P", "");
    expect_rows("SELECT * FROM C", "NULL|NULL");
}

TEST_F(ClientActions, LeaveUpdateActionsToSqlite)
{
    make_family("CASCADE");
    tov_schema__set_colcon_fk(ctx, schema, "c", "f", 1, "fk", nullptr, "p", "k", 1, "CASCADE", "CASCADE", 0);
    open();
    expect("INSERT INTO P VALUES(1); INSERT INTO C VALUES(1,1); UPDATE P SET K=5", "");
    expect_rows("SELECT * FROM C", "1|5");
}

// Listing a table's keys needs each key's name and action; a table that has no action is not listed.
TEST_F(ClientActions, NeedNoNameWhereThereIsNoAction)
{
    make_family("NO ACTION");
    tov_schema__create_foreignkey(ctx, schema, "fk", nullptr, "c", "p", 1, nullptr, nullptr, 0);
    tov_schema__add_to_foreignkey(ctx, schema, "c", "fk", "i", "k");
    open();
    set_fk("c", "f", "p", "k", "CASCADE");
    KT_string *text = nullptr;
    tov_client__write_script(ctx, schema, &text);
    EXPECT_FAILED(ctx, KT_ERR_KEY_NOT_FOUND);
    EXPECT_EQ(text, nullptr);
    reset();
}

TEST_F(ClientActions, AreRefusedForATableNamedOld)
{
    make_family("CASCADE");
    tov_schema__set_tbl_name(ctx, schema, "c", "Old");
    KT_string *text = nullptr;
    tov_client__write_script(ctx, schema, &text);
    EXPECT_ERROR(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED,
                 "table \"Old\": a foreign key with a delete action: triggers call the deleted row OLD");
    EXPECT_EQ(text, nullptr);
    reset();
    // As a parent, or without an action, it is a name like any other; so is NEW.
    tov_schema__set_tbl_name(ctx, schema, "c", "New");
    tov_schema__set_tbl_name(ctx, schema, "p", "old");
    open();
    expect("INSERT INTO old VALUES(1),(2); INSERT INTO New VALUES(1,1),(2,2); DELETE FROM old WHERE K=1", "");
    expect_rows("SELECT * FROM New", "2|2");
}
