// A value of every type comes out of the database as the file had it.
#include "guide/declared_types.hpp"
#include "load_test.hpp"
#include "type_document.hpp"

namespace {

// As bcp writes it: hexadecimal digits alone, no zero before the point of an exact number, a float with all its digits.
std::string as_bcp_writes(const client_declared_type &declared, const std::string &shown)
{
    if (shown.starts_with("0x"))
        return shown.substr(2);
    if (declared.type.base == client_base::floating)
        return "0.10000000000000001";
    return declared.type.base == client_base::decimal && shown.starts_with("0.") ? shown.substr(1) : shown;
}

class ClientRoundTrip : public LoadTest {
  protected:
    // The example of each type is in a table of its own, with a row of NULL after it.
    void SetUp() override
    {
        LoadTest::SetUp();
        types = all_declared_types();
        types.pop_back(); // sql_variant, which is left out
        document = document_of_tables(types);
        reset_schema_to(document.c_str());
        create();
        for (size_t n = 0; n < types.size(); n++) {
            const std::string example = as_bcp_writes(types[n], client_form_of(types[n]).example);
            contents.push_back("1\t" + example + "\n2\t\n");
            write(file_name(n), contents.back());
        }
        load(files_in("."), as_bcp());
        ASSERT_OK(ctx);
    }
    static std::string file_name(size_t n, const char *extension = ".dat")
    {
        return "T" + std::to_string(n) + extension;
    }
    std::vector<std::string> files_in(const std::string &folder, const char *extension = ".dat")
    {
        std::vector<std::string> files;
        for (size_t n = 0; n < types.size(); n++)
            files.push_back(path(folder + "/" + file_name(n, extension)));
        return files;
    }
    static tov_client_load_options as_bcp()
    {
        tov_client_load_options options = {};
        options.format = "bcp";
        options.field_end = "\\t";
        options.row_end = "\\n";
        return options;
    }
    void unload(const std::string &folder, const char *format = nullptr)
    {
        KT_varray *report = nullptr;
        tov_client_unload_options options = {};
        options.format = format;
        tov_client__unload(ctx, schema, path("db").c_str(), path(folder).c_str(), &options, &report);
        KT_varray__free(ctx, report);
        ASSERT_OK(ctx);
    }
    // The values of the n-th type are the same in another database.
    void expect_same(size_t n, const std::string &database)
    {
        SCOPED_TRACE(client_declared_type_text(types[n]));
        const std::string rows = "SELECT Id, typeof(c), quote(c) FROM T" + std::to_string(n) + " ORDER BY Id";
        EXPECT_EQ(query(rows, database), query(rows));
    }

    std::vector<client_declared_type> types;
    std::string document;
    std::vector<std::string> contents; // of the files
};

TEST_F(ClientRoundTrip, OfAValueOfEachType)
{
    unload("out");
    for (size_t n = 0; n < types.size(); n++) {
        SCOPED_TRACE(client_declared_type_text(types[n]));
        EXPECT_EQ(read("out/" + file_name(n)), contents[n]);
    }
}

// A value of every type comes into another database as it was, by way of each form but bcp's.
TEST_F(ClientRoundTrip, ByWayOfOtherForms)
{
    const struct {
        const char *format;
        std::vector<std::string> files;
    } cases[] = {
        {"csv", files_in("csv", ".csv")},
        {"json", files_in("json", ".jsonl")},
        {"insert", {path("insert/rows.sql")}},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.format);
        const std::string format = c.format;
        unload(format, c.format);
        create(format + ".db");
        tov_client_load_options options = {};
        options.format = c.format;
        load(c.files, options, format + ".db");
        ASSERT_OK(ctx);
        EXPECT_EQ(shown_remarks, "");
        for (size_t n = 0; n < types.size(); n++) {
            if (format == "insert" && types[n].type.base == client_base::rowversion)
                continue; // the server makes new ones
            expect_same(n, format + ".db");
        }
    }
}

// Without what the server says of the columns, their types in the schema are enough to carry values over.
TEST_F(ClientRoundTrip, WithoutFactsAboutTheServer)
{
    for (size_t at = document.find(",\"server\":"); at != document.npos; at = document.find(",\"server\":"))
        document.erase(at, document.find("]}", at) + 2 - at);
    reset_schema_to(document.c_str());
    unload("out");
    create("other.db");
    load(files_in("out"), as_bcp(), "other.db");
    ASSERT_OK(ctx);
    for (size_t n = 0; n < types.size(); n++) {
        if (types[n].type.base == client_base::datetime)
            continue; // the document of these tests leaves its digits to the facts
        expect_same(n, "other.db");
    }
}

} // namespace
