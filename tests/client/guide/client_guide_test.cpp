// What the guide says of values is what SQLite makes of them, and what docs/values.md says.
#include "client_test.hpp"
#include "declared_types.hpp"

#include "rows/convert/client_convert.hpp"

#include <cmath>
#include <cstring>
#include <fstream>
#include <random>
#include <set>
#include <sstream>

namespace {

// The value of an expression as SQLite writes it in SQL; ?1 is bound to text, where there is one.
class GuideTest : public testing::Test {
  protected:
    void SetUp() override
    {
        ASSERT_EQ(sqlite3_open(":memory:", &connection), SQLITE_OK);
        // Older libraries lack it; what the guide gives for newer ones is tried all the same.
        sqlite3_create_function(connection, "unhex", 1, SQLITE_UTF8, nullptr, unhex, nullptr, nullptr);
    }
    void TearDown() override
    {
        sqlite3_close(connection);
    }
    static void unhex(sqlite3_context *context, int, sqlite3_value **values)
    {
        const auto *hex = reinterpret_cast<const char *>(sqlite3_value_text(values[0]));
        std::string bytes;
        for (size_t n = 0; hex && n + 1 < std::strlen(hex); n += 2)
            bytes.push_back(static_cast<char>(std::stoi(std::string(hex + n, 2), nullptr, 16)));
        if (hex)
            sqlite3_result_blob(context, bytes.data(), static_cast<int>(bytes.size()), SQLITE_TRANSIENT);
    }
    std::string value_of(const std::string &expression, const std::string &parameter = "NULL")
    {
        const std::string sql = "SELECT quote(" + expression + ")";
        sqlite3_stmt *statement = nullptr;
        sqlite3_stmt *source = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr), SQLITE_OK)
            << sqlite3_errmsg(connection) << ": " << sql;
        sqlite3_prepare_v2(connection, ("SELECT " + parameter).c_str(), -1, &source, nullptr);
        EXPECT_EQ(sqlite3_step(source), SQLITE_ROW) << parameter;
        if (sqlite3_bind_parameter_count(statement) > 0)
            sqlite3_bind_value(statement, 1, sqlite3_column_value(source, 0));
        const bool has = sqlite3_step(statement) == SQLITE_ROW;
        const std::string result =
            has ? reinterpret_cast<const char *>(sqlite3_column_text(statement, 0)) : sqlite3_errmsg(connection);
        sqlite3_finalize(source);
        sqlite3_finalize(statement);
        return result;
    }
    std::string shown(const client_server_type &type, const std::string &stored)
    {
        return value_of("(SELECT " + client_showing_expression(type, "\"v v\"") + " FROM (SELECT " + stored +
                        " AS \"v v\"))");
    }
    std::string stored(const client_server_type &type, const std::string &parameter)
    {
        return value_of(client_storing_expression(type, "?1"), parameter);
    }

    sqlite3 *connection = nullptr;
};

std::string in_quotes(const std::string &text)
{
    return "'" + text + "'";
}

bool is_number(const client_server_type &type)
{
    return type.base <= client_base::bigint || type.base == client_base::floating || type.base == client_base::real ||
           (type.base == client_base::decimal && type.scale == 0);
}

TEST_F(GuideTest, ExamplesAreShownAndStoredAsItSays)
{
    for (const client_declared_type &declared : all_declared_types()) {
        SCOPED_TRACE(client_declared_type_text(declared));
        const client_value_form form = client_form_of(declared);
        if (!form.storage)
            continue;
        EXPECT_FALSE(form.example.empty());
        EXPECT_EQ(value_of("upper(typeof(" + form.stored + "))"), in_quotes(form.storage));
        const std::string server_value = is_number(declared.type) ? form.example : in_quotes(form.example);
        EXPECT_EQ(shown(declared.type, form.stored), server_value);
        const std::string of_text = client_storing_expression_of_text(declared.type, "?1");
        if (!of_text.empty()) {
            EXPECT_EQ(value_of(of_text, server_value), value_of(form.stored));
        }
        EXPECT_EQ(stored(declared.type, of_text.empty() ? server_value : form.stored), value_of(form.stored));
    }
}

TEST_F(GuideTest, NullIsShownAndStoredAsNull)
{
    for (const client_declared_type &declared : all_declared_types()) {
        SCOPED_TRACE(client_declared_type_text(declared));
        EXPECT_EQ(shown(declared.type, "NULL"), "NULL");
        EXPECT_EQ(stored(declared.type, "NULL"), "NULL");
    }
}

struct form_case {
    const char *name;
    client_declared_type declared;
    const char *server_value; // an SQL literal
    const char *stored;
};

const client_declared_type decimal_9_2 = declared(client_base::decimal, 9, 2);
const client_declared_type decimal_38_20 = declared(client_base::decimal, 38, 20);
const client_declared_type money = declared(client_base::money);

TEST_F(GuideTest, ValuesAtTheEdgesGoBothWays)
{
    const form_case cases[] = {
        {"a value between -1 and 0 keeps its sign", decimal_9_2, "'-0.07'", "-7"},
        {"zero", decimal_9_2, "'0.00'", "0"},
        {"the greatest of 18 digits", declared(client_base::decimal, 18, 18), "'0.999999999999999999'",
         "999999999999999999"},
        {"the least decimal", declared(client_base::decimal, 19, 2), "'-92233720368547758.07'", "-9223372036854775807"},
        {"the least money", money, "'-922337203685477.5808'", "-9223372036854775808"},
        {"more digits than 64 bits have", decimal_38_20, "'-0.09223372036854775807'", "-9223372036854775807"},
        {"a text of full width", declared(client_base::fixed_nchar, 0, 0, 3), "'\xC3\xA4\xC3\xB6\xC3\xBC'",
         "'\xC3\xA4\xC3\xB6\xC3\xBC'"},
        {"an empty text", declared(client_base::fixed_char, 0, 0, 2), "'  '", "'  '"},
        {"one digit of a fraction", declared(client_base::datetime2, 0, 1), "'2013-07-01 12:30:45.0'",
         "'2013-07-01 12:30:45.000'"},
        {"an offset to the west", declared(client_base::datetimeoffset, 0, 2), "'2013-07-01 12:30:45.12 -09:30'",
         "'2013-07-01 12:30:45.120 -09:30'"},
    };
    for (const form_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(shown(c.declared.type, c.stored), c.server_value);
        EXPECT_EQ(stored(c.declared.type, c.server_value), c.stored);
    }
}

TEST_F(GuideTest, OtherSpellingsOfAValueAreStoredAlike)
{
    const form_case cases[] = {
        {"no digits after the point", decimal_9_2, "'12'", "1200"},
        {"a point alone", decimal_9_2, "'12.'", "1200"},
        {"no zero before the point", decimal_9_2, "'-.5'", "-50"},
        {"a plus sign", decimal_9_2, "'+1.5'", "150"},
        {"an integer", decimal_9_2, "12", "1200"},
        {"a double", decimal_9_2, "12.25", "1225"},
        {"a text that is not filled up", declared(client_base::fixed_char, 0, 0, 3), "'a'", "'a  '"},
        {"a blob that is not filled up", declared(client_base::binary, 0, 0, 3), "x'FF'", "X'FF0000'"},
        {"three digits where the server has one", declared(client_base::datetime2, 0, 1), "'2013-07-01 12:30:45.100'",
         "'2013-07-01 12:30:45.100'"},
    };
    for (const form_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(stored(c.declared.type, c.server_value), c.stored);
    }
}

// A blob goes into no column of numbers.
TEST_F(GuideTest, WhatIsNotAValueBecomesSomethingThatNoColumnTakes)
{
    for (const char *value : {"'12.345'", "'1e2'", "'1.2.3'", "'--5'", "'5-'", "'-'", "''", "' 5'", "'5 '", "'abc'",
                              "'1,5'", "0.125", "1e300"}) {
        SCOPED_TRACE(value);
        EXPECT_EQ(value_of("typeof(" + client_storing_expression(decimal_9_2.type, "?1") + ")", value), "'blob'");
    }
    EXPECT_EQ(value_of("typeof(" + client_storing_expression({client_base::real}, "?1") + ")", "'abc'"), "'blob'");
    // Too great for an integer: a real, which a column of integers does not take.
    EXPECT_EQ(value_of("typeof(" + client_storing_expression(money.type, "?1") + ")", "'99999999999999999999'"),
              "'real'");
}

TEST_F(GuideTest, RealsAreRoundedAsTheLoaderRoundsThem)
{
    std::mt19937_64 random(20130701);
    std::uniform_real_distribution<double> exponents(-30, 30);
    std::uniform_real_distribution<double> mantissas(-1, 1);
    const std::string sql = "SELECT " + client_storing_expression({client_base::real}, "?1");
    sqlite3_stmt *statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(connection, sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
    for (int n = 0; n < 2000; n++) {
        const double value = mantissas(random) * std::pow(10, exponents(random));
        sqlite3_reset(statement);
        sqlite3_bind_double(statement, 1, value);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
        EXPECT_EQ(sqlite3_column_double(statement, 0), static_cast<double>(static_cast<float>(value))) << value;
    }
    sqlite3_finalize(statement);
}

// The page: the rows of its table, and the expression after each line "-- TYPES: shown" or "-- TYPES: stored".
struct page {
    std::vector<std::string> rows;
    std::vector<std::string> expressions;
};

page read_page()
{
    std::ifstream file(TOV_VALUES_PAGE);
    EXPECT_TRUE(file.good()) << TOV_VALUES_PAGE;
    page result;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("| `"))
            result.rows.push_back(line);
        if (!line.starts_with("-- "))
            continue;
        std::string expression;
        std::getline(file, expression);
        result.expressions.push_back(line + "\n" + expression);
    }
    return result;
}

std::string code(const std::string &text)
{
    return text.empty() ? "" : "`" + text + "`";
}

// Types that have an expression in common stand before it together.
class expression_list {
  public:
    void add(const std::string &type, const char *what, const std::string &expression, const char *plain)
    {
        if (expression.empty() || expression == plain)
            return;
        for (entry &known : entries_) {
            if (known.what == what && known.expression == expression) {
                known.types += ", " + type;
                return;
            }
        }
        entries_.push_back({type, what, expression});
    }
    std::vector<std::string> texts() const
    {
        std::vector<std::string> result;
        for (const entry &known : entries_)
            result.push_back("-- " + known.types + ": " + known.what + "\n" + known.expression);
        return result;
    }

  private:
    struct entry {
        std::string types;
        std::string what;
        std::string expression;
    };
    std::vector<entry> entries_;
};

page expected_page()
{
    page result;
    expression_list expressions;
    for (const client_declared_type &declared : all_declared_types()) {
        const client_value_form form = client_form_of(declared);
        const std::string name = client_declared_type_text(declared);
        const std::string storage = form.storage ? form.storage : "";
        result.rows.push_back("| " + code(name) + " | " + storage + " | " + form.form + " | " + code(form.example) +
                              " | " + code(form.stored) + " |");
        if (!form.storage)
            continue;
        expressions.add(name, "shown", client_showing_expression(declared.type, "v"), "v");
        expressions.add(name, "stored", client_storing_expression(declared.type, "?1"), "?1");
        expressions.add(name, "stored from what is shown", client_storing_expression_of_text(declared.type, "?1"), "");
    }
    result.expressions = expressions.texts();
    return result;
}

std::string joined(const std::vector<std::string> &lines)
{
    std::string text;
    for (const std::string &line : lines)
        text += line + "\n";
    return text;
}

TEST(Guide, ThePageSaysTheSame)
{
    const page said = read_page();
    const page expected = expected_page();
    EXPECT_EQ(joined(said.rows), joined(expected.rows));
    EXPECT_EQ(joined(said.expressions), joined(expected.expressions));
}

TEST(Guide, NoBaseIsLeftOut)
{
    std::set<client_base> bases;
    for (const client_declared_type &declared : all_declared_types())
        bases.insert(declared.type.base);
    EXPECT_EQ(bases.size(), static_cast<size_t>(client_base::variant) + 1);
}

} // namespace
