#include "document/tov_parse_defin_private.hpp"

#include "ddl_test.hpp"

namespace {

using list_operation = void (*)(KT_context *, tov_schema *, const char *tbl_id, KT_string **result);

template <auto Operation> void with_q(KT_context *ctx, tov_schema *schema, const char *tbl_id, KT_string **result)
{
    Operation(ctx, schema, tbl_id, "q", result);
}

constexpr list_operation ids = tov_schema__get_col_ids_comma_separated;
constexpr list_operation names = tov_schema__get_col_names_comma_separated;
constexpr list_operation qualified = with_q<tov_schema__get_col_names_comma_separated_and_qualified>;
constexpr list_operation without_pk = tov_schema__get_col_names_comma_separated_without_pk;
constexpr list_operation pk_names = tov_schema__get_pk_col_names_comma_separated;
constexpr list_operation pk_not_fixed = tov_schema__get_pk_col_names_comma_separated__no_fixed_width_cols;
constexpr list_operation pk_prefixed = with_q<tov_schema__get_pk_col_names_comma_separated_and_prefixed>;
constexpr list_operation pk_qualified = with_q<tov_schema__get_pk_col_names_comma_separated_and_qualified>;

const list_operation all_lists[] = {ids,      names,        qualified,   without_pk,
                                    pk_names, pk_not_fixed, pk_prefixed, pk_qualified};

class DdlLists : public DdlTest {
  protected:
    // A table "t" with the columns A, B and C, ids in lower case, and a key when its column ids are given.
    void make_table(std::initializer_list<const char *> pk = {})
    {
        reset_schema();
        tov_schema__add_tbl(ctx, schema, "t", "T", 1);
        for (const char *name : {"A", "B", "C"}) {
            tov_schema__add_col(ctx, schema, "t", name, name, 1, 0, 0);
            tov_schema__set_col_type_simple(ctx, schema, "t", name, "sint32");
        }
        if (pk.size() > 0)
            tov_schema__set_pk_name(ctx, schema, "t", "PK_T");
        for (const char *col_id : pk)
            tov_schema__add_to_pk(ctx, schema, "t", col_id);
        ASSERT_OK(ctx);
    }
    void set_text(const char *col_id, KT_bool fixed_width)
    {
        tov_schema__set_col_type_text(ctx, schema, "t", col_id, nullptr, nullptr, 0, 0, 0, 0, 0, 0, fixed_width, 0, 9);
    }
    std::string list(list_operation get, const char *tbl_id = "t")
    {
        KT_string *text = nullptr;
        get(ctx, schema, tbl_id, &text);
        EXPECT_OK(ctx);
        return take(ctx, text);
    }
};

TEST_F(DdlLists, AllColumns)
{
    make_table({"b"});
    EXPECT_EQ(list(ids), R"("a","b","c")");
    EXPECT_EQ(list(names), R"("A","B","C")");
    EXPECT_EQ(list(names, "T"), R"("A","B","C")");
    EXPECT_EQ(list(qualified), R"("q"."A","q"."B","q"."C")");
}

TEST_F(DdlLists, ColumnsBesideTheKey)
{
    make_table({"b"});
    EXPECT_EQ(list(without_pk), R"("A","C")");
    make_table({"a"});
    EXPECT_EQ(list(without_pk), R"("B","C")");
    make_table({"c", "a"});
    EXPECT_EQ(list(without_pk), R"("B")");
    make_table({"c", "a", "b"});
    EXPECT_EQ(list(without_pk), "");
    make_table();
    EXPECT_EQ(list(without_pk), R"("A","B","C")");
    make_table({"B"}); // key ids are compared as they are stored
    EXPECT_EQ(list(without_pk), R"("A","B","C")");
}

TEST_F(DdlLists, KeyColumnsComeInKeyOrder)
{
    make_table({"c", "a"});
    EXPECT_EQ(list(pk_names), R"("C","A")");
    EXPECT_EQ(list(pk_not_fixed), R"("C","A")");
    EXPECT_EQ(list(pk_prefixed), R"("qC","qA")");
    EXPECT_EQ(list(pk_qualified), R"("q"."C","q"."A")");
}

TEST_F(DdlLists, AnIdentityColumnIsTheWholeKey)
{
    make_table({"c", "a"});
    tov_schema__set_col_type_identity(ctx, schema, "t", "b", nullptr);
    EXPECT_EQ(list(pk_names), R"("B")");
    EXPECT_EQ(list(pk_not_fixed), R"("B")");
    EXPECT_EQ(list(pk_prefixed), R"("qB")");
    EXPECT_EQ(list(pk_qualified), R"("q"."B")");
    EXPECT_EQ(list(without_pk), R"("A","C")");
}

TEST_F(DdlLists, FixedWidthTextIsLeftOut)
{
    make_table({"a", "b", "c"});
    set_text("a", 1);
    EXPECT_EQ(list(pk_not_fixed), R"("B","C")");
    set_text("b", 1);
    EXPECT_EQ(list(pk_not_fixed), R"("C")");
    set_text("a", 0);
    EXPECT_EQ(list(pk_not_fixed), R"("A","C")");
    tov_schema__set_col_type_blob(ctx, schema, "t", "b", 1, 16); // fixed, but no text
    EXPECT_EQ(list(pk_not_fixed), R"("A","B","C")");
}

TEST_F(DdlLists, PrefixesAndQualifiersAreWrittenAsTheyStand)
{
    make_table({"a"});
    KT_string *text = nullptr;
    tov_schema__get_pk_col_names_comma_separated_and_prefixed(ctx, schema, "t", "old_", &text);
    EXPECT_EQ(take(ctx, text), R"("old_A")");
    text = nullptr;
    tov_schema__get_pk_col_names_comma_separated_and_prefixed(ctx, schema, "t", "", &text);
    EXPECT_EQ(take(ctx, text), R"("A")");
    text = nullptr;
    tov_schema__get_pk_col_names_comma_separated_and_qualified(ctx, schema, "t", "main\".\"x %s", &text);
    EXPECT_EQ(take(ctx, text), R"("main"."x %s"."A")");
}

TEST_F(DdlLists, ATableWithoutColumnsOrKeyGivesNothing)
{
    tov_schema__add_tbl(ctx, schema, "t", "T", 1);
    for (const list_operation get : all_lists)
        EXPECT_EQ(list(get), "");
    tov_schema__set_pk_name(ctx, schema, "t", "PK_T");
    for (const list_operation get : all_lists)
        EXPECT_EQ(list(get), "");
}

TEST_F(DdlLists, UnpreparedColumnsAreNotListed)
{
    make_table();
    tov_schema__add_col(ctx, schema, "t", "u", "U", 0, 0, 0);
    EXPECT_EQ(list(names), R"("A","B","C")");
    EXPECT_EQ(list(ids), R"("a","b","c")");
}

TEST_F(DdlLists, NamesAndIdsAsAMap)
{
    make_table();
    KT_vhash *map = nullptr;
    tov_schema__get_col_names_as_vhash(ctx, schema, "t", &map);
    EXPECT_OK(ctx);
    EXPECT_EQ(json_of(ctx, map), R"({"A":"a","B":"b","C":"c"})");
    KT_vhash__free(ctx, map);

    map = nullptr;
    tov_schema__set_col_name(ctx, schema, "t", "c", "A");
    tov_schema__get_col_names_as_vhash(ctx, schema, "t", &map);
    expect_failure(KT_ERR_DUPLICATE_KEY, "key 'A' is already there");
    EXPECT_EQ(map, nullptr);

    tov_schema__set_col_name(ctx, schema, "t", "c", "a"); // names differ in case
    tov_schema__get_col_names_as_vhash(ctx, schema, "t", &map);
    EXPECT_EQ(json_of(ctx, map), R"({"A":"a","B":"b","a":"c"})");
    KT_vhash__free(ctx, map);

    map = nullptr;
    tov_schema__get_col_names_as_vhash(ctx, schema, "nope", &map);
    expect_failure(KT_ERR_NOT_FOUND, "table id 'nope' not found in schema");
    EXPECT_EQ(map, nullptr);
}

TEST_F(DdlLists, Failures)
{
    const struct {
        const char *name;
        list_operation get;
        const char *members;
        uint64_t code;
        const char *description;
    } cases[] = {
        {"a column without name", names, R"("cols":{"a":{}})", KT_ERR_KEY_NOT_FOUND, "no key 'name'"},
        {"a column without name, qualified", qualified, R"("cols":{"a":{}})", KT_ERR_KEY_NOT_FOUND, "no key 'name'"},
        {"an id that no lookup reaches", names, R"("cols":{"A":{"name":"A"}})", KT_ERR_NOT_FOUND,
         "col id 'A' not found in tbl id 't' in schema"},
        {"a column without type may be the identity", without_pk, R"("cols":{"a":{"name":"A"}})", KT_ERR_KEY_NOT_FOUND,
         "no key 'type'"},
        {"the same for the key", pk_names, R"("cols":{"a":{"name":"A"}})", KT_ERR_KEY_NOT_FOUND, "no key 'type'"},
        {"a key of an unknown column", pk_names, R"("cols":{},"pk":{"cols":{"x":null}})", KT_ERR_NOT_FOUND,
         "col id 'x' not found in tbl id 't' in schema"},
        {"the same with a prefix", pk_prefixed, R"("cols":{},"pk":{"cols":{"x":null}})", KT_ERR_NOT_FOUND,
         "col id 'x' not found in tbl id 't' in schema"},
        {"the same with a qualifier", pk_qualified, R"("cols":{},"pk":{"cols":{"x":null}})", KT_ERR_NOT_FOUND,
         "col id 'x' not found in tbl id 't' in schema"},
        {"key text without width", pk_not_fixed,
         R"("cols":{"a":{"name":"A","type":{"name":"text"}}},"pk":{"cols":{"a":null}})", KT_ERR_KEY_NOT_FOUND,
         "no key 'width'"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        load_tbl(c.members);
        KT_string *text = nullptr;
        c.get(ctx, schema, "t", &text);
        expect_failure(c.code, c.description);
        EXPECT_EQ(text, nullptr);
    }
    for (const list_operation get : all_lists) {
        KT_string *text = nullptr;
        get(ctx, schema, "nope", &text);
        expect_failure(KT_ERR_NOT_FOUND, "table id 'nope' not found in schema");
        EXPECT_EQ(text, nullptr);
    }
    load_tbl(R"("cols":{"A":{"name":"A"}})"); // the list of ids looks no column up
    EXPECT_EQ(list(ids), R"("A")");
}

TEST_F(DdlLists, EveryAllocationMayFail)
{
    make_table({"c", "a"});
    const std::string name(200, 'A');
    for (const char *col_id : {"a", "b"})
        tov_schema__set_col_name(ctx, schema, "t", col_id, (name + col_id).c_str());
    for (const list_operation get : all_lists)
        sweep_string([&](KT_string **text) { get(ctx, schema, "t", text); });
    sweep_vhash([&](KT_vhash **map) { tov_schema__get_col_names_as_vhash(ctx, schema, "t", map); });
}

TEST_F(DdlLists, SqliteReadsTheLists)
{
    make_table({"c", "a"});
    sqlite_database db;
    EXPECT_EQ(db.run("CREATE TABLE T (A, B, C)"), "");
    EXPECT_EQ(db.run("INSERT INTO T (" + list(names) + ") VALUES (1, 2, 3)"), "");
    EXPECT_EQ(db.run("UPDATE T SET (" + list(without_pk) + ") = (SELECT 5)"), "");
    EXPECT_EQ(db.ask("SELECT max(" + list(qualified) + ") FROM T AS q"), "5");
    EXPECT_EQ(db.ask("SELECT 1 FROM T AS q WHERE (" + list(pk_qualified) + ") = (3, 1)"), "1");
}

} // namespace
