// One order and no names of the server's making: what one database gives does not depend on the source.
#include "host_test.hpp"

class HostOrderTest : public HostTest {};

// A table with every kind of constraint, each with what says its name, e.g. R"("name":"PK",)" or nothing.
static std::string a_table_named(const std::string &pk, const std::string &uq, const std::string &fk,
                                 const std::string &ck, const std::string &df)
{
    return a_table(7, "T",
                   a_col(1, "A", "int") + ',' +
                       a_col(2, "B", "int", R"x("default":{)x" + df + R"x("definition":"((1))"})x"),
                   R"("pk":{)" + pk + R"("columns":[{"name":"A"}]},"uniques":[{)" + uq +
                       R"("columns":[{"name":"A"},{"name":"B"}]}],"fks":[{)" + fk +
                       R"("id":5,"ref_table_id":7,"ref_schema":"dbo","ref_table":"T","on_delete":"NO_ACTION",)"
                       R"("on_update":"NO_ACTION","columns":[{"column":"B","ref_column":"A"}]}],"checks":[{)" +
                       ck + R"x("definition":"([A]>[B])"},{)x" + ck + R"x("definition":"([B]>(0))"}])x");
}

TEST_F(HostOrderTest, ConstraintsNeedNoName)
{
    import_tables(a_table_named("", "", "", "", ""));
    EXPECT_EQ(codes(), "");
    EXPECT_EQ(defin("7", "2"),
              R"("B" int NOT NULL DEFAULT 1 REFERENCES "T" ("A") ON DELETE NO ACTION ON UPDATE NO ACTION)"
              R"( DEFERRABLE INITIALLY DEFERRED CHECK ([B]>(0)))");
    EXPECT_TRUE(has(R"("pk":{"name":null,"cols":{"1":null}})")) << document();
    EXPECT_TRUE(has(R"("uniques":{"UQ_T_A_B":{"1":null,"2":null}})")) << document();
    EXPECT_TRUE(has(R"x("check":{"CK_T_A_B":{"expr":"([A]>[B])"}})x")) << document();
}

TEST_F(HostOrderTest, ANameThatTheServerMadeIsNone)
{
    import_tables(a_table_named("", "", "", "", ""));
    const std::string without_names = document();
    const struct {
        const char *name;
        std::string tables;
    } cases[] = {
        {"made, as the names show",
         a_table_named(R"("name":"PK__T__3214EC07A1B2C3D4",)", R"("name":"UQ__T__A25C5AA7",)",
                       R"("name":"FK__T__B__0a1b2c3d",)", "", R"("name":"DF__T__B__0A1B2C3D",)")},
        {"made, as the export says",
         a_table_named(R"("name":"a","is_system_named":true,)", R"("name":"b","is_system_named":true,)",
                       R"("name":"c","is_system_named":true,)", R"("is_system_named":true,)",
                       R"("name":"d","is_system_named":true,)")},
        {"empty", a_table_named(R"("name":"",)", R"("name":"",)", R"("name":"",)", "", R"("name":"",)")},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        import_tables(c.tables);
        EXPECT_EQ(document(), without_names);
        EXPECT_EQ(codes(), "");
    }
}

TEST_F(HostOrderTest, OtherNamesAreKept)
{
    const std::string cols = a_col(1, "A", "int");
    for (const char *name :
         {"PK__T__3214EC0", "PK__T__3214EC07A1B2C3D41", "PK__T__3214EC0G", "XX__T__3214EC07", "PK__3"}) {
        import_tables(a_table(7, "T", cols, a_pk(name, "A")));
        EXPECT_TRUE(has(R"("pk":{"name":")" + std::string(name) + '"')) << document();
    }
}

TEST_F(HostOrderTest, AnInventedIdIsNeverThatOfAnotherConstraint)
{
    import_tables(a_table(7, "T", a_col(1, "A", "int") + ',' + a_col(2, "B", "int"),
                          R"("uniques":[{"columns":[{"name":"A"}]},)" + a_unique("UQ_T_A", "B") +
                              R"(,{"columns":[{"name":"A"}]}])"));
    EXPECT_TRUE(has(R"("uniques":{"UQ_T_A":{"2":null},"UQ_T_A_2":{"1":null},"UQ_T_A_3":{"1":null}})")) << document();
}

// Which of two equal references is kept, and which one a column carries, is the same whatever comes first.
TEST_F(HostOrderTest, TheOrderOfTheSourceDoesNotCount)
{
    const auto an_fk = [](const char *name, int id) {
        return R"({"name":")" + std::string(name) + R"(","id":)" + std::to_string(id) +
               R"(,"ref_table_id":1,"ref_schema":"dbo","ref_table":"P","on_delete":"NO_ACTION",)"
               R"("on_update":"NO_ACTION","columns":[{"column":"A","ref_column":"Id"}]})";
    };
    const std::string parent = a_table(1, "P", a_col(1, "Id", "int"), a_pk("PK", "Id"));
    const std::string first = R"x({"name":"C1","definition":"([A]>(0))"})x";
    const std::string second = R"x({"name":"c2","definition":"([A]>(1))"})x";
    const auto child = [&](const std::string &fks, const std::string &checks) {
        return a_table(2, "C", a_col(1, "A", "int"), R"("fks":[)" + fks + R"(],"checks":[)" + checks + ']');
    };
    import_tables(parent + ',' + child(an_fk("FK1", 91) + ',' + an_fk("fk2", 92), first + ',' + second));
    const std::string one_way = document() + lines();
    import_tables(child(an_fk("fk2", 92) + ',' + an_fk("FK1", 91), second + ',' + first) + ',' + parent);
    EXPECT_EQ(document() + lines(), one_way);
    EXPECT_EQ(codes(), "fk-duplicate dbo.C");
}
