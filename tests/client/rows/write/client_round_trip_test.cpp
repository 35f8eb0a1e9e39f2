// A value of every type comes out of the database as the file had it.
#include "guide/declared_types.hpp"
#include "load_test.hpp"
#include "type_document.hpp"

namespace {

class ClientRoundTrip : public LoadTest {};

// As bcp writes it: hexadecimal digits alone, no zero before the point of an exact number, a float with all its digits.
std::string as_bcp_writes(const client_declared_type &declared, const std::string &shown)
{
    if (shown.starts_with("0x"))
        return shown.substr(2);
    if (declared.type.base == client_base::floating)
        return "0.10000000000000001";
    return declared.type.base == client_base::decimal && shown.starts_with("0.") ? shown.substr(1) : shown;
}

TEST_F(ClientRoundTrip, OfAValueOfEachType)
{
    std::vector<client_declared_type> types = all_declared_types();
    types.pop_back(); // sql_variant, which is left out
    reset_schema_to(document_of_tables(types).c_str());
    create();
    std::vector<std::string> files;
    std::vector<std::string> contents;
    for (size_t n = 0; n < types.size(); n++) {
        const std::string example = as_bcp_writes(types[n], client_form_of(types[n]).example);
        contents.push_back("1\t" + example + "\n2\t\n");
        files.push_back(write("T" + std::to_string(n) + ".dat", contents.back()));
    }
    tov_client_load_options options = {};
    options.format = "bcp";
    options.field_end = "\\t";
    options.row_end = "\\n";
    load(files, options);
    ASSERT_OK(ctx);
    KT_varray *report = nullptr;
    tov_client__unload(ctx, schema, path("db").c_str(), path("out").c_str(), nullptr, &report);
    KT_varray__free(ctx, report);
    ASSERT_OK(ctx);
    for (size_t n = 0; n < types.size(); n++) {
        SCOPED_TRACE(client_declared_type_text(types[n]));
        EXPECT_EQ(read("out/T" + std::to_string(n) + ".dat"), contents[n]);
    }
}

// A value of every type comes into another database as it was, by way of each form but bcp's.
TEST_F(ClientRoundTrip, ByWayOfOtherForms)
{
    std::vector<client_declared_type> types = all_declared_types();
    types.pop_back();
    reset_schema_to(document_of_tables(types).c_str());
    create();
    std::vector<std::string> files;
    for (size_t n = 0; n < types.size(); n++)
        files.push_back(write("T" + std::to_string(n) + ".dat",
                              "1\t" + as_bcp_writes(types[n], client_form_of(types[n]).example) + "\n2\t\n"));
    tov_client_load_options options = {};
    options.format = "bcp";
    options.field_end = "\\t";
    options.row_end = "\\n";
    load(files, options);
    ASSERT_OK(ctx);
    for (const std::string format : {"csv", "json", "insert"}) {
        SCOPED_TRACE(format);
        KT_varray *report = nullptr;
        tov_client_unload_options how = {};
        how.format = format.c_str();
        tov_client__unload(ctx, schema, path("db").c_str(), path(format).c_str(), &how, &report);
        KT_varray__free(ctx, report);
        ASSERT_OK(ctx);
        create(format + ".db");
        files = {path(format + "/rows.sql")};
        if (format != "insert")
            files.clear();
        for (size_t n = 0; n < types.size() && format != "insert"; n++)
            files.push_back(path(format + "/T" + std::to_string(n) + (format == "csv" ? ".csv" : ".jsonl")));
        tov_client_load_options back = {};
        back.format = format.c_str();
        load(files, back, format + ".db");
        ASSERT_OK(ctx);
        EXPECT_EQ(shown_remarks, "");
        for (size_t n = 0; n < types.size(); n++) {
            if (format == "insert" && types[n].type.base == client_base::rowversion)
                continue; // the server makes new ones
            SCOPED_TRACE(client_declared_type_text(types[n]));
            const std::string rows = "SELECT Id, typeof(c), quote(c) FROM T" + std::to_string(n) + " ORDER BY Id";
            EXPECT_EQ(query(rows, format + ".db"), query(rows));
        }
    }
}

// Without what the server says of the columns, their types in the schema are enough to carry values over.
TEST_F(ClientRoundTrip, WithoutFactsAboutTheServer)
{
    std::vector<client_declared_type> types = all_declared_types();
    types.pop_back();
    std::string document = document_of_tables(types);
    reset_schema_to(document.c_str());
    create();
    std::vector<std::string> files;
    for (size_t n = 0; n < types.size(); n++)
        files.push_back(write("T" + std::to_string(n) + ".dat",
                              "1\t" + as_bcp_writes(types[n], client_form_of(types[n]).example) + "\n2\t\n"));
    tov_client_load_options options = {};
    options.format = "bcp";
    options.field_end = "\\t";
    options.row_end = "\\n";
    load(files, options);
    ASSERT_OK(ctx);
    for (size_t at = document.find(",\"server\":"); at != document.npos; at = document.find(",\"server\":"))
        document.erase(at, document.find("]}", at) + 2 - at);
    reset_schema_to(document.c_str());
    KT_varray *report = nullptr;
    tov_client__unload(ctx, schema, path("db").c_str(), path("out").c_str(), nullptr, &report);
    KT_varray__free(ctx, report);
    ASSERT_OK(ctx);
    create("other.db");
    for (size_t n = 0; n < types.size(); n++)
        files[n] = path("out/T" + std::to_string(n) + ".dat");
    load(files, options, "other.db");
    ASSERT_OK(ctx);
    for (size_t n = 0; n < types.size(); n++) {
        SCOPED_TRACE(client_declared_type_text(types[n]));
        if (types[n].type.base == client_base::datetime)
            continue; // the document of these tests leaves its digits to the facts
        const std::string rows = "SELECT Id, typeof(c), quote(c) FROM T" + std::to_string(n) + " ORDER BY Id";
        EXPECT_EQ(query(rows, "other.db"), query(rows));
    }
}

} // namespace
