#include "client_test.hpp"
#include "counting_sqlite.hpp"
#include "failing_alloc.hpp"

class ClientTexts : public ClientTest {
  protected:
    void expect_refused(uint64_t code, const char *description)
    {
        const std::string before = everything();
        tov_client__check_texts(ctx, schema);
        EXPECT_ERROR(ctx, code, description);
        reset();
        EXPECT_EQ(everything(), before);
        KT_string *text = nullptr;
        tov_client__write_script(ctx, schema, &text);
        EXPECT_ERROR(ctx, code, description);
        EXPECT_EQ(text, nullptr);
        reset();
    }
};

namespace {
// Each case starts from a table "t" named T with the integer column "a" named A as its key.
struct refused_case {
    const char *sentence;
    void (*prepare)(KT_context *ctx, tov_schema *s);
    const char *description;
};
} // namespace

static void set_default(KT_context *ctx, tov_schema *s, const char *expr)
{
    tov_schema__set_colcon_defval(ctx, s, "t", "a", 1, nullptr, expr);
}

static void set_fk(KT_context *ctx, tov_schema *s, const char *name, const char *ref_tbl_id, const char *ref_col_id,
                   const char *on_delete, const char *on_update)
{
    tov_schema__set_colcon_fk(ctx, s, "t", "a", 1, "fk", name, ref_tbl_id, ref_col_id, 1, on_delete, on_update, 0);
}

static const refused_case refused_cases[] = {
    // Names of tables
    {"a table name that ends its quotes",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_tbl_name(ctx, s, "t", "x\"(a); DROP TABLE y; --"); },
     "table \"x\"(a); DROP TABLE y; --\": a name with a double quote"},
    {"a table name with a single quote",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_tbl_name(ctx, s, "t", "O'Brien"); },
     "table \"O'Brien\": a name with a single quote"},
    {"an empty table name", [](KT_context *ctx, tov_schema *s) { tov_schema__set_tbl_name(ctx, s, "t", ""); },
     "table \"\": an empty name"},
    {"a table name that shows otherwise than it reads",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_tbl_name(ctx, s, "t", "a\u202Eb"); },
     "table \"a<U+202E>b\": a name with a character that changes the direction of writing"},
    {"a table name with a control character",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_tbl_name(ctx, s, "t", "a\x1B[2J"); },
     "table \"a<U+001B>[2J\": a name with a control character"},
    {"a table of SQLite's own",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_tbl_name(ctx, s, "t", "SQLite_x"); },
     "table \"SQLite_x\": SQLite keeps names that begin with sqlite_ for itself"},
    {"two tables named alike but for case",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__add_tbl(ctx, s, "u", "t", 0);
         tov_schema__add_col(ctx, s, "u", "a", "A", 1, 0, 0);
         tov_schema__set_col_type_simple(ctx, s, "u", "a", "sint32");
     },
     "table \"t\": the name differs from \"T\" only in letter case"},
    {"a table without columns", [](KT_context *ctx, tov_schema *s) { tov_schema__add_tbl(ctx, s, "u", "U", 0); },
     "table \"U\": no column that is prepared"},

    // Names of columns
    {"a column name that ends its quotes",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__set_col_name(ctx, s, "t", "a", "a\" int); ATTACH 'x' AS y; --");
     },
     "table \"T\", column \"a\" int); ATTACH 'x' AS y; --\": a name with a double quote"},
    {"a column name that would end the message inside a check",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_col_name(ctx, s, "t", "a", "a') END; DROP TABLE T; --"); },
     "table \"T\", column \"a') END; DROP TABLE T; --\": a name with a single quote"},
    {"two columns named alike but for case",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__add_col(ctx, s, "t", "b", "a", 1, 0, 0);
         tov_schema__set_col_type_simple(ctx, s, "t", "b", "sint32");
     },
     "table \"T\", column \"a\": the name differs from \"A\" only in letter case"},

    // Names of constraints
    {"a name of NOT NULL",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_colcon_notnull(ctx, s, "t", "a", 1, "x\""); },
     "table \"T\", column \"A\", name of NOT NULL: a name with a double quote"},
    {"a name of a default",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_colcon_defval(ctx, s, "t", "a", 1, "x\"", "1"); },
     "table \"T\", column \"A\", name of the default: a name with a double quote"},
    {"a name of a column check",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_colcon_check(ctx, s, "t", "a", "x\ny", "(1)"); },
     "table \"T\", column \"A\", name of the check: a name with a control character"},
    {"a name of a reference",
     [](KT_context *ctx, tov_schema *s) { set_fk(ctx, s, "x\"", "t", "a", "NO ACTION", "NO ACTION"); },
     "table \"T\", column \"A\", name of the foreign key: a name with a double quote"},
    {"a name of a primary key", [](KT_context *ctx, tov_schema *s) { tov_schema__set_pk_name(ctx, s, "t", "x'"); },
     "table \"T\", name of the primary key: a name with a single quote"},
    {"a name of an identity column's key",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_col_type_identity(ctx, s, "t", "a", "x\""); },
     "table \"T\", column \"A\", name of the key: a name with a double quote"},
    {"a name of a foreign key",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__create_foreignkey(ctx, s, "fk", "\u200Fx", "t", "t", 1, "NO ACTION", "NO ACTION", 0);
         tov_schema__add_to_foreignkey(ctx, s, "t", "fk", "a", "a");
     },
     "table \"T\", foreign key \"fk\", name of the foreign key: a name with a character that changes the direction of "
     "writing"},

    // Keys
    {"a primary key with a column that is absent",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_to_pk(ctx, s, "t", "x"); },
     "table \"T\", primary key: column id \"x\" of table id \"t\" is absent or not prepared"},
    {"a unique constraint with a column that is not prepared",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__add_col(ctx, s, "t", "u", "\"; DROP TABLE T; --", 0, 0, 0);
         tov_schema__add_to_unique_constraint(ctx, s, "t", "u", "uq");
     },
     "table \"T\", unique constraint \"uq\": column id \"u\" of table id \"t\" is absent or not prepared"},
    {"a foreign key without columns",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__create_foreignkey(ctx, s, "fk", "n", "t", "t", 1, "NO ACTION", "NO ACTION", 0);
     },
     "table \"T\", foreign key \"fk\": a key without columns"},
    {"a foreign key to a column that is not prepared",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__add_col(ctx, s, "t", "u", "U\"", 0, 0, 0);
         tov_schema__create_foreignkey(ctx, s, "fk", "n", "t", "t", 1, "NO ACTION", "NO ACTION", 0);
         tov_schema__add_to_foreignkey(ctx, s, "t", "fk", "a", "u");
     },
     "table \"T\", foreign key \"fk\": column id \"u\" of table id \"t\" is absent or not prepared"},
    {"a reference to a table that is absent",
     [](KT_context *ctx, tov_schema *s) { set_fk(ctx, s, nullptr, "nowhere", "a", "NO ACTION", "NO ACTION"); },
     "table \"T\", column \"A\", reference: table id \"nowhere\" is absent"},
    {"a reference to a column that is absent",
     [](KT_context *ctx, tov_schema *s) { set_fk(ctx, s, nullptr, "t", "x", "NO ACTION", "NO ACTION"); },
     "table \"T\", column \"A\", reference: column id \"x\" of table id \"t\" is absent or not prepared"},

    // Defaults
    {"a default that ends the statement",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "1); DROP TABLE T; --"); },
     "table \"T\", column \"A\", default: unmatched \")\""},
    {"a default with a statement after it",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "1; ATTACH 'x.db' AS x"); },
     "table \"T\", column \"A\", default: a \";\" outside of quotes"},
    {"a default with a constraint after it",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "1 PRIMARY KEY"); },
     "table \"T\", column \"A\", default: neither one literal nor one expression in parentheses"},
    {"a default with a comment that swallows the rest",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "1 /*"); },
     "table \"T\", column \"A\", default: unterminated comment"},
    {"a default that loads an extension",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(load_extension('evil'))"); },
     "table \"T\", column \"A\", default: not authorized to use function: load_extension"},
    {"a default that asks the library for its version",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(sqlite_version())"); },
     "table \"T\", column \"A\", default: not authorized to use function: sqlite_version"},
    {"a default that reads a table",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "((SELECT sql FROM sqlite_master))"); },
     "table \"T\", column \"A\", default: access to sqlite_master.sql is prohibited"},
    {"a default that is a query", [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "((SELECT 1))"); },
     "table \"T\", column \"A\", default: default value of column [c] is not constant"},
    {"a default that names a column", [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(A)"); },
     "table \"T\", column \"A\", default: no such column: A"},
    {"a default that is a bare word", [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "evil"); },
     "table \"T\", column \"A\", default: no such column: evil"},
    {"a default that raises an error",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(RAISE(ABORT, 'x'))"); },
     "table \"T\", column \"A\", default: RAISE() may only be used within a trigger-program"},
    {"a default with a parameter", [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(?1)"); },
     "table \"T\", column \"A\", default: default value of column [c] is not constant"},
    {"a default that shows otherwise than it reads",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "'\u202E'"); },
     "table \"T\", column \"A\", default: a character that changes the direction of writing"},
    {"a default that counts rows where there are none",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(count(*))"); },
     "table \"T\", column \"A\", default: not authorized to use function: count"},
    {"a default that is the largest of one value",
     [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(max(1))"); },
     "table \"T\", column \"A\", default: unknown function: max()"},
    {"a default of two values", [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(1, 2)"); },
     "table \"T\", column \"A\", default: row value misused"},
    {"a default that is no SQL", [](KT_context *ctx, tov_schema *s) { set_default(ctx, s, "(1 +)"); },
     "table \"T\", column \"A\", default: near \")\": syntax error"},

    // Checks
    {"a column check without parentheses",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_colcon_check(ctx, s, "t", "a", nullptr, "A > 0"); },
     "table \"T\", column \"A\", check: not one expression in parentheses"},
    {"a column check with a conflict clause",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__add_colcon_check(ctx, s, "t", "a", nullptr, "(1) ON CONFLICT REPLACE");
     },
     "table \"T\", column \"A\", check: not one expression in parentheses"},
    {"a column check that reads a table",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_colcon_check(ctx, s, "t", "a", nullptr, "((SELECT 1))"); },
     "table \"T\", column \"A\", check: subqueries prohibited in CHECK constraints"},
    {"a second column check",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__add_colcon_check(ctx, s, "t", "a", nullptr, "([A] > 0)");
         tov_schema__add_colcon_check(ctx, s, "t", "a", nullptr, "(b > 0)");
     },
     "table \"T\", column \"A\", check: no such column: b"},
    {"a table check that closes its parentheses",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__add_check_constraint(ctx, s, "t", "ck", "1) , evil int CHECK (1");
     },
     "table \"T\", check \"ck\": unmatched \")\""},
    {"a table check that loads an extension",
     [](KT_context *ctx,
        tov_schema *s) { tov_schema__add_check_constraint(ctx, s, "t", "ck", "load_extension('x') IS NULL"); },
     "table \"T\", check \"ck\": not authorized to use function: load_extension"},
    {"a table check of two expressions",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_check_constraint(ctx, s, "t", "ck", "1, 2"); },
     "table \"T\", check \"ck\": near \",\": syntax error"},
    {"a table check with a column that is absent",
     [](KT_context *ctx, tov_schema *s) { tov_schema__add_check_constraint(ctx, s, "t", "ck", "[B] > 0"); },
     "table \"T\", check \"ck\": no such column: B"},
};

// SQLite accepts each of these in CREATE TABLE; what it refuses then is every INSERT, or PRAGMA integrity_check.
namespace {
struct unusable_check {
    const char *expression;
    const char *flaw;
};
} // namespace

static constexpr unusable_check unusable_checks[] = {
    {"raise(ignore)", "RAISE() may only be used within a trigger-program"},
    {"raise(abort, 'x')", "RAISE() may only be used within a trigger-program"},
    {"A IN (raise(ignore))", "RAISE() may only be used within a trigger-program"},
    {"(1, 2)", "row value misused"},
    {"NOT (1, A)", "row value misused"},
    {"A IN ((1, 2), 3)", "row value misused"},
    {"hex((A, 2))", "row value misused"},
    {"CASE A WHEN (1, 2) THEN 1 END", "row value misused"},
    {"A COLLATE nope > 1", "no such collation sequence: nope"},
    {"typeof(A COLLATE nope) = 'x'", "no such collation sequence: nope"},
};

TEST_F(ClientTexts, OfChecksThatNoRowCouldPassThroughAreRefused)
{
    for (const unusable_check &c : unusable_checks) {
        SCOPED_TRACE(c.expression);
        make_one_tbl();
        tov_schema__add_check_constraint(ctx, schema, "t", "ck", c.expression);
        expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, (R"(table "T", check "ck": )" + std::string(c.flaw)).c_str());
        make_one_tbl();
        const std::string clause = "(" + std::string(c.expression) + ")";
        tov_schema__add_colcon_check(ctx, schema, "t", "a", nullptr, clause.c_str());
        expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED,
                       (R"(table "T", column "A", check: )" + std::string(c.flaw)).c_str());
    }
}

TEST_F(ClientTexts, NameTheFirstOfManyChecksThatIsRefused)
{
    static constexpr int count = 9;
    for (int bad = 0; bad < count; bad++) {
        for (int second_bad : {bad, count - 1}) {
            make_one_tbl();
            for (int n = 0; n < count; n++) {
                const bool flawed = n == bad || n == second_bad;
                const std::string expression = flawed ? "b" + std::to_string(n) + " > 0" : "A > " + std::to_string(n);
                tov_schema__add_check_constraint(ctx, schema, "t", ("ck" + std::to_string(n)).c_str(),
                                                 expression.c_str());
            }
            const std::string n = std::to_string(bad);
            expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED,
                           ("table \"T\", check \"ck" + n + "\": no such column: b" + n).c_str());
        }
    }
}

// Such as a limit of SQLite's that each check keeps to and all of them do not.
TEST_F(ClientTexts, OfChecksThatFitOnlyAloneAreRefused)
{
    make_one_tbl();
    tov_schema__add_check_constraint(ctx, schema, "t", "one", "A > 1");
    tov_schema__add_check_constraint(ctx, schema, "t", "two", "A > 2");
    kt_counting_sqlite sqlite;
    const int create_tbl = 2; // after BEGIN
    sqlite.fail(kt_sqlite_entry::prepare_next, create_tbl, SQLITE_TOOBIG);
    tov_client__check_texts(ctx, schema);
    EXPECT_TRUE(sqlite.fired());
    EXPECT_ERROR(ctx, KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"T\": all checks together: string or blob too big");
    reset();
}

// Newer versions of SQLite add a hint to what they say.
TEST_F(ClientTexts, OfWordsInDoubleQuotesThatAreNotColumnsAreRefused)
{
    ASSERT_EQ(sqlite3_open(":memory:", &connection), SQLITE_OK);
    sqlite3_db_config(connection, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
    const std::string said = run(connection, "CREATE TABLE T (A, CHECK (A <> \"x\"))");
    EXPECT_EQ(said.find("no such column: "), 0U) << said;
    make_one_tbl();
    tov_schema__add_check_constraint(ctx, schema, "t", "ck", "A <> \"x\"");
    expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, ("table \"T\", check \"ck\": " + said).c_str());
}

TEST_F(ClientTexts, AreRefusedWithThePlaceNamed)
{
    for (const refused_case &c : refused_cases) {
        SCOPED_TRACE(c.sentence);
        make_one_tbl();
        c.prepare(ctx, schema);
        ASSERT_OK(ctx);
        expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, c.description);
    }
}

static const refused_case unexpected_cases[] = {
    {"a delete action that ends its comment",
     [](KT_context *ctx, tov_schema *s) { set_fk(ctx, s, nullptr, "t", "a", "CASCADE */ CHECK (0) /*", nullptr); },
     "table \"T\", column \"A\", on_delete: \"CASCADE */ CHECK (0) /*\" is not a known action"},
    {"an update action that is more than one",
     [](KT_context *ctx, tov_schema *s) { set_fk(ctx, s, nullptr, "t", "a", nullptr, "CASCADE CHECK (0)"); },
     "table \"T\", column \"A\", on_update: \"CASCADE CHECK (0)\" is not a known action"},
    {"an action of a table's foreign key",
     [](KT_context *ctx, tov_schema *s) {
         tov_schema__create_foreignkey(ctx, s, "fk", "n", "t", "t", 1, "NO_ACTION", "NO ACTION", 0);
         tov_schema__add_to_foreignkey(ctx, s, "t", "fk", "a", "a");
     },
     "table \"T\", foreign key \"fk\", on_delete: \"NO_ACTION\" is not a known action"},
    {"a type that would end its comment line",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_col_type_simple(ctx, s, "t", "a", "x\nDROP TABLE T;"); },
     "table \"T\", column \"A\", type: \"x<U+000A>DROP TABLE T;\" is not a known type"},
    {"a type of another letter case",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_col_type_simple(ctx, s, "t", "a", "Text"); },
     "table \"T\", column \"A\", type: \"Text\" is not a known type"},
    {"a prepared column of a type that only the host has",
     [](KT_context *ctx, tov_schema *s) { tov_schema__set_col_type_unsuported(ctx, s, "t", "a", "sql_variant"); },
     "table \"T\", column \"A\", type: \"host\" is not a known type"},
};

TEST_F(ClientTexts, OfUnknownActionsAndTypesAreRefused)
{
    for (const refused_case &c : unexpected_cases) {
        SCOPED_TRACE(c.sentence);
        make_one_tbl();
        c.prepare(ctx, schema);
        ASSERT_OK(ctx);
        expect_refused(KT_ERR_UNEXPECTED_VALUE, c.description);
    }
}

TEST_F(ClientTexts, OfAColumnWithoutTypeAreRefused)
{
    make_one_tbl();
    tov_schema__add_col(ctx, schema, "t", "b", "B", 1, 0, 0);
    expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"T\", column \"B\", type: no type");
}

TEST_F(ClientTexts, OfATableOrColumnWithoutNameAreRefused)
{
    load(R"({"tbls":{"t":{"cols":{}}}})");
    expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"t\": no name");
    load(R"({"tbls":{"t":{"name":"T","cols":{"a":{"type":{"name":"text"}}}}}})");
    expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"T\", column \"a\": no name");
}

// The module looks for "A" under "a", and would find the unprepared column, whose name nobody looked at.
TEST_F(ClientTexts, OfAnIdThatHidesAnUnpreparedColumnAreRefused)
{
    load(R"({"tbls":{"t":{"name":"T","cols":{"A":{"name":"A","type":{"name":"sint32"}}}}}})");
    tov_schema__add_col(ctx, schema, "t", "a", "x\"); DROP TABLE T; --", 0, 0, 0);
    ASSERT_OK(ctx);
    expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"T\", column \"A\": the id \"A\" has a capital letter");
}

// Both would be written as the one that the lookup finds.
TEST_F(ClientTexts, OfTwoIdsThatDifferInCaseAreRefused)
{
    load(R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"sint32"}},)"
         R"("A":{"name":"B","type":{"name":"text"}}}}}})");
    expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"T\", column \"B\": the id \"A\" has a capital letter");
    load(R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"sint32"}}}},)"
         R"("T":{"name":"U","cols":{"a":{"name":"A","type":{"name":"sint32"}}}}}})");
    expect_refused(KT_ERR_SCHEMA_NOT_SUPPORTED, "table \"U\": the id \"T\" has a capital letter");
}

TEST_F(ClientTexts, WithANulNeverBecomeASchema)
{
    tov_schema__nullfree(ctx, &schema);
    tov_schema__from_json(ctx, R"({"tbls":{"t":{"name":"T\u0000x"}}})", &schema);
    EXPECT_FAILED(ctx, KT_ERR_BAD_JSON);
    reset();
}

// What must pass: the same places as above, filled with what ordinary schemas hold.
TEST_F(ClientTexts, OfAnOrdinarySchemaAreAccepted)
{
    make_one_tbl();
    tov_schema__set_tbl_name(ctx, schema, "t", "Sales.Größe; [x] --");
    add_text_col("t", "b", "Order Details (old)", true);
    tov_schema__set_colcon_notnull(ctx, schema, "t", "b", 1, "NN b");
    tov_schema__set_colcon_defval(ctx, schema, "t", "b", 1, "DF b", "'it''s; ( /* '");
    tov_schema__add_colcon_check(ctx, schema, "t", "b", "CK b", "([Order Details (old)] <> ';')");
    tov_schema__add_check_constraint(ctx, schema, "t", "ck", "length(\"A\") > 0 AND abs([A]) IN (1, 2)");
    add_col("t", "c", "C", "guid");
    tov_schema__set_colcon_defval(ctx, schema, "t", "c", 1, nullptr, "(randomblob(16))");
    add_col("t", "d", "D", "datetime");
    tov_schema__set_colcon_defval(ctx, schema, "t", "d", 1, nullptr, "(datetime('now'))");
    for (const char *action : {"no action", "CASCADE", "Set Null", "SET DEFAULT"}) {
        set_fk("t", "a", "T", "A", action);
        tov_client__check_texts(ctx, schema);
        EXPECT_OK(ctx);
    }
    open();
    const std::string tbl = "\"Sales.Größe; [x] --\"";
    EXPECT_EQ(run(connection, "INSERT INTO " + tbl + "(A) VALUES(1)"), "");
    EXPECT_EQ(rows(connection, "SELECT \"Order Details (old)\", length(C) FROM " + tbl), "it's; ( /* |16");
}

TEST_F(ClientTexts, OfEveryKnownTypeAreAccepted)
{
    reset_schema();
    add_tbl("t", "T");
    static constexpr const char *types[] = {"identity",  "sint64",     "sint32",     "sint16",     "uint8",  "uint1",
                                            "loose/int", "real8",      "real4",      "loose/real", "money8", "money4",
                                            "date",      "loose/text", "loose/blob", "guid"};
    for (const char *type : types)
        add_col("t", type, type, type);
    open();
    EXPECT_EQ(rows(connection, "SELECT count(*) FROM pragma_table_info('T')"), "16");
}

TEST_F(ClientTexts, OfAnotherShapeAreRefusedByTheirType)
{
    static constexpr const char *documents[] = {
        R"({"tbls":7})",
        R"({"tbls":{"t":7}})",
        R"({"tbls":{"t":{"name":7}}})",
        R"({"tbls":{"t":{"name":"T","cols":7}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":7}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":7}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":7}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":7}}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"},"notnull":7}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"},"defval":7}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"},"defval":{"expr":7}}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"},"fk":7}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"},"fk":{"ref_tbl_id":7}}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"},"check":7}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"},"check":[7]}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"pk":7}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"pk":{"cols":7}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"uniques":7}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"uniques":{"u":7}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"foreignkeys":7}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"foreignkeys":{"f":7}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},
            "foreignkeys":{"f":{"ref_tbl_id":"t","cols":{"a":7}}}}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"check":7}}})",
        R"({"tbls":{"t":{"name":"T","cols":{"a":{"name":"A","type":{"name":"text"}}},"check":{"c":{"expr":7}}}}})",
    };
    for (const char *document : documents) {
        SCOPED_TRACE(document);
        load(document);
        tov_client__check_texts(ctx, schema);
        EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
        reset();
    }
}

TEST_F(ClientTexts, ChecksSurviveFailingAllocations)
{
    make_one_tbl();
    add_text_col("t", "b", "B", true);
    set_default(ctx, schema, "(1)");
    tov_schema__add_colcon_check(ctx, schema, "t", "a", "CK", "(A > 0)");
    tov_schema__add_check_constraint(ctx, schema, "t", "ck", "A > 0");
    tov_schema__add_check_constraint(ctx, schema, "t", "ck2", "A > 1");
    set_fk("t", "b", "t", "a", "CASCADE");
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        tov_client__check_texts(ctx, schema);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            break;
        }
        if (!KT_context__has_err(ctx))
            continue; // memory that the runtime can do without
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}

TEST_F(ClientTexts, RefusalsSurviveFailingAllocations)
{
    make_one_tbl();
    tov_schema__set_col_type_simple(ctx, schema, "t", "a", "strange");
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        tov_client__check_texts(ctx, schema);
        if (!fault.fired()) {
            EXPECT_FAILED(ctx, KT_ERR_UNEXPECTED_VALUE);
            reset();
            break;
        }
        EXPECT_TRUE(KT_context__has_err(ctx));
        EXPECT_EQ(fault.leaked(), 0u);
    }
}
