// docs/document.md and the tables in the code say the same.
#include "document_support.hpp"

#include <fstream>
#include <map>
#include <vector>

namespace {

using rows = std::vector<std::vector<std::string>>;

std::string trimmed(const std::string &text)
{
    const size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> cells_of(const std::string &line)
{
    std::vector<std::string> cells;
    for (size_t at = 1, bar = line.find('|', at); bar != std::string::npos; at = bar + 1, bar = line.find('|', at))
        cells.push_back(trimmed(line.substr(at, bar - at)));
    return cells;
}

// The rows of each section's tables, by heading, without their heads.
std::map<std::string, rows> read_page()
{
    std::ifstream file(TOV_DOCUMENT_PAGE);
    EXPECT_TRUE(file.good()) << TOV_DOCUMENT_PAGE;
    std::map<std::string, rows> sections;
    std::string heading;
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with("## "))
            heading = line.substr(3);
        else if (line.starts_with("|---"))
            sections[heading].clear();
        else if (line.starts_with("|"))
            sections[heading].push_back(cells_of(line));
    }
    return sections;
}

std::string link_to(const tov_shape &shape)
{
    std::string anchor = shape.name;
    std::replace(anchor.begin(), anchor.end(), ' ', '-');
    return "[" + std::string(shape.name) + "](#" + anchor + ")";
}

std::string type_of(const tov_member &member)
{
    switch (member.type) {
    case TOV_MEMBER_STRING:
        return "string";
    case TOV_MEMBER_INTEGER:
        return "integer";
    case TOV_MEMBER_BOOLEAN:
        return "boolean";
    case TOV_MEMBER_RECORD:
        return link_to(*member.shape);
    case TOV_MEMBER_RECORDS:
        return "object of " + link_to(*member.shape);
    case TOV_MEMBER_LIST:
        return "list of " + link_to(*member.shape);
    case TOV_MEMBER_COL_SET:
        return "set of columns";
    case TOV_MEMBER_COL_SETS:
        return "object of sets of columns";
    case TOV_MEMBER_COL_PAIRS:
        return "pairs of columns";
    default:
        return "object";
    }
}

void expect_section(const std::map<std::string, rows> &page, const tov_shape &shape)
{
    SCOPED_TRACE(shape.name);
    const auto section = page.find(shape.name);
    ASSERT_NE(section, page.end());
    ASSERT_EQ(section->second.size(), shape.count);
    for (uint32_t n = 0; n < shape.count; n++) {
        const tov_member &member = shape.members[n];
        const std::vector<std::string> &row = section->second[n];
        ASSERT_EQ(row.size(), 4u) << member.key;
        EXPECT_EQ(row[0], "`" + std::string(member.key) + "`");
        EXPECT_EQ(row[1], type_of(member)) << member.key;
        EXPECT_EQ(row[2], member.is_required ? "yes" : "") << member.key;
        EXPECT_NE(row[3], "") << member.key;
        if (member.shape)
            expect_section(page, *member.shape);
    }
}

} // namespace

TEST(DocumentPage, DescribesTheShapeAsItIs)
{
    expect_section(read_page(), *tov_get_document_shape());
}

TEST(DocumentPage, ListsTheAbstractTypesAsTheyAre)
{
    const std::map<std::string, rows> page = read_page();
    ASSERT_TRUE(page.contains("Abstract types"));
    const rows &types = page.at("Abstract types");
    uint32_t n = 0;
    for (; const tov_abstract_type *type = tov_get_nth_abstract_type(n); n++) {
        ASSERT_LT(n, types.size());
        ASSERT_EQ(types[n].size(), 5u);
        EXPECT_EQ(types[n][0], "`" + std::string(type->name) + "`");
        EXPECT_EQ(types[n][1], type->sqlite_decl) << type->name;
        EXPECT_EQ(types[n][2], type->sqlite_typeof) << type->name;
        EXPECT_EQ(types[n][3], type->fields) << type->name;
    }
    EXPECT_EQ(types.size(), n);
}
