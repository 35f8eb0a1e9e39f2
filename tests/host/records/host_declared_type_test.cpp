// What a declaration makes of a column.
#include "records/host_declared_type.hpp"

#include <gtest/gtest.h>

TEST(HostDeclaredTypeTest, Sizes)
{
    const struct {
        host_declared_type type;
        const char *column; // system type, user type, bytes, precision, scale
    } cases[] = {
        {{"int", {}, {}, {}}, "int int 4 10 0"},
        {{"INT", {}, {}, {}}, "int int 4 10 0"},
        {{"nvarchar", 50, {}, {}}, "nvarchar nvarchar 100 0 0"},
        {{"nvarchar", -1, {}, {}}, "nvarchar nvarchar -1 0 0"},
        {{"nchar", {}, {}, {}}, "nchar nchar 2 0 0"},
        {{"varchar", 8000, {}, {}}, "varchar varchar 8000 0 0"},
        {{"varbinary", -1, {}, {}}, "varbinary varbinary -1 0 0"},
        {{"binary", {}, {}, {}}, "binary binary 1 0 0"},
        {{"decimal", {}, {}, {}}, "decimal decimal 9 18 0"},
        {{"decimal", {}, 9, 2}, "decimal decimal 5 9 2"},
        {{"numeric", {}, 28, 4}, "numeric numeric 13 28 4"},
        {{"numeric", {}, 38, {}}, "numeric numeric 17 38 0"},
        {{"float", {}, {}, {}}, "float float 8 53 0"},
        {{"float", {}, 25, {}}, "float float 8 53 0"},
        {{"float", {}, 24, {}}, "real real 4 24 0"},
        {{"time", {}, {}, {}}, "time time 5 16 7"},
        {{"time", {}, {}, 0}, "time time 3 8 0"},
        {{"datetime2", {}, {}, 3}, "datetime2 datetime2 7 23 3"},
        {{"datetime2", {}, {}, 2}, "datetime2 datetime2 6 22 2"},
        {{"datetimeoffset", {}, {}, {}}, "datetimeoffset datetimeoffset 10 34 7"},
        {{"rowversion", {}, {}, {}}, "timestamp timestamp 8 0 0"},
        {{"sysname", {}, {}, {}}, "nvarchar sysname 256 0 0"},
        {{"xml", {}, {}, {}}, "xml xml -1 0 0"},
        {{"image", {}, {}, {}}, "image image 16 0 0"},
        {{"hierarchyid", {}, {}, {}}, "clr hierarchyid 892 0 0"},
        {{"vector", 3, {}, {}}, "vector vector 0 0 0"},
    };
    host_texts texts;
    for (const auto &c : cases) {
        SCOPED_TRACE(c.column);
        host_column col;
        host_set_declared_type(texts, c.type, col);
        EXPECT_EQ(std::string(col.is_assembly_type ? "clr" : col.system_type) + ' ' + col.user_type + ' ' +
                      std::to_string(col.max_length) + ' ' + std::to_string(col.precision) + ' ' +
                      std::to_string(col.scale),
                  c.column);
    }
}

TEST(HostDeclaredTypeTest, AnAliasStays)
{
    host_texts texts;
    host_column col;
    col.user_type = "Flag";
    host_set_declared_type(texts, {"bit", {}, {}, {}}, col);
    EXPECT_STREQ(col.system_type, "bit");
    EXPECT_STREQ(col.user_type, "Flag");
}

TEST(HostDeclaredTypeTest, CollationsByName)
{
    const struct {
        const char *name;
        int64_t code_page;
        int64_t style;
    } cases[] = {
        {"SQL_Latin1_General_CP1_CI_AS", 1252, 196609},
        {"SQL_Latin1_General_CP1250_CS_AS", 1250, 196608},
        {"SQL_Latin1_General_CP850_BIN2", 850, 0},
        {"SQL_Danish_Pref_CP1_CI_AS", 1252, 196609},
        {"SQL_EBCDIC037_CP1_CS_AS", 1252, 196608},
        {"SQL_Nothing", 0, 196608},
        {"SQL_CP999999999999999999999_CI_AS", 0, 196609},
        {"Latin1_General_CI_AS", 1252, 196609},
        {"Latin1_General_100_CI_AI_KS_WS_SC", 1252, 3},
        {"Latin1_General_100_BIN2_UTF8", 65001, 0},
        {"Latin1_General_100_CI_AS_SC_UTF8", 65001, 196609},
        {"Japanese_XJIS_140_CS_AS_KS_VSS", 932, 131072},
        {"Chinese_Taiwan_Stroke_90_CI_AS", 950, 196609},
        {"Korean_Wansung_CI_AS", 949, 196609},
        {"Cyrillic_General_CI_AS", 1251, 196609},
        {"Indic_General_100_CI_AS", 0, 196609},
        {"Martian_CI_AS", 0, 196609},
        {"", 0, 196608},
        {nullptr, 0, -1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name ? c.name : "no name");
        EXPECT_EQ(host_code_page(c.name), c.code_page);
        EXPECT_EQ(host_comparison_style(c.name), c.style);
    }
}

TEST(HostDeclaredTypeTest, OnlyTextsHaveACollation)
{
    host_texts texts;
    for (const char *type : {"char", "varchar", "nchar", "nvarchar", "text", "ntext", "sysname"}) {
        host_column col;
        host_set_declared_type(texts, {type, {}, {}, {}}, col);
        host_set_collation("Greek_CS_AS", col);
        EXPECT_STREQ(col.collation, "Greek_CS_AS") << type;
        EXPECT_EQ(col.code_page, 1253) << type;
        EXPECT_EQ(col.comparison_style, 196608) << type;
    }
    for (const char *type : {"xml", "int", "varbinary", "hierarchyid", "vector"}) {
        host_column col;
        host_set_declared_type(texts, {type, {}, {}, {}}, col);
        host_set_collation("Greek_CS_AS", col);
        EXPECT_EQ(col.collation, nullptr) << type;
        EXPECT_EQ(col.comparison_style, -1) << type;
    }
}
