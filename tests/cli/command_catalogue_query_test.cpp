// tov-schema catalogue-query.

#include "run_command.hpp"

#include <fstream>
#include <iterator>

namespace {

class CommandCatalogueQueryTest : public CommandTest {};

TEST_F(CommandCatalogueQueryTest, PrintsTheQueryThatTheProjectHolds)
{
    std::ifstream file(TOV_CATALOGUE_QUERY, std::ios::binary);
    const std::string query{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    ASSERT_NE(query.find("sqlserver-catalogue"), std::string::npos);
    const command_result result = run({"catalogue-query"});
    EXPECT_EXIT_CODE(result, 0);
    EXPECT_EQ(result.out, query);
    EXPECT_EQ(result.err, "");
    EXPECT_EXIT_CODE(run({"catalogue-query", "-o", path("query.sql")}), 0);
    EXPECT_EQ(read("query.sql"), query);
}

} // namespace
