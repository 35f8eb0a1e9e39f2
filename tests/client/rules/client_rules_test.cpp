// What a database with the server's rules takes and refuses, value by value.
#include "allocations_to_failure.hpp"
#include "failing_alloc.hpp"
#include "guide/declared_types.hpp"
#include "load_test.hpp"
#include "rows/convert/client_convert.hpp"
#include "type_document.hpp"

#include <random>
#include <utility>

namespace {

using base = client_base;

client_declared_type of_page(client_base type, int32_t length, uint16_t page)
{
    return {{type, true, 0, 0, page, length}, ""};
}

struct rule_case {
    const char *name;
    client_declared_type type;
    const char *value;   // an SQL expression
    const char *message; // what the refusal says; empty: taken
    // What it says where SQLite's date functions leave impossible dates as they are, if not the same.
    const char *older_message = nullptr;
};

const rule_case rule_cases[] = {
    {"a date", declared(base::date), "'2024-02-29'", ""},
    {"the first day", declared(base::date), "'0001-01-01'", ""},
    {"the last day", declared(base::date), "'9999-12-31'", ""},
    {"letters as a date", declared(base::date), "'aaaaaaaaaa'", "invalid date (YYYY-MM-DD)"},
    {"a date written the other way round", declared(base::date), "'31.12.2024'", "invalid date (YYYY-MM-DD)"},
    {"a day that February lacks", declared(base::date), "'2023-02-29'", "invalid date"},
    {"a day that April lacks", declared(base::date), "'2024-04-31'", "invalid date"},
    {"a century without a leap day", declared(base::date), "'1900-02-29'", "invalid date"},
    {"the year 0", declared(base::date), "'0000-12-31'", "invalid date"},
    {"NULL as a date", declared(base::date), "NULL", ""},

    {"a datetime", declared(base::datetime), "'2013-07-01 12:30:45.263'", ""},
    {"a datetime with T", declared(base::datetime), "'2013-07-01T12:30:45.263'", "invalid datetime"},
    {"a datetime without a fraction", declared(base::datetime), "'2013-07-01 12:30:45'", "invalid datetime"},
    {"a datetime without a time", declared(base::datetime), "'2013-07-01'", "invalid datetime"},
    {"a datetime with a blank after it", declared(base::datetime), "'2013-07-01 12:30:45.263 '", "invalid datetime"},
    {"a step that a datetime lacks", declared(base::datetime), "'2013-07-01 12:30:45.264'",
     "invalid datetime (YYYY-MM-DD HH:MM:SS.fff, ending in 0, 3 or 7)"},
    {"the first datetime", declared(base::datetime), "'1753-01-01 00:00:00.000'", ""},
    {"before the first datetime", declared(base::datetime), "'1752-12-31 23:59:59.997'", "out of range: datetime"},
    {"the year 1000 in a datetime", declared(base::datetime), "'1000-01-01 00:00:00.000'",
     "out of range: datetime (1753-01-01 to 9999-12-31)"},
    {"the last datetime", declared(base::datetime), "'9999-12-31 23:59:59.997'", ""},
    {"an hour that days lack", declared(base::datetime), "'2013-07-01 24:00:00.000'", "invalid datetime"},
    {"a datetime of no day", declared(base::datetime), "'2013-02-30 12:00:00.000'", "invalid datetime", "not a day"},
    {"the 31st of November", declared(base::datetime), "'2013-11-31 12:00:00.000'", "invalid datetime", "not a day"},
    {"the 31st of December", declared(base::datetime), "'2013-12-31 12:00:00.000'", ""},

    {"a smalldatetime", declared(base::smalldatetime), "'2013-07-01 12:30:00'", ""},
    {"seconds in a smalldatetime", declared(base::smalldatetime), "'2013-07-01 12:30:01'", "invalid smalldatetime"},
    {"the last smalldatetime", declared(base::smalldatetime), "'2079-06-06 23:59:00'", ""},
    {"after the last smalldatetime", declared(base::smalldatetime), "'2079-06-07 00:00:00'",
     "out of range: smalldatetime (1900-01-01 to 2079-06-06)"},
    {"before the first smalldatetime", declared(base::smalldatetime), "'1899-12-31 23:59:00'", "out of range"},

    {"a datetime2(7)", declared(base::datetime2, 0, 7), "'0001-01-01 00:00:00.0000001'", ""},
    {"a digit missing in a datetime2(7)", declared(base::datetime2, 0, 7), "'2013-07-01 12:30:45.123456'", "invalid"},
    {"a datetime2(7) of three digits", declared(base::datetime2, 0, 7), "'2013-07-01 12:30:45.123'", "invalid"},
    {"a shortened datetime2(7)", declared(base::datetime2, 0, 7), "'2013-07-01 23:59:59.999'", ""},
    {"a zone in a datetime2(7)", declared(base::datetime2, 0, 7), "'2013-07-01 12:30:45.12Z    '", "invalid"},
    {"a datetime2(1) filled up", declared(base::datetime2, 0, 1), "'2013-07-01 12:30:45.100'", ""},
    {"two digits in a datetime2(1)", declared(base::datetime2, 0, 1), "'2013-07-01 12:30:45.120'", "invalid"},
    {"a datetime2(0)", declared(base::datetime2, 0, 0), "'2013-07-01 12:30:45'", ""},
    {"a fraction in a datetime2(0)", declared(base::datetime2, 0, 0), "'2013-07-01 12:30:45.000'",
     "invalid datetime2(0) (YYYY-MM-DD HH:MM:SS)"},

    {"a time(7)", declared(base::time, 0, 7), "'07:00:00.1230000'", ""},
    {"a shortened time(7)", declared(base::time, 0, 7), "'07:00:00.999'", ""},
    {"a time(7) of five digits", declared(base::time, 0, 7), "'07:00:00.12300'", "invalid time(7)"},
    {"a time(0)", declared(base::time, 0, 0), "'23:59:59'", ""},
    {"24 hours", declared(base::time, 0, 0), "'24:00:00'", "invalid time"},

    {"a datetimeoffset", declared(base::datetimeoffset, 0, 7), "'2013-07-01 12:30:45.1234567 +02:00'", ""},
    {"a western offset", declared(base::datetimeoffset, 0, 0), "'2013-07-01 12:30:45 -14:00'", ""},
    {"an offset too far", declared(base::datetimeoffset, 0, 0), "'2013-07-01 12:30:45 +14:01'", "invalid"},
    {"an offset of minus zero", declared(base::datetimeoffset, 0, 0), "'2013-07-01 12:30:45 -00:00'", "invalid"},
    {"no offset", declared(base::datetimeoffset, 0, 0), "'2013-07-01 12:30:45'", "invalid datetimeoffset(0)"},
    {"the first moment with an offset", declared(base::datetimeoffset, 0, 0), "'0001-01-01 01:30:00 +01:30'", ""},
    {"a moment that is before all days in UTC", declared(base::datetimeoffset, 0, 0), "'0001-01-01 01:29:59 +01:30'",
     "out of range: datetimeoffset(0) (0001-01-01 to 9999-12-31, in UTC too)"},
    {"the last moment with an offset", declared(base::datetimeoffset, 0, 7), "'9999-12-31 22:29:59.9999999 -01:30'",
     ""},
    {"a moment that is after all days in UTC", declared(base::datetimeoffset, 0, 7),
     "'9999-12-31 22:30:00.0000000 -01:30'", "out of range: datetimeoffset(7)"},
    {"an eastern offset on the last day", declared(base::datetimeoffset, 0, 0), "'9999-12-31 23:59:59 +14:00'", ""},
    {"a western offset on the first day", declared(base::datetimeoffset, 0, 0), "'0001-01-01 00:00:00 -14:00'", ""},
    {"the year 0 with an offset", declared(base::datetimeoffset, 0, 0), "'0000-12-31 23:59:59 -14:00'",
     "out of range: datetimeoffset(0)"},
    {"an offset and no day", declared(base::datetimeoffset, 0, 0), "'2013-02-30 12:30:45 +00:00'", "not a day"},

    {"an nchar that is full", declared(base::fixed_nchar, 0, 0, 5), "'AB   '", ""},
    {"an nchar that is not", declared(base::fixed_nchar, 0, 0, 5), "'AB'",
     "width not filled with blanks: 5 (UTF-16 units)"},
    {"an nchar with pairs", declared(base::fixed_nchar, 0, 0, 5), "'😀😀x'", ""},
    {"an nchar with pairs that is not full", declared(base::fixed_nchar, 0, 0, 5), "'😀😀'", "width not filled"},
    {"five emoji in an nchar(5)", declared(base::fixed_nchar, 0, 0, 5), "'😀😀😀😀😀'", "width exceeded: 5 (UTF-16 units)"},
    {"ten emoji in an nvarchar(20)", declared(base::nvarchar, 0, 0, 20), "'😀😀😀😀😀😀😀😀😀😀'", ""},
    {"ten emoji and a letter", declared(base::nvarchar, 0, 0, 20), "'😀😀😀😀😀x😀😀😀😀😀'", "width exceeded: 20"},
    {"twenty letters of two bytes", declared(base::nvarchar, 0, 0, 20), "'ääääääääääääääääääää'", ""},
    {"twenty letters of three bytes", declared(base::nvarchar, 0, 0, 20), "'日日日日日日日日日日日日日日日日日日日日'",
     ""},
    {"a wide column that is nearly full", declared(base::nvarchar, 0, 0, 4000), "'😀😀'||printf('%3996s','x')", ""},
    {"a wide column that is too full", declared(base::nvarchar, 0, 0, 4000), "'😀😀'||printf('%3997s','x')",
     "width exceeded: 4000"},
    {"many pairs in a wide column", declared(base::nvarchar, 0, 0, 4000), "replace(hex(zeroblob(2000)), '00', '😀')",
     ""},
    {"too many pairs in a wide column", declared(base::nvarchar, 0, 0, 4000),
     "replace(hex(zeroblob(2000)), '00', '😀')||'x'", "width exceeded: 4000"},
    {"an empty string in a wide nchar", declared(base::fixed_nchar, 0, 0, 4000), "''", "width not filled"},

    {"letters of code page 1252", of_page(base::varchar, 20, 1252), "'äöü€œ–'", ""},
    {"a letter that it lacks", of_page(base::varchar, 20, 1252), "'Łódź'", "a character that code page 1252 lacks"},
    {"a pair that it lacks", of_page(base::varchar, 20, 1252), "'x😀'", "a character that code page 1252 lacks"},
    {"any character after ASCII", of_page(base::varchar, 20, 1252), "char(127,10,9)", ""},
    {"a byte without a character", of_page(base::varchar, 20, 1252), "char(129)", ""},
    {"a character that was lost earlier", of_page(base::varchar, 20, 1252), "char(65533)", ""},
    {"Polish in its code page", of_page(base::varchar, 20, 1250), "'Łódź'", ""},
    {"Cyrillic in its code page", of_page(base::varchar, 20, 1251), "'Привет'", ""},
    {"Cyrillic in no width", of_page(base::text, -1, 1252), "'Привет'", "code page 1252 lacks"},
    {"a full char", of_page(base::fixed_char, 5, 1252), "'äöü  '", ""},
    {"a char that is not full", of_page(base::fixed_char, 5, 1252), "'äöü'", "width not filled with blanks: 5"},
    {"four bytes of UTF-8", of_page(base::varchar, 4, 65001), "'äö'", ""},
    {"five bytes of UTF-8", of_page(base::varchar, 4, 65001), "'äöx'", "width exceeded: 4 (bytes of UTF-8)"},
    {"four bytes of Japanese", of_page(base::varchar, 4, 932), "'日ｱx'", ""},
    {"five bytes of Japanese", of_page(base::varchar, 4, 932), "'日日x'", "width exceeded: 4 (bytes of code page 932)"},
    {"a full char of Japanese", of_page(base::fixed_char, 4, 932), "'日  '", ""},
    {"a char of Japanese that is not full", of_page(base::fixed_char, 4, 932), "'日 '", "width not filled"},
    {"a wide column full of Japanese", of_page(base::varchar, 8000, 932), "replace(hex(zeroblob(4000)), '00', '日')",
     ""},
    {"a wide column too full of Japanese", of_page(base::varchar, 8000, 932),
     "replace(hex(zeroblob(4000)), '00', '日')||'x'", "width exceeded: 8000 (bytes of code page 932)"},
    {"as many letters as Japanese", of_page(base::varchar, 8000, 932),
     "replace(hex(zeroblob(2666)), '00', '日x')||'xx'", ""},
    {"as many letters as Japanese, and too many", of_page(base::varchar, 8000, 932),
     "replace(hex(zeroblob(2666)), '00', '日ｱ')||'日ｱ'", "width exceeded: 8000"},
    {"many letters and little Japanese", of_page(base::varchar, 8000, 936), "printf('%7000s','x')||'日日'", ""},
    {"a wide char that is full of Japanese", of_page(base::fixed_char, 8000, 932),
     "replace(hex(zeroblob(4000)), '00', '日')", ""},
    {"a wide char that lacks two bytes", of_page(base::fixed_char, 8000, 932),
     "replace(hex(zeroblob(3999)), '00', '日')", "width not filled"},
    {"a wide char that lacks one byte", of_page(base::fixed_char, 8000, 932),
     "replace(hex(zeroblob(2666)), '00', '日ｱ')||'x'", "width not filled"},
    {"a wide char of both", of_page(base::fixed_char, 8000, 932), "replace(hex(zeroblob(2666)), '00', '日x')||'xx'",
     ""},
    {"the euro sign in Chinese", of_page(base::varchar, 2, 936), "'€x'", ""},
    {"a text with a NUL", declared(base::fixed_nchar, 0, 0, 5), "CAST(x'6100622020' AS TEXT)", ""},

    {"a full binary", declared(base::binary, 0, 0, 4), "x'0A1B0000'", ""},
    {"a binary that is not full", declared(base::binary, 0, 0, 4), "x'0A1B'", "width not filled with zeros: 4"},
    {"the greatest real", declared(base::real), "3.4028234663852886e38", ""},
    {"a real beyond it", declared(base::real), "3.5e38", "out of range: real"},
    {"a real before the least", declared(base::real), "-3.5e38", "out of range: real"},
    {"an infinite float", declared(base::floating, 53), "9e999", "out of range: float"},
    {"a great float", declared(base::floating, 53), "-1.7e308", ""},
};

class ClientRules : public LoadTest {
  protected:
    void create_tables(const std::vector<client_declared_type> &types,
                       const tov_client_create_options *options = &without_record)
    {
        reset_schema_to(document_of_tables(types).c_str());
        ASSERT_OK(ctx);
        ASSERT_EQ(sqlite3_open(":memory:", &connection), SQLITE_OK);
        const std::string text = script(options);
        ASSERT_OK(ctx);
        ASSERT_EQ(run(connection, text), "") << text;
    }
    // Inserts a case's value, and updates another row to it.
    void try_rule(const std::string &tbl, const rule_case &c, bool is_older)
    {
        SCOPED_TRACE(c.name);
        const std::string message = is_older && c.older_message ? c.older_message : c.message;
        const std::string inserted = run(connection, "INSERT INTO " + tbl + "(c) VALUES(" + c.value + ")");
        run(connection, "DELETE FROM " + tbl + "; INSERT INTO " + tbl + "(c) VALUES(NULL)");
        EXPECT_EQ(run(connection, "UPDATE " + tbl + " SET c = " + c.value), inserted);
        if (message.empty())
            EXPECT_EQ(inserted, "");
        else
            EXPECT_NE(inserted.find(message), std::string::npos) << inserted;
        EXPECT_EQ(inserted.find("[c] constraint violation: ") == std::string::npos, message.empty());
    }
};

TEST_F(ClientRules, TakeWhatTheServerTakesInOneForm)
{
    std::vector<client_declared_type> types;
    for (const rule_case &c : rule_cases)
        types.push_back(c.type);
    const struct {
        const tov_client_create_options *options;
        bool is_normalised;
    } databases[] = {
        {&without_record, false}, {&without_record, true}, {&with_triggers, false}, {&with_triggers, true}};
    for (const auto &database : databases) {
        SCOPED_TRACE(database.options->checks);
        SCOPED_TRACE(database.is_normalised);
        close();
        create_tables(types, database.options);
        if (database.is_normalised)
            KT_sqlite__normalise_dates(ctx, tov__get_sqlite_functions(), connection);
        const bool is_older = rows(connection, "SELECT date('2013-02-30')") == "2013-02-30" &&
                              database.options->checks == TOV_CLIENT_CHECKS_TRIGGERS;
        for (size_t n = 0; n < types.size(); n++)
            try_rule("T" + std::to_string(n), rule_cases[n], is_older);
    }
}

TEST_F(ClientRules, LimitTheNumbersOfAnIdentityColumn)
{
    const struct {
        const char *type;
        const char *low;
        const char *high;
        const char *shown;
    } cases[] = {
        {R"("type":"tinyint")", "0", "255", "tinyint"},
        {R"("type":"smallint")", "-32768", "32767", "smallint"},
        {R"("type":"int")", "-2147483648", "2147483647", "int"},
        {R"("type":"decimal","precision":3,"scale":0)", "-999", "999", "decimal(3,0)"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.shown);
        close();
        reset_schema_to((R"({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{)"
                         R"("1":{"name":"Id","type":{"name":"identity"},"notnull":{}},"2":{"name":"c","type":)"
                         R"({"name":"sint32"}}},"server":{"schema":"dbo","name":"T","cols":[{"name":"Id","id":"1",)" +
                         std::string(c.type) + R"(},{"name":"c","id":"2","type":"int","nullable":true}]}}}})")
                            .c_str());
        open();
        const std::string refusal = std::string("[Id] constraint violation: out of range: ") + c.shown;
        const auto insert = [&](const std::string &value) {
            return run(connection, "INSERT INTO T(Id) VALUES(" + value + ")");
        };
        EXPECT_EQ(insert(c.low), "");
        EXPECT_EQ(insert(c.high), "");
        EXPECT_NE(insert(std::string(c.low) + "-1").find(refusal), std::string::npos);
        EXPECT_NE(insert(std::string(c.high) + "+1").find(refusal), std::string::npos);
        EXPECT_NE(insert("NULL").find(refusal), std::string::npos) << "numbered by SQLite";
        EXPECT_NE(run(connection, "UPDATE T SET Id = 10000000000").find(refusal), std::string::npos);
    }
}

TEST_F(ClientRules, AreLeftOutOnDemandAndWhereTheServersTypesAreNotKnown)
{
    create_tables({declared(base::datetime)});
    tov_client_create_options options = without_record;
    options.rules = TOV_CLIENT_RULES_BASIC;
    const std::string basic = script(&options);
    EXPECT_EQ(basic.find("1753"), std::string::npos);
    EXPECT_NE(script().find("1753"), std::string::npos);
    std::string document = document_of_tables({declared(base::datetime)});
    const std::string id = R"("id":"2",)";
    document.erase(document.find(id), id.size()); // facts that miss a column of the table
    reset_schema_to(document.c_str());
    EXPECT_EQ(script(), basic);
    document = document_of_tables({declared(base::datetime)});
    document.replace(document.rfind(R"("id":"1")"), 8, R"("id":"2")"); // and those that name one twice
    reset_schema_to(document.c_str());
    EXPECT_EQ(script(), basic);
}

TEST_F(ClientRules, AreWrittenWholeOrNotAtAllWhereMemoryRunsOut)
{
    reset_schema_to(
        document_of_tables({declared(base::datetimeoffset, 0, 7), declared(base::time, 0, 7),
                            declared(base::smalldatetime), declared(base::real), of_page(base::varchar, 8000, 932),
                            of_page(base::fixed_char, 5, 1252), of_page(base::varchar, 4, 65001),
                            declared(base::nvarchar, 0, 0, 9), declared(base::binary, 0, 0, 4)})
            .c_str());
    const std::string expected = script();
    const auto is_over = [&](const char *what, size_t turn) {
        KT_string *text = nullptr;
        tov_client__write_script__with(ctx, schema, &without_record, &text);
        const bool is_left = std::exchange(allocations_to_failure, 0) > 0;
        if (text) {
            EXPECT_EQ(take(ctx, text), expected) << what << turn;
            return is_left;
        }
        EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_OUT_OF_MEMORY) << what << turn;
        KT_context__err_reset(ctx);
        return false;
    };
    size_t turn = 1;
    for (allocations_to_failure = turn; !is_over("new ", turn); allocations_to_failure = turn)
        turn++;
    EXPECT_GT(turn, 100u);
    for (kt_failing_alloc fault; fault.next();) {
        is_over("runtime ", 0);
        if (!fault.fired())
            break;
    }
}

// The forms that conversion makes are those that the rules take: of texts that are put in as they are, the database
// takes those that conversion leaves as they are, and those that it would have shortened.
TEST_F(ClientRules, TakeTextsThatConversionLeavesAsTheyAre)
{
    const std::vector<client_declared_type> types = {
        declared(base::date),
        declared(base::time, 0, 0),
        declared(base::time, 0, 3),
        declared(base::time, 0, 7),
        declared(base::smalldatetime),
        declared(base::datetime),
        declared(base::datetime2, 0, 0),
        declared(base::datetime2, 0, 1),
        declared(base::datetime2, 0, 2),
        declared(base::datetime2, 0, 3),
        declared(base::datetime2, 0, 5),
        declared(base::datetime2, 0, 7),
        declared(base::datetimeoffset, 0, 0),
        declared(base::datetimeoffset, 0, 2),
        declared(base::datetimeoffset, 0, 7),
        declared(base::nvarchar, 0, 0, 6),
        declared(base::fixed_nchar, 0, 0, 6),
        of_page(base::varchar, 6, 1252),
        of_page(base::fixed_char, 6, 1252),
        of_page(base::varchar, 6, 65001),
        of_page(base::fixed_char, 6, 65001),
        of_page(base::varchar, 6, 932),
        of_page(base::fixed_char, 6, 932),
        of_page(base::fixed_char, 6, 1251),
        of_page(base::text, -1, 1257),
    };
    create_tables(types);
    client_converter converter;
    converter.with_rules = true;
    std::mt19937 random(20130701);
    const auto below = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
    const char *const years[] = {"0000", "0001", "1752", "1753", "1899", "1900", "2000", "2024", "2079", "9999"};
    const auto moment = [&](const client_server_type &type) {
        const unsigned fractions[] = {below(10'000'000), below(1000) * 10'000, below(100) * 100'000,
                                      below(10) * 1'000'000};
        char text[64];
        std::snprintf(text, sizeof text, "%s-%02u-%02u%c%02u:%02u:%02u.%07u", years[below(10)], below(14),
                      below(4) ? below(33) : 28 + below(4), below(20) ? ' ' : 'T', below(26), below(61),
                      below(2) ? 0 : below(61), fractions[below(4)]);
        std::string whole = text;
        const unsigned digits = below(3) ? (type.scale == 1 || type.scale == 2 ? 3U : type.scale) : below(8);
        whole.resize(type.base == base::datetime ? 23 : 19 + (digits ? digits + 1 : 0));
        if (type.base == base::date)
            whole.resize(10);
        else if (type.base == base::time)
            whole.erase(0, 11);
        char offset[16];
        std::snprintf(offset, sizeof offset, " %c%02u:%02u", "+-"[below(2)], below(16), below(4) ? 0 : below(61));
        return type.base == base::datetimeoffset ? whole + offset : whole;
    };
    const char *const chars[] = {"a", " ", " ", "Z", "ä", "é", "€", "Ł", "Я", "日", "ｱ", "😀", "\n", "ž", "\u0081"};
    for (size_t n = 0; n < types.size(); n++) {
        SCOPED_TRACE(client_declared_type_text(types[n]) + " of page " + std::to_string(types[n].type.code_page));
        const std::string insert = "INSERT INTO T" + std::to_string(n) + "(c) VALUES('";
        int taken = 0;
        const client_server_type &type = types[n].type;
        for (int i = 0; i < 1500; i++) {
            std::string value;
            if (client_is_text(type.base)) {
                for (unsigned count = below(9); count > 0; count--)
                    value += chars[below(below(2) ? 4 : sizeof chars / sizeof *chars)];
            } else {
                value = moment(type);
            }
            client_value converted;
            const client_reject reject = client_convert(converter, type, {client_form::text, value}, converted);
            const bool same = reject == client_reject::none && converted.bytes == value && !converted.shortened;
            const bool is_shortened =
                reject == client_reject::none && type.scale > 3 &&
                ((type.base == base::time && value.size() == 12) ||
                 (type.base == base::datetime2 && value.size() == 23 && value.substr(11) == "23:59:59.999"));
            const std::string answer = run(connection, insert + value + "')");
            EXPECT_EQ(answer.empty(), same || is_shortened) << value << ": " << answer;
            taken += answer.empty();
        }
        EXPECT_GT(taken, 10);
    }
}

} // namespace
