// Packages: the reader beside what expat alone takes to walk the same model, and the whole import at growing sizes.

#include "bench_report.hpp"
#include "bench_schema.hpp"
#include "package/host_package.hpp"
#include "package_builder.hpp"
#include "tov_host.h"

#include <expat.h>

#include <map>
#include <random>

#define KT_HERE "bench"

namespace {

// The first one's model has 5 MB.
constexpr bench_size package_sizes[] = {{400, 8460}, {2700, 57127}, {26653, 563915}};

// Writes the elements of a model with the line ends and tabs of the vendor's tools.
class model_writer {
  public:
    void open(const std::string &tag)
    {
        line("<" + tag + ">");
        depth_++;
    }
    void close(const std::string &tag)
    {
        depth_--;
        line("</" + tag + ">");
    }
    void line(const std::string &text)
    {
        xml_.append(depth_, '\t');
        xml_ += text + '\n';
    }
    void property(const std::string &name, const std::string &value)
    {
        line("<Property Name=\"" + name + "\" Value=\"" + value + "\" />");
    }
    void reference(const std::string &relationship, const std::string &name, const std::string &more = "")
    {
        open("Relationship Name=\"" + relationship + "\"");
        open("Entry");
        line("<References " + more + "Name=\"" + name + "\" />");
        close("Entry");
        close("Relationship");
    }
    std::string take()
    {
        return std::move(xml_);
    }

  private:
    std::string xml_;
    size_t depth_ = 0;
};

std::string word(std::mt19937 &random)
{
    static const char *const words[] = {"Order", "Item", "Price", "Customer", "Name", "Date", "Code", "Status"};
    return std::string(words[random() % 8]) + words[random() % 8];
}

void write_col(model_writer &xml, const std::string &name, std::mt19937 &random, bool is_key)
{
    const bool is_text = !is_key && random() % 2;
    xml.open("Entry");
    xml.open("Element Type=\"SqlSimpleColumn\" Name=\"" + name + '"');
    if (is_key || random() % 2)
        xml.property("IsNullable", "False");
    if (is_key)
        xml.property("IsIdentity", "True");
    xml.open("Relationship Name=\"TypeSpecifier\"");
    xml.open("Entry");
    xml.open("Element Type=\"SqlTypeSpecifier\"");
    if (is_text)
        xml.property("Length", std::to_string(10 + random() % 200));
    xml.reference("Type", is_text ? "[nvarchar]" : "[int]", "ExternalSource=\"BuiltIns\" ");
    xml.close("Element");
    xml.close("Entry");
    xml.close("Relationship");
    xml.close("Element");
    xml.close("Entry");
}

void write_default(model_writer &xml, const std::string &table, const std::string &col, size_t number)
{
    xml.open("Element Type=\"SqlDefaultConstraint\" Name=\"[dbo].[DF_" + std::to_string(number) + "]\"");
    xml.open("Property Name=\"DefaultExpressionScript\"");
    xml.line("<Value><![CDATA[((0))]]></Value>");
    xml.close("Property");
    xml.reference("DefiningTable", table);
    xml.reference("ForColumn", col);
    xml.close("Element");
}

void write_key(model_writer &xml, const std::string &table, const std::string &col, size_t number)
{
    xml.open("Element Type=\"SqlPrimaryKeyConstraint\" Name=\"[dbo].[PK_" + std::to_string(number) + "]\"");
    xml.open("Relationship Name=\"ColumnSpecifications\"");
    xml.open("Entry");
    xml.open("Element Type=\"SqlIndexedColumnSpecification\"");
    xml.reference("Column", col);
    xml.close("Element");
    xml.close("Entry");
    xml.close("Relationship");
    xml.reference("DefiningTable", table);
    xml.close("Element");
}

void write_table(model_writer &xml, size_t number, uint32_t columns, std::mt19937 &random)
{
    const std::string table = "[dbo].[" + word(random) + std::to_string(number) + "]";
    std::vector<std::string> cols;
    xml.open("Element Type=\"SqlTable\" Name=\"" + table + '"');
    xml.property("IsAnsiNullsOn", "True");
    xml.open("Relationship Name=\"Columns\"");
    for (uint32_t n = 0; n < columns; n++) {
        cols.push_back(table + ".[" + word(random) + std::to_string(n) + "]");
        write_col(xml, cols.back(), random, n == 0);
    }
    xml.close("Relationship");
    xml.reference("Schema", "[dbo]", "ExternalSource=\"BuiltIns\" ");
    xml.close("Element");
    write_key(xml, table, cols.front(), number);
    for (size_t n = 3; n < cols.size(); n += 10)
        write_default(xml, table, cols[n], number * 1000 + n);
}

std::string make_model(const bench_size &size)
{
    std::mt19937 random(42);
    model_writer xml;
    xml.line("<Element Type=\"SqlDatabaseOptions\"><Property Name=\"Collation\" "
             "Value=\"SQL_Latin1_General_CP1_CI_AS\" /></Element>");
    uint32_t left = size.columns;
    for (uint32_t n = 0; n < size.tables; n++) {
        const uint32_t columns = left / (size.tables - n);
        left -= columns;
        write_table(xml, n, columns, random);
    }
    return a_model(xml.take());
}

// The model and its package, kept for the whole run.
struct made_package {
    std::string model;
    std::string package;
};

const made_package &package_of(const bench_size &size)
{
    static std::map<uint32_t, made_package> made;
    made_package &entry = made[size.tables];
    if (entry.package.empty()) {
        entry.model = make_model(size);
        entry.package = a_package_of(entry.model);
    }
    return entry;
}

void read_ours(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    const made_package &made = package_of(size);
    for (auto _ : state) {
        auto catalogue = std::make_unique<host_catalogue>();
        host_findings findings{ctx};
        kt_contain(ctx, [&] { host_read_package(ctx, made.package, findings, *catalogue); });
        bench_check();
        state.PauseTiming();
        catalogue.reset();
        state.ResumeTiming();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(made.model.size()));
}

void read_expat(benchmark::State &state, const bench_size &size)
{
    const made_package &made = package_of(size);
    constexpr size_t piece = 65536;
    for (auto _ : state) {
        uint64_t tags = 0;
        XML_Parser parser = XML_ParserCreate(nullptr);
        XML_SetUserData(parser, &tags);
        XML_SetElementHandler(
            parser, [](void *data, const XML_Char *, const XML_Char **) { ++*static_cast<uint64_t *>(data); },
            [](void *, const XML_Char *) {});
        for (size_t at = 0; at < made.model.size(); at += piece) {
            const size_t count = std::min(piece, made.model.size() - at);
            XML_Parse(parser, made.model.data() + at, static_cast<int>(count), at + count == made.model.size());
        }
        XML_ParserFree(parser);
        benchmark::DoNotOptimize(tags);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(made.model.size()));
}

void import_package(benchmark::State &state, const bench_size &size)
{
    KT_context *ctx = bench_ctx();
    const std::string &package = package_of(size).package;
    for (auto _ : state) {
        tov_schema *schema = nullptr;
        KT_varray *findings = nullptr;
        tov_host__import(ctx, package.data(), package.size(), nullptr, &schema, &findings);
        bench_check();
        state.PauseTiming();
        KT_varray__free(ctx, findings);
        tov_schema__nullfree(ctx, &schema);
        state.ResumeTiming();
    }
}

using bench = void (*)(benchmark::State &, const bench_size &);

} // namespace

void register_package_benches()
{
    const std::pair<const char *, bench> cases[] = {
        {"package_read/%/ours", read_ours},
        {"package_read/%/expat", read_expat},
        {"package_import/%/ours", import_package},
    };
    for (const bench_size &size : package_sizes) {
        for (const auto &[pattern, body] : cases) {
            std::string name = pattern;
            name.replace(name.find('%'), 1, std::to_string(size.tables));
            benchmark::RegisterBenchmark(name.c_str(), body, size)->Unit(benchmark::kMillisecond)->UseRealTime();
        }
    }
}
