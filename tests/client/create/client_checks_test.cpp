// Constraints and triggers give the same verdicts: on every type, on values at its edges and on strange ones, with the
// server's rules and without, whichever statement brings the value.
#include "client_test.hpp"
#include "schema_tbls.hpp"
#include "type_document.hpp"
#include "verify/server_truth.hpp"

#include <set>

namespace {

// Values that are strange to most types, of every storage class.
constexpr const char *strangers[] = {
    "NULL",
    "''",
    "x''",
    "'x'",
    "x'31'",
    "5",
    "-1",
    "2.5",
    "-0.0",
    "1e15",
    "9e999",
    "-9e999",
    "'5'",
    "' 7 '",
    "'0x5'",
    "'1e3'",
    "9223372036854775807",
    "-9223372036854775807-1",
    "9223372036854775808.0",
    "-9223372036854775808.0",
    "2147483648",
    "-2147483649",
    "x'00112233445566778899aabbccddeeff'",
    "CAST(x'4100' AS text)",
    "'now'",
    "'now       '",
    "'NOW'",
    "'abcdefghij'",
    "'!!!!!!!!!!'",
    "'2456789.50'",
    "'2024-02-29'",
    "'2024-02-30'",
    "'2023-02-29'",
    "'0000-01-01'",
    "'0000-12-31 23:59:59.999'",
    "'-001-01-01'",
    "'2024-1-1'",
    "'2024-01-01 '",
    "'2024-01-01T12:34'",
    "'2024-01-01t12:34'",
    "'2024-01-01 12:34:56'",
    "'2024-01-01T12:34:56'",
    "'2024-01-01 12:34:56  '",
    "'2024-01-01 24:00:00'",
    "'2024-01-01 24:00:00.000'",
    "'2024-01-01 23:60:00.000'",
    "'2024-13-01 12:34:56.789'",
    "'2024-00-10 12:34:56.789'",
    "'2024-02-30 12:34:56.787'",
    "'2024-01-01 12:34:56.789'",
    "'2024-01-01T12:34:56.789'",
    "'2024-01-01TT12:34:56.78'",
    "'2024-01-01  12:34:56.78'",
    "'2024-01-01 12:34:56.78Z'",
    "'2024-01-01 12:34+00:00 '",
    "'2024-01-01 12:34:56+00:00'",
    "'2024-01-01 12:34:56+01:00'",
    "'2024-01-01 12:34:56.78901'",
    "'2024-01-01 12:34:59.9996'",
    "'2024-01-28 23:59:59.9999999'",
    "'2024-01-31 23:59:59.9999999'",
    "'9999-12-31 23:59:59.9999999'",
    "'2024-02-30 12:34:59.9999999'",
    "'2024-01-01 24:00:00.9999999'",
    "'2024-01-01 12:34:56.7890123'",
    "'2024-01-01T12:34:56.7890123'",
    "'2024-01-01 12:34:56.78901234'",
    "'2024-01-01 23:59:59.999'",
    "'2024-02-30 23:59:59.999'",
    "'2024-01-01 12:34:56.789'||char(0)||'x'",
    "'2024-01-01 12:34:56.7890123'||char(0)",
    "'2024-01-01'||char(0)",
    "'2024-01-01 12:34'||char(10)",
    "'12:34:56'",
    "'12:34:56.789'",
    "'12:34:56.7896'",
    "'12:34:59.9999999'",
    "'23:59:59.999'",
    "'24:00:00'",
    "'12:34'",
    "'12-34:56'",
    "'1a:34:56'",
    "'12:34:56.78901234567'",
    "'12:34:56'||char(0)",
    "CAST(x'323032342d30312d3031' AS text)",
    "x'323032342d30312d30312031323a33343a35362e373839'",
};

// The ways in which a value comes into a table that has a row of another.
struct way {
    const char *name;
    const char *before;
    const char *after;
};
constexpr way ways[] = {
    {"INSERT", "INSERT INTO %(Id, c) VALUES(2, ", ")"},
    {"INSERT OR REPLACE", "INSERT OR REPLACE INTO %(Id, c) VALUES(1, ", ")"},
    {"UPDATE", "UPDATE % SET c = ", ""},
    {"UPDATE OR REPLACE", "UPDATE OR REPLACE % SET c = ", ""},
    {"UPSERT", "INSERT INTO %(Id, c) VALUES(1, ", ") ON CONFLICT(Id) DO UPDATE SET c = excluded.c"},
};

class ClientChecks : public ClientTest {
  protected:
    void TearDown() override
    {
        sqlite3_close(checked);
        ClientTest::TearDown();
    }
    // Opens both forms: that with triggers as connection, that with constraints as checked.
    void open_both(int32_t rules)
    {
        tov_client_create_options options = without_record;
        options.rules = rules;
        open(&options);
        sqlite3_close(checked);
        checked = connection;
        connection = nullptr;
        options.checks = TOV_CLIENT_CHECKS_TRIGGERS;
        open(&options);
        static constexpr const char *count = "SELECT count(*) FROM sqlite_master WHERE name LIKE 'tov_insert_%'";
        ASSERT_EQ(rows(checked, count), "0");
        ASSERT_NE(rows(connection, count), "0");
    }
    // What a statement says, and what the table holds after it.
    static std::string outcome(sqlite3 *form, const std::string &tbl, const std::string &sql)
    {
        run(form, "DELETE FROM " + tbl + "; INSERT INTO " + tbl + "(Id) VALUES(1)");
        const std::string message = run(form, sql);
        return rows(form, "SELECT Id, typeof(c), quote(c) FROM " + tbl) + "\n" + message;
    }
    void compare(const std::string &tbl, const std::string &value, const way &w)
    {
        const std::string sql = about(w.before, tbl) + value + w.after;
        const std::string by_trigger = outcome(connection, tbl, sql);
        const std::string by_constraint = outcome(checked, tbl, sql);
        const size_t trigger_end = by_trigger.find('\n');
        const size_t constraint_end = by_constraint.find('\n');
        const std::string message = by_trigger.substr(trigger_end + 1);
        EXPECT_EQ(by_constraint.substr(0, constraint_end), by_trigger.substr(0, trigger_end)) << sql << message;
        EXPECT_TRUE(is_same_message(value, message, by_constraint.substr(constraint_end + 1)))
            << sql << ": " << by_trigger << ", " << by_constraint;
        (message.empty() ? taken : refused)++;
    }
    // Inserts each value, and brings it in by one of the other ways.
    template <class Values> void compare_all(const std::string &tbl, const Values &values)
    {
        for (const auto &literal : values) {
            const std::string value = literal;
            compare(tbl, value, ways[0]);
            compare(tbl, value, ways[1 + next_way++ % (std::size(ways) - 1)]);
        }
    }
    // A rule of the server that refuses all that the schema's own check does says so in the check's place, nothing
    // overflows in a constraint, and the real that equals the least integer is refused for its range.
    static bool is_same_message(const std::string &value, const std::string &trigger, const std::string &constraint)
    {
        if (trigger.empty() || constraint.empty())
            return trigger.empty() && constraint.empty();
        static const std::string prefix = "CHECK constraint failed: ";
        if (constraint.rfind(prefix, 0) != 0)
            return constraint == trigger;
        const std::string message = constraint.substr(prefix.size());
        static const std::string invalid = "[c] constraint violation: invalid ";
        return message.rfind(trigger, 0) == 0 || value == "-9223372036854775808.0" || trigger == "integer overflow" ||
               (message.rfind(invalid, 0) == 0 &&
                (trigger.rfind(invalid, 0) == 0 || trigger.ends_with("not a day of the calendar")));
    }
    static std::string about(const char *format, const std::string &tbl)
    {
        std::string sql = format;
        return sql.replace(sql.find('%'), 1, tbl);
    }

    sqlite3 *checked = nullptr;
    size_t next_way = 0;
    int refused = 0;
    int taken = 0;
};

} // namespace

TEST_F(ClientChecks, GiveTheSameVerdictInBothForms)
{
    const std::vector<server_truth> truths = server_truths();
    std::vector<client_declared_type> types;
    for (const server_truth &truth : truths)
        types.push_back(truth.type);
    load(document_of_tables(types).c_str());
    for (const int32_t rules : {TOV_CLIENT_RULES_SERVER, TOV_CLIENT_RULES_BASIC}) {
        SCOPED_TRACE(rules);
        open_both(rules);
        for (size_t n = 0; n < truths.size(); n++) {
            SCOPED_TRACE(client_declared_type_text(truths[n].type));
            compare_all("T" + std::to_string(n), truths[n].edges);
            if (rules == TOV_CLIENT_RULES_SERVER)
                compare_all("T" + std::to_string(n), strangers);
        }
    }
    EXPECT_GT(refused, 8'000);
    EXPECT_GT(taken, 3'000);
}

// Types as a document has them, some with numbers that no server would say.
static constexpr const char *abstract_types[] = {
    R"("name":"sint64")",
    R"("name":"sint32")",
    R"("name":"sint16")",
    R"("name":"uint8")",
    R"("name":"uint1")",
    R"("name":"loose/int")",
    R"("name":"real8")",
    R"("name":"real4")",
    R"("name":"loose/real")",
    R"("name":"decimal","precision":0,"scale":0)",
    R"("name":"decimal","precision":1,"scale":0)",
    R"("name":"decimal","precision":18,"scale":4)",
    R"("name":"decimal","precision":19,"scale":4)",
    R"("name":"decimal","precision":38,"scale":4)",
    R"("name":"money8")",
    R"("name":"money4")",
    R"("name":"date")",
    R"("name":"time","precision":7)",
    R"("name":"datetime","precision":7)",
    R"("name":"text","width":0)",
    R"("name":"text","width":1)",
    R"("name":"text","width":10,"nocase":true)",
    R"("name":"loose/text")",
    R"("name":"blob","width":0)",
    R"("name":"blob","width":1)",
    R"("name":"loose/blob")",
    R"("name":"guid")",
};

TEST_F(ClientChecks, KnowEveryAbstractType)
{
    std::string document = R"({"compat_level":1,"tbls":{)";
    std::set<std::string> names{"identity"};
    for (const char *type : abstract_types) {
        const std::string id = std::to_string(document.size());
        document += (document.back() == '{' ? "\"" : ",\"") + id + R"(":{"name":"T)" + id +
                    R"(","cols":{"1":{"name":"Id","type":{"name":"identity"}},"2":{"name":"c","type":{)" + type +
                    "}}}}";
        const std::string name = std::string(type).substr(8);
        names.insert(name.substr(0, name.find('"')));
    }
    load((document + "}}").c_str());
    for (uint32_t n = 0; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++)
        EXPECT_TRUE(names.contains(type->name)) << type->name;
    open_both(TOV_CLIENT_RULES_BASIC);
    for (const std::string &name : tbl_names_of(ctx, schema))
        compare_all(name, strangers);
    EXPECT_OK(ctx);
}

// Statements that ask for something else than an error are not alike: SQLite obeys them where a constraint refuses a
// value, but a trigger that raises an error ends the statement whatever it asks for.
TEST_F(ClientChecks, ObeyConflictClausesAsConstraintsDo)
{
    make_one_tbl();
    open_both(TOV_CLIENT_RULES_BASIC);
    const auto after = [](sqlite3 *form, const std::string &sql) {
        run(form, "ROLLBACK; DELETE FROM T");
        run(form, "BEGIN; INSERT INTO T VALUES(1)");
        const std::string message = run(form, sql);
        const std::string held = rows(form, "SELECT group_concat(A) FROM T");
        run(form, "ROLLBACK");
        return held + (message.empty() ? "" : ", refused");
    };
    const struct {
        const char *sql;
        const char *constraints;
        const char *triggers;
    } cases[] = {
        {"INSERT INTO T VALUES(2), ('x'), (3)", "1, refused", "1, refused"},
        {"INSERT OR ABORT INTO T VALUES(2), ('x'), (3)", "1, refused", "1, refused"},
        {"INSERT OR REPLACE INTO T VALUES(2), ('x'), (3)", "1, refused", "1, refused"},
        {"INSERT OR IGNORE INTO T VALUES(2), ('x'), (3)", "1,2,3", "1, refused"},
        {"INSERT OR FAIL INTO T VALUES(2), ('x'), (3)", "1,2, refused", "1, refused"},
        {"INSERT OR ROLLBACK INTO T VALUES(2), ('x'), (3)", "NULL, refused", "1, refused"},
        {"INSERT INTO T VALUES(2), ('x'), (3) ON CONFLICT DO NOTHING", "1, refused", "1, refused"},
        {"INSERT INTO T VALUES('x') ON CONFLICT(A) DO UPDATE SET A = 7", "1, refused", "1, refused"},
        {"INSERT INTO T VALUES(1) ON CONFLICT(A) DO UPDATE SET A = 'x'", "1, refused", "1, refused"},
        {"UPDATE OR IGNORE T SET A = 'x'", "1", "1, refused"},
        {"UPDATE OR REPLACE T SET A = 'x'", "1, refused", "1, refused"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.sql);
        EXPECT_EQ(after(checked, c.sql), c.constraints);
        EXPECT_EQ(after(connection, c.sql), c.triggers);
    }
}

// What the schema says of a table itself goes by its own words.
TEST_F(ClientChecks, LendNoNameToTheChecksOfTheSchema)
{
    for (const bool has_key : {false, true}) {
        SCOPED_TRACE(has_key);
        reset_schema();
        add_tbl("t", "T");
        add_col("t", "a", "A");
        if (has_key)
            set_pk("t", "a");
        tov_schema__add_check_constraint(ctx, schema, "t", "ck", "A > 0");
        open();
        EXPECT_EQ(run(connection, "INSERT INTO T VALUES(0)"), "CHECK constraint failed: A > 0");
        EXPECT_EQ(run(connection, "INSERT INTO T VALUES('x')"),
                  "CHECK constraint failed: [A] constraint violation: type mismatch: sint32(integer)");
    }
}

TEST_F(ClientChecks, StandWithTheirColumns)
{
    make_one_tbl();
    add_col("t", "b", "B", "loose/int");
    const std::string text = script();
    EXPECT_NE(text.find("CREATE TABLE \"T\" (\n"
                        "    \"A\" int NOT NULL\n"
                        "        CONSTRAINT \"[A] constraint violation: type mismatch: sint32(integer)\" "
                        "CHECK (\"A\"|0=\"A\")\n"
                        "        CONSTRAINT \"[A] constraint violation: out of range: sint32\" "
                        "CHECK (\"A\" BETWEEN -2147483648 AND 2147483647),\n"
                        "    \"B\" int,\n"
                        "    PRIMARY KEY (\"A\")\n"
                        ");\n"),
              std::string::npos)
        << text;
    EXPECT_EQ(text.find("TRIGGER"), std::string::npos);
}

// As in the statements for triggers, a type that lacks a number it needs is a failure.
TEST_F(ClientChecks, NeedTheNumbersThatTheirTypesNeed)
{
    for (const char *type : {R"("name":"text")", R"("name":"blob")", R"("name":"decimal","precision":3)",
                             R"("name":"decimal","scale":3)"}) {
        SCOPED_TRACE(type);
        load((R"({"tbls":{"t":{"name":"T","cols":{"1":{"name":"c","type":{)" + std::string(type) + "}}}}}}").c_str());
        for (const auto *options : {&without_record, &with_triggers}) {
            KT_string *text = nullptr;
            tov_client__write_script__with(ctx, schema, options, &text);
            EXPECT_FAILED(ctx, KT_ERR_KEY_NOT_FOUND);
            EXPECT_EQ(text, nullptr);
            KT_context__err_reset(ctx);
        }
    }
}
