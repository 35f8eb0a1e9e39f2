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

} // namespace
