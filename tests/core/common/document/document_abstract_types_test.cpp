#include "document_support.hpp"

#include <set>

namespace {

struct setter_case {
    const char *abstract_type;
    call set;
};

// The setters that write fields, each with all that it can write.
const setter_case setters[] = {
    {"identity", CALL(tov_schema__set_col_type_identity(c, s, "t", "c", "PK"))},
    {"decimal", CALL(tov_schema__set_col_type_decimal(c, s, "t", "c", 9, 2))},
    {"time", CALL(tov_schema__set_col_type_time(c, s, "t", "c", 3))},
    {"datetime", CALL(tov_schema__set_col_type_datetime(c, s, "t", "c", 3, nullptr))},
    {"text", CALL(tov_schema__set_col_type_text(c, s, "t", "c", nullptr, "en", 0, 1, 1, 1, 1, 1, 1, 1, 5))},
    {"blob", CALL(tov_schema__set_col_type_blob(c, s, "t", "c", 1, 5))},
};

// What the type record holds besides its name, with blanks between.
std::string fields_of(KT_context *ctx, tov_schema *schema)
{
    KT_vhash *col = nullptr;
    KT_vhash *type = nullptr;
    uint32_t count = 0;
    _tov_schema__get_col(ctx, schema, "t", "c", &col);
    KT_vhash__get__vhash(ctx, col, "type", &type);
    KT_vhash__count(ctx, type, &count);
    std::string fields;
    for (uint32_t n = 1; n < count; n++) {
        const char *key = nullptr;
        KT_vhash__get_nth_pair(ctx, type, n, &key, nullptr);
        fields += (n > 1 ? " " : "") + std::string(key);
    }
    EXPECT_OK(ctx);
    return fields;
}

} // namespace

TEST_F(DocumentTest, AbstractTypesNameTheFieldsThatTheirSettersWrite)
{
    std::set<std::string> with_fields;
    for (const setter_case &c : setters) {
        SCOPED_TRACE(c.abstract_type);
        load(one_col);
        outputs o;
        c.set(ctx, schema, o);
        const tov_abstract_type *type = tov_find_abstract_type(c.abstract_type);
        ASSERT_NE(type, nullptr);
        // A binary collation has no further rules, so both are never written at once.
        std::string expected = type->fields;
        if (const size_t at = expected.find("binary "); at != std::string::npos)
            expected.erase(at, 7);
        EXPECT_EQ(fields_of(ctx, schema), expected);
        with_fields.insert(c.abstract_type);
    }
    for (uint32_t n = 0; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++)
        EXPECT_EQ(*type->fields != '\0', with_fields.contains(type->name)) << type->name;
}

// Triggers check every type but identities, which SQLite checks itself, and the loose ones. Of those that are checked,
// integers may refer to an identity column.
TEST_F(DocumentTest, AbstractTypesSayWhatIsCheckedAndWhatMayBeAKey)
{
    for (uint32_t n = 0; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++) {
        const std::string name = type->name;
        const bool is_checked = name != "identity" && name.find("loose/") == std::string::npos;
        EXPECT_EQ(type->is_checked, is_checked ? 1 : 0) << name;
        EXPECT_EQ(type->is_integer_key, type->kind == TOV_KIND_INTEGER && is_checked ? 1 : 0) << name;
    }
}

TEST_F(DocumentTest, AbstractTypesAreFoundByTheirExactName)
{
    uint32_t count = 0;
    for (; const tov_abstract_type *type = tov_get_nth_abstract_type(count); count++)
        EXPECT_EQ(tov_find_abstract_type(type->name), type) << type->name;
    EXPECT_EQ(count, 21u);
    EXPECT_EQ(tov_get_nth_abstract_type(UINT32_MAX), nullptr);
    for (const char *name : {"", "Text", "text ", "tex", "host", "loose"})
        EXPECT_EQ(tov_find_abstract_type(name), nullptr) << name;
    EXPECT_EQ(tov_find_abstract_type(nullptr), nullptr);
}
