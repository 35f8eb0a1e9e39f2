// The plain names that the static form of the library carries for code that declares them itself. This test declares
// them as such code does, and asks each for something that only the right function answers so.

#include "kt_sqlite_functions.h"
#include "schema_test.hpp"

#undef sqlite3KeywordCode
#undef sqlite3CtypeMap
#undef sqlite3UpperToLower

extern "C" {
extern const unsigned char sqlite3CtypeMap[256];
extern const unsigned char sqlite3UpperToLower[256];
int sqlite3KeywordCode(const char *text, int n);
extern const unsigned char tov_sqlite3CtypeMap[256];
extern const unsigned char tov_sqlite3UpperToLower[256];
int32_t get_token(const char *text, int32_t *code);
int32_t keywordCode(const char *text, int32_t n);
void parse_mssql_defval_func_no_args(KT_context *ctx, const char *host_text, char **name);
void is_valid_constant(KT_context *ctx, const char *abstract_type, const char *literal, KT_bool *ok);
void int_default_valid(KT_context *ctx, const char *literal, const char *abstract_type, int64_t low, int64_t high,
                       KT_bool *ok);
void sqlite_fun__exec(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *sql);
void sqlite_fun__execf(KT_context *ctx, const KT_sqlite_functions *fns, sqlite3 *connection, const char *format, ...);
void get_col_type_field_bool(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                             const char *field, KT_bool *has, KT_bool *value);
void get_col_type_field_int32(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *col_id,
                              const char *field, int32_t absent_value, int32_t *value);
void my_diff_loop_tbls(KT_context *ctx, tov_schema *x, tov_schema *y, KT_varray **missing, KT_varray **same,
                       KT_varray **changed);
void my_diff_loop_cols(KT_context *ctx, tov_schema *x, tov_schema *y, const char *tbl_id, KT_varray **missing,
                       KT_varray **both);
}

using PlainNames = SchemaTest;

TEST_F(PlainNames, AreTheExportedTables)
{
    EXPECT_NE(sqlite3CtypeMap, tov_sqlite3CtypeMap);
    for (int byte = 0; byte < 256; byte++) {
        EXPECT_EQ(sqlite3CtypeMap[byte], tov_sqlite3CtypeMap[byte]);
        EXPECT_EQ(sqlite3UpperToLower[byte], tov_sqlite3UpperToLower[byte]);
    }
    EXPECT_EQ(sqlite3KeywordCode("Select", 6), 116);
}

TEST_F(PlainNames, ReadTokens)
{
    int32_t code = 0;
    EXPECT_EQ(get_token("name = 1", &code), 4);
    EXPECT_EQ(code, 26);
    EXPECT_EQ(keywordCode("select", 6), 116);
    char *name = nullptr;
    parse_mssql_defval_func_no_args(ctx, "(getdate())", &name);
    EXPECT_STREQ(name, "getdate");
    _kt_free(ctx, name);
}

TEST_F(PlainNames, TryDefaults)
{
    KT_bool ok = 0;
    is_valid_constant(ctx, "sint32", "5", &ok);
    EXPECT_EQ(ok, 1);
    int_default_valid(ctx, "5", "sint32", 6, 7, &ok);
    EXPECT_EQ(ok, 0);
    const KT_sqlite_functions *fns = tov__get_sqlite_functions();
    sqlite3 *connection = nullptr;
    fns->open_plain(":memory:", &connection, 6);
    sqlite_fun__exec(ctx, fns, connection, "CREATE TABLE t (a)");
    sqlite_fun__execf(ctx, fns, connection, "INSERT INTO t VALUES (%d), (%d)", 1, 2);
    EXPECT_OK(ctx);
    EXPECT_EQ(fns->changes(connection), 2);
    fns->close(connection);
}

TEST_F(PlainNames, ReadTheSchema)
{
    load(R"({"tbls":{"t":{"cols":{"c":{"type":{"name":"text","unicode":true,"width":7}}}}}})");
    KT_bool has = 0;
    KT_bool value = 0;
    int32_t width = 0;
    get_col_type_field_bool(ctx, schema, "t", "c", "unicode", &has, &value);
    get_col_type_field_int32(ctx, schema, "t", "c", "width", -1, &width);
    EXPECT_EQ(has + value + width, 9);
    KT_varray *missing = nullptr;
    KT_varray *both = nullptr;
    my_diff_loop_tbls(ctx, schema, nullptr, &missing, nullptr, nullptr);
    my_diff_loop_cols(ctx, schema, schema, "t", nullptr, &both);
    for (KT_varray *list : {missing, both}) {
        uint32_t count = 0;
        KT_varray__count(ctx, list, &count);
        EXPECT_EQ(count, 1u);
        KT_varray__free(ctx, list);
    }
}
