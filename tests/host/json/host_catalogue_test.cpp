// Which documents are catalogue exports.
#include "host_test.hpp"

class HostCatalogueTest : public HostTest {};

TEST_F(HostCatalogueTest, Accepted)
{
    const struct {
        const char *name;
        const char *file;
        const char *codes;
    } cases[] = {
        {"an object with tables and no format", R"({"tables":[]})", "definitions-unknown\nno-tables"},
        {"a bare list of tables", "[]", "definitions-unknown\nno-tables"},
        {"an export without tables leaves the list out", R"({"format":"sqlserver-catalogue","format_version":1})",
         "definitions-unknown\nno-tables"},
        {"a login that may see all",
         R"({"format":"sqlserver-catalogue","format_version":1,"database":{"can_view_definitions":true}})",
         "no-tables"},
        {"a login that may not see definitions",
         R"({"format":"sqlserver-catalogue","format_version":1,"database":{"can_view_definitions":false}})",
         "definitions-hidden\nno-tables"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_file(c.file);
        EXPECT_OK(ctx);
        EXPECT_EQ(codes(), c.codes);
    }
}

TEST_F(HostCatalogueTest, Refused)
{
    import_file("{}");
    EXPECT_ERROR(ctx, KT_ERR_KEY_NOT_FOUND,
                 "the document is not a catalogue export: it has neither a format nor tables");
    reset();
    import_file(R"({"format":"sqlserver-catalogue"})");
    EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, "format_version is 0; this program reads version 1");
    reset();
}

TEST_F(HostCatalogueTest, MembersMayComeInAnyOrder)
{
    import_tables(R"({"pk":{"columns":[{"name":"A"}],"name":"PK"},"columns":[)" + a_col(1, "A", "int") +
                  R"(],"name":"T","schema":"dbo","id":7})");
    EXPECT_TRUE(has(R"("pk":{"name":"PK","cols":{"1":null}})")) << document();
    EXPECT_EQ(codes(), "");
}
