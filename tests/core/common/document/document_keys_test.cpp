#include "document_support.hpp"

namespace {

constexpr char keys_json[] = R"({"tbls":{"t":{"name":"T","cols":{)"
                             R"("a":{"name":"A","type":{"name":"sint32"},"fk":{"ref_tbl_id":"p"}},)"
                             R"("b":{"name":"B","type":{"name":"sint32"},"fk":{"name":"FK_B","ref_tbl_id":"p",)"
                             R"("ref_col_id":"id","deferred":true,"on_delete":"no action","on_update":"CASCADE"}}},)"
                             R"("pk":{"name":"PK","cols":{"b":null,"a":null}},)"
                             R"("uniques":{"u":{"a":null,"b":null},"v":{}},)"
                             R"("foreignkeys":{"f":{"cols":{"a":"x","b":"y"},"ref_tbl_id":"p"},)"
                             R"("g":{"cols":{},"name":"FK_G","ref_tbl_id":"q","deferred":false,"on_delete":"SET NULL"})"
                             R"(}}}})";

struct listing_case {
    const char *name;
    const char *document;
    uint32_t kinds;
    const char *expected; // the list's elements as JSON, with blanks between
};

const listing_case listing_cases[] = {
    {"the primary key", keys_json, TOV_KEYS_PRIMARY, R"({"kind":"primary","name":"PK","cols":["b","a"]})"},
    {"unique constraints", keys_json, TOV_KEYS_UNIQUE,
     R"({"kind":"unique","id":"u","cols":["a","b"]} {"kind":"unique","id":"v","cols":[]})"},
    {"foreign keys of columns, then of the table", keys_json, TOV_KEYS_FOREIGN,
     R"({"kind":"foreign","cols":["a"],"ref-tbl":"p","ref-cols":[],"deferred":false})"
     R"( {"kind":"foreign","name":"FK_B","cols":["b"],"ref-tbl":"p","ref-cols":["id"],"deferred":true,)"
     R"("on-update":"CASCADE"})"
     R"( {"kind":"foreign","id":"f","cols":["a","b"],"ref-tbl":"p","ref-cols":["x","y"],"deferred":false})"
     R"( {"kind":"foreign","id":"g","name":"FK_G","cols":[],"ref-tbl":"q","ref-cols":[],"deferred":false,)"
     R"("on-delete":"SET NULL"})"},
    {"an identity column is the primary key",
     R"({"tbls":{"t":{"cols":{"i":{"type":{"name":"identity","constraint_name":"PK_I"}},"a":{"type":{}}},)"
     R"("pk":{"name":"PK","cols":{"a":null}}}}})",
     TOV_KEYS_PRIMARY, R"({"kind":"primary","name":"PK_I","cols":["i"]})"},
    {"a primary key without a name", R"({"tbls":{"t":{"pk":{"cols":{"a":null}}}}})", TOV_KEYS_PRIMARY,
     R"({"kind":"primary","cols":["a"]})"},
    {"kinds in their order", R"({"tbls":{"t":{"uniques":{"u":{"a":null}},"pk":{"cols":{"a":null}}}}})",
     TOV_KEYS_PRIMARY | TOV_KEYS_UNIQUE | TOV_KEYS_FOREIGN,
     R"({"kind":"primary","cols":["a"]} {"kind":"unique","id":"u","cols":["a"]})"},
    {"a key without what every key has", R"({"tbls":{"t":{"foreignkeys":{"f":{}}}}})", TOV_KEYS_FOREIGN,
     R"({"kind":"foreign","id":"f","cols":[],"ref-cols":[],"deferred":false})"},
    {"no keys", one_col, TOV_KEYS_UNIQUE | TOV_KEYS_FOREIGN, ""},
    {"no kinds", keys_json, 0, ""},
};

std::string listed(KT_context *ctx, const KT_varray *keys)
{
    uint32_t count = 0;
    std::string text;
    if (keys)
        KT_varray__count(ctx, keys, &count);
    for (uint32_t n = 0; n < count; n++) {
        KT_vhash *key = nullptr;
        KT_varray__get__vhash(ctx, keys, n, &key);
        text += (n ? " " : "") + json_of(ctx, key);
    }
    return text;
}

void list_and_free(KT_context *ctx, tov_schema *schema, const char *tbl_id, uint32_t kinds)
{
    KT_varray *keys = nullptr;
    tov_schema__list_keys(ctx, schema, tbl_id, kinds, &keys);
    EXPECT_TRUE(!KT_context__has_err(ctx) || !keys);
    KT_context__push_level(ctx);
    KT_varray__free(ctx, keys);
    KT_context__pop_level(ctx);
}

} // namespace

TEST_F(DocumentTest, KeysOfAllKindsAreListed)
{
    for (const listing_case &c : listing_cases) {
        SCOPED_TRACE(c.name);
        load(c.document);
        KT_varray *keys = nullptr;
        tov_schema__list_keys(ctx, schema, "T", c.kinds, &keys);
        EXPECT_OK(ctx);
        EXPECT_EQ(listed(ctx, keys), c.expected);
        EXPECT_EQ(keys == nullptr, *c.expected == '\0');
        KT_varray__free(ctx, keys);
    }
}

TEST_F(DocumentTest, KeysOfAnUnknownTableOrOfAnotherTypeFail)
{
    static constexpr failure_case cases[] = {
        {"unknown table", one_col, nullptr, KT_ERR_NOT_FOUND, "table id 'x' not found in schema",
         CALL(list_and_free(c, s, "x", TOV_KEYS_UNIQUE))},
        {"a unique constraint", R"({"tbls":{"t":{"uniques":{"u":1}}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(list_and_free(c, s, "t", TOV_KEYS_UNIQUE))},
        {"a column", R"({"tbls":{"t":{"foreignkeys":{"f":{"cols":{"a":1}}}}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(list_and_free(c, s, "t", TOV_KEYS_FOREIGN))},
        {"an action", R"({"tbls":{"t":{"cols":{"a":{"fk":{"on_delete":1}}}}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(list_and_free(c, s, "t", TOV_KEYS_FOREIGN))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, ListingKeysSurvivesShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"all keys", keys_json, nullptr, CALL(list_and_free(c, s, "t", 7))},
    };
    expect_survival(cases);
}
