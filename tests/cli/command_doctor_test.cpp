// tov-schema doctor.

#include "run_command.hpp"
#include "sample.hpp"

#include <sqlite3.h>

namespace {

class CommandDoctorTest : public CommandTest {
  protected:
    void SetUp() override
    {
        CommandTest::SetUp();
        write("s.json", sample_schema);
        ASSERT_EXIT_CODE(run({"create", "--checks", "triggers", path("s.json"), path("client.db")}), 0);
    }
    void change(const std::string &sql)
    {
        const command_result result = run_program("sqlite3", {path("client.db"), sql});
        ASSERT_EQ(result.exit_code, 0) << result.err;
    }
    command_result doctor(std::vector<std::string> options = {"--quiet"})
    {
        options.insert(options.begin(), {"doctor", path("client.db")});
        return run(options);
    }
};

// What a connection and the SQLite at hand say in any case.
const char *const settings =
    "note: setting-foreign-keys: a connection does not enforce references unless it asks for that\n"
    "    run PRAGMA foreign_keys=ON on each connection that changes rows, outside of a transaction\n"
    "note: setting-recursive-triggers: a connection does not follow delete actions to their end unless it asks for "
    "that\n"
    "    run PRAGMA recursive_triggers=ON on each connection that changes rows\n";

// The sample says nothing of the server's columns, so its checks are the basic ones.
std::string dates()
{
    const std::string version = sqlite3_libversion();
    if (sqlite3_libversion_number() >= 3046000)
        return "";
    return "note: impossible-dates: with this SQLite basic checks take impossible dates, such as 2024-02-30\n"
           "    use a newer SQLite, or create the database with the server's rules; tov-schema check finds such "
           "dates\n";
}

TEST_F(CommandDoctorTest, ASoundDatabaseIsZero)
{
    const command_result quiet = doctor();
    EXPECT_EXIT_CODE(quiet, 0);
    EXPECT_EQ(quiet.out, settings + dates());
    const command_result result = doctor({});
    EXPECT_EXIT_CODE(result, 0);
    for (const std::string &line : {std::string("ok: sqlite-version: SQLite ") + sqlite3_libversion(),
                                    std::string("ok: integrity: the file is sound"),
                                    std::string("ok: object-missing: tables, indexes and triggers are those of the "
                                                "schema"),
                                    std::string("ok: reference-broken: all references lead to a row"),
                                    std::string("ok: reference-without-index: all references have an index")})
        EXPECT_NE(result.out.find(line + "\n"), std::string::npos) << line << " in:\n" << result.out;
}

struct broken_case {
    const char *name;
    const char *change; // by the shell
    const char *line;   // that says so
    int exit_code;
};
const broken_case broken_cases[] = {
    {"a trigger is gone", "DROP TRIGGER tov_insert_Parents",
     "error: object-missing: trigger \"tov_insert_Parents\" is missing\n", 1},
    {"a trigger is another one",
     "DROP TRIGGER tov_insert_Parents; CREATE TRIGGER tov_insert_Parents BEFORE INSERT ON Parents BEGIN SELECT 1; END",
     "error: object-changed: trigger \"tov_insert_Parents\" is not as the schema has it\n", 1},
    {"an index is gone", "DROP INDEX ix_Children_ParentId",
     "error: object-missing: index \"ix_Children_ParentId\" is missing\n", 1},
    {"a table has another column", "ALTER TABLE Parents ADD COLUMN Extra TEXT",
     "error: table-changed: table \"Parents\" is not as the schema has it\n", 1},
    {"a table has the name of an index", "DROP INDEX ix_Children_ParentId; CREATE TABLE ix_Children_ParentId(a)",
     "error: table-changed: table \"ix_Children_ParentId\" is not as the schema has it\n", 1},
    {"a row refers to nothing", "INSERT INTO Children VALUES(1, 1), (2, 1)",
     "error: reference-broken: 2 rows of \"Children\" refer to no row of \"Parents\" (ParentId)\n", 1},
    {"a key that another table refers to is gone", "CREATE TABLE p(a); CREATE TABLE q(b REFERENCES p(a))",
     "error: unreadable: foreign key mismatch - \"q\" referencing \"p\"\n", 1},
    {"a table was added", "CREATE TABLE Extra(a)", "note: object-added: table \"Extra\" is not of the schema\n", 0},
    {"an added table refers without an index",
     "CREATE TABLE Extra(a INTEGER REFERENCES Parents(Id)); CREATE INDEX part ON Extra(a) WHERE a > 1",
     "note: reference-without-index: deleting a row of \"Parents\" reads all of \"Extra\": no index begins with the "
     "reference's columns\n",
     0},
    {"the record is gone", "DROP TABLE tov_schema", "note: record-missing: the database has no record of its schema\n",
     0},
    {"the record is of no use", "UPDATE tov_schema SET document = '{'", "error: record-unreadable: ", 1},
    {"the record is of no schema", "UPDATE tov_schema SET document = '[]'", "error: record-unreadable: ", 1},
    {"the options of the record are unknown", "UPDATE tov_schema SET rules = 77", "error: record-unreadable: ", 1},
};

TEST_F(CommandDoctorTest, SaysWhatIsBroken)
{
    const std::string sound = read("client.db");
    for (const broken_case &c : broken_cases) {
        SCOPED_TRACE(c.name);
        write("client.db", sound);
        change(c.change);
        const command_result result = doctor();
        EXPECT_EXIT_CODE(result, c.exit_code);
        EXPECT_NE(result.out.find(c.line), std::string::npos) << result.out;
    }
}

// SQLite cannot alter a constraint, so whoever wants another one edits the statement that SQLite keeps.
const struct {
    const char *name;
    const char *from; // in the statements of the tables
    const char *to;
    const char *changed_tbl; // empty: the statement means the same
} edited_constraints[] = {
    {"a check allows more", "<=20", "<=30", "Parents"},
    {"a check is gone", "CHECK (\"K\" BETWEEN -2147483648 AND 2147483647)", "", "Children"},
    {"a check has another name", "width exceeded: 20", "width exceeded: 21", "Parents"},
    {"NULL is allowed", "NOCASE NOT NULL", "NOCASE", "Parents"},
    {"strings compare by case", "NOCASE", "BINARY", "Parents"},
    {"a reference does something else", "ON UPDATE NO ACTION", "ON UPDATE CASCADE", "Children"},
    {"blanks and letter case mean nothing", "NOT NULL", "not\n  null", ""},
    {"comments mean nothing", "<=20", "<= /* as on the server */ 20", ""},
};

TEST_F(CommandDoctorTest, SaysWhichTableHasAnotherConstraint)
{
    ASSERT_EXIT_CODE(run({"create", path("s.json"), path("constraints.db")}), 0);
    const std::string sound = read("constraints.db");
    for (const auto &c : edited_constraints) {
        SCOPED_TRACE(c.name);
        write("client.db", sound);
        change("PRAGMA writable_schema=ON; UPDATE sqlite_schema SET sql = replace(sql, '" + std::string(c.from) +
               "', '" + c.to + "') WHERE type = 'table' AND name IN ('Parents', 'Children')");
        ASSERT_NE(read("client.db"), sound);
        const command_result result = doctor();
        const std::string changed = c.changed_tbl;
        EXPECT_EXIT_CODE(result, changed.empty() ? 0 : 1);
        const std::string lines = "error: table-changed: table \"" + changed +
                                  "\" is not as the schema has it\n    unload the rows, create the database anew from "
                                  "its schema, and load them\n";
        EXPECT_EQ(result.out, settings + (changed.empty() ? "" : lines) + dates());
    }
}

TEST_F(CommandDoctorTest, MendsWhatSqlCanMend)
{
    EXPECT_EQ(doctor({"--format", "sql"}).out, "");
    change("DROP TRIGGER tov_insert_Parents; DROP INDEX ix_Children_ParentId; DROP TRIGGER tov_update_Parents;"
           "CREATE TRIGGER tov_update_Parents BEFORE UPDATE ON Parents BEGIN SELECT 1; END;"
           "CREATE TABLE Extra(a INTEGER REFERENCES Parents(Id))");
    const command_result script = doctor({"--format", "sql"});
    EXPECT_EXIT_CODE(script, 1);
    const command_result mended = run_program("sqlite3", {"-bail", path("client.db")}, script.out);
    EXPECT_EQ(mended.exit_code, 0) << mended.err;
    const command_result result = doctor();
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, settings + ("note: object-added: table \"Extra\" is not of the schema\n"
                                      "note: object-added: index \"ix_Extra_a\" is not of the schema\n"
                                      "    nothing if it is meant to be there: tov-schema migrate --apply keeps it\n" +
                                      dates()));
}

TEST_F(CommandDoctorTest, ADamagedFileIsSaid)
{
    change("WITH n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 500)"
           "INSERT INTO Parents SELECT i, 'title ' || i FROM n");
    std::string bytes = read("client.db");
    const size_t page = bytes.find("title 250") / 4096 * 4096; // SQLite's page size
    bytes.replace(page + 8, 64, std::string(64, '\xFF'));
    write("client.db", bytes);
    const command_result result = doctor();
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_NE(result.out.find("error: integrity: "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(".recover"), std::string::npos) << result.out;
}

TEST_F(CommandDoctorTest, WritesJson)
{
    change("DROP INDEX ix_Children_ParentId");
    const command_result result = doctor({"--format", "json", "-o", path("d.json")});
    EXPECT_EXIT_CODE(result, 1);
    EXPECT_EQ(result.out, "");
    const std::string json = read("d.json");
    for (const char *part :
         {"{\"diagnoses\":[\n{\"code\":\"sqlite-version\",\"severity\":\"ok\",\"message\":\"SQLite ",
          R"x({"code":"object-missing","severity":"error","message":"index \"ix_Children_ParentId\" is missing",)x"
          R"x("advice":"run the script that tov-schema doctor --format sql prints",)x"
          R"x("sql":"CREATE INDEX \"ix_Children_ParentId\" ON \"Children\" (\"ParentId\")"})x"})
        EXPECT_NE(json.find(part), std::string::npos) << part << " in " << json;
}

TEST_F(CommandDoctorTest, WhatCannotBeUsedIsTwo)
{
    EXPECT_EXIT_CODE(run({"doctor", path("absent.db")}), 2);
    EXPECT_EXIT_CODE(run({"doctor", path("s.json")}), 2);
    EXPECT_EXIT_CODE(doctor({"-o", path("client.db")}), 2);
    EXPECT_EXIT_CODE(doctor({"--format", "xml"}), 2);
}

TEST_F(CommandDoctorTest, TheDatabaseIsNotChanged)
{
    const std::string before = read("client.db");
    doctor();
    EXPECT_EQ(read("client.db"), before);
    EXPECT_EQ(files(), "client.db s.json ");
}

} // namespace
