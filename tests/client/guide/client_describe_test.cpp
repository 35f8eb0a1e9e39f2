// The guide to the columns of a schema.
#include "declared_types.hpp"
#include "failing_alloc.hpp"
#include "load_test.hpp"
#include "type_document.hpp"

#include "rows/convert/client_bytes.hpp"

namespace {

// The bytes of x'0A1B'.
std::string bytes_of(const std::string &literal)
{
    std::string bytes;
    client_append_from_hex(bytes, literal.substr(2, literal.size() - 3));
    return bytes;
}

class DescribeTest : public LoadTest {
  protected:
    std::string describe(const char *tbl_id = nullptr)
    {
        KT_vhash *guide = nullptr;
        kt_owned_string json{ctx};
        tov_client__describe_columns(ctx, schema, tbl_id, &guide);
        KT_string__alloc(ctx, json.out());
        KT_vhash__to_json(ctx, guide, json);
        const std::string text = KT_context__has_err(ctx) ? "" : KT_string__sz(json);
        KT_vhash__free(ctx, guide);
        return text;
    }
    // A member of the only table's n-th column, "" where it is not there.
    std::string member(const KT_vhash *guide, uint32_t n, const char *key)
    {
        KT_vhash *col = nullptr;
        const char *text = nullptr;
        KT_varray__get__vhash(ctx, list(tbl(guide), "columns"), n, &col);
        KT_vhash__check__sz(ctx, col, key, &text);
        return text ? text : "";
    }
    KT_vhash *tbl(const KT_vhash *guide)
    {
        KT_vhash *result = nullptr;
        KT_varray__get__vhash(ctx, list(guide, "tables"), 0, &result);
        return result;
    }
    KT_varray *list(const KT_vhash *map, const char *key)
    {
        KT_varray *result = nullptr;
        KT_vhash__get__varray(ctx, map, key, &result);
        return result;
    }
};

struct member_case {
    const char *name;
    const char *expected; // stands in the description
};

TEST_F(DescribeTest, SaysWhatAProgramHasToKnow)
{
    tov_schema__set_colcon_defval(ctx, schema, "2", "3", 1, "DF", "150");
    tov_schema__add_to_unique_constraint(ctx, schema, "1", "2", "u");
    ASSERT_OK(ctx);
    const std::string text = describe();
    const member_case cases[] = {
        {"a table's names", R"json("table":"Sales.Orders","server_table":"Sales.Orders")json"},
        {"a key must be given", R"json("bind":"a number","nullable":false,"required":true,"primary_key":1})json"},
        {"an integer primary key need not be",
         R"json("nullable":false,"required":false,"identity":"1,1","primary_key":1})json"},
        {"a reference", R"json("references":[{"table":"Customers","column":"Id"}])json"},
        {"a default", R"json("nullable":true,"required":false,"default":"150"})json"},
        {"a unique column", R"json("nullable":true,"required":false,"unique":true})json"},
        {"a computed column",
         R"json({"name":"Total","server_type":"decimal(9,2)","left_out":"the server computes it","computed":"([Price]*2)"})json"},
        {"a type with its sizes", R"json("name":"Name","server_type":"nvarchar(10)")json"},
        {"an insert",
         R"sql("insert":"INSERT INTO \"Customers\" (\"Id\", \"Name\", \"Code\", \"Born\") VALUES (?1, ?2, )sql"
         R"sql(?3 || substr(printf('%3s', ''), length(?3) + 1), ?4)")sql"},
    };
    for (const member_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_NE(text.find(c.expected), std::string::npos) << c.expected << "\n" << text;
    }
}

TEST_F(DescribeTest, DescribesOneTable)
{
    const std::string text = describe("2");
    EXPECT_TRUE(text.starts_with(R"json({"tables":[{"table":"Sales.Orders")json")) << text;
    EXPECT_EQ(text.find("Customers\",\"server"), std::string::npos);
}

TEST_F(DescribeTest, AnUnknownTableFails)
{
    KT_vhash *guide = nullptr;
    tov_client__describe_columns(ctx, schema, "9", &guide);
    EXPECT_EQ(guide, nullptr);
    EXPECT_TRUE(KT_context__has_err(ctx));
    KT_context__err_reset(ctx);
}

TEST_F(DescribeTest, WithoutFactsTheAbstractTypesSay)
{
    reset_schema_to(R"json({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{
        "a":{"name":"A","type":{"name":"decimal","precision":5,"scale":1}},
        "b":{"name":"B","type":{"name":"datetime","precision":7}}}}}})json");
    const std::string text = describe();
    EXPECT_NE(text.find(R"json("name":"A","server_type":"decimal(5,1)")json"), std::string::npos) << text;
    EXPECT_NE(text.find(R"json("name":"B","server_type":"datetime2(7)")json"), std::string::npos) << text;
}

// A document of one table with columns of integers, and others of versions, which are NOT NULL.
std::string versioned_document(const std::vector<std::string> &numbers, const std::vector<std::string> &versions,
                               bool has_facts)
{
    std::string cols;
    std::string facts;
    int count = 0;
    const auto add = [&](const std::string &name, const std::string &type, const std::string &server_type) {
        const std::string id = std::to_string(++count);
        const std::string comma = count > 1 ? "," : "";
        cols += comma + '"' + id + R"json(":{"name":")json" + name + R"json(","notnull":{},)json" + type + '}';
        facts += comma + R"json({"name":")json" + name + R"json(","id":")json" + id + R"json(","type":")json" +
                 server_type + R"json("})json";
    };
    for (const std::string &name : numbers)
        add(name, R"json("type":{"name":"sint32"})json", "int");
    for (const std::string &name : versions)
        add(name, R"json("type":{"name":"blob","fixed_width":true,"width":8},"mssql_col_data_type":"timestamp")json",
            "timestamp");
    return R"json({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{)json" + cols + "}" +
           (has_facts ? R"json(,"server":{"schema":"dbo","name":"T","cols":[)json" + facts + "]}" : "") + "}}}";
}

TEST_F(DescribeTest, OnlyTheVersionThatTheDatabaseGivesIsNotRequired)
{
    const struct {
        const char *name;
        std::vector<std::string> numbers;
        std::vector<std::string> versions;
        bool has_facts;
        std::vector<bool> required; // the versions
    } cases[] = {
        {"the only one", {}, {"V"}, true, {false}},
        {"a second one", {}, {"V", "W"}, true, {false, true}},
        {"of a table without facts", {}, {"V"}, false, {true}},
        {"where a name for the row is left", {"rowid", "oid"}, {"V"}, true, {false}},
        {"where none is left", {"rowid", "oid", "_rowid_"}, {"V"}, true, {true}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        reset_schema_to(versioned_document(c.numbers, c.versions, c.has_facts).c_str());
        const std::string text = describe();
        size_t at = 0;
        for (const bool required : c.required) {
            at = text.find(R"json("server_type":"rowversion")json", at + 1);
            ASSERT_NE(at, std::string::npos) << text;
            const std::string expected = R"json("required":)json" + std::string(required ? "true" : "false");
            EXPECT_EQ(text.find(expected, at), text.find(R"json("required":)json", at)) << text;
        }
    }
}

// The insert of the description takes each type's example, with its triggers, and the view shows it again.
TEST_F(DescribeTest, ItsInsertTakesValuesOfEveryTypeAndViewsShowThem)
{
    reset_schema_to(document_of_types(all_declared_types()).c_str());
    tov_client_create_options options = {};
    options.views = 1;
    tov_client__create_database__with(ctx, schema, path("db").c_str(), &options);
    KT_vhash *guide = nullptr;
    tov_client__describe_columns(ctx, schema, nullptr, &guide);
    ASSERT_OK(ctx);
    sqlite3_open(path("db").c_str(), &connection);
    KT_sqlite__normalise_dates(ctx, tov__get_sqlite_functions(), connection);
    const char *insert = nullptr;
    sqlite3_stmt *statement = nullptr;
    KT_vhash__get__sz(ctx, tbl(guide), "insert", &insert);
    ASSERT_EQ(sqlite3_prepare_v2(connection, insert, -1, &statement, nullptr), SQLITE_OK) << insert;
    const std::vector<client_declared_type> types = all_declared_types();
    for (uint32_t n = 0; n + 1 < types.size(); n++) {
        const std::string example =
            member(guide, n,
                   client_is_binary(types[n].type.base) || types[n].type.base == client_base::guid ? "stored_example"
                                                                                                   : "example");
        const bool is_blob = example.starts_with("x'");
        const std::string value = is_blob ? bytes_of(example) : example;
        if (is_blob)
            sqlite3_bind_blob(statement, static_cast<int>(n + 1), value.data(), static_cast<int>(value.size()),
                              SQLITE_TRANSIENT);
        else
            sqlite3_bind_text(statement, static_cast<int>(n + 1), value.c_str(), -1, SQLITE_TRANSIENT);
    }
    EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE) << sqlite3_errmsg(connection);
    sqlite3_finalize(statement);
    for (uint32_t n = 0; n + 1 < types.size(); n++) {
        SCOPED_TRACE(client_declared_type_text(types[n]));
        const std::string col = "c" + std::to_string(n);
        const std::string stored = member(guide, n, "stored_example");
        const bool is_binary = client_is_binary(types[n].type.base);
        EXPECT_EQ(::rows(connection, "SELECT " + col + " IS " + stored + " FROM T"), "1");
        EXPECT_EQ(::rows(connection, "SELECT " + col + " FROM v_T"),
                  is_binary ? ::rows(connection, "SELECT " + stored) : member(guide, n, "example"));
    }
    KT_vhash__free(ctx, guide);
}

TEST_F(DescribeTest, SurvivesFailingAllocations)
{
    reset_schema_to(document_of_types(all_declared_types()).c_str());
    const std::string whole = describe();
    ASSERT_OK(ctx);
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_vhash *guide = nullptr;
        tov_client__describe_columns(ctx, schema, nullptr, &guide);
        if (!fault.fired()) {
            EXPECT_OK(ctx);
            KT_vhash__free(ctx, guide);
            break;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(guide, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
    EXPECT_EQ(describe(), whole);
}

// Facts about the server are what a document says, and a document can say anything.
TEST_F(DescribeTest, RefusesFactsThatCannotBe)
{
    const struct {
        const char *name;
        const char *facts;
        uint64_t code;
    } cases[] = {
        {"a length below all", R"("type":"nvarchar","length":-2)", KT_ERR_UNEXPECTED_VALUE},
        {"a precision", R"("type":"decimal","precision":256)", KT_ERR_UNEXPECTED_VALUE},
        {"a scale", R"("type":"decimal","scale":39)", KT_ERR_UNEXPECTED_VALUE},
        {"a scale of a time", R"("type":"time","scale":8)", KT_ERR_UNEXPECTED_VALUE},
        {"a code page", R"("type":"varchar","code_page":65536)", KT_ERR_UNEXPECTED_VALUE},
        {"no type", R"("length":4)", KT_ERR_KEY_NOT_FOUND},
        {"a type of another kind", R"("type":5)", KT_ERR_WRONG_TYPE},
        {"a flag of another kind", R"("type":"int","nullable":"no")", KT_ERR_WRONG_TYPE},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        reset_schema_to(
            (R"({"compat_level":1,"backend":{},"tbls":{"1":{"name":"T","txid":0,"cols":{"1":{"name":"A","type":)"
             R"({"name":"sint32"}}},"server":{"schema":"dbo","name":"T","cols":[{"name":"A","id":"1",)" +
             std::string(c.facts) + "}]}}}}")
                .c_str());
        EXPECT_EQ(describe(), "");
        EXPECT_FAILED(ctx, c.code);
        KT_context__err_reset(ctx);
    }
}

} // namespace
