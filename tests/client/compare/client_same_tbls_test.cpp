// Tables that are the same are not looked into. What a comparison says must not depend on it.
#include "compared_document.hpp"

#include <algorithm>
#include <random>

namespace {

struct tbl_model {
    std::string id;
    std::string name;
    std::string col_name;
    std::string type;
    std::string ref_tbl_id; // of the column, when it refers to a table
};

std::string json_of(const std::vector<tbl_model> &tbls)
{
    std::string json = R"({"compat_level":1,"tbls":{"a":{"name":"Anchor","cols":{"1":{"name":"Id","type":)"
                       R"({"name":"sint32"}}}})";
    for (const tbl_model &tbl : tbls) {
        json += ",\"" + tbl.id + R"(":{"name":")" + tbl.name +
                R"(","cols":{"1":{"name":"Id","type":{"name":"sint32"}},"2":{"name":")" + tbl.col_name +
                R"(","type":{"name":")" + tbl.type + "\"}";
        if (!tbl.ref_tbl_id.empty())
            json += R"(,"fk":{"name":"FK","ref_tbl_id":")" + tbl.ref_tbl_id +
                    R"(","ref_col_id":"1","deferred":false,"on_delete":"NO ACTION","on_update":"NO ACTION"})";
        json += "}}}";
    }
    return json + "}}";
}

// One change of those that a schema may see: names, types, references, ids, order, tables that come and go.
void change_one(std::mt19937 &random, std::vector<tbl_model> &tbls)
{
    const auto one_of = [&]() -> tbl_model & { return tbls[random() % tbls.size()]; };
    const std::string new_name = "N" + std::to_string(random() % 6);
    switch (random() % 9) {
    case 0:
        one_of().name = new_name;
        break;
    case 1:
        one_of().col_name = new_name;
        break;
    case 2:
        one_of().type = random() % 2 ? "real8" : "guid";
        break;
    case 3:
        one_of().ref_tbl_id = random() % 3 ? one_of().id : "";
        break;
    case 4:
        std::swap(one_of().id, one_of().id);
        break;
    case 5:
        one_of().name = one_of().name; // perhaps two of one name
        break;
    case 6:
        std::swap(one_of(), one_of());
        break;
    case 7:
        if (tbls.size() > 3)
            tbls.erase(tbls.begin() + static_cast<std::ptrdiff_t>(random() % tbls.size()));
        break;
    default:
        tbls.push_back({"x" + std::to_string(random()), new_name, "C", "sint32", one_of().id});
        break;
    }
}

class SameTblsTest : public CompareTest {
  protected:
    // An option that renames has every table read.
    std::string compare_all(const std::string &old_json, const std::string &new_json, bool by_id)
    {
        const char *anchor = "Anchor=Anchor";
        return compare(old_json, new_json, {by_id, &anchor, 1});
    }
};

TEST_F(SameTblsTest, WhatIsToldIsTheSameWhenAllTablesAreRead)
{
    std::mt19937 random(20260101);
    size_t changed_count = 0;
    for (int round = 0; round < 600; round++) {
        std::vector<tbl_model> tbls;
        for (int n = 0; n < 8; n++) {
            const std::string ref = random() % 2 ? (random() % 3 ? "t" : "T") + std::to_string(random() % 10) : "";
            tbls.push_back({"t" + std::to_string(n), "T" + std::to_string(n), "C", "sint32", ref});
        }
        const std::string before = json_of(tbls);
        for (auto changes = random() % 5; changes > 0; changes--)
            change_one(random, tbls);
        const std::string after = json_of(tbls);
        for (const bool by_id : {false, true}) {
            SCOPED_TRACE(before + "\n" + after);
            const std::string told = compare(before, after, {by_id, nullptr, 0});
            EXPECT_EQ(told, compare_all(before, after, by_id));
            EXPECT_OK(ctx);
            changed_count += !told.empty();
        }
    }
    EXPECT_GT(changed_count, 600u);
}

// Ids that differ in letter case only are one id to a lookup: neither table is left out.
TEST_F(SameTblsTest, NoneOfTwoTablesWithOneIdIsLeftOut)
{
    const std::string before = json_of({{"k", "A", "C", "sint32", ""}, {"K", "B", "C", "sint32", ""}});
    const std::string after = json_of({{"k", "A", "C", "sint32", ""}, {"K", "B", "C", "real8", ""}});
    EXPECT_NE(compare(before, after), "");
    EXPECT_EQ(compare(before, after), compare_all(before, after, false));
}

// A table that refers to another one by its id says something else when that id is another table's, whose letter case
// does not count.
TEST_F(SameTblsTest, AReferenceIsToTheTableThatHasTheId)
{
    for (const char *ref_tbl_id : {"X1", "x1"}) {
        const tbl_model tbl{"3", "T", "C", "sint32", ref_tbl_id};
        const std::string before = json_of({{"x1", "A", "C", "sint32", ""}, {"x2", "B", "C", "sint32", ""}, tbl});
        const std::string after = json_of({{"x2", "A", "C", "sint32", ""}, {"x1", "B", "C", "sint32", ""}, tbl});
        EXPECT_EQ(compare(before, after), "T: foreign key FK: refers to: A (Id) -> B (Id)\n");
    }
}

} // namespace
