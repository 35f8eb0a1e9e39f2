// What a report says: the data of the page, and the pages of Markdown.
#include "client_test.hpp"
#include "counting_sqlite.hpp"
#include "failing_alloc.hpp"
#include "tov_report.h"

#include "report/client_markdown.hpp"

#include <cstdio>
#include <map>
#include <unistd.h>

namespace {

// Two tables that refer to each other, with something of everything.
constexpr const char *shop =
    R"json({"compat_level":1,"server":{"version":1,"database":"Shop","collation":"Latin1_General_CI_AS"},
"tbls":{
"1":{"name":"Orders","cols":{
  "1":{"name":"Id","type":{"name":"identity"}},
  "2":{"name":"CustomerId","type":{"name":"sint32"},"notnull":{},"fk":{"name":"FK_Customer","ref_tbl_id":"2","ref_col_id":"1","deferred":true,"on_delete":"CASCADE"}},
  "3":{"name":"Total","type":{"name":"decimal","precision":9,"scale":2},"defval":{"expr":"150"},"check":[{"name":"CK_Total","expr":"([Total]>=0)"}]},
  "4":{"name":"Note","type":{"name":"text","nocase":true,"fixed_width":false,"unicode":true,"width":20},"notnull":{}}},
 "uniques":{"u":{"2":null,"3":null}},
 "check":{"c":{"expr":"[Total]<>7"}},
 "server":{"schema":"sales","name":"Orders","description":"What was ordered","temporal_type":2,"cols":[
  {"name":"Id","id":"1","type":"int","identity":["1","1"]},
  {"name":"CustomerId","id":"2","type":"int"},
  {"name":"Total","id":"3","type":"decimal","precision":9,"scale":2,"nullable":true,"default":"((1.5))","description":"in euros"},
  {"name":"Twice","type":"decimal","precision":11,"scale":2,"computed":"([Total]*2)"},
  {"name":"Note","id":"4","type":"nvarchar","length":40,"collation":"Latin1_General_CI_AS"}],
  "indexes":[{"name":"IX_Total","unique":true,"cols":["3","2"],"descending":[true,false],"included":["4"],"filter":"([Total]>(1))"},
   {"name":"IX_Xml","kind":"XML","left_out":true,"cols":["4"]}]}},
"2":{"name":"Customers","cols":{"1":{"name":"Id","type":{"name":"sint32"},"notnull":{}}},"pk":{"name":"PK_Customers","cols":{"1":null}}}
}})json";

class ReportTest : public ClientTest {
  protected:
    void read(const std::string &document)
    {
        tov_schema__nullfree(ctx, &schema);
        tov_schema__from_json(ctx, document.c_str(), &schema);
        ASSERT_OK(ctx);
    }
    std::string html(const tov_client_report_options *options = nullptr)
    {
        KT_string *text = nullptr;
        tov_client__write_html_report(ctx, schema, options, &text);
        EXPECT_OK(ctx);
        return text ? take(ctx, text) : "";
    }
    static std::string data_of(const std::string &page)
    {
        const std::string begin = R"(<script type="application/json" id="data">)";
        const size_t place = page.find(begin) + begin.size();
        return page.substr(place, page.find("</script>", place) - place);
    }
    using files = std::map<std::string, std::string>;
    files markdown(const tov_client_report_options *options = nullptr)
    {
        files written;
        tov_client__write_markdown_report(
            ctx, schema, options,
            [](KT_context *, void *data, const char *name, const char *text) {
                (*static_cast<files *>(data))[name] = text;
            },
            &written);
        EXPECT_OK(ctx);
        return written;
    }
};

struct part_case {
    const char *name;
    const char *expected;
};

void expect_parts(const std::string &text, std::initializer_list<part_case> cases)
{
    for (const part_case &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_NE(text.find(c.expected), std::string::npos) << c.expected << "\n" << text;
    }
}

TEST_F(ReportTest, ThePageHoldsAllThatIsKnown)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    expect_parts(
        data_of(html()),
        {{"title", R"("title":"Shop","collation":"Latin1_General_CI_AS")"},
         {"a table", R"("table":"Orders","server_table":"sales.Orders")"},
         {"its description", R"("schema":"sales","description":"What was ordered","history":2)"},
         {"an identity column", R"("primary_key":1,"sqlite_type":"integer primary key")"},
         {"a column's type without its constraints", R"("sqlite_type":"int","description":"in euros")"},
         {"a text column's collations", R"("sqlite_type":"text COLLATE NOCASE","collation":"Latin1_General_CI_AS")"},
         {"defaults on both sides", R"json("default":"150","server_default":"((1.5))")json"},
         {"a column that is left out", R"json("left_out":"the server computes it","computed":"([Total]*2)")json"},
         {"a unique key", R"({"columns":["CustomerId","Total"],"kind":"unique"})"},
         {"a named primary key", R"({"name":"PK_Customers","columns":["Id"],"kind":"primary"})"},
         {"a reference",
          R"({"name":"FK_Customer","columns":["CustomerId"],"table":"Customers","to":["Id"],"on_delete":"CASCADE"})"},
         {"a column's check", R"json({"expression":"([Total]>=0)","name":"CK_Total","column":"Total"})json"},
         {"a table's check", R"({"expression":"[Total]\u003c>7"})"},
         {"an index",
          R"json({"name":"IX_Total","kind":"unique","columns":["Total DESC","CustomerId"],"included":["Note"],"filter":"([Total]>(1))"})json"},
         {"an index that is left out", R"({"name":"IX_Xml","kind":"XML","columns":["Note"],"left_out":true})"}});
}

TEST_F(ReportTest, NothingForProgramsIsInThePage)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    const std::string data = data_of(html());
    for (const char *member : {"\"store\"", "\"show\"", "\"bind\"", "\"insert\"", "\"store_text\""})
        EXPECT_EQ(data.find(member), std::string::npos) << member;
}

TEST_F(ReportTest, NoNameEndsTheData)
{
    make_one_tbl();
    const std::string plain = html();
    tov_schema__set_tbl_name(ctx, schema, "t", "</script><!--<script>alert(1)</script>");
    const std::string page = html();
    EXPECT_NE(data_of(page).find(R"(\u003c/script>\u003c!--\u003cscript>alert(1)\u003c/script>)"), std::string::npos);
    EXPECT_EQ(page.find("alert(1)</script>"), std::string::npos);
    EXPECT_EQ(plain.substr(plain.find("</script>", plain.find("id=\"data\""))),
              page.substr(page.find("</script>", page.find("id=\"data\""))))
        << "what follows the data is the page's own";
}

TEST_F(ReportTest, ThePageNeedsNothingElse)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    const std::string page = html();
    EXPECT_NE(page.find("default-src 'none'; style-src 'sha256-"), std::string::npos);
    for (const char *reference :
         {" src=", "<link", "@import", "fetch(", "XMLHttpRequest", "innerHTML", "@layout_hash@"})
        EXPECT_EQ(page.find(reference), std::string::npos) << reference;
}

TEST_F(ReportTest, FindingsAndATitleGoIn)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    kt_owned_vhash file{ctx};
    KT_varray *list = nullptr;
    KT_vhash__alloc__from_json__sz(
        ctx, file.out(),
        R"json({"findings":[{"code":"default-dropped","severity":"warning","table":"sales.Orders","column":"Total",
            "reason":"left out: why","host_text":"(f())","place":"a.sql:1:2","allowed":"baseline"}]})json");
    KT_vhash__get__varray(ctx, file, "findings", &list);
    ASSERT_OK(ctx);
    tov_client_report_options options = {};
    options.findings = list;
    options.title = "The <shop>";
    const std::string data = data_of(html(&options));
    EXPECT_NE(data.find(R"("title":"The \u003cshop>")"), std::string::npos) << data;
    EXPECT_NE(
        data.find(
            R"json("findings":[{"code":"default-dropped","severity":"warning","table":"sales.Orders","column":"Total","reason":"left out: why","host_text":"(f())","place":"a.sql:1:2"}])json"),
        std::string::npos)
        << data;
    const std::string page = markdown(&options)["Orders.md"];
    EXPECT_NE(page.find("## Findings\n\n- **warning** `default-dropped` `Total`: left out: why: `(f())`\n"),
              std::string::npos)
        << page;
}

TEST_F(ReportTest, CountsAndChecksRows)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    const std::string file = testing::TempDir() + "tov_report_test.db";
    std::remove(file.c_str());
    tov_client__create_database(ctx, schema, file.c_str(), nullptr, nullptr);
    ASSERT_OK(ctx);
    ASSERT_EQ(sqlite3_open(file.c_str(), &connection), SQLITE_OK);
    ASSERT_EQ(::run(connection, "INSERT INTO Customers VALUES (1), (2), (3)"), "");
    tov_client_report_options options = {};
    options.database = file.c_str();
    const std::string data = data_of(html(&options));
    EXPECT_NE(data.find("\"rows\":0"), std::string::npos) << data;
    EXPECT_NE(data.find("\"rows\":3"), std::string::npos) << data;
    EXPECT_EQ(data.find("violations"), std::string::npos) << data;
    EXPECT_NE(markdown(&options)["README.md"].find("| [Customers](Customers.md) | 1 | 0 | 1 | 3 | |"),
              std::string::npos);

    // Past the checks, as another program might.
    ASSERT_EQ(::run(connection, "PRAGMA ignore_check_constraints=ON"), "");
    ASSERT_EQ(::run(connection, "INSERT INTO Customers VALUES (3000000000)"), "");
    const std::string checked = data_of(html(&options));
    EXPECT_NE(checked.find(R"("violations":[{"code":"out-of-range","severity":"error",)"), std::string::npos)
        << checked;
    EXPECT_NE(checked.find(R"("column":"Id","count":1,"examples":["Id=3000000000: 3000000000"]}])"), std::string::npos)
        << checked;
    EXPECT_NE(markdown(&options)["Customers.md"].find(
                  "\n## Rows that the server would refuse\n\n- **error** `out-of-range` `Id`: "),
              std::string::npos);

    ASSERT_EQ(::run(connection, "DROP TABLE Customers"), "");
    KT_string *text = nullptr;
    tov_client__write_html_report(ctx, schema, &options, &text);
    EXPECT_FAILED(ctx, KT_ERR_SQLITE(1));
    EXPECT_EQ(text, nullptr);
    KT_context__err_reset(ctx);
    std::remove(file.c_str());
}

TEST_F(ReportTest, MarkdownIsAPageForEachTable)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    files written = markdown();
    ASSERT_EQ(written.size(), 3u);
    EXPECT_EQ(written["README.md"], "# Shop\n\n"
                                    "| Table | Columns | Refers to | Referred to by | Rows | Description |\n"
                                    "|---|---|---|---|---|---|\n"
                                    "| [Orders](Orders.md) | 5 | 1 | 0 | | What was ordered |\n"
                                    "| [Customers](Customers.md) | 1 | 0 | 1 | | |\n");
    expect_parts(
        written["Orders.md"],
        {{"heading", "# Orders\n\n[All tables](README.md), on the server sales.Orders\n"},
         {"diagram", "```mermaid\nflowchart LR\n    t0[\"<b>Orders</b>\"]\n    t1[\"Customers\"]\n"
                     "    t0 --> t1\n```\n"},
         {"column", "| Total | `decimal(9,2)` | `int` | yes | `150` | unique | the value times 10^2 | in euros |"},
         {"left out", "| Twice | `decimal(11,2)` | | | | | left out: the server computes it | |"},
         {"reference", "| CustomerId | [Customers](Customers.md) | Id | CASCADE | |"},
         {"check", "| CK\\_Total | `([Total]>=0)` |"},
         {"index", "| IX\\_Total | unique | Total DESC, CustomerId | Note | `([Total]>(1))` | yes |"}});
    expect_parts(written["Customers.md"],
                 {{"reference to it", "| CustomerId | [Orders](Orders.md) | Id | CASCADE | |"}});
}

TEST(ReportMarkdown, TextShowsAsItIs)
{
    const struct {
        const char *name;
        std::string text;
        const char *expected;
    } cases[] = {
        {"plain", client_markdown_text("Order Details"), "Order Details"},
        {"markup", client_markdown_text("<b>|a_b|*[x](y)"), "\\<b\\>\\|a\\_b\\|\\*\\[x\\](y)"},
        {"line ends", client_markdown_text("a\r\nb"), "a  b"},
        {"what begins a list or a heading", client_markdown_text("# a - b"), "\\# a - b"},
        {"code", client_markdown_code("a|b"), "`a\\|b`"},
        {"code with a backtick", client_markdown_code("a`b"), "`` a`b ``"},
        {"code of nothing", client_markdown_code(""), ""},
        {"a label", client_mermaid_text("a\"]<b>&#\n"), "a&#34;]&#60;b&#62;&#38;&#35; "},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.text, c.expected);
    }
}

TEST(ReportMarkdown, FilesHaveNamesOfTheirOwn)
{
    std::vector<std::string> taken = {"readme.md"};
    const std::pair<const char *, const char *> cases[] = {{"Order Details", "Order_Details.md"},
                                                           {"order_details", "order_details-2.md"},
                                                           {"../../etc", ".._.._etc.md"},
                                                           {"ReadMe", "ReadMe-2.md"},
                                                           {"\xC3\xA4", "__.md"}};
    for (const auto &[tbl, file] : cases)
        EXPECT_EQ(client_markdown_file(tbl, taken), file);
}

TEST_F(ReportTest, FailsWhereMemoryRunsOut)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    const std::string whole = html();
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        KT_string *text = nullptr;
        tov_client__write_html_report(ctx, schema, nullptr, &text);
        if (KT_context__has_err(ctx)) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_EQ(text, nullptr);
            continue; // texts that the schema's pool keeps are no leak
        }
        EXPECT_EQ(take(ctx, text), whole);
        if (!fault.fired())
            break;
    }
}

TEST_F(ReportTest, MarkdownFailsWhereMemoryRunsOut)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    const files whole = markdown();
    for (kt_failing_alloc fault; fault.next(); KT_context__err_reset(ctx)) {
        files written;
        tov_client__write_markdown_report(
            ctx, schema, nullptr,
            [](KT_context *, void *data, const char *name, const char *text) {
                (*static_cast<files *>(data))[name] = text;
            },
            &written);
        if (KT_context__has_err(ctx)) {
            EXPECT_FAILED(ctx, KT_ERR_OUT_OF_MEMORY);
            EXPECT_LT(written.size(), whole.size()) << "the index comes last, and is missing";
            continue;
        }
        EXPECT_EQ(written, whole);
        if (!fault.fired())
            break;
    }
}

// With rows of a database, and what has changed: a report that fails leaves nothing open, and is no report.
TEST_F(ReportTest, FailsWhereTheDatabaseDoes)
{
    ASSERT_NO_FATAL_FAILURE(read(shop));
    const std::string file = testing::TempDir() + "tov_report_" + std::to_string(getpid()) + ".db";
    std::remove(file.c_str());
    tov_client__create_database(ctx, schema, file.c_str(), nullptr, nullptr);
    sqlite3 *opened = nullptr;
    sqlite3_open(file.c_str(), &opened);
    EXPECT_EQ(run(opened, "INSERT INTO Orders VALUES (1, 7, 3, 'x')"), "");
    sqlite3_close(opened);
    tov_client_report_options options = {};
    options.database = file.c_str();
    const std::string whole = html(&options);
    kt_counting_sqlite sqlite;
    KT_string *text = nullptr;
    const auto judge = [&](kt_sqlite_entry entry, int turn, int code) {
        SCOPED_TRACE("entry " + std::to_string(static_cast<int>(entry)) + ", call " + std::to_string(turn));
        EXPECT_EQ(sqlite.open_statements(), 0);
        EXPECT_EQ(sqlite.open_connections(), 0);
        EXPECT_EQ(text == nullptr, KT_context__has_err(ctx) != 0);
        if (KT_context__has_err(ctx) && sqlite.has_code(entry) && code) {
            EXPECT_EQ(KT_context__err_code(ctx), KT_ERR_SQLITE(code)) << KT_context__err_description(ctx);
        }
        KT_context__err_reset(ctx);
        KT_string__free(ctx, std::exchange(text, nullptr));
    };
    const auto attempt = [&] {
        KT_string__free(ctx, std::exchange(text, nullptr)); // of a call that nothing failed in
        tov_client__write_html_report(ctx, schema, &options, &text);
    };
    EXPECT_GT(kt_sweep_sqlite(sqlite, attempt, judge), 50);
    KT_string__free(ctx, text);
    EXPECT_EQ(html(&options), whole);
    std::remove(file.c_str());
}

// A document can say anything of the server.
TEST_F(ReportTest, RefusesFactsThatCannotBe)
{
    for (const char *facts : {R"("indexes":{})", R"("indexes":[1])", R"("indexes":[{"cols":[1]}])",
                              R"("indexes":[{"cols":["1"],"descending":[]},{"name":1}])", R"("description":1)"}) {
        SCOPED_TRACE(facts);
        ASSERT_NO_FATAL_FAILURE(read(
            std::string(
                R"({"compat_level":1,"tbls":{"1":{"name":"T","cols":{"1":{"name":"A","type":{"name":"sint32"}}},"server":{)") +
            facts + "}}}}"));
        KT_string *text = nullptr;
        tov_client__write_html_report(ctx, schema, nullptr, &text);
        EXPECT_FAILED(ctx, KT_ERR_WRONG_TYPE);
        EXPECT_EQ(text, nullptr);
        KT_context__err_reset(ctx);
    }
}

} // namespace
