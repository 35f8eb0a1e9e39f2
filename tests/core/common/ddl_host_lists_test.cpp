#include "tov_parse_defin_private.h"

#include "ddl_test.h"

namespace {

class DdlHostLists : public DdlTest {
  protected:
    // A table "t" with an integer Id that goes back to the identity of another table, a Photo of variable width, a
    // Hash of fixed width and a Place on the earth.
    void SetUp() override
    {
        DdlTest::SetUp();
        tov_schema__add_tbl(ctx, schema, "p", "Parent", 1);
        add_col("p", "Id", "int");
        tov_schema__set_col_type_identity(ctx, schema, "p", "id", nullptr);
        tov_schema__add_tbl(ctx, schema, "t", "T", 1);
        add_col("t", "Id", "int");
        tov_schema__set_colcon_fk(ctx, schema, "t", "id", 1, "fk", nullptr, "p", "id", 0, nullptr, nullptr, 0);
        add_col("t", "Photo", "varbinary");
        tov_schema__set_col_type_blob(ctx, schema, "t", "photo", 0, 100);
        add_col("t", "Hash", "binary");
        tov_schema__set_col_type_blob(ctx, schema, "t", "hash", 1, 20);
        add_col("t", "Place", "Geography");
        tov_schema__set_col_type_simple(ctx, schema, "t", "place", "loose/blob");
        ASSERT_OK(ctx);
    }
    void add_col(const char *tbl_id, const char *name, const char *host_type)
    {
        tov_schema__add_col(ctx, schema, tbl_id, name, name, 1, 0, 0);
        tov_schema__set_col_type_simple(ctx, schema, tbl_id, name, "sint32");
        tov_schema__set_mssql_col_type_name(ctx, schema, tbl_id, name, host_type);
    }
    std::string converted(const char *name)
    {
        KT_string *text = nullptr;
        tov_schema__get_converted_col_name(ctx, schema, "t", name, "q", &text);
        EXPECT_OK(ctx);
        return take(ctx, text);
    }
    std::string converted_pk()
    {
        KT_string *text = nullptr;
        tov_schema__get_pk_col_names_converted(ctx, schema, "t", "q", &text);
        EXPECT_OK(ctx);
        return take(ctx, text);
    }
    std::string converted_map(KT_bool include_unprepared)
    {
        KT_vhash *map = nullptr;
        tov_schema__get_converted_col_names_as_vhash(ctx, schema, "t", include_unprepared, &map);
        EXPECT_OK(ctx);
        const std::string json = json_of(ctx, map);
        KT_vhash__free(ctx, map);
        return json;
    }
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

TEST_F(DdlHostLists, NamesAndTheTypesTheyAreCastTo)
{
    EXPECT_EQ(converted_map(0), R"~({"Id":null,"Photo":"VARBINARY(MAX)","Hash":null,"Place":null})~");
    EXPECT_EQ(converted_map(1), R"~({"Id":null,"Photo":"VARBINARY(MAX)","Hash":null,"Place":null})~");

    tov_schema__add_col(ctx, schema, "t", "u", "Later", 0, 0, 0);
    tov_schema__set_col_type_blob(ctx, schema, "t", "u", 0, 0);
    tov_schema__add_col(ctx, schema, "t", "v", "Host", 0, 0, 0);
    tov_schema__set_col_type_unsuported(ctx, schema, "t", "v", "xml");
    EXPECT_EQ(converted_map(0), R"~({"Id":null,"Photo":"VARBINARY(MAX)","Hash":null,"Place":null})~");
    EXPECT_EQ(converted_map(256), R"~({"Id":null,"Photo":"VARBINARY(MAX)","Hash":null,"Place":null,)~"
                                  R"~("Later":"VARBINARY(MAX)","Host":null})~");
}

TEST_F(DdlHostLists, ABlobThatSaysNothingOfItsWidthIsCast)
{
    load_tbl(R"("cols":{"a":{"name":"A","type":{"name":"blob"}},"b":{"name":"B","type":{"name":"loose/blob"}},)"
             R"("c":{"name":"C","type":{"name":"blob","fixed_width":false}},"d":{"name":"D","type":{}}})");
    EXPECT_EQ(converted_map(0), R"~({"A":"VARBINARY(MAX)","B":null,"C":"VARBINARY(MAX)","D":null})~");
    EXPECT_EQ(converted("A"), R"(CAST("q"."A" AS VARBINARY(MAX)))");
    EXPECT_EQ(converted("B"), R"("q"."B")");
}

TEST_F(DdlHostLists, OneColumnByName)
{
    EXPECT_EQ(converted("Id"), R"("q"."Id")");
    EXPECT_EQ(converted("Photo"), R"(CAST("q"."Photo" AS VARBINARY(MAX)))");
    EXPECT_EQ(converted("Hash"), R"("q"."Hash")");
    EXPECT_EQ(converted("Place"), R"("q"."Place")");
}

TEST_F(DdlHostLists, KeyColumns)
{
    EXPECT_EQ(converted_pk(), "");
    tov_schema__set_pk_name(ctx, schema, "t", "PK_T");
    tov_schema__add_to_pk(ctx, schema, "t", "photo");
    EXPECT_EQ(converted_pk(), R"(CAST("q"."Photo" AS VARBINARY(MAX)))");
    tov_schema__add_to_pk(ctx, schema, "t", "hash");
    EXPECT_EQ(converted_pk(), R"(CAST("q"."Photo" AS VARBINARY(MAX)),"q"."Hash")");
    tov_schema__set_colcon_fk(ctx, schema, "t", "id", 0, nullptr, nullptr, "p", nullptr, 0, nullptr, nullptr, 0);
    tov_schema__set_col_type_identity(ctx, schema, "t", "id", nullptr);
    EXPECT_EQ(converted_pk(), R"("q"."Id")");
}

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

TEST_F(DdlHostLists, SelectLists)
{
    for (const select_case &c : select_cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(select(c.mode, c.cols, c.skipped_name, c.use_hash_values, c.look_up_host_types), c.expected);
        EXPECT_OK(ctx);
    }
}

TEST_F(DdlHostLists, TheMapOfConvertedNamesMakesAList)
{
    EXPECT_EQ(select(0, converted_map(0).c_str(), nullptr, 1, 1),
              R"("q"."Id",CAST("q"."Photo" AS VARBINARY(MAX)),"q"."Hash",CAST("q"."Place" AS VARBINARY(MAX)))");
    EXPECT_OK(ctx);
}

TEST_F(DdlHostLists, SpatialWidths)
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

TEST_F(DdlHostLists, Failures)
{
    KT_string *text = nullptr;
    KT_vhash *map = nullptr;
    tov_schema__get_converted_col_name(ctx, schema, "t", "photo", "q", &text);
    expect_failure(KT_ERR_NOT_FOUND, "no column named 'photo' in tbl id 't'");
    tov_schema__get_converted_col_name(ctx, schema, "nope", "Photo", "q", &text);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'nope' not found in schema");
    tov_schema__get_pk_col_names_converted(ctx, schema, "nope", "q", &text);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'nope' not found in schema");
    tov_schema__get_converted_col_names_as_vhash(ctx, schema, "nope", 0, &map);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'nope' not found in schema");

    // A second column of a name.
    tov_schema__add_col(ctx, schema, "t", "u", "Id", 0, 0, 0);
    tov_schema__set_col_type_simple(ctx, schema, "t", "u", "sint32");
    tov_schema__get_converted_col_names_as_vhash(ctx, schema, "t", 1, &map);
    expect_failure(KT_ERR_DUPLICATE_KEY, "key 'Id' is already there");

    // A column whose type was never set.
    tov_schema__add_col(ctx, schema, "t", "new", "New", 1, 0, 0);
    tov_schema__get_converted_col_names_as_vhash(ctx, schema, "t", 0, &map);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "key 'type' is not there");
    tov_schema__get_converted_col_name(ctx, schema, "t", "New", "q", &text);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "key 'type' is not there");
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(map, nullptr);
}

TEST_F(DdlHostLists, SelectListFailures)
{
    EXPECT_EQ(select(0, R"({"Nowhere":"int"})", nullptr, 1, 1), "(null)");
    expect_failure(KT_ERR_NULL_ARGUMENT, "psz_col_id is null");
    tov_schema__add_col(ctx, schema, "t", "new", "New", 1, 0, 0);
    EXPECT_EQ(select(0, R"({"New":"int"})", nullptr, 1, 1), "(null)");
    expect_failure(KT_ERR_KEY_NOT_FOUND, "key 'mssql_col_data_type' is not there");
    tov_schema__set_mssql_col_type_name(ctx, schema, "t", "new", "geometry");
    EXPECT_EQ(select(0, R"({"New":null})", nullptr, 1, 1), "(null)");
    expect_failure(KT_ERR_KEY_NOT_FOUND, "key 'type' is not there");
    EXPECT_EQ(select(0, R"({"New":"int"})", nullptr, 1, 1), R"(CAST("q"."New" AS int))"); // its type is not asked for
    EXPECT_OK(ctx);
    // Any mode but 0 looks for a root.
    EXPECT_EQ(select(7, R"({"New":"int"})", nullptr, 1, 0), "(null)");
    expect_failure(KT_ERR_KEY_NOT_FOUND, "key 'type' is not there");
}

TEST_F(DdlHostLists, EveryAllocationMayFail)
{
    tov_schema__set_pk_name(ctx, schema, "t", "PK_T");
    tov_schema__add_to_pk(ctx, schema, "t", "photo");
    const std::string q(200, 'q');
    sweep_string(
        [&](KT_string **text) { tov_schema__get_converted_col_name(ctx, schema, "t", "Photo", q.c_str(), text); });
    sweep_string([&](KT_string **text) { tov_schema__get_pk_col_names_converted(ctx, schema, "t", q.c_str(), text); });
    sweep_vhash([&](KT_vhash **map) { tov_schema__get_converted_col_names_as_vhash(ctx, schema, "t", 1, map); });

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
