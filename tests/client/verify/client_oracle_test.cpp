// Three verdicts on the same values, which have to agree: that of a created database (INSERT and UPDATE), that of a
// check of a database which keeps anything, and what SQL Server takes by its documentation (server_truth.hpp).
//
// TOV_ORACLE_VALUES says how many random values each type gets besides those at its edges, TOV_ORACLE_SEED which.
#include "load_test.hpp"
#include "tov_check.h"
#include "type_document.hpp"
#include "verify/server_truth.hpp"

#include <map>
#include <random>

namespace {

unsigned from_environment(const char *name, unsigned otherwise)
{
    const char *text = std::getenv(name);
    return text ? static_cast<unsigned>(std::strtoul(text, nullptr, 10)) : otherwise;
}

// Literals near those at the edges of a type.
class value_source {
  public:
    explicit value_source(unsigned seed) : random_(seed)
    {
    }

    std::string next(const server_truth &truth)
    {
        const client_base base = truth.type.type.base;
        const std::string &edge = truth.edges[below(static_cast<unsigned>(truth.edges.size()))];
        if (below(12) == 0)
            return stranger();
        if (client_is_text(base))
            return text(truth.type.type);
        if (base >= client_base::date && base <= client_base::datetimeoffset)
            return changed(below(3) ? moment(truth.type.type) : edge);
        if (client_is_binary(base) || base == client_base::guid)
            return truth_blob(below(20));
        if (base == client_base::real || base == client_base::floating)
            return edge + "*" + (below(2) ? "1.0000000000000002" : "0.9999999999999999");
        return "(" + edge + (below(2) ? ")+" : ")-") + std::to_string(below(3));
    }

  private:
    unsigned below(unsigned count)
    {
        return static_cast<unsigned>(random_() % count);
    }
    std::string digits(unsigned count)
    {
        std::string text;
        for (; count > 0; count--)
            text += static_cast<char>('0' + below(10));
        return text;
    }
    std::string two(unsigned most)
    {
        char text[12];
        std::snprintf(text, sizeof text, "%02u", below(most + 1));
        return text;
    }

    // Of another storage class, or none.
    std::string stranger()
    {
        static constexpr const char *all[] = {"NULL",  "x'00'", "''",  "'x'",    "5",   "-1",
                                              "2.5",   "9e999", "'5'", "1e15",   "x''", "'2024-01-01'",
                                              "'0x5'", "' 7 '", "1.0", "x'3132'"};
        return all[below(sizeof all / sizeof *all)];
    }

    std::string text(const client_server_type &type)
    {
        const unsigned most = type.length > 0 && type.length < 100 ? static_cast<unsigned>(type.length) + 2 : 12;
        const unsigned chars = below(2) ? 4 : sizeof truth_chars / sizeof *truth_chars;
        std::string text;
        for (unsigned count = below(most + 1); count > 0; count--)
            text += truth_chars[below(chars)].utf8;
        return truth_quoted(text);
    }

    std::string moment(const client_server_type &type)
    {
        static constexpr const char *years[] = {"0000", "0001", "1752", "1753", "1899", "1900",
                                                "2000", "2023", "2024", "2079", "9999", "2100"};
        const std::string day = std::string(years[below(12)]) + "-" + two(13) + "-" + (below(3) ? two(28) : two(32));
        const std::string time = two(below(8) ? 23 : 25) + ":" + two(below(8) ? 59 : 61) + ":" +
                                 (type.base == client_base::smalldatetime && below(4) ? "00" : two(below(8) ? 59 : 61));
        const size_t fraction = truth_fraction(type);
        std::string whole = type.base == client_base::time ? time : day + " " + time;
        if (type.base == client_base::date)
            return truth_quoted(day);
        if (fraction > 0)
            whole += "." + digits(static_cast<unsigned>(fraction));
        if (type.base == client_base::datetime && below(4))
            whole.back() = "037"[below(3)];
        if (fraction == 3 && type.scale < 3 && below(4))
            whole.replace(whole.size() - 3 + type.scale, std::string::npos, 3 - type.scale, '0');
        if (type.base == client_base::datetimeoffset)
            whole += std::string(below(2) ? " +" : " -") + two(15) + ":" + (below(3) ? "00" : two(61));
        return truth_quoted(whole);
    }

    // A quarter of the moments with a character too few, too many, or another one.
    std::string changed(std::string literal)
    {
        static constexpr const char *others[] = {"", "0", "9", " ", "T", ".", "-", ":", "Z", "00"};
        if (below(4) == 0 && literal.size() > 2)
            literal.replace(1 + below(static_cast<unsigned>(literal.size()) - 2), below(2), others[below(10)]);
        return literal;
    }

    std::mt19937 random_;
};

// Tables T0, T1 ... of the types: created in either form, and as plain ones with the same columns.
class ClientOracle : public LoadTest, public testing::WithParamInterface<tov_client_create_options> {
  protected:
    void SetUp() override
    {
        LoadTest::SetUp();
        truths = server_truths();
        std::vector<client_declared_type> types;
        for (const server_truth &truth : truths)
            types.push_back(truth.type);
        reset_schema_to(document_of_tables(types).c_str());
        open(&GetParam());
        ASSERT_EQ(sqlite3_open(path("plain").c_str(), &plain), SQLITE_OK);
        std::string script = "PRAGMA synchronous=OFF; PRAGMA journal_mode=MEMORY; BEGIN;";
        for (size_t n = 0; n < truths.size(); n++) {
            const std::string tbl = "T" + std::to_string(n);
            const std::string type =
                rows(connection, "SELECT type FROM pragma_table_info('" + tbl + "') WHERE name = 'c'");
            script += "CREATE TABLE " + tbl + "(Id INTEGER PRIMARY KEY, c " + type + ");";
        }
        ASSERT_EQ(run(plain, script), "");
    }
    void TearDown() override
    {
        sqlite3_close(plain);
        LoadTest::TearDown();
    }

    // Whether a created database takes the value, one way as the other.
    bool is_taken(size_t n, const std::string &value)
    {
        const std::string tbl = "T" + std::to_string(n);
        const std::string inserted = run(connection, "INSERT INTO " + tbl + "(Id, c) VALUES(1, " + value + ")");
        run(connection, "DELETE FROM " + tbl + "; INSERT INTO " + tbl + "(Id) VALUES(1)");
        const std::string updated = run(connection, "UPDATE " + tbl + " SET c = " + value);
        run(connection, "DELETE FROM " + tbl);
        EXPECT_EQ(inserted.empty(), updated.empty()) << value << ": " << inserted << updated;
        return inserted.empty();
    }

    stored_value read_stored(size_t n, int64_t id)
    {
        sqlite3_stmt *statement = nullptr;
        const std::string sql = "SELECT c FROM T" + std::to_string(n) + " WHERE Id = " + std::to_string(id);
        EXPECT_EQ(sqlite3_prepare_v2(plain, sql.c_str(), -1, &statement, nullptr), SQLITE_OK);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_ROW);
        stored_value value;
        switch (sqlite3_column_type(statement, 0)) {
        case SQLITE_INTEGER:
            value.storage = truth_storage::integer;
            value.integer = sqlite3_column_int64(statement, 0);
            break;
        case SQLITE_FLOAT:
            value.storage = truth_storage::real;
            value.real = sqlite3_column_double(statement, 0);
            break;
        case SQLITE_TEXT:
        case SQLITE_BLOB: {
            const bool is_text = sqlite3_column_type(statement, 0) == SQLITE_TEXT;
            value.storage = is_text ? truth_storage::text : truth_storage::blob;
            const void *bytes = sqlite3_column_blob(statement, 0);
            if (bytes)
                value.bytes = {static_cast<const char *>(bytes),
                               static_cast<size_t>(sqlite3_column_bytes(statement, 0))};
            break;
        }
        default:
            break;
        }
        sqlite3_finalize(statement);
        return value;
    }

    // Table and row of each violation, with what is said of it.
    std::map<std::string, std::string> check()
    {
        std::map<std::string, std::string> violations;
        const auto take = [](KT_context *, void *data, const tov_client_violation *violation) {
            auto &all = *static_cast<std::map<std::string, std::string> *>(data);
            all[violation->tbl + (" " + std::to_string(violation->rowid))] +=
                std::string(violation->kind->code) + ": " + violation->message + "; ";
        };
        EXPECT_EQ(run(plain, "COMMIT"), "");
        tov_client__check_database(ctx, schema, path("plain").c_str(), nullptr, take, &violations, nullptr);
        EXPECT_OK(ctx);
        return violations;
    }

    std::vector<server_truth> truths;
    sqlite3 *plain = nullptr;
};

std::string shown(const server_truth &truth)
{
    return client_declared_type_text(truth.type) + " of page " + std::to_string(truth.type.type.code_page);
}

struct judged_value {
    size_t tbl;
    int64_t id;
    std::string literal;
    bool is_taken;
};

TEST_P(ClientOracle, TheDatabaseAndTheCheckJudgeAsTheServer)
{
    const unsigned count = from_environment("TOV_ORACLE_VALUES", 60);
    value_source source(from_environment("TOV_ORACLE_SEED", 1));
    std::vector<judged_value> judged;
    size_t taken = 0;
    for (size_t n = 0; n < truths.size(); n++) {
        std::vector<std::string> literals = truths[n].edges;
        literals.push_back("NULL");
        for (unsigned i = 0; i < count; i++)
            literals.push_back(source.next(truths[n]));
        for (size_t i = 0; i < literals.size(); i++) {
            const auto id = static_cast<int64_t>(i + 1);
            ASSERT_EQ(run(plain, "INSERT INTO T" + std::to_string(n) + " VALUES(" + std::to_string(id) + ", " +
                                     literals[i] + ")"),
                      "");
            const stored_value value = read_stored(n, id);
            const bool truth = value.storage == truth_storage::null || truths[n].takes(value);
            const bool answer = is_taken(n, literals[i]);
            taken += truth;
            const bool is_rounded = truth && truth_is_rounded_by_sqlite(truths[n].type.type, value);
            EXPECT_TRUE(answer == truth || is_rounded)
                << shown(truths[n]) << ", created: " << literals[i] << (answer ? " is taken" : " is refused");
            judged.push_back({n, id, literals[i], truth});
        }
    }
    std::map<std::string, std::string> violations = check();
    for (const judged_value &value : judged) {
        const std::string row = "T" + std::to_string(value.tbl) + " " + std::to_string(value.id);
        EXPECT_EQ(!violations.contains(row), value.is_taken)
            << shown(truths[value.tbl]) << ", checked: " << value.literal << ": " << violations[row];
    }
    EXPECT_GT(taken, judged.size() / 4);
    EXPECT_LT(taken, judged.size() * 3 / 4);
    RecordProperty("values", static_cast<int>(judged.size()));
}

INSTANTIATE_TEST_SUITE_P(OfEitherForm, ClientOracle, testing::Values(without_record, with_triggers),
                         [](const testing::TestParamInfo<tov_client_create_options> &form) {
                             return form.param.checks == TOV_CLIENT_CHECKS_TRIGGERS ? "Triggers" : "Constraints";
                         });

} // namespace
