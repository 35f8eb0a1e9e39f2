#include "document/tov_parse_defin_private.hpp"

#include "ddl_host_test.hpp"

namespace {

class DdlHostLists : public DdlHostTest {
  protected:
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
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'type'");
    tov_schema__get_converted_col_name(ctx, schema, "t", "New", "q", &text);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'type'");
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(map, nullptr);
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
}

} // namespace
