// Lists and maps that are given to the caller: whichever record of theirs memory runs out for, the caller gets nothing
// but the error, and the whole once there is memory again.
#include "chunk_ends.hpp"
#include "compare/compared_document.hpp"
#include "migrate/migrated_database.hpp"
#include "tov_doctor.h"
#include "tov_report.h"

#include <cstring>

namespace {

std::string replaced(std::string text, const std::string &from, const std::string &to)
{
    EXPECT_NE(text.find(from), std::string::npos) << from;
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

// The compared document after many changes: the first one, of the whole, holds a padding.
std::string changed_document(const std::string &padding)
{
    const std::pair<const char *, std::string> changes[] = {
        {R"("database":"Shop","collation":"Latin1_General_CI_AS")",
         R"("database":"Shop","collation":"L)" + padding + '"'},
        {R"("increment":"1"})", R"("increment":"2"})"},
        {R"("compat_level":1)", R"("compat_level":2)"},
        {R"("name":"Name","id":"2","type":"nvarchar","length":80)",
         R"("name":"Name","id":"2","type":"nvarchar","length":60)"},
        {R"("unicode":true,"width":40)", R"("unicode":true,"width":30)"},
        {R"("on_delete":"CASCADE")", R"("on_delete":"NO ACTION")"},
        {R"("expr":"0","name":"DF_Orders_Total")", R"("expr":"1","name":"DF_Orders_Total")"},
        {"((0))", "((1))"},
        {"([Total]>=(0))", "([Total]>=(1))"},
        {R"("UX_Code":{"4":null,"2":null})", R"("UX_Code":{"4":null})"},
        {R"("description":"who buys")", R"("description":"who bought")"},
        {"([Paid] IS NOT NULL)", "([Paid] IS NULL)"},
        {R"("name":"Double")", R"("name":"Twofold")"},
    };
    std::string document = compared_document;
    for (const auto &[from, to] : changes)
        document = replaced(document, from, to);
    return document;
}

class ClientChunkEnds : public MigrateTest {
  protected:
    void read(tov_schema **to, const std::string &document)
    {
        tov_schema__nullfree(ctx, to);
        tov_schema__from_json(ctx, document.c_str(), to);
        ASSERT_OK(ctx);
    }
    // Whether the call failed, in which case it gave nothing.
    template <class Result, class Call, class Free> bool fails(Call call, Free free)
    {
        Result *result = nullptr;
        call(&result);
        const bool failed = KT_context__has_err(ctx);
        EXPECT_EQ(result == nullptr, failed);
        if (failed) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        }
        KT_context__err_reset(ctx);
        free(ctx, result);
        return failed;
    }
};

TEST_F(ClientChunkEnds, Changes)
{
    read(&schema, compared_document);
    at_each_chunk_end(
        96, [&](const std::string &padding) { read(&new_schema, changed_document(padding)); },
        [&] {
            return fails<KT_vhash>(
                [&](KT_vhash **changes) { tov_client__compare(ctx, schema, new_schema, nullptr, changes); },
                KT_vhash__free);
        });
}

TEST_F(ClientChunkEnds, StepsOfAMigration)
{
    tov_client_migrate_options options = {};
    const auto prepare = [&](const std::string &padding) {
        const std::string kept = R"("compat_level":2)";
        read(&schema, replaced(compared_document, R"({"name":"Customers")", R"({"name":"C)" + padding + '"'));
        read(&new_schema, replaced(replaced(changed_document(""), kept, R"("compat_level":1)"),
                                   R"({"name":"Customers")", R"({"name":"C)" + padding + '"'));
    };
    at_each_chunk_end(384, prepare, [&] {
        return fails<KT_varray>(
            [&](KT_varray **steps) { tov_client__plan_migration(ctx, schema, new_schema, &options, steps); },
            KT_varray__free);
    });
}

TEST_F(ClientChunkEnds, TheGuideToColumns)
{
    const auto prepare = [&](const std::string &padding) {
        read(&schema, replaced(compared_document, R"("schema":"dbo","name":"Customers")",
                               R"("schema":"dbo","name":"C)" + padding + '"'));
    };
    at_each_chunk_end(16, prepare, [&] {
        return fails<KT_vhash>([&](KT_vhash **guide) { tov_client__describe_columns(ctx, schema, nullptr, guide); },
                               KT_vhash__free);
    });
}

// With the rows of a database, of which some break the rules.
TEST_F(ClientChunkEnds, AReport)
{
    create_from(compared_document);
    ASSERT_EQ(in_db("PRAGMA ignore_check_constraints=ON;INSERT INTO Customers VALUES (1, 'A');"
                    "INSERT INTO Orders VALUES (1, 1, -5, 'abcd', NULL), (2, 1, 5.5, 'abcdefgh', 'never')"),
              "");
    const std::string file = path("db");
    tov_client_report_options options = {};
    options.database = file.c_str();
    std::string title;
    const auto prepare = [&](const std::string &padding) {
        title = "Shop" + padding;
        options.title = title.c_str();
    };
    at_each_chunk_end(48, prepare, [&] {
        return fails<KT_string>([&](KT_string **page) { tov_client__write_html_report(ctx, schema, &options, page); },
                                KT_string__free);
    });
}

TEST_F(ClientChunkEnds, Diagnoses)
{
    std::string file;
    const auto prepare = [&](const std::string &padding) {
        create_from(compared_document);
        ASSERT_EQ(in_db("DROP INDEX IX_Paid; CREATE TABLE a" + padding +
                        "(a REFERENCES Customers(Id));"
                        "CREATE TABLE other(a); CREATE VIEW v AS SELECT 1"),
                  "");
        file = path("db");
    };
    at_each_chunk_end(64, prepare, [&] {
        return fails<KT_varray>(
            [&](KT_varray **diagnoses) { tov_client__examine_database(ctx, file.c_str(), diagnoses); },
            KT_varray__free);
    });
}

} // namespace
