// Shared by the tests of texts for the host.
#pragma once

#include "ddl_test.hpp"

class DdlHostTest : public DdlTest {
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
};
