// Tables of special kinds, and objects that a schema has no place for.
#include "host_test.hpp"

class HostLeftOutTest : public HostTest {};

static const std::string a = a_col(1, "A", "int");

TEST_F(HostLeftOutTest, SpecialTables)
{
    const struct {
        const char *more;
        const char *line;
        bool kept;
    } cases[] = {
        {R"("temporal_type":0,"is_external":false,"is_node":false,"is_edge":false)", "", true},
        {R"("temporal_type":2)", "", true},
        {R"("temporal_type":1)", "table-history: dbo.T: left out: it keeps the former rows of another table", false},
        {R"("is_external":true)",
         "table-external: dbo.T: kept as an ordinary table: on the server its rows lie outside the database", true},
        {R"("is_filetable":true)",
         "table-filetable: dbo.T: kept as an ordinary table: on the server its rows are files", true},
        {R"("is_node":true)", "table-graph: dbo.T: kept as an ordinary table: what makes it a node of a graph is not",
         true},
        {R"("is_edge":true)", "table-graph: dbo.T: kept as an ordinary table: what makes it an edge of a graph is not",
         true},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.more);
        import_tables(a_table(7, "T", a, c.more));
        EXPECT_EQ(lines(), c.line);
        EXPECT_EQ(has(R"("name":"T")"), c.kept) << document();
    }
}

TEST_F(HostLeftOutTest, PseudoColumnsOfAGraph)
{
    import_tables(
        a_table(7, "T", a + ',' + a_col(2, "$node_id_0", "nvarchar", R"("graph_type":2,"is_computed":true)")));
    EXPECT_EQ(lines(), "column-graph: dbo.T.$node_id_0: left out of the table: the server keeps a graph's nodes and "
                       "edges in it");
}

TEST_F(HostLeftOutTest, ObjectsAreOneFindingForEachKind)
{
    import_file(
        R"({"database":{"can_view_definitions":true},"tables":[)" + a_table(7, "T", a) +
        R"(],"sequences":[{"schema":"s","name":"B"},{"schema":"dbo","name":"C"}],"objects":[)"
        R"({"kind":"views","name":"dbo.V2"},{"kind":"procedures","name":"dbo.P"},{"kind":"views","name":"dbo.V1"}]})");
    ASSERT_OK(ctx);
    EXPECT_EQ(lines(), "objects-left-out: left out: procedures are not carried over (1): dbo.P\n"
                       "objects-left-out: left out: sequences are not carried over (2): dbo.C, s.B\n"
                       "objects-left-out: left out: views are not carried over (2): dbo.V1, dbo.V2");
}
