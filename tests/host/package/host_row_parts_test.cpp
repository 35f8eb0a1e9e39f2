// Row parts of packages.
#include "host_model_test.hpp"
#include "tov_row_parts.h"

class HostRowPartsTest : public HostPackageTest {
  protected:
    struct collected {
        std::string text;
        std::string bytes;
        size_t greatest = 0;
        bool is_failing = false;
    };
    static void take(KT_context *ctx, void *data, const tov_host_row_part *part, const char *bytes, size_t size)
    {
        auto &all = *static_cast<collected *>(data);
        if (all.is_failing) {
            KT_context__err(ctx, KT_ERR_OUT_OF_RANGE, KT_HERE, 1, "the row is too long");
            return;
        }
        all.greatest = std::max(all.greatest, size);
        if (bytes)
            all.bytes.append(bytes, size);
        if (size > 0)
            return;
        all.text += std::string(part->schema_name) + '|' + part->tbl_name + '|' + std::to_string(part->number) + '|' +
                    std::to_string(part->size) + '|' + all.bytes.substr(0, 10) + '\n';
        all.bytes.clear();
    }
    std::string parts_of(const std::string &package)
    {
        tov_host__read_row_parts(ctx, package.data(), package.size(), take, &rows);
        return rows.text;
    }
    collected rows;
};

static std::string a_package_with(const std::string &tables, const std::vector<package_file> &files)
{
    return a_package_of(a_model(tables), true, files);
}

TEST_F(HostRowPartsTest, InOrder)
{
    const std::string tables = a_model_table("[dbo].[Order Details]", "") + a_model_table("[a.b].[c]]d]", "") +
                               a_model_table("[dbo].[Empty]", "") + a_model_table("[dbo].[100% \xC3\xA4]", "");
    EXPECT_EQ(parts_of(a_package_with(tables, {{"Data/dbo.Order%20Details/TableData-010-00000.BCP", "eleven"},
                                               {"Data/dbo.Order%20Details/TableData-002-00000.BCP", "two"},
                                               {"Data/dbo.Order%20Details/TableData-002-00001.BCP", ""},
                                               {"Data/a.b.c%5dd/TableData-000-00000.BCP", "x"},
                                               {"Data/dbo.100%25%20%C3%A4/TableData-000-00000.BCP", "y"},
                                               {"Data/dbo.100%25%20%C3%A4/other.BCP", "z"},
                                               {"Data/TableData-000-00000.BCP", "z"},
                                               {"_rels/.rels", "z"}})),
              "a.b|c]d|0|1|x\n"
              "dbo|100% \xC3\xA4|0|1|y\n"
              "dbo|Order Details|0|3|two\n"
              "dbo|Order Details|1|0|\n"
              "dbo|Order Details|2|6|eleven\n");
    EXPECT_OK(ctx);
}

TEST_F(HostRowPartsTest, ComeInPieces)
{
    const std::string many(10'000'000, 'r');
    EXPECT_EQ(parts_of(a_package_with(a_model_table("[dbo].[T]", ""), {{"Data/dbo.T/TableData-000-00000.BCP", many}})),
              "dbo|T|0|10000000|rrrrrrrrrr\n");
    EXPECT_OK(ctx);
    EXPECT_LE(rows.greatest, 65536u);
}

TEST_F(HostRowPartsTest, Refused)
{
    const std::string t = a_model_table("[dbo].[T]", "");
    std::string damaged = a_zip({{"model.xml", a_model(t)}, {"Data/dbo.T/TableData-000-00000.BCP", "rowsrows"}}, false);
    damaged[damaged.find("rowsrows")]++;
    const struct {
        const char *name;
        std::string bytes;
        const char *message;
    } cases[] = {
        {"a table that is not in the model", a_package_with(t, {{"Data/dbo.U/TableData-000-00000.BCP", ""}}),
         "Data/dbo.U/TableData-000-00000.BCP in the package holds rows of a table that its model lacks"},
        {"a folder of two tables",
         a_package_with(a_model_table("[a.b].[c]", "") + a_model_table("[a].[b.c]", ""),
                        {{"Data/a.b.c/TableData-000-00000.BCP", ""}}),
         "Data/a.b.c/TableData-000-00000.BCP in the package may hold rows of two tables: schema and name of one, "
         "joined by a dot, are those of the other"},
        {"a damaged part", damaged, "Data/dbo.T/TableData-000-00000.BCP in the package is damaged: CRC error"},
        {"no package", "hello", "the package cannot be opened: Not a zip archive"},
        {"no model", a_zip({{"Data/dbo.T/TableData-000-00000.BCP", ""}}),
         "the file is a ZIP archive but not a package: it has no model.xml"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        parts_of(c.bytes);
        EXPECT_ERROR(ctx, KT_ERR_UNEXPECTED_VALUE, c.message);
        reset();
    }
}

TEST_F(HostRowPartsTest, AFailureOfTheTakerEndsIt)
{
    rows.is_failing = true;
    parts_of(a_package_with(a_model_table("[dbo].[T]", ""), {{"Data/dbo.T/TableData-000-00000.BCP", "x"}}));
    EXPECT_ERROR(ctx, KT_ERR_OUT_OF_RANGE, "the row is too long");
    reset();
}

TEST_F(HostRowPartsTest, Count)
{
    const std::string model = a_model("");
    const std::string statistics = "<ExportStatistics><TableRowCountTotalTag>4277</TableRowCountTotalTag>"
                                   "</ExportStatistics>";
    const struct {
        const char *name;
        std::string bytes;
        int64_t count;
    } cases[] = {
        {"said", a_zip({{"model.xml", model}, {"Origin.xml", an_origin(model, true, statistics)}}), 4277},
        {"not said", a_package_of(model), -1},
        {"no origin", a_zip({{"model.xml", model}}), -1},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.name);
        int64_t count = 0;
        tov_host__count_packed_rows(ctx, c.bytes.data(), c.bytes.size(), &count);
        EXPECT_OK(ctx);
        EXPECT_EQ(count, c.count);
    }
}
