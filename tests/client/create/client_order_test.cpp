#include "client_test.hpp"
#include "failing_alloc.hpp"

class ClientOrder : public ClientTest {
  protected:
    // The texts of a list, joined by a comma; "null" for no list.
    std::string texts(const KT_varray *list)
    {
        std::string result;
        uint32_t count = 0;
        if (!list)
            return "null";
        KT_varray__count(ctx, list, &count);
        for (uint32_t n = 0; n < count; n++) {
            const char *text = nullptr;
            KT_varray__get__sz(ctx, list, n, &text);
            result += (n ? "," : "") + std::string(text);
        }
        return result;
    }
    void expect_order(const char *tbl_ids, const char *remarks)
    {
        KT_varray *order = nullptr;
        KT_varray *notes = nullptr;
        tov_client__creation_order(ctx, schema, &order, &notes);
        EXPECT_OK(ctx);
        EXPECT_EQ(texts(order), tbl_ids);
        EXPECT_EQ(texts(notes), remarks);
        KT_varray__free(ctx, order);
        KT_varray__free(ctx, notes);
    }
    // A table whose key is "a" and whose column "b" may refer to another.
    void add(const char *tbl_id, const char *ref_tbl_id)
    {
        add_tbl(tbl_id, (std::string("T") + tbl_id).c_str());
        add_col(tbl_id, "a", "A");
        add_col(tbl_id, "b", "B");
        set_pk(tbl_id, "a");
        if (ref_tbl_id)
            set_fk(tbl_id, "b", ref_tbl_id, "a", "NO ACTION");
    }
};

TEST_F(ClientOrder, OfNoTablesIsEmpty)
{
    expect_order("", "null");
}

TEST_F(ClientOrder, PutsReferencedTablesFirst)
{
    add("1", "2");
    add("2", "3");
    add("3", nullptr);
    expect_order("3,2,1", "null");
}

TEST_F(ClientOrder, TakesATableThatRefersToItself)
{
    add("1", "1");
    add("2", "1");
    expect_order("1,2", "null");
}

TEST_F(ClientOrder, NamesTheTablesOfACycleAndKeepsSchemaOrder)
{
    add("1", "2");
    add("2", "3");
    add("3", "1");
    add("4", "1");
    add("5", nullptr);
    expect_order("1,2,3,4,5",
                 "tables \"T1\", \"T2\" and \"T3\" refer to each other in a cycle; tables are created in schema order");
}

TEST_F(ClientOrder, NamesEachCycle)
{
    add("1", "2");
    add("2", "1");
    add("3", "4");
    add("4", "3");
    expect_order("1,2,3,4",
                 "tables \"T1\" and \"T2\" refer to each other in a cycle; tables are created in schema order,"
                 "tables \"T3\" and \"T4\" refer to each other in a cycle; tables are created in schema order");
}

static constexpr const char *refused_remark = "the tables cannot be put in the order of their references, although "
                                              "these form no cycle; tables are created in schema order";

TEST_F(ClientOrder, KeepsSchemaOrderWhereAParentRefersOnlyToItself)
{
    add("1", "2");
    add("2", "2");
    expect_order("1,2", refused_remark);
}

TEST_F(ClientOrder, KeepsSchemaOrderWhereAReferenceIsWrittenInAnotherCase)
{
    add("a", "B");
    add("b", nullptr);
    expect_order("a,b", refused_remark);
}

TEST_F(ClientOrder, FailsWhereTheDocumentHasAnotherShape)
{
    load(R"({"tbls":{"1":{"name":"T","cols":{"a":{"name":"A","fk":7}}}}})");
    KT_varray *order = nullptr;
    KT_varray *notes = nullptr;
    tov_client__creation_order(ctx, schema, &order, &notes);
    EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
    EXPECT_EQ(order, nullptr);
    EXPECT_EQ(notes, nullptr);
    reset();
}

TEST_F(ClientOrder, SurvivesFailingAllocations)
{
    add("1", "2");
    add("2", "3");
    add("3", nullptr);
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_varray *order = nullptr;
        KT_varray *notes = nullptr;
        tov_client__creation_order(ctx, schema, &order, &notes);
        if (!KT_context__has_err(ctx)) {
            EXPECT_EQ(texts(order), "3,2,1");
            KT_varray__free(ctx, order);
            KT_varray__free(ctx, notes);
            if (!fault.fired())
                break;
            continue;
        }
        EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
        EXPECT_EQ(order, nullptr);
        EXPECT_EQ(notes, nullptr);
        EXPECT_EQ(fault.leaked(), 0u);
    }
}
