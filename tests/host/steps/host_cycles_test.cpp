// References that lead back to where they began.
#include "host_test.hpp"

class HostCyclesTest : public HostTest {};

// A table with the key Id and a column Ref that refers to another table's Id.
static std::string referring(int id, const std::string &name, int ref_tbl_id, const std::string &col = "Ref")
{
    return a_table(id, name, a_col(1, "Id", "int") + ',' + a_col(2, "Ref", "int"),
                   a_pk("PK", "Id") + R"(,"fks":[{"name":"FK","id":)" + std::to_string(1000 + id) +
                       R"(,"ref_table_id":)" + std::to_string(ref_tbl_id) +
                       R"(,"ref_schema":"dbo","ref_table":"P","on_delete":"NO_ACTION","on_update":"NO_ACTION",)" +
                       R"("columns":[{"column":")" + col + R"(","ref_column":"Id"}]}])");
}

TEST_F(HostCyclesTest, TablesInACircleAreNamed)
{
    import_tables(referring(-5, "A", 6) + ',' + referring(6, "B", 7) + ',' + referring(7, "C", -5) + ',' +
                  referring(8, "D", 7));
    EXPECT_EQ(lines(), "tables-in-circle: dbo.A: kept: tables refer to each other in a cycle, so that none can come "
                       "first: dbo.A, dbo.B, dbo.C");
}

TEST_F(HostCyclesTest, CirclesThatShareATableAreOneFinding)
{
    const auto pointing_back = [](int id, const std::string &name) { return referring(id, name, 5); };
    std::string both = referring(5, "A", 6);
    both.replace(both.find(R"("fks":[)"), 7,
                 R"("fks":[{"name":"FK2","id":2000,"ref_table_id":7,"ref_schema":"dbo",)"
                 R"("ref_table":"C","on_delete":"NO_ACTION","on_update":"NO_ACTION",)"
                 R"("columns":[{"column":"Ref","ref_column":"Id"}]},)");
    import_tables(both + ',' + pointing_back(6, "B") + ',' + pointing_back(7, "C"));
    EXPECT_EQ(codes(), "tables-in-circle dbo.A");
}

TEST_F(HostCyclesTest, ColumnsInACircleAreNamed)
{
    import_tables(referring(5, "A", 6, "Id") + ',' + referring(6, "B", 5, "Id"));
    EXPECT_EQ(lines(), "tables-in-circle: dbo.A: kept: tables refer to each other in a cycle, so that none can come "
                       "first: dbo.A, dbo.B\n"
                       "columns-in-circle: dbo.A.Id: kept: columns refer to each other in a cycle, so that no "
                       "identity column is the source of their values: dbo.A.Id, dbo.B.Id");
}

TEST_F(HostCyclesTest, AReferenceToTheOwnTableIsNoCircle)
{
    import_tables(referring(5, "A", 5));
    EXPECT_EQ(lines(), "");
}
