#include "document_support.hpp"

TEST_F(DocumentTest, TableConstraintsAreRecorded)
{
    struct constraint_case {
        const char *name;
        const char *before; // the table's record
        call set;
        const char *after;
    };
    static constexpr constraint_case cases[] = {
        {"a primary key begins with its name", "{}", CALL(tov_schema__set_pk_name(c, s, "T", "PK")),
         R"({"pk":{"name":"PK"}})"},
        {"a new name keeps the columns", R"({"pk":{"name":"old","cols":{"a":null}}})",
         CALL(tov_schema__set_pk_name(c, s, "T", "PK")), R"({"pk":{"name":"PK","cols":{"a":null}}})"},
        {"primary-key columns keep their order and their letters", R"({"pk":{"name":"PK"}})",
         CALL(tov_schema__add_to_pk(c, s, "T", "B"); tov_schema__add_to_pk(c, s, "t", "a")),
         R"({"pk":{"name":"PK","cols":{"B":null,"a":null}}})"},
        {"the same id in other letters is another column", R"({"pk":{"cols":{"a":null}}})",
         CALL(tov_schema__add_to_pk(c, s, "T", "A")), R"({"pk":{"cols":{"a":null,"A":null}}})"},
        {"unique constraints begin with their first column", "{}",
         CALL(tov_schema__add_to_unique_constraint(c, s, "T", "B", "UQ1");
              tov_schema__add_to_unique_constraint(c, s, "T", "a", "uq1");
              tov_schema__add_to_unique_constraint(c, s, "t", "a", "UQ1")),
         R"({"uniques":{"UQ1":{"B":null,"a":null},"uq1":{"a":null}}})"},
        {"a check", "{}", CALL(tov_schema__add_check_constraint(c, s, "T", "CK1", "a > 0")),
         R"({"check":{"CK1":{"expr":"a > 0"}}})"},
        {"a check replaces the one of the same id", R"({"check":{"CK1":{"expr":"old","x":1},"CK2":{"expr":"b"}}})",
         CALL(tov_schema__add_check_constraint(c, s, "T", "CK1", "a > 0")),
         R"({"check":{"CK1":{"expr":"a > 0","x":1},"CK2":{"expr":"b"}}})"},
    };
    for (const constraint_case &c : cases) {
        SCOPED_TRACE(c.name);
        load((R"({"tbls":{"t":)" + std::string(c.before) + "}}").c_str());
        outputs o;
        c.set(ctx, schema, o);
        EXPECT_OK(ctx);
        EXPECT_EQ(document(), R"({"tbls":{"t":)" + std::string(c.after) + "}}");
    }
}

TEST_F(DocumentTest, AColumnIsInAKeyOnce)
{
    static constexpr char keys[] = R"({"tbls":{"t":{"pk":{"cols":{"a":null}},"uniques":{"U":{"a":null}}}}})";
    static constexpr failure_case cases[] = {
        {"primary key", keys, nullptr, KT_ERR_DUPLICATE_KEY, nullptr, CALL(tov_schema__add_to_pk(c, s, "t", "a"))},
        {"unique constraint", keys, nullptr, KT_ERR_DUPLICATE_KEY, nullptr,
         CALL(tov_schema__add_to_unique_constraint(c, s, "t", "a", "U"))},
    };
    for (const failure_case &c : cases) {
        const failure_case one[] = {c};
        expect_failures(one);
        EXPECT_EQ(document(), keys);
    }
}

TEST_F(DocumentTest, TableConstraintsFail)
{
    static constexpr char no_t[] = "table id 'T' not found in schema";
    static constexpr failure_case cases[] = {
        {"naming the key of an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__set_pk_name(c, s, "T", "PK"))},
        {"adding to the key of an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__add_to_pk(c, s, "T", "a"))},
        {"adding to a key before it is named", one_col, nullptr, KT_ERR_KEY_NOT_FOUND, nullptr,
         CALL(tov_schema__add_to_pk(c, s, "t", "c"))},
        {"adding to a unique constraint of an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__add_to_unique_constraint(c, s, "T", "a", "U"))},
        {"adding a check to an unknown table", no_tbls, nullptr, KT_ERR_NOT_FOUND, no_t,
         CALL(tov_schema__add_check_constraint(c, s, "T", "CK", "1"))},
        {"a key of another type", R"({"tbls":{"t":{"pk":1}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__set_pk_name(c, s, "t", "PK"))},
        {"unique constraints of another type", R"({"tbls":{"t":{"uniques":1}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__add_to_unique_constraint(c, s, "t", "a", "U"))},
        {"checks of another type", R"({"tbls":{"t":{"check":[]}}})", nullptr, KT_ERR_WRONG_TYPE, nullptr,
         CALL(tov_schema__add_check_constraint(c, s, "t", "CK", "1"))},
    };
    expect_failures(cases);
}

TEST_F(DocumentTest, TableConstraintsSurviveShortMemory)
{
    static constexpr sweep_case cases[] = {
        {"naming a key", one_col, nullptr,
         CALL(tov_schema__set_pk_name(c, s, "t", "A name that needs a block of its own"))},
        {"adding to a key", R"({"tbls":{"t":{"pk":{}}}})", nullptr,
         CALL(tov_schema__add_to_pk(c, s, "t", "A column id of some length"))},
        {"adding to a unique constraint", one_col, nullptr,
         CALL(tov_schema__add_to_unique_constraint(c, s, "t", "A column id of some length", "U"))},
        {"adding a check", one_col, nullptr,
         CALL(tov_schema__add_check_constraint(c, s, "t", "CK", "An expression that needs a block of its own"))},
    };
    expect_survival(cases);
}
