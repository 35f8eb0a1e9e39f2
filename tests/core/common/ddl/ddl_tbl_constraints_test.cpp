#include "document/tov_parse_defin_private.hpp"

#include "ddl_test.hpp"

namespace {

using defin_operation = void (*)(KT_context *, tov_schema *, const char *tbl_id, const char *id, const char **defin);

void get_pk(KT_context *ctx, tov_schema *schema, const char *tbl_id, const char *, const char **defin)
{
    tov_schema__get_pk_defin(ctx, schema, tbl_id, defin);
}

constexpr defin_operation get_unique = tov_schema__get_unique_defin;
constexpr defin_operation get_foreignkey = tov_schema__get_foreignkey_defin;
constexpr defin_operation get_check = tov_schema__get_check_defin;

class DdlTblConstraints : public DdlTest {
  protected:
    // A table "t", named T, with the columns A, B and C, and a table "p", named Parent, with X and Y.
    void SetUp() override
    {
        DdlTest::SetUp();
        tov_schema__add_tbl(ctx, schema, "p", "Parent", 1);
        add_col("p", "x", "X");
        add_col("p", "y", "Y");
        tov_schema__add_tbl(ctx, schema, "t", "T", 1);
        add_col("t", "a", "A");
        add_col("t", "b", "B");
        add_col("t", "c", "C");
        ASSERT_OK(ctx);
    }
    void add_col(const char *tbl_id, const char *col_id, const char *name)
    {
        tov_schema__add_col(ctx, schema, tbl_id, col_id, name, 1, 0, 0);
        tov_schema__set_col_type_simple(ctx, schema, tbl_id, col_id, "sint32");
    }
    void add_key(const char *name, const char *on_delete, const char *on_update, KT_bool deferred = 0)
    {
        tov_schema__create_foreignkey(ctx, schema, "fk1", name, "t", "P", deferred, on_delete, on_update, 0);
        tov_schema__add_to_foreignkey(ctx, schema, "t", "fk1", "b", "y");
        tov_schema__add_to_foreignkey(ctx, schema, "t", "fk1", "A", "X");
    }
    std::string defin(defin_operation get, const char *id = nullptr, const char *tbl_id = "t")
    {
        const char *text = nullptr;
        get(ctx, schema, tbl_id, id, &text);
        EXPECT_OK(ctx);
        return text ? text : "(null)";
    }
};

TEST_F(DdlTblConstraints, PrimaryKey)
{
    EXPECT_EQ(defin(get_pk), "(null)");
    tov_schema__set_pk_name(ctx, schema, "t", "PK_T");
    EXPECT_EQ(defin(get_pk), "(null)");
    tov_schema__add_to_pk(ctx, schema, "t", "c");
    EXPECT_EQ(defin(get_pk), R"(PRIMARY KEY ("C"))");
    tov_schema__add_to_pk(ctx, schema, "t", "A");
    EXPECT_EQ(defin(get_pk, nullptr, "T"), R"(PRIMARY KEY ("C","A"))");
}

TEST_F(DdlTblConstraints, APrimaryKeyIsNullWhereTheOutputWasSet)
{
    const char *text = "before";
    tov_schema__get_pk_defin(ctx, schema, "t", &text);
    EXPECT_OK(ctx);
    EXPECT_EQ(text, nullptr);
    EXPECT_EQ(document().find("pk"), std::string::npos);
}

TEST_F(DdlTblConstraints, APrimaryKeyOfNoColumns)
{
    load_tbl(R"("pk":{"name":"PK_T","cols":{}})");
    EXPECT_EQ(defin(get_pk), "PRIMARY KEY ()");
}

TEST_F(DdlTblConstraints, AnIdentityColumnDoesNotChangeTheListedKey)
{
    tov_schema__set_col_type_identity(ctx, schema, "t", "b", "PK_B");
    EXPECT_EQ(defin(get_pk), "(null)");
    tov_schema__set_pk_name(ctx, schema, "t", "PK_T");
    tov_schema__add_to_pk(ctx, schema, "t", "a");
    EXPECT_EQ(defin(get_pk), R"(PRIMARY KEY ("A"))");
}

TEST_F(DdlTblConstraints, Unique)
{
    tov_schema__add_to_unique_constraint(ctx, schema, "t", "b", "UQ_1");
    tov_schema__add_to_unique_constraint(ctx, schema, "t", "a", "UQ_1");
    tov_schema__add_to_unique_constraint(ctx, schema, "t", "c", "UQ_2");
    EXPECT_EQ(defin(get_unique, "UQ_1"), R"(UNIQUE ("B","A"))");
    EXPECT_EQ(defin(get_unique, "UQ_2"), R"(UNIQUE ("C"))");
}

TEST_F(DdlTblConstraints, ForeignKey)
{
    const struct {
        const char *name;
        const char *key_name;
        const char *on_delete;
        const char *on_update;
        KT_bool deferred;
        const char *ending;
    } cases[] = {
        {"no actions", nullptr, nullptr, nullptr, 0, ""},
        {"a name is not written", "FK_T", nullptr, nullptr, 1, ""},
        {"a delete action is not written", nullptr, "CASCADE", nullptr, 0, ""},
        {"not even one that does nothing", nullptr, "NO ACTION", nullptr, 0, ""},
        {"an update action is", nullptr, nullptr, "set Null", 0, " ON UPDATE set Null"},
        {"both actions", nullptr, "CASCADE", "NO ACTION", 1, " ON UPDATE NO ACTION"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        tov_schema__nevermind_foreignkey(ctx, schema, "t", "fk1");
        add_key(c.key_name, c.on_delete, c.on_update, c.deferred);
        EXPECT_EQ(defin(get_foreignkey, "fk1"), std::string(R"(FOREIGN KEY ("B","A") REFERENCES "Parent" ("Y","X"))") +
                                                    c.ending + " DEFERRABLE INITIALLY DEFERRED");
    }
}

TEST_F(DdlTblConstraints, AForeignKeyToItsOwnTable)
{
    tov_schema__create_foreignkey(ctx, schema, "fk1", nullptr, "t", "t", 0, nullptr, nullptr, 0);
    tov_schema__add_to_foreignkey(ctx, schema, "t", "fk1", "b", "a");
    EXPECT_EQ(defin(get_foreignkey, "fk1"), R"(FOREIGN KEY ("B") REFERENCES "T" ("A") DEFERRABLE INITIALLY DEFERRED)");
}

TEST_F(DdlTblConstraints, AForeignKeyWithoutColumns)
{
    tov_schema__create_foreignkey(ctx, schema, "fk1", nullptr, "t", "p", 0, nullptr, nullptr, 0);
    EXPECT_EQ(defin(get_foreignkey, "fk1"), R"(FOREIGN KEY () REFERENCES "Parent" () DEFERRABLE INITIALLY DEFERRED)");
}

TEST_F(DdlTblConstraints, Check)
{
    tov_schema__add_check_constraint(ctx, schema, "t", "CK_1", "A < B");
    tov_schema__add_check_constraint(ctx, schema, "t", "CK_2", "([A]<>'x')");
    EXPECT_EQ(defin(get_check, "CK_1"), "CHECK (A < B)");
    EXPECT_EQ(defin(get_check, "CK_2"), "CHECK (([A]<>'x'))");
}

TEST_F(DdlTblConstraints, AskingForACheckLeavesAnEmptyRecordBehind)
{
    const char *text = nullptr;
    EXPECT_EQ(document().find("check"), std::string::npos);
    tov_schema__get_check_defin(ctx, schema, "t", "CK", &text);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'CK'");
    EXPECT_NE(document().find(R"("check":{})"), std::string::npos);
}

TEST_F(DdlTblConstraints, OtherQuestionsLeaveTheDocumentAsItWas)
{
    const std::string before = document();
    const char *text = nullptr;
    tov_schema__get_unique_defin(ctx, schema, "t", "UQ", &text);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'uniques'");
    tov_schema__get_foreignkey_defin(ctx, schema, "t", "FK", &text);
    expect_failure(KT_ERR_KEY_NOT_FOUND, "no key 'foreignkeys'");
    defin(get_pk);
    EXPECT_EQ(document(), before);
}

struct failure_case {
    const char *name;
    defin_operation get;
    const char *members;
    uint64_t code;
    const char *description;
};

const failure_case failure_cases[] = {
    {"pk is not a record", get_pk, R"("pk":[])", KT_ERR_WRONG_TYPE, "key 'pk' is not a map"},
    {"pk columns are no record", get_pk, R"("pk":{"cols":[]})", KT_ERR_WRONG_TYPE, "key 'cols' is not a map"},
    {"pk of an unknown column", get_pk, R"("pk":{"cols":{"q":null}})", KT_ERR_NOT_FOUND,
     "col id 'q' not found in tbl id 't' in schema"},
    {"pk of a nameless column", get_pk, R"("pk":{"cols":{"n":null}})", KT_ERR_KEY_NOT_FOUND, "no key 'name'"},

    {"no uniques", get_unique, R"("k":1)", KT_ERR_KEY_NOT_FOUND, "no key 'uniques'"},
    {"unknown unique", get_unique, R"("uniques":{})", KT_ERR_KEY_NOT_FOUND, "no key 'id'"},
    {"a unique of an unknown column", get_unique, R"("uniques":{"id":{"q":null}})", KT_ERR_NOT_FOUND,
     "col id 'q' not found in tbl id 't' in schema"},

    {"no foreign keys", get_foreignkey, R"("k":1)", KT_ERR_KEY_NOT_FOUND, "no key 'foreignkeys'"},
    {"unknown foreign key", get_foreignkey, R"("foreignkeys":{})", KT_ERR_KEY_NOT_FOUND, "no key 'id'"},
    {"a foreign key to no table", get_foreignkey, R"("foreignkeys":{"id":{"cols":{}}})", KT_ERR_KEY_NOT_FOUND,
     "no key 'ref_tbl_id'"},
    {"a foreign key to an unknown table, before its action is looked at", get_foreignkey,
     R"("foreignkeys":{"id":{"ref_tbl_id":"X","on_update":1}})", KT_ERR_NOT_FOUND, "table id 'X' not found in schema"},
    {"an action that is not a string, before the columns are looked at", get_foreignkey,
     R"("foreignkeys":{"id":{"ref_tbl_id":"t","on_update":1}})", KT_ERR_WRONG_TYPE, "key 'on_update' is not a string"},
    {"a foreign key without columns", get_foreignkey, R"("foreignkeys":{"id":{"ref_tbl_id":"t"}})",
     KT_ERR_KEY_NOT_FOUND, "no key 'cols'"},
    {"a foreign key of an unknown column, before the referenced one", get_foreignkey,
     R"("foreignkeys":{"id":{"ref_tbl_id":"t","cols":{"q":"r"}}})", KT_ERR_NOT_FOUND,
     "col id 'q' not found in tbl id 't' in schema"},
    {"a foreign key to an unknown column", get_foreignkey,
     R"("foreignkeys":{"id":{"ref_tbl_id":"T","cols":{"a":"r"}}})", KT_ERR_NOT_FOUND,
     "col id 'r' not found in tbl id 'T' in schema"},
    {"a referenced column that is not a string", get_foreignkey,
     R"("foreignkeys":{"id":{"ref_tbl_id":"t","cols":{"a":null}}})", KT_ERR_WRONG_TYPE, "key 'a' is not a string"},

    {"unknown check", get_check, R"("check":{})", KT_ERR_KEY_NOT_FOUND, "no key 'id'"},
    {"a check without expression", get_check, R"("check":{"id":{}})", KT_ERR_KEY_NOT_FOUND, "no key 'expr'"},
};

TEST_F(DdlTblConstraints, Failures)
{
    for (const failure_case &c : failure_cases) {
        SCOPED_TRACE(c.name);
        load_tbl(std::string(R"("cols":{"a":{"name":"A"},"n":{}},)") + c.members);
        const char *text = nullptr;
        c.get(ctx, schema, "t", "id", &text);
        expect_failure(c.code, c.description);
        EXPECT_EQ(text, nullptr);
    }
    for (const defin_operation get : {defin_operation{get_pk}, get_unique, get_foreignkey, get_check}) {
        const char *text = nullptr;
        get(ctx, schema, "Nope", "id", &text);
        expect_failure(KT_ERR_NOT_FOUND, "table id 'Nope' not found in schema");
        EXPECT_EQ(text, nullptr);
    }
}

TEST_F(DdlTblConstraints, EveryAllocationMayFail)
{
    // Longer than what the string pool has room for from the start.
    const std::string name(600, 'A');
    tov_schema__set_col_name(ctx, schema, "t", "a", name.c_str());
    tov_schema__set_pk_name(ctx, schema, "t", "PK_T");
    tov_schema__add_to_pk(ctx, schema, "t", "a");
    tov_schema__add_to_unique_constraint(ctx, schema, "t", "a", "id");
    tov_schema__create_foreignkey(ctx, schema, "id", nullptr, "t", "t", 0, nullptr, "CASCADE", 0);
    tov_schema__add_to_foreignkey(ctx, schema, "t", "id", "a", "a");
    tov_schema__add_check_constraint(ctx, schema, "t", "id", name.c_str());
    for (const defin_operation get : {defin_operation{get_pk}, get_unique, get_foreignkey, get_check})
        sweep_defin([&](const char **text) { get(ctx, schema, "t", "id", text); });
}

TEST_F(DdlTblConstraints, TheDatabaseHoldsToTheConstraints)
{
    add_key("FK_T", "CASCADE", "CASCADE");
    tov_schema__set_pk_name(ctx, schema, "p", "PK_P");
    tov_schema__add_to_pk(ctx, schema, "p", "y");
    tov_schema__add_to_pk(ctx, schema, "p", "x");
    tov_schema__add_to_unique_constraint(ctx, schema, "t", "c", "UQ");
    tov_schema__add_check_constraint(ctx, schema, "t", "CK", "C > 0");

    sqlite_database db;
    EXPECT_EQ(db.run("CREATE TABLE Parent (X, Y, " + defin(get_pk, nullptr, "p") + ")"), "");
    EXPECT_EQ(db.run("CREATE TABLE T (A, B, C, " + defin(get_unique, "UQ") + "," + defin(get_foreignkey, "fk1") + "," +
                     defin(get_check, "CK") + ")"),
              "");
    EXPECT_EQ(db.run("INSERT INTO Parent VALUES (1, 2)"), "");
    EXPECT_EQ(db.run("INSERT INTO Parent VALUES (1, 2)"), "UNIQUE constraint failed: Parent.Y, Parent.X");
    EXPECT_EQ(db.run("INSERT INTO T VALUES (1, 2, 3)"), "");
    EXPECT_EQ(db.run("INSERT INTO T VALUES (2, 1, 4)"), "FOREIGN KEY constraint failed");
    EXPECT_EQ(db.run("INSERT INTO T VALUES (1, 2, 3)"), "UNIQUE constraint failed: T.C");
    EXPECT_EQ(db.run("INSERT INTO T VALUES (1, 2, 0)"), "CHECK constraint failed: C > 0");
    EXPECT_EQ(db.run("UPDATE Parent SET X = 7"), "");
    EXPECT_EQ(db.ask("SELECT A || ' ' || B FROM T"), "7 2");
    EXPECT_EQ(db.run("DELETE FROM Parent"), "FOREIGN KEY constraint failed");  // the trigger's business
    EXPECT_EQ(db.run("BEGIN; DELETE FROM Parent; DELETE FROM T; COMMIT"), ""); // deferred
}

} // namespace
