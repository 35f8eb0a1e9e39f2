#include "document/tov_parse_defin_private.hpp"

#include "ddl_host_test.hpp"

namespace {

class DdlHostSelect : public DdlHostTest {
  protected:
    // The select list of the columns in a map, given as JSON; leaves a failure in the context.
    std::string select(uint32_t mode, const char *cols, const char *skipped_name, KT_bool use_hash_values,
                       KT_bool look_up_host_types)
    {
        KT_vhash *map = nullptr;
        KT_string *text = nullptr;
        KT_vhash__alloc__from_json__sz(ctx, &map, cols);
        EXPECT_OK(ctx);
        tov_schema__get_pvh_col_names_comma_separated_and_qualified(ctx, mode, schema, "t", map, skipped_name, "q",
                                                                    use_hash_values, look_up_host_types, &text);
        KT_vhash__free(ctx, map);
        return take(ctx, text);
    }
};

struct select_case {
    const char *name;
    uint32_t mode;
    const char *cols;
    const char *skipped_name;
    KT_bool use_hash_values;
    KT_bool look_up_host_types;
    const char *expected;
};

const select_case select_cases[] = {
    {"nothing", 0, "{}", nullptr, 1, 1, ""},
    {"columns as they are", 0, R"({"Id":null,"Photo":"X","Nowhere":1})", nullptr, 0, 0,
     R"("q"."Id","q"."Photo","q"."Nowhere")"},
    {"types of the map", 0, R"~({"Id":null,"Photo":"VARBINARY(MAX)","Hash":"int"})~", nullptr, 1, 0,
     R"("q"."Id",CAST("q"."Photo" AS VARBINARY(MAX)),CAST("q"."Hash" AS int))"},
    {"only texts of the map are types", 0, R"({"Id":5,"Photo":{},"Hash":true})", nullptr, 256, 0,
     R"("q"."Id","q"."Photo","q"."Hash")"},
    {"the first name is skipped", 0, R"({"Id":null,"Photo":null,"Hash":null})", "Id", 0, 0,
     R"("q"."Photo","q"."Hash")"},
    {"the last name is skipped", 0, R"({"Id":null,"Photo":null})", "Photo", 0, 0, R"("q"."Id")"},
    {"the only name is skipped", 0, R"({"Id":null})", "Id", 0, 0, ""},
    {"a name in another case is not skipped", 0, R"({"Id":null})", "ID", 0, 0, R"("q"."Id")"},

    {"spatial columns are cast", 0, R"({"Id":null,"Place":null})", nullptr, 0, 256,
     R"("q"."Id",CAST("q"."Place" AS VARBINARY(MAX)))"},
    {"a type of the map comes before the host's", 0, R"({"Place":"int"})", nullptr, 1, 1,
     R"(CAST("q"."Place" AS int))"},
    {"a null in the map leaves the host's", 0, R"({"Place":null})", nullptr, 1, 1,
     R"(CAST("q"."Place" AS VARBINARY(MAX)))"},

    {"text becomes an integer", 1, R"({"Id":null,"Hash":null})", nullptr, 1, 0,
     R"((CAST(SUBSTRING("q"."Id",3,25) AS bigint)),"q"."Hash")"},
    {"an integer becomes text", 2, R"({"Hash":null,"Id":"int"})", nullptr, 1, 0,
     R"("q"."Hash",('S:' + CAST("q"."Id" AS varchar(25))))"},
    {"a column without root is like any other", 1, R"~({"Photo":"VARBINARY(MAX)","Place":null,"Id":null})~", nullptr, 1,
     1,
     R"(CAST("q"."Photo" AS VARBINARY(MAX)),CAST("q"."Place" AS VARBINARY(MAX)),)"
     R"((CAST(SUBSTRING("q"."Id",3,25) AS bigint)))"},
    {"a name that no column has is like any other", 2, R"({"Nowhere":"int"})", nullptr, 1, 0,
     R"(CAST("q"."Nowhere" AS int))"},
    {"another mode converts nothing", 3, R"({"Id":null,"Hash":null})", nullptr, 1, 0, R"("q"."Id","q"."Hash")"},
    {"a skipped column is not converted", 1, R"({"Id":null,"Hash":null})", "Id", 0, 0, R"("q"."Hash")"},
};

TEST_F(DdlHostSelect, SelectLists)
{
    for (const select_case &c : select_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(select(c.mode, c.cols, c.skipped_name, c.use_hash_values, c.look_up_host_types), c.expected);
        EXPECT_OK(ctx);
    }
}

TEST_F(DdlHostSelect, TheMapOfConvertedNamesMakesAList)
{
    KT_vhash *map = nullptr;
    tov_schema__get_converted_col_names_as_vhash(ctx, schema, "t", 0, &map);
    EXPECT_EQ(select(0, json_of(ctx, map).c_str(), nullptr, 1, 1),
              R"("q"."Id",CAST("q"."Photo" AS VARBINARY(MAX)),"q"."Hash",CAST("q"."Place" AS VARBINARY(MAX)))");
    EXPECT_OK(ctx);
    KT_vhash__free(ctx, map);
}

TEST_F(DdlHostSelect, SpatialWidths)
{
    const struct {
        const char *name;
        const char *type;
        const char *expected;
    } cases[] = {
        {"no flag", R"({"name":"blob","width":16})", "VARBINARY(MAX)"},
        {"a flag and width 0", R"({"name":"blob","fixed_width":true,"width":0})", "VARBINARY(MAX)"},
        {"a flag and a width", R"({"name":"blob","fixed_width":true,"width":16})", "VARBINARY(16)"},
        {"a flag that is not set", R"({"name":"blob","fixed_width":false,"width":16})", "VARBINARY(16)"},
        {"a flag without width", R"({"name":"blob","fixed_width":false})", "VARBINARY(-1)"},
    };
    for (const char *host_type : {"geography", "GEOMETRY", "HierarchyId"})
        for (const auto &c : cases) {
            SCOPED_TRACE(c.name);
            load_col(std::string(R"("mssql_col_data_type":")") + host_type + R"(","type":)" + c.type);
            EXPECT_EQ(select(0, R"({"C":null})", nullptr, 1, 1), std::string(R"(CAST("q"."C" AS )") + c.expected + ")");
            EXPECT_OK(ctx);
        }
    load_col(R"("mssql_col_data_type":"geometry2","type":{"name":"blob","fixed_width":true,"width":16})");
    EXPECT_EQ(select(0, R"({"C":null})", nullptr, 1, 1), R"("q"."C")");
}

// Names are looked up as tov_schema__find_col_by_name() does, whatever the order of the map.
TEST_F(DdlHostSelect, ColumnsAreFoundByName)
{
    add_col("t", "Last", "geometry");
    EXPECT_EQ(select(0, R"({"Last":null,"Id":null,"Place":null})", nullptr, 0, 1),
              R"(CAST("q"."Last" AS VARBINARY(MAX)),"q"."Id",CAST("q"."Place" AS VARBINARY(MAX)))");
    EXPECT_OK(ctx);

    // The first column of a name is the one.
    tov_schema__set_col_name(ctx, schema, "t", "hash", "Place"); // whose type at the host is binary
    EXPECT_EQ(select(0, R"({"Last":null,"Place":null})", nullptr, 0, 1),
              R"(CAST("q"."Last" AS VARBINARY(MAX)),"q"."Place")");
    EXPECT_OK(ctx);

    // Prepared columns come before unprepared ones, which are found too.
    tov_schema__add_col(ctx, schema, "t", "u1", "Id", 0, 0, 0);
    tov_schema__set_mssql_col_type_name(ctx, schema, "t", "u1", "geometry");
    tov_schema__add_col(ctx, schema, "t", "u2", "Later", 0, 0, 0);
    tov_schema__set_mssql_col_type_name(ctx, schema, "t", "u2", "geometry");
    tov_schema__set_col_type_simple(ctx, schema, "t", "u2", "loose/blob");
    EXPECT_EQ(select(0, R"({"Later":null,"Id":null})", nullptr, 0, 1),
              R"(CAST("q"."Later" AS VARBINARY(MAX)),"q"."Id")");
    EXPECT_OK(ctx);
}

TEST_F(DdlHostSelect, OnlyTheColumnsBeforeTheOneSoughtAreLookedAt)
{
    load_tbl(R"("cols":{"n":{},"a":{"name":"A","mssql_col_data_type":"int"},"b":{"name":5}})");
    EXPECT_EQ(select(0, R"({"A":null})", nullptr, 0, 1), R"("q"."A")");
    EXPECT_OK(ctx);
    EXPECT_EQ(select(0, R"({"A":null,"B":null})", nullptr, 0, 1), "(null)");
    expect_failure(KT_ERR_WRONG_TYPE, "key 'name' is not a string");
}

TEST_F(DdlHostSelect, AnUnknownTableIsMissedWhereAColumnIsLookedUp)
{
    reset_schema();
    EXPECT_EQ(select(0, R"({"A":null})", nullptr, 1, 0), R"("q"."A")");
    EXPECT_EQ(select(1, "{}", nullptr, 1, 1), "");
    EXPECT_EQ(select(1, R"({"A":null})", "A", 1, 1), "");
    EXPECT_OK(ctx);
    EXPECT_EQ(select(1, R"({"A":null})", nullptr, 1, 0), "(null)");
    expect_failure(KT_ERR_NOT_FOUND, "table id 't' not found in schema");
    EXPECT_EQ(select(0, R"({"A":null})", nullptr, 0, 1), "(null)");
    expect_failure(KT_ERR_NOT_FOUND, "table id 't' not found in schema");
}

TEST_F(DdlHostSelect, AConvertedColumnNeedsNoHostType)
{
    tov_schema__add_col(ctx, schema, "t", "n", "N", 1, 0, 0);
    tov_schema__set_col_type_simple(ctx, schema, "t", "n", "sint32");
    tov_schema__set_colcon_fk(ctx, schema, "t", "n", 1, "fk", nullptr, "p", "id", 0, nullptr, nullptr, 0);
    EXPECT_EQ(select(2, R"({"N":"int"})", nullptr, 1, 1), R"(('S:' + CAST("q"."N" AS varchar(25))))");
    EXPECT_OK(ctx);
    EXPECT_EQ(select(0, R"({"N":"int"})", nullptr, 1, 1), "(null)");
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'mssql_col_data_type'");
}

TEST_F(DdlHostSelect, Failures)
{
    EXPECT_EQ(select(0, R"({"Nowhere":"int"})", nullptr, 1, 1), "(null)");
    expect_failure(KT_ERR_NULL_ARGUMENT, "psz_col_id is null");
    tov_schema__add_col(ctx, schema, "t", "new", "New", 1, 0, 0);
    EXPECT_EQ(select(0, R"({"New":"int"})", nullptr, 1, 1), "(null)");
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'mssql_col_data_type'");
    tov_schema__set_mssql_col_type_name(ctx, schema, "t", "new", "geometry");
    EXPECT_EQ(select(0, R"({"New":null})", nullptr, 1, 1), "(null)");
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'type'");
    EXPECT_EQ(select(0, R"({"New":"int"})", nullptr, 1, 1), R"(CAST("q"."New" AS int))"); // its type is not asked for
    EXPECT_OK(ctx);
    // Any mode but 0 looks for a root.
    EXPECT_EQ(select(7, R"({"New":"int"})", nullptr, 1, 0), "(null)");
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'type'");
}

TEST_F(DdlHostSelect, EveryAllocationMayFail)
{
    const std::string q(200, 'q');
    tov_schema__set_col_type_blob(ctx, schema, "t", "place", 1, 16);
    KT_vhash *cols = nullptr;
    KT_vhash__alloc__from_json__sz(ctx, &cols, R"~({"Id":null,"Photo":"VARBINARY(MAX)","Place":null})~");
    for (const uint32_t mode : {0U, 1U, 2U})
        sweep_string([&](KT_string **text) {
            tov_schema__get_pvh_col_names_comma_separated_and_qualified(ctx, mode, schema, "t", cols, nullptr,
                                                                        q.c_str(), 1, 1, text);
        });
    KT_vhash__free(ctx, cols);
}

} // namespace
