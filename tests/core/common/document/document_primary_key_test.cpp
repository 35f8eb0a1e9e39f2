#include "document_support.hpp"

// An identity column Id after another column, and a "pk" record that lists CustomerId.
static constexpr char identity_and_pk[] =
    R"({"tbls":{"t":{"cols":{"customerid":{"name":"CustomerId","type":{"name":"sint32"}},)"
    R"("id":{"name":"ID","type":{"name":"identity","constraint_name":"PK_T"}}},)"
    R"("pk":{"name":"PK_T","cols":{"CustomerId":null}}}}})";
// A primary key of two columns, in another order than the table's.
static constexpr char two_pk_cols[] =
    R"({"tbls":{"t":{"cols":{"a":{"name":"A name","type":{"name":"sint32"}},"b":{"type":{"name":"guid"}}},)"
    R"("pk":{"name":"PK_T","cols":{"b":null,"A":null}}}}})";
static constexpr char no_pk[] = R"({"tbls":{"t":{"cols":{"a":{"name":"A","type":{"name":"sint32"}}}}}})";
// The first column has no type.
static constexpr char no_type_first[] =
    R"({"tbls":{"t":{"cols":{"a":{},"id":{"type":{"name":"identity"}}},"pk":{"cols":{"a":null}}}}})";
static constexpr char no_type_last[] =
    R"({"tbls":{"t":{"cols":{"id":{"name":"Id","type":{"name":"identity"}},"a":{}}}}})";

TEST_F(DocumentTest, AnIntegerPrimaryKeyIsAnIdentityColumn)
{
    struct identity_case {
        const char *type;
        KT_bool is_integer_pk;
        const char *constraint_name;
    };
    static constexpr identity_case cases[] = {
        {R"({"name":"identity"})", 1, nullptr},
        {R"({"name":"identity","constraint_name":"PK"})", 1, "PK"},
        {R"({"name":"sint64","constraint_name":"PK"})", 0, nullptr},
        {R"({"name":"Identity"})", 0, nullptr},
        {R"({"name":"identity "})", 0, nullptr},
    };
    for (const identity_case &c : cases) {
        SCOPED_TRACE(c.type);
        load((R"({"tbls":{"t":{"cols":{"c":{"type":)" + std::string(c.type) + "}}}}}").c_str());
        KT_bool is_integer_pk = 77;
        const char *constraint_name = untouched;
        tov_schema__get_col_is_integer_primary_key(ctx, schema, "T", "C", &is_integer_pk, &constraint_name);
        EXPECT_OK(ctx);
        EXPECT_EQ(is_integer_pk, c.is_integer_pk);
        EXPECT_STREQ(constraint_name, c.constraint_name);
        is_integer_pk = 77;
        tov_schema__get_col_is_integer_primary_key(ctx, schema, "T", "C", &is_integer_pk, nullptr);
        EXPECT_EQ(is_integer_pk, c.is_integer_pk);
        const char *col_id = untouched;
        tov_schema__has_integer_primary_key(ctx, schema, "T", &col_id);
        EXPECT_OK(ctx);
        EXPECT_STREQ(col_id, c.is_integer_pk ? "c" : nullptr);
    }
}

TEST_F(DocumentTest, TheFirstIdentityColumnIsTheIntegerPrimaryKey)
{
    load(R"({"tbls":{"t":{"cols":{"a":{"type":{"name":"guid"}},"b":{"type":{"name":"identity"}},)"
         R"("c":{"type":{"name":"identity"}},"d":{}}}}})");
    const char *col_id = nullptr;
    tov_schema__has_integer_primary_key(ctx, schema, "T", &col_id);
    EXPECT_OK(ctx);
    EXPECT_STREQ(col_id, "b");
}

// The answer is remembered, so it is asked for before and after everything that may change it.
TEST_F(DocumentTest, TheIntegerPrimaryKeyFollowsEveryChange)
{
    struct change_case {
        const char *name;
        call change;
        const char *col_id; // of table t afterwards
    };
    static constexpr change_case cases[] = {
        {"another table is asked about", CALL(tov_schema__has_integer_primary_key(c, s, "u", &o.text)), nullptr},
        {"a column becomes the identity column", CALL(tov_schema__set_col_type_identity(c, s, "t", "b", nullptr)), "b"},
        {"an earlier column does too", CALL(tov_schema__set_col_type_identity(c, s, "t", "a", nullptr)), "a"},
        {"that one becomes another type", CALL(tov_schema__set_col_type_simple(c, s, "t", "a", "guid")), "b"},
        {"a name changes", CALL(tov_schema__set_col_name(c, s, "t", "b", "N")), "b"},
        {"the last identity column becomes text",
         CALL(tov_schema__set_col_type_text(c, s, "t", "b", "coll", nullptr, 0, 0, 0, 0, 0, 0, 0, 0, 0)), nullptr},
    };
    load(R"({"tbls":{"t":{"cols":{"a":{"type":{"name":"guid"}},"b":{"type":{"name":"guid"}}}},)"
         R"("u":{"cols":{"x":{"type":{"name":"identity"}}}}}})");
    for (const change_case &c : cases) {
        SCOPED_TRACE(c.name);
        const char *col_id = untouched;
        tov_schema__has_integer_primary_key(ctx, schema, "t", &col_id);
        outputs o;
        c.change(ctx, schema, o);
        tov_schema__has_integer_primary_key(ctx, schema, "t", &col_id);
        EXPECT_OK(ctx);
        EXPECT_STREQ(col_id, c.col_id);
    }
    // A new column without a type makes the question fail, although nothing else changed.
    tov_schema__add_col(ctx, schema, "t", "c", "C", 1, 0, 0);
    const char *col_id = untouched;
    tov_schema__has_integer_primary_key(ctx, schema, "t", &col_id);
    EXPECT_FAILED(ctx, KT_ERR_KEY_NOT_FOUND);
    EXPECT_EQ(col_id, untouched);
    reset();
}

TEST_F(DocumentTest, AnUnpreparedIdentityColumnIsNoPrimaryKey)
{
    load_trees(no_pk, R"({"unprep-cols":{"t":{"id":{"type":{"name":"identity"}}}}})");
    const char *col_id = untouched;
    tov_schema__has_integer_primary_key(ctx, schema, "t", &col_id);
    EXPECT_EQ(col_id, nullptr);
    uint32_t count = 77;
    tov_schema__count_pk_cols(ctx, schema, "t", &count);
    EXPECT_EQ(count, 0u);
    EXPECT_OK(ctx);
}

// A pair of "cols" without a record leads to the unprepared columns, which are kept under the table's id as spelled.
TEST_F(DocumentTest, TheAnswerForOneSpellingIsNotGivenForAnother)
{
    load_trees(R"({"tbls":{"t":{"cols":{"c":null}}}})", R"({"unprep-cols":{"t":{"c":{"type":{"name":"identity"}}}}})");
    for (const char *tbl_id : {"T", "t", "T"}) {
        SCOPED_TRACE(tbl_id);
        uint32_t count = 77;
        tov_schema__count_pk_cols(ctx, schema, tbl_id, &count);
        if (*tbl_id == 't') {
            EXPECT_OK(ctx);
            EXPECT_EQ(count, 1u);
        } else {
            EXPECT_ERROR(ctx, KT_ERR_NOT_FOUND, "col id 'c' not found in tbl id 'T' in schema");
        }
        reset();
    }
}

TEST_F(DocumentTest, WhatThePrimaryKeyIs)
{
    struct pk_case {
        const char *name;
        const char *document;
        const char *cols; // "id (name)" of each column that the count announces
    };
    static constexpr pk_case cases[] = {
        {"an integer primary key stands alone", identity_and_pk, "id (ID) "},
        {"the columns of the record, in its order", two_pk_cols, "b (null) A (A name) "},
        {"no primary key", no_pk, ""},
        {"a record without columns", R"({"tbls":{"t":{"cols":{},"pk":{"name":"PK"}}}})", ""},
        {"a null record is none", R"({"tbls":{"t":{"pk":null}}})", ""},
        {"columns after the identity column need no type", no_type_last, "id (Id) "},
    };
    for (const pk_case &c : cases) {
        SCOPED_TRACE(c.name);
        load(c.document);
        uint32_t count = 77;
        std::string cols;
        tov_schema__count_pk_cols(ctx, schema, "T", &count);
        for (uint32_t n = 0; n < count; n++) {
            const char *col_id = nullptr;
            const char *col_name = untouched;
            tov_schema__get_nth_pk_col(ctx, schema, "T", n, &col_id, &col_name);
            ASSERT_OK(ctx);
            cols += std::string(col_id) + " (" + (col_name ? col_name : "null") + ") ";
            // Each output on its own.
            const char *alone = untouched;
            tov_schema__get_nth_pk_col(ctx, schema, "T", n, &alone, nullptr);
            EXPECT_EQ(alone, col_id);
            tov_schema__get_nth_pk_col(ctx, schema, "T", n, nullptr, &alone);
            EXPECT_EQ(alone, col_name);
        }
        EXPECT_OK(ctx);
        EXPECT_EQ(cols, c.cols);
    }
}

TEST_F(DocumentTest, CountingCreatesTheColumnsOfARecordThatHasNone)
{
    load(R"({"tbls":{"t":{"pk":{"name":"PK"}}}})");
    uint32_t count = 77;
    tov_schema__count_pk_cols(ctx, schema, "t", &count);
    EXPECT_OK(ctx);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(document(), R"({"tbls":{"t":{"pk":{"name":"PK","cols":{}},"cols":{}}}})");
}

TEST_F(DocumentTest, PastTheFirstTheRecordIsReadInAnyTable)
{
    load(
        R"({"tbls":{"t":{"cols":{"id":{"type":{"name":"identity"}},"b":{"name":"B"}},"pk":{"cols":{"a":null,"b":null}}}}})");
    const char *col_id = nullptr;
    const char *col_name = nullptr;
    tov_schema__get_nth_pk_col(ctx, schema, "t", 0, &col_id, nullptr);
    EXPECT_STREQ(col_id, "id");
    tov_schema__get_nth_pk_col(ctx, schema, "t", 1, &col_id, &col_name);
    EXPECT_STREQ(col_id, "b");
    EXPECT_STREQ(col_name, "B");
    EXPECT_OK(ctx);
}

TEST_F(DocumentTest, ColumnIdsOfThePrimaryKeyMatchExactly)
{
    struct in_pk_case {
        const char *document;
        const char *col_id;
        KT_bool is_in_pk;
    };
    static constexpr in_pk_case cases[] = {
        {identity_and_pk, "id", 1},   {identity_and_pk, "ID", 0}, {identity_and_pk, "CustomerId", 0},
        {identity_and_pk, "none", 0}, {two_pk_cols, "b", 1},      {two_pk_cols, "A", 1},
        {two_pk_cols, "a", 0},        {two_pk_cols, "B", 0},      {no_pk, "a", 0},
        {no_type_last, "id", 1},      {no_type_last, "a", 0},
    };
    for (const in_pk_case &c : cases) {
        SCOPED_TRACE(c.col_id);
        load(c.document);
        KT_bool is_in_pk = 77;
        tov_schema__is_col_id_in_pk(ctx, schema, "T", c.col_id, &is_in_pk);
        EXPECT_OK(ctx);
        EXPECT_EQ(is_in_pk, c.is_in_pk);
    }
}

TEST_F(DocumentTest, PrimaryKeysFailForUnknownTables)
{
    static constexpr call operations[] = {
        CALL(tov_schema__get_col_is_integer_primary_key(c, s, "X", "a", &o.flag, &o.text)),
        CALL(tov_schema__has_integer_primary_key(c, s, "X", &o.text)),
        CALL(tov_schema__count_pk_cols(c, s, "X", &o.count)),
        CALL(tov_schema__get_nth_pk_col(c, s, "X", 0, &o.text, &o.text2)),
        CALL(tov_schema__is_col_id_in_pk(c, s, "X", "a", &o.flag)),
    };
    for (const call run : operations) {
        SCOPED_TRACE(&run - operations);
        const failure_case cases[] = {
            {"unknown table", no_pk, nullptr, KT_ERR_NOT_FOUND, "table id 'X' not found in schema", run}};
        expect_failures(cases);
    }
}

TEST_F(DocumentTest, PrimaryKeysFail)
{
    static constexpr char wrong_types[] = R"({"tbls":{"t":{"cols":{"a":{"type":{}},"b":{"type":{"name":1}},)"
                                          R"("c":{"type":{"name":"identity","constraint_name":1}}}},"u":{"pk":1}}})";
    static constexpr failure_case cases[] = {
        {"an unknown column", no_pk, nullptr, KT_ERR_NOT_FOUND, "col id 'X' not found in tbl id 'T' in schema",
         CALL(tov_schema__get_col_is_integer_primary_key(c, s, "T", "X", &o.flag, &o.text))},
        {"a column without a type", no_type_first, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_col_is_integer_primary_key(c, s, "t", "a", &o.flag, &o.text))},
        {"a type without a name", wrong_types, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_col_is_integer_primary_key(c, s, "t", "a", &o.flag, &o.text))},
        {"a type name of another type", wrong_types, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_col_is_integer_primary_key(c, s, "t", "b", &o.flag, &o.text))},
        {"a constraint name of another type", wrong_types, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__get_col_is_integer_primary_key(c, s, "t", "c", &o.flag, &o.text))},
        {"finding past a column without a type", no_type_first, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__has_integer_primary_key(c, s, "t", &o.text))},
        {"counting past a column without a type", no_type_first, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__count_pk_cols(c, s, "t", &o.count))},
        {"the 0-th past a column without a type", no_type_first, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_pk_col(c, s, "t", 0, &o.text, &o.text2))},
        {"membership past a column without a type", no_type_first, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__is_col_id_in_pk(c, s, "t", "a", &o.flag))},
        {"the 0-th of no primary key", no_pk, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__get_nth_pk_col(c, s, "t", 0, &o.text, &o.text2))},
        {"the first beyond an integer primary key without a record", no_type_last, nullptr, KT_ERR_KEY_NOT_FOUND,
         nullptr, CALL(tov_schema__get_nth_pk_col(c, s, "t", 1, &o.text, &o.text2))},
        {"one beyond the last", two_pk_cols, nullptr, KT_ERR_OUT_OF_RANGE, nullptr,
         CALL(tov_schema__get_nth_pk_col(c, s, "t", 2, &o.text, &o.text2))},
        {"the name of a column that the record alone knows", R"({"tbls":{"t":{"pk":{"cols":{"X":null}}}}})", nullptr,
         KT_ERR_NOT_FOUND, "col id 'X' not found in tbl id 'T' in schema",
         CALL(tov_schema__get_nth_pk_col(c, s, "T", 0, &o.text, &o.text2))},
        {"a record of another type", wrong_types, nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__count_pk_cols(c, s, "u", &o.count))},
    };
    expect_failures(cases);
}
