#include "tov_host_types.h"

#include "kt_test.hpp"

namespace {

using FindTypeTest = ContextTest;

struct type_case {
    const char *declared;
    const char *abstract_type;
    uint32_t scale = 0;
    bool is_row_version = false;
};

const type_case known_types[] = {
    {"int", "sint32"},
    {"INTEGER", "sint32"},
    {"[bigint]", "sint64"},
    {"[sys].[tinyint]", "uint8"},
    {"decimal(9,2)", "decimal", 2},
    {"numeric ( 38 , 10 )", "decimal", 10},
    {"dec(9)", "decimal"},
    {"decimal", "decimal"},
    {"float(24)", "real4"},
    {"float(53)", "real8"},
    {"double precision", "real8"},
    {"datetime2(3)", "datetime"},
    {"time(7)", "time"},
    {"national char varying(20)", "text"},
    {"varchar(max)", "text"},
    {"sysname", "text"},
    {"xml", "text"},
    {"hierarchyid", "blob"},
    {"rowversion", "blob", 0, true},
    {"timestamp", "blob", 0, true},
    {"datetimeoffset(7)", "text"},
    {"sql_variant", nullptr},
};

TEST_F(FindTypeTest, KnowsTheServersTypes)
{
    for (const type_case &c : known_types) {
        tov_host_type type{};
        KT_bool is_known = 0;
        tov_host__find_type(ctx, c.declared, &type, &is_known);
        EXPECT_OK(ctx);
        EXPECT_TRUE(is_known) << c.declared;
        EXPECT_STREQ(type.abstract_type, c.abstract_type) << c.declared;
        EXPECT_EQ(type.scale, c.scale) << c.declared;
        EXPECT_EQ(type.is_row_version != 0, c.is_row_version) << c.declared;
    }
}

TEST_F(FindTypeTest, KnowsNothingElse)
{
    for (const char *declared :
         {"", "dbo.Flag", "flag", "int int", "decimal(9,2", "varchar(x)", "'int'", "int;", "/*"}) {
        tov_host_type type{};
        KT_bool is_known = 1;
        tov_host__find_type(ctx, declared, &type, &is_known);
        EXPECT_OK(ctx);
        EXPECT_FALSE(is_known) << declared;
    }
}

TEST_F(FindTypeTest, EveryNameIsKnown)
{
    uint32_t count = 0;
    for (; const char *name = tov_host__get_nth_type_name(count); count++) {
        tov_host_type type{};
        KT_bool is_known = 0;
        tov_host__find_type(ctx, name, &type, &is_known);
        EXPECT_OK(ctx);
        EXPECT_TRUE(is_known) << name;
    }
    EXPECT_GT(count, 40u);
}

} // namespace
