// Findings as records and as lines.
#include "host_test.hpp"
#include "steps/host_findings.hpp"

class HostFindingsTest : public ContextTest {
  protected:
    std::string line_of(const char *json)
    {
        kt_owned_vhash finding{ctx};
        KT_vhash__alloc__from_json__sz(ctx, finding.out(), json);
        KT_string *line = nullptr;
        KT_string__alloc__sz(ctx, &line, "> ");
        tov_host__format_finding(ctx, finding, line);
        return take(ctx, line);
    }
};

TEST_F(HostFindingsTest, Lines)
{
    const struct {
        const char *finding;
        const char *line;
    } cases[] = {
        {R"({"code":"c","table":"dbo.T","column":"A","reason":"why","host_text":"x"})", "> c: dbo.T.A: why: x"},
        {R"({"code":"c","table":"dbo.T","reason":"why","host_text":"x"})", "> c: dbo.T: why: x"},
        {R"({"code":"c","table":"dbo.T","reason":"why"})", "> c: dbo.T: why"},
        {R"({"code":"c","reason":"why","host_text":"x"})", "> c: why: x"},
        {R"({"code":"c"})", "> c"},
        {R"({"code":"c","reason":"a\nb","host_text":"x\r\n\ty\u007f\u009b"})", "> c: a b: x   y<U+007F><U+009B>"},
        {"{\"code\":\"c\",\"reason\":\"\xC3\xA4\"}", "> c: \xC3\xA4"},
    };
    for (const auto &c : cases) {
        EXPECT_EQ(line_of(c.finding), c.line);
        EXPECT_OK(ctx);
    }
}

TEST_F(HostFindingsTest, AMapWithoutCodeIsRefused)
{
    EXPECT_EQ(line_of(R"({"reason":"why"})"), "> ");
    EXPECT_FAILED(ctx, KT_ERR_KEY_NOT_FOUND);
    reset();
}

TEST_F(HostFindingsTest, RecordsLeaveAbsentMembersOut)
{
    host_table table;
    table.label = "dbo.T";
    host_column col;
    col.name = "A";
    host_findings findings{ctx};
    findings.add(ctx, "default-dropped", &table, &col, "text", "why");
    findings.add(ctx, "no-tables", nullptr, nullptr, nullptr, "how");
    KT_varray *list = nullptr;
    findings.move_to(&list);
    KT_vhash *record = nullptr;
    KT_varray__get__vhash(ctx, list, 0, &record);
    EXPECT_EQ(
        json_of(ctx, record),
        R"({"code":"default-dropped","severity":"warning","table":"dbo.T","column":"A","reason":"why","host_text":"text"})");
    KT_varray__get__vhash(ctx, list, 1, &record);
    EXPECT_EQ(json_of(ctx, record), R"({"code":"no-tables","severity":"error","reason":"how"})");
    KT_varray__free(ctx, list);
}

TEST_F(HostFindingsTest, NoFindingsAreNoList)
{
    host_findings findings{ctx};
    KT_varray *list = nullptr;
    findings.move_to(&list);
    EXPECT_EQ(list, nullptr);
}
