// Leaving the checks out while loading, triggers and constraints, changes nothing: what conversion takes, they take, on
// the edges of every type, on values of other types, and on random ones.
#include "guide/declared_types.hpp"
#include "load_test.hpp"
#include "type_document.hpp"

#include <random>

using namespace std::string_literals;

namespace {

const std::vector<std::string> numbers = {"0",
                                          "1",
                                          "2",
                                          "-0",
                                          "-1",
                                          "+7",
                                          "00012",
                                          "127",
                                          "128",
                                          "255",
                                          "256",
                                          "-32768",
                                          "-32769",
                                          "32767",
                                          "32768",
                                          "2147483647",
                                          "2147483648",
                                          "-2147483648",
                                          "-2147483649",
                                          "9223372036854775807",
                                          "9223372036854775808",
                                          "-9223372036854775807",
                                          "-9223372036854775808",
                                          "-9223372036854775809",
                                          "999999999999999999",
                                          "1000000000000000000",
                                          "1.5",
                                          ".5",
                                          "5.",
                                          ".",
                                          "-.5",
                                          "1e3",
                                          "1E-3",
                                          "1e400",
                                          "-1e400",
                                          "1e-400",
                                          "0.005",
                                          "9999999.99",
                                          "9999999.995",
                                          "9999999.990",
                                          "10000000",
                                          "-9999999.99",
                                          "-10000000.00",
                                          "922337203685477.5807",
                                          "-922337203685477.5808",
                                          "922337203685477.5808",
                                          "-922337203685477.5809",
                                          "214748.3647",
                                          "-214748.3648",
                                          "214748.3648",
                                          "0.00000000000000000001",
                                          "0.09223372036854775807",
                                          "0.09223372036854775808",
                                          "3.4028235e38",
                                          "3.5e38",
                                          "1e-46",
                                          "1.7976931348623157e308",
                                          "0.1",
                                          "0.30000000000000004",
                                          "nan",
                                          "inf",
                                          "-inf",
                                          "0x10",
                                          "1,5",
                                          "true",
                                          "1 ",
                                          " 1"};

const std::vector<std::string> dates = {
    "0001-01-01", "0000-12-31", "9999-12-31", "10000-01-01", "1582-10-04", "1582-10-10", "1752-12-31", "1753-01-01",
    "1899-12-31", "1900-01-01", "1900-02-29", "2000-02-29",  "2079-06-06", "2079-06-07", "2023-02-29", "2024-02-29",
    "2024-02-30", "2024-04-31", "2024-13-01", "2024-00-10",  "2024-01-00", "20240229",   "2024-1-1"};

const std::vector<std::string> times = {
    "00:00:00",      "00:00:00.0000000", "23:59:59",          "23:59:59.9",    "23:59:59.99",      "23:59:59.997",
    "23:59:59.998",  "23:59:59.999",     "23:59:59.9994999",  "23:59:59.9995", "23:59:59.9995000", "23:59:59.9999999",
    "24:00:00",      "12:60:00",         "12:30:60",          "12:30",         "7:00:00",          "12:30:45.1",
    "12:30:45.12",   "12:30:45.123",     "12:30:45.1234",     "12:30:45.0005", "12:30:45.0004999", "12:30:45.9995",
    "12:30:45.9996", "12:30:45.1234567", "12:30:45.12345678", "12:30:29.998",  "12:30:29.999",     "12:30:30",
    "23:59:30",      "23:59:29.999"};

const std::vector<std::string> others = {"",
                                         "\0"s,
                                         "a\0b"s,
                                         "abc",
                                         "AB   ",
                                         "ABCDE",
                                         "ABCDEF",
                                         "      ",
                                         "twenty characters...",
                                         "twenty-one characters",
                                         "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\xC3\xA9",
                                         "\xC3\xA4\xC3\xB6\xC3\xBC\xC3\x9F\xC3\xA9\xC3\xA9",
                                         "\xF0\x9F\x98\x80\xF0\x9F\x98\x80",
                                         "\xF0\x9F\x98\x80\xF0\x9F\x98\x80\xF0\x9F\x98\x80",
                                         "\xED\xA0\x80",
                                         "\xC3",
                                         "\xFF",
                                         "\xEF\xBB\xBF<a/>",
                                         "it's",
                                         "\"",
                                         "%s",
                                         "0A1B",
                                         "0x0A1B",
                                         "0A1",
                                         "0G",
                                         "00",
                                         "0A1B0C2D",
                                         "0A1B0C2D3E",
                                         "00000000000007D1",
                                         "0102030405060708090A0B0C0D0E0F1011121314",
                                         "0102030405060708090A0B0C0D0E0F101112131415",
                                         "6F9619FF-8B86-D011-B42D-00C04FC964FF",
                                         "{6f9619ff-8b86-d011-b42d-00c04fc964ff}",
                                         "6F9619FF-8B86-D011-B42D-00C04FC964F",
                                         "6F9619FF8B86D011B42D00C04FC964FF",
                                         "6F9619FF-8B86-D011-B42D-00C04FC964FG"};

std::vector<std::string> edges()
{
    std::vector<std::string> all = numbers;
    all.insert(all.end(), others.begin(), others.end());
    all.insert(all.end(), dates.begin(), dates.end());
    all.insert(all.end(), times.begin(), times.end());
    for (const std::string &date : dates)
        all.push_back(date + " 12:30:45.123");
    for (const std::string &time : times) {
        for (const char *date :
             {"0001-01-01 ", "1753-01-01 ", "1900-01-01T", "2079-06-06 ", "9999-12-31 ", "2013-07-01 "})
            all.push_back(date + time);
        for (const char *offset : {" +00:00", " -14:00", " +14:00", " +14:01", " +5:00", "Z"})
            all.push_back("2013-07-01 " + time + offset);
    }
    return all;
}

// A moment with a random number of digits, or another value with a few bytes changed.
std::string random_value(std::mt19937 &random, const std::vector<std::string> &from)
{
    const auto below = [&](unsigned count) { return static_cast<unsigned>(random() % count); };
    if (below(3) == 0) {
        char text[64];
        std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%07u", 1 + below(9999), 1 + below(12),
                      1 + below(31), below(24), below(60), below(60), below(10'000'000));
        const std::string whole = text;
        const std::string cut = whole.substr(0, 19 + (below(2) ? 1 + below(8) : 0));
        return below(3) ? cut : cut.substr(11);
    }
    std::string value = from[below(static_cast<unsigned>(from.size()))];
    for (unsigned n = below(3); n > 0 && !value.empty(); n--)
        value[below(static_cast<unsigned>(value.size()))] = "0123456789-.: eE+xAF"[below(20)];
    return value;
}

class ClientLoadVerdicts : public LoadTest {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        types = all_declared_types();
        types.pop_back(); // sql_variant, which is left out
        types.push_back(declared(client_base::time, 0, 3));
        types.push_back(declared(client_base::time, 0, 4));
        types.push_back(declared(client_base::datetime2, 0, 4));
        types.push_back(declared(client_base::decimal, 19, 0));
        types.push_back(declared(client_base::decimal, 18, 18));
        types.push_back(declared(client_base::varchar));
        client_declared_type required = declared(client_base::nvarchar, 0, 0, 5);
        required.type.nullable = false;
        types.push_back(required);
        reset_schema_to(document_of_tables(types).c_str());
        ASSERT_OK(ctx);
    }
    // A file for the n-th table: a number and a value in each row.
    std::string write_values(size_t n, const std::vector<std::string> &values) const
    {
        std::string text;
        for (size_t row = 0; row < values.size(); row++)
            text += std::to_string(row) + "\x1F" + values[row] + "\x1E";
        return write("T" + std::to_string(n) + ".dat", text);
    }
    std::string load_into(const std::string &database, const std::vector<std::string> &files, bool with_checks,
                          const tov_client_create_options &form)
    {
        const std::string rejects = path(database + "_rejects");
        tov_client_load_options options = {};
        options.format = "bcp";
        options.field_end = "\x1F";
        options.row_end = "\x1E";
        options.rejects = rejects.c_str();
        options.with_triggers = with_checks;
        tov_client__create_database__with(ctx, schema, path(database).c_str(), &form);
        return load(files, options, database) + told;
    }
    // Loads each table's values into two databases, whose checks are left out where they may be, and are not.
    void expect_same_verdicts(const std::vector<std::vector<std::string>> &values, const std::string &name,
                              const tov_client_create_options &form)
    {
        std::vector<std::string> files;
        for (size_t n = 0; n < values.size(); n++)
            files.push_back(write_values(n, values[n]));
        const std::string without = load_into(name + "without", files, false, form);
        ASSERT_OK(ctx);
        EXPECT_EQ(load_into(name + "with", files, true, form), without);
        ASSERT_OK(ctx);
        sqlite3 *both = nullptr;
        sqlite3_open(path(name + "with").c_str(), &both);
        run(both, "ATTACH '" + path(name + "without") + "' AS without");
        for (size_t n = 0; n < values.size(); n++) {
            const std::string tbl = "T" + std::to_string(n);
            const std::string all = "SELECT Id, quote(c) FROM ";
            SCOPED_TRACE(tbl + ": " + rows(both, "SELECT sql FROM sqlite_master WHERE name = '" + tbl + "'"));
            EXPECT_EQ(rows(both, all + "main." + tbl), rows(both, all + "without." + tbl));
            EXPECT_EQ(read(name + "with_rejects/" + tbl + ".dat.jsonl"),
                      read(name + "without_rejects/" + tbl + ".dat.jsonl"));
        }
        sqlite3_close(both);
    }
    std::vector<client_declared_type> types;
};

// Sanitizers look at memory, and for that a part of the values is enough.
#ifdef TOV_SANITIZED
constexpr int random_values = 50;
constexpr size_t types_apart = 4;
#else
constexpr int random_values = 300;
constexpr size_t types_apart = 1;
#endif

struct checks_form {
    const char *name;
    int32_t checks;
    int32_t rules;
};

const checks_form checks_forms[] = {
    {"constraints_", TOV_CLIENT_CHECKS_CONSTRAINTS, TOV_CLIENT_RULES_SERVER},
    {"basic_constraints_", TOV_CLIENT_CHECKS_CONSTRAINTS, TOV_CLIENT_RULES_BASIC},
    {"triggers_", TOV_CLIENT_CHECKS_TRIGGERS, TOV_CLIENT_RULES_SERVER},
    {"basic_triggers_", TOV_CLIENT_CHECKS_TRIGGERS, TOV_CLIENT_RULES_BASIC},
};

tov_client_create_options options_of(const checks_form &form)
{
    tov_client_create_options options = {};
    options.checks = form.checks;
    options.rules = form.rules;
    return options;
}

TEST_F(ClientLoadVerdicts, AreTheSameWithAndWithoutTheChecks)
{
    std::mt19937 random(20130701);
    const std::vector<std::string> known = edges();
    std::vector<std::vector<std::string>> values(types.size(), known);
    for (std::vector<std::string> &of_tbl : values) {
        for (int more = 0; more < random_values; more++)
            of_tbl.push_back(random_value(random, known));
    }
    for (const checks_form &form : checks_forms) {
        SCOPED_TRACE(form.name);
        expect_same_verdicts(values, form.name, options_of(form));
        for (size_t n = 0; n < types.size(); n++)
            EXPECT_NE(query("SELECT count(*) FROM T" + std::to_string(n), std::string(form.name) + "without"), "0");
    }
}

// A column whose abstract type was changed, and not what the document says of the server: conversion goes by the
// server's, checks by both.
TEST_F(ClientLoadVerdicts, AreTheSameWhereATypeIsNotTheServers)
{
    using base = client_base;
    const std::vector<client_declared_type> stored = {declared(base::bit),
                                                      declared(base::tinyint),
                                                      declared(base::integer),
                                                      declared(base::bigint),
                                                      declared(base::decimal, 4),
                                                      declared(base::decimal, 30, 2),
                                                      declared(base::smallmoney),
                                                      declared(base::real),
                                                      declared(base::varchar, 0, 0, 3),
                                                      declared(base::nvarchar),
                                                      declared(base::guid),
                                                      declared(base::varbinary, 0, 0, 3),
                                                      declared(base::date),
                                                      declared(base::time, 0, 3),
                                                      declared(base::datetime),
                                                      declared(base::nvarchar, 0, 0, 30)};
    std::vector<std::string> values = others;
    for (const char *value : {"0",
                              "1",
                              "2",
                              "-1",
                              "200",
                              "300",
                              "-32768",
                              "99999",
                              "3000000000",
                              "9223372036854775807",
                              "214748.3647",
                              "922337203685477.5807",
                              "1.5",
                              "1e300",
                              "2024-02-29",
                              "2023-02-29",
                              "12:30:45",
                              "12:30:45.1234567",
                              "2013-07-01 12:30:45",
                              "2013-07-01 12:30:45.1234567",
                              "2013-07-01 12:30:45.123",
                              "2013-07-01 12:30:45.123 +05:00",
                              "0001-01-01",
                              "9999-12-31"})
        values.emplace_back(value);
    std::vector<client_declared_type> all_stored;
    std::vector<client_declared_type> all_facts;
    for (size_t n = 0; n < stored.size(); n += types_apart) {
        for (const client_declared_type &facts : types) {
            all_stored.push_back(stored[n]);
            all_facts.push_back(facts);
        }
    }
    reset_schema_to(document_of_tables(all_stored, all_facts).c_str());
    for (const checks_form &form : {checks_forms[0], checks_forms[1]}) {
        SCOPED_TRACE(form.name);
        expect_same_verdicts(std::vector(all_stored.size(), values), form.name, options_of(form));
    }
}

} // namespace
